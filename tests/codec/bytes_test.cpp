// Bytes, hex, semi-octets, UCS2 bytes and the time stamp: what each writes, and where it
// stops. That they undo one another is shown by fuzz.bytes.
#include <gtest/gtest.h>

#include <array>
#include <clocale>
#include <string>
#include <tuple>
#include <vector>

#include "qalt_at/text_bytes.h"

namespace {

using Bytes = std::vector<uint8_t>;
using namespace std::string_literals;

TEST(SemiOctets, FillersAndOddCounts) {
  char out[8] = "#######";
  EXPECT_EQ(CODE_InvertNumbers("12345", out, 5), 6);
  EXPECT_EQ(std::string(out, 8), "2143F5\0\0"s);
  EXPECT_EQ(CODE_SerializeNumbers("21f", out, 3), 2) << "a digit without partner is ignored";
  EXPECT_STREQ(out, "12");
  EXPECT_EQ(CODE_SerializeNumbers("f1", out, 2), 2) << "only the upper-case filler is dropped";
}

// Two readers of digits: the first takes both cases, the second ORs upper case into what is there.
TEST(Hex, DigitsToBytes) {
  const std::tuple<std::string, Bytes, Bytes> cases[] = {
      {"0AFF", {0x0A, 0xFF}, {0x0A, 0xFF}},
      {"0aff", {0x0A, 0xFF}, {0x2A, 0xFF}},
      {"12345", {0x12, 0x34}, {0x12, 0x34, 0x50}},
      {"/:", {0x83}, {0xF3}},
  };
  for (const auto& [hex, either_case, upper_case] : cases) {
    Bytes read(either_case.size()), ored(upper_case.size());
    const auto count = static_cast<int32_t>(hex.size());
    EXPECT_EQ(CODE_String2Bytes(hex.c_str(), read.data(), count), read.size());
    CODE_AscToHex(ored.data(), hex.c_str(), count);
    EXPECT_EQ(read, either_case);
    EXPECT_EQ(ored, upper_case);
  }
}

TEST(Ucs2, BytesAndTheLocalesTextBecomeWideText) {
  wchar_t text[300];
  std::fill(std::begin(text), std::end(text), L'#');
  const uint8_t ended[] = {0x00, 0x41, 0x00, 0x00, 0x00, 0x42};
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 6), 1);
  EXPECT_EQ(std::wstring(text, 3), L"A\0#"s);
  EXPECT_EQ(CODE_DecodeUcs2(ended, text, 1), 0) << "half a pair";
  EXPECT_STREQ(text, L"");
  EXPECT_EQ(CODE_DecodeUcs2(Bytes(600, 0x4E).data(), text, 600), 255);
  EXPECT_EQ(std::wstring(text + 254, 3), L"\x4E4E\0#"s);

  ASSERT_NE(std::setlocale(LC_ALL, "C.UTF-8"), nullptr);
  EXPECT_EQ(CODE_DecodeGSM8("\xC3\xA9\xFFz", text, 5), 5);
  EXPECT_STREQ(text, L"é") << "ends at the byte that is no character";
  std::setlocale(LC_ALL, "C");
}

TEST(TimeStamp, DatesAndZones) {
  const std::string date = "212112413500";
  using Time = std::array<int, 7>;  // year to second, zone
  const auto at = [](int zone) { return Time{2012, 12, 21, 14, 53, 0, zone}; };
  const std::vector<std::pair<std::string, Time>> cases = {
      // clang-format off
      {date + "23", at(32)}, {date + "8A", at(-28)}, {date + "95", at(0)}, {date + "84", at(48)},
      {date + "9C", at(0)}, {date, at(0)}, {date + "2", at(0)}, {"xy21124135", {}},
      {"80808090808000", {2008, 8, 8, 9, 8, 8, 0}}, {"21xx1241350023", {2012, 0, 0, 0, 0, 0, 32}},
      // of a long zone text the last octet counts; one that is too long is no time stamp
      {date + "1111223", at(32)}, {date + std::string(27, '1'), at(11)},
      {date + std::string(28, '1'), {}},
      // clang-format on
  };
  testing::internal::CaptureStdout();
  for (const auto& [digits, time] : cases) {
    const QaltTime t = CODE_DecodePduTimeToQaltTime(digits.c_str());
    EXPECT_EQ((Time{t.year, t.month, t.day, t.hour, t.minute, t.second, t.timeZone}), time);
  }
  const std::string printed = testing::internal::GetCapturedStdout();
  EXPECT_EQ(printed.substr(0, 32), "timezone str 23\ntimezone 23\ntime");
}

}  // namespace
