// Bytes, hex, septets, semi-octets, UCS2 bytes and the time stamp.
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <string>
#include <vector>

#include "qalt_at/text_bytes.h"

namespace {

using Bytes = std::vector<uint8_t>;
using namespace std::string_literals;

TEST(Septets, KnownText) {
  const std::string text = "hellohello";
  const std::vector<uint32_t> septets(text.begin(), text.end());
  Bytes packed(9);
  EXPECT_EQ(CODE_Encode7bit(septets.data(), packed.data(), 10), 9);
  EXPECT_EQ(packed, (Bytes{0xE8, 0x32, 0x9B, 0xFD, 0x46, 0x97, 0xD9, 0xEC, 0x37}));
}

// Every length over three groups, against the position of each bit in the packed stream.
TEST(Septets, EveryLengthBitByBit) {
  for (int32_t count = 0; count <= 25; ++count) {
    std::vector<uint32_t> septets(25, 0);
    for (int32_t i = 0; i < count; ++i) septets[i] = (i * 37 + 11) % 128 | 0xABCD00;
    Bytes packed(24, 0xEE);
    const int32_t bytes = CODE_Encode7bit(septets.data(), packed.data(), count);
    ASSERT_EQ(bytes, (7 * count + 7) / 8);
    EXPECT_EQ(packed[bytes], 0xEE);
    for (int32_t bit = 0; bit < 8 * bytes; ++bit) {
      const uint32_t wanted = bit < 7 * count ? septets[bit / 7] >> bit % 7 & 1 : 0;
      ASSERT_EQ(packed[bit / 8] >> bit % 8 & 1u, wanted) << count << " septets, bit " << bit;
    }
    Bytes out(30, 0xEE);
    const int32_t unpacked = CODE_Decode7bit(packed.data(), out.data(), bytes);
    ASSERT_EQ(unpacked, bytes + bytes / 7);
    for (int32_t i = 0; i < unpacked; ++i) EXPECT_EQ(out[i], i < count ? septets[i] & 0x7F : 0);
    EXPECT_EQ(out[unpacked], 0);
    EXPECT_EQ(out[unpacked + 1], 0xEE);
  }
}

TEST(SemiOctets, SwapAndBack) {
  const struct {
    std::string plain;
    std::string swapped;
  } cases[] = {{"", ""}, {"1", "F1"}, {"12", "21"}, {"12345", "2143F5"}, {"123456", "214365"}};
  for (const auto& c : cases) {
    char out[9] = "########";
    EXPECT_EQ(CODE_InvertNumbers(c.plain.c_str(), out, c.plain.size()), c.swapped.size());
    EXPECT_EQ(out, c.swapped);
    EXPECT_EQ(out[c.swapped.size() + 1], '#');
    EXPECT_EQ(CODE_SerializeNumbers(out, out, c.swapped.size()), c.plain.size()) << "in place";
    EXPECT_EQ(out, c.plain);
    EXPECT_EQ(CODE_InvertNumbers(out, out, c.plain.size()), c.swapped.size()) << "in place";
    EXPECT_EQ(out, c.swapped);
  }
  char out[7] = "######";
  EXPECT_EQ(CODE_SerializeNumbers("21f", out, 3), 2) << "a digit without partner is ignored";
  EXPECT_STREQ(out, "12");
  EXPECT_EQ(out[3], '#');
  EXPECT_EQ(CODE_SerializeNumbers("f1", out, 2), 2) << "only the upper-case filler is dropped";
}

TEST(Hex, BytesAndDigits) {
  char text[6] = "#####";
  const uint8_t bytes[] = {0x0A, 0xFF};
  EXPECT_EQ(CODE_Bytes2String(bytes, text, 2), 4);
  EXPECT_STREQ(text, "0AFF");
  EXPECT_EQ(CODE_StringtoHex(bytes, text, 0), 1);
  EXPECT_STREQ(text, "0AFF");
  char appended[12] = "x:";
  EXPECT_EQ(CODE_StringtoHex(bytes, appended, 2), 1);
  EXPECT_STREQ(appended, "x:0AFF");
  EXPECT_EQ(CODE_Stringto2Bytes(L"\x1F4AF", appended, 1), 1) << "an odd length is rounded up";
  EXPECT_STREQ(appended, "x:0AFFF4AF");
  CODE_UCS2toASC(appended, L"Aé");
  EXPECT_STREQ(appended, "004100E9");
  CODE_UCS2toASC(appended, L"");
  EXPECT_STREQ(appended, "");

  const struct {
    const char* hex;
    int32_t count;
    Bytes either;  // of CODE_String2Bytes
    Bytes upper;   // of CODE_AscToHex
  } cases[] = {
      // clang-format off
      {"0AFF", 4, {0x0A, 0xFF}, {0x0A, 0xFF}}, {"0aff", 4, {0x0A, 0xFF}, {0x2A, 0xFF}},
      {"12345", 5, {0x12, 0x34}, {0x12, 0x34, 0x50}}, {"/:", 2, {0x83}, {0xF3}},
      {"\xB1\x32", 2, {0xA2}, {0xA2}}, {"", 0, {}, {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    uint8_t out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
    EXPECT_EQ(CODE_String2Bytes(c.hex, out, c.count), c.either.size()) << c.hex;
    EXPECT_EQ(Bytes(out, out + c.either.size()), c.either) << c.hex;
    EXPECT_EQ(out[c.either.size()], 0xEE);
    uint8_t zeros[4] = {};
    EXPECT_EQ(CODE_AscToHex(zeros, c.hex, c.count), 1);
    EXPECT_EQ(Bytes(zeros, zeros + c.upper.size()), c.upper) << c.hex;
    EXPECT_EQ(zeros[c.upper.size()], 0);
  }
  uint8_t held[1] = {0x01};
  CODE_AscToHex(held, "8", 1);
  EXPECT_EQ(held[0], 0x81);
}

TEST(Ucs2, BytesAndWideText) {
  wchar_t text[300];
  std::fill(std::begin(text), std::end(text), L'#');
  const uint8_t ended[] = {0x00, 0x41, 0x00, 0x00, 0x00, 0x42};
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 6), 1);
  EXPECT_STREQ(text, L"A");
  EXPECT_EQ(text[2], L'#');
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 1), 0) << "half a pair";
  EXPECT_STREQ(text, L"");
  const Bytes many(600, 0x4E);
  EXPECT_EQ(CODE_DecodeUcs2(many.data(), text, 600), 255);
  EXPECT_EQ(text[254], L'\x4E4E');
  EXPECT_EQ(text[255], 0);
  EXPECT_EQ(text[256], L'#');

  uint8_t out[400] = {};
  EXPECT_EQ(CODE_EncodeUcs2(L"Aé", out, 0), 4);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{0x00, 0x41, 0x00, 0xE9}));
  EXPECT_EQ(CODE_EncodeUcs2(std::wstring(200, L'中').c_str(), out, 0), 400);
  EXPECT_EQ(out[399], 0x2D);
}

