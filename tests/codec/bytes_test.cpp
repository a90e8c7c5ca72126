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
    EXPECT_EQ(out[unpacked] | out[unpacked + 1] << 8, 0xEE00);
  }
}

TEST(SemiOctets, SwapAndBackAlsoInPlace) {
  for (const auto& [plain, swapped] : std::vector<std::pair<std::string, std::string>>{
           {"", ""}, {"1", "F1"}, {"12345", "2143F5"}, {"123456", "214365"}}) {
    char out[9] = "########";
    EXPECT_EQ(CODE_InvertNumbers(plain.c_str(), out, plain.size()), swapped.size());
    EXPECT_EQ(out, swapped);
    EXPECT_EQ(out[swapped.size() + 1], '#');
    EXPECT_EQ(CODE_SerializeNumbers(out, out, swapped.size()), plain.size());
    EXPECT_EQ(out, plain);
    CODE_InvertNumbers(out, out, plain.size());
    EXPECT_EQ(out, swapped);
  }
  char out[7] = "######";
  EXPECT_EQ(CODE_SerializeNumbers("21f", out, 3), 2) << "a digit without partner is ignored";
  EXPECT_EQ(std::string(out, 4), "12\0#"s);
  EXPECT_EQ(CODE_SerializeNumbers("f1", out, 2), 2) << "only the upper-case filler is dropped";
}

TEST(Hex, BytesAndDigits) {
  char text[16] = "###############";
  const uint8_t bytes[] = {0x0A, 0xFF};
  EXPECT_EQ(CODE_Bytes2String(bytes, text, 2), 4);
  EXPECT_EQ(CODE_StringtoHex(bytes, text, 1), 1);
  EXPECT_EQ(CODE_Stringto2Bytes(L"\x1F4AF", text, 1), 1) << "an odd length is rounded up";
  EXPECT_EQ(std::string(text, 12), "0AFF0AF4AF\0#"s);
  CODE_UCS2toASC(text, L"Aé");
  EXPECT_STREQ(text, "004100E9");
  const struct {
    std::string hex;
    Bytes either;  // of CODE_String2Bytes
    Bytes upper;   // of CODE_AscToHex
  } cases[] = {
      // clang-format off
      {"0AFF", {0x0A, 0xFF}, {0x0A, 0xFF}}, {"0aff", {0x0A, 0xFF}, {0x2A, 0xFF}},
      {"12345", {0x12, 0x34}, {0x12, 0x34, 0x50}}, {"/:", {0x83}, {0xF3}},
      {"\xB1\x32", {0xA2}, {0xA2}}, {"", {}, {}},
      // clang-format on
  };
  for (const auto& c : cases) {
    Bytes out(4, 0xEE), zeros(4);
    const auto count = static_cast<int32_t>(c.hex.size());
    EXPECT_EQ(CODE_String2Bytes(c.hex.c_str(), out.data(), count), c.either.size());
    EXPECT_EQ(out[c.either.size()], 0xEE);
    out.resize(c.either.size());
    EXPECT_EQ(out, c.either) << c.hex;
    EXPECT_EQ(CODE_AscToHex(zeros.data(), c.hex.c_str(), count), 1);
    EXPECT_EQ(zeros[c.upper.size()], 0);
    zeros.resize(c.upper.size());
    EXPECT_EQ(zeros, c.upper) << c.hex;
  }
  uint8_t held[1] = {0x01};
  CODE_AscToHex(held, "8", 1);
  EXPECT_EQ(held[0], 0x81);
}

TEST(Ucs2, BytesAndTheLocalesTextToWideText) {
  wchar_t text[300];
  std::fill(std::begin(text), std::end(text), L'#');
  const uint8_t ended[] = {0x00, 0x41, 0x00, 0x00, 0x00, 0x42};
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 6), 1);
  EXPECT_EQ(std::wstring(text, 3), L"A\0#"s);
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 1), 0) << "half a pair";
  EXPECT_STREQ(text, L"");
  EXPECT_EQ(CODE_DecodeUcs2(Bytes(600, 0x4E).data(), text, 600), 255);
  EXPECT_EQ(std::wstring(text + 254, 3), L"\x4E4E\0#"s);

  EXPECT_EQ(CODE_DecodeGSM8("abc", text, 5), 5);
  EXPECT_EQ(std::wstring(text, 7), L"abc\0\0\0\x4E4E"s);
  EXPECT_EQ(CODE_DecodeGSM8("abc", text, 2), 2);
  EXPECT_STREQ(text, L"ab");
  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_EQ(CODE_DecodeGSM8("\xC3\xA9\xFFz", text, 5), 5);
  EXPECT_STREQ(text, L"é") << "ends at the byte that is no character";
  std::setlocale(LC_ALL, "C");

  uint8_t out[400] = {};
  EXPECT_EQ(CODE_EncodeUcs2((L"é" + std::wstring(199, L'中')).c_str(), out, 0), 400);
  EXPECT_EQ(Bytes(out, out + 3), (Bytes{0x00, 0xE9, 0x4E}));
  EXPECT_EQ(out[399], 0x2D);
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
  EXPECT_EQ(CODE_DecodePduTimeToQaltTime(nullptr).timeZone, 0);
}

TEST(TimeStamp, DatesAndZones) {
  const std::string date = "212112413500";
  using Time = std::array<int, 7>;  // year to second, zone
  const auto at = [](int zone) { return Time{2012, 12, 21, 14, 53, 0, zone}; };
  const struct {
    std::string digits;
    Time time;
    std::string zone, value;  // as printed
  } cases[] = {
      // clang-format off
      {date + "23", at(32), "23", "23"}, {date + "8A", at(-28), "8A", "8a"},
      {date + "95", at(0), "95", "95"}, {date + "84", at(48), "84", "84"},
      {date + "9C", at(0), "9C", "9c"}, {date, at(0), "", "0"}, {date + "2", at(0), "", "0"},
      {"80808090808000", {2008, 8, 8, 9, 8, 8, 0}, "00", "0"}, {"xy21124135", {}, "", "0"},
      {"21xx1241350023", {2012, 0, 0, 0, 0, 0, 32}, "23", "23"},
      // of a long zone text the last octet counts, of nine digits the last eight
      {date + "1111223", at(32), "1111223", "1111223"},
      {date + std::string(27, '1'), at(11), "111111111", "11111111"},
      // clang-format on
  };
  for (const auto& c : cases) {
    testing::internal::CaptureStdout();
    const QaltTime t = CODE_DecodePduTimeToQaltTime(c.digits.c_str());
    EXPECT_EQ(testing::internal::GetCapturedStdout(),
              "timezone str " + c.zone + "\ntimezone " + c.value + "\n");
    EXPECT_EQ((Time{t.year, t.month, t.day, t.hour, t.minute, t.second, t.timeZone}), c.time);
    EXPECT_EQ(t.reserved, 0);
  }
  EXPECT_EQ(CODE_DecodePduTimeToQaltTime((date + std::string(28, '1')).c_str()).year, 0);
}

}  // namespace