TEST(Ucs2, EightBitTextInTheLocale) {
  wchar_t text[7];
  std::fill(std::begin(text), std::end(text), L'#');
  EXPECT_EQ(CODE_DecodeGSM8("abc", text, 5), 5);
  EXPECT_EQ(std::wstring(text, 7), L"abc\0\0\0#"s);
  EXPECT_EQ(CODE_DecodeGSM8("abc", text, 2), 2);
  EXPECT_STREQ(text, L"ab");
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_EQ(CODE_DecodeGSM8("\xC3\xA9x", text, 5), 5);
  EXPECT_STREQ(text, L"éx");
  EXPECT_EQ(CODE_DecodeGSM8("a\xFFz", text, 5), 5);
  EXPECT_STREQ(text, L"a") << "ends at the byte that is no character";
  std::setlocale(LC_ALL, "C");
}

TEST(Bytes, NullPointersAndNegativeCounts) {
  uint32_t septets[8] = {};
  uint8_t bytes[8] = {};
  char digits[8] = "";
  wchar_t wide[8] = L"";
  const auto refuses = [](auto function, auto* in, auto* out, int32_t result) {
    EXPECT_EQ(function(nullptr, out, 1), result);
    EXPECT_EQ(function(in, nullptr, 1), result);
    EXPECT_EQ(function(in, out, -1), result);
  };
  refuses(CODE_Encode7bit, septets, bytes, -1);
  refuses(CODE_Decode7bit, bytes, bytes, -1);
  refuses(CODE_InvertNumbers, digits, digits, -1);
  refuses(CODE_SerializeNumbers, digits, digits, -1);
  refuses(CODE_Bytes2String, bytes, digits, -1);
  refuses(CODE_String2Bytes, digits, bytes, -1);
  refuses(CODE_AscToHex, bytes, digits, 1);
  refuses(CODE_StringtoHex, bytes, digits, 1);
  refuses(CODE_Stringto2Bytes, wide, digits, 1);
  refuses(CODE_DecodeUcs2, bytes, wide, -1);
  refuses(CODE_EncodeUcs2, wide, bytes, -1);
  refuses(CODE_DecodeGSM8, digits, wide, -1);
  CODE_UCS2toASC(nullptr, wide);
  CODE_UCS2toASC(digits, nullptr);
}

TEST(TimeStamp, DatesAndZones) {
  const struct {
    std::string digits;
    std::array<int, 7> time;  // year to second, zone
    const char* printed;
  } cases[] = {
      // clang-format off
      {"21211241350023", {2012, 12, 21, 14, 53, 0, 32}, "timezone str 23\ntimezone 23\n"},
      {"2121124135008A", {2012, 12, 21, 14, 53, 0, -28}, "timezone str 8A\ntimezone 8a\n"},
      {"21211241350095", {2012, 12, 21, 14, 53, 0, 0}, "timezone str 95\ntimezone 95\n"},
      {"21211241350084", {2012, 12, 21, 14, 53, 0, 48}, "timezone str 84\ntimezone 84\n"},
      {"2121124135009C", {2012, 12, 21, 14, 53, 0, 0}, "timezone str 9C\ntimezone 9c\n"},
      {"212112413500", {2012, 12, 21, 14, 53, 0, 0}, "timezone str \ntimezone 0\n"},
      {"2121124135002", {2012, 12, 21, 14, 53, 0, 0}, "timezone str \ntimezone 0\n"},
      {"80808090808000", {2008, 8, 8, 9, 8, 8, 0}, "timezone str 00\ntimezone 0\n"},
      {"xy21124135", {}, "timezone str \ntimezone 0\n"},
      {"21xx1241350023", {2012, 0, 0, 0, 0, 0, 32}, "timezone str 23\ntimezone 23\n"},
      // of a long zone text the last octet counts, of nine digits the last eight
      {"2121124135001111223", {2012, 12, 21, 14, 53, 0, 32},
       "timezone str 1111223\ntimezone 1111223\n"},
      {"212112413500" + std::string(27, '1'), {2012, 12, 21, 14, 53, 0, 11},
       "timezone str 111111111\ntimezone 11111111\n"},
      {"212112413500" + std::string(28, '1'), {}, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    const QaltTime t = CODE_DecodePduTimeToQaltTime(c.digits.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(), c.printed) << c.digits;
    const std::array<int, 7> time = {t.year,   t.month,  t.day,     t.hour,
                                     t.minute, t.second, t.timeZone};
    EXPECT_EQ(time, c.time) << c.digits;
    EXPECT_EQ(t.reserved, 0);
  }
  EXPECT_EQ(CODE_DecodePduTimeToQaltTime(nullptr).timeZone, 0);
}

}  // namespace
