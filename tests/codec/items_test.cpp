// Texts as modem and contact have them: SIM alpha identifiers, the forms of a contact's text, the
// choice between them, the bounds of every buffer.
#include <gtest/gtest.h>
#include <syslog.h>

#include <string>
#include <vector>

#include "qalt_at/text.h"
#include "qalt_at/text_bytes.h"
#include "tests/support/recorder.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Text = std::u16string;

std::wstring wide(size_t count, wchar_t c) {
  return std::wstring(count, c);
}

std::string digits(size_t count, const std::string& each) {
  return count == 0 ? "" : each + digits(count - 1, each);
}

// The decoded text; the values behind it must have stayed as they were.
Text identifier(const Bytes& id, uint16_t max) {
  Text out(200, u'\xEEEE');
  auto* const characters = reinterpret_cast<uint16_t*>(out.data());
  EXPECT_EQ(CODE_utAlphaIdToUcs2(characters, max, id.data(), static_cast<uint16_t>(id.size())), 1);
  return out.substr(0, out.find(u'\xEEEE'));
}

TEST(Identifier, Codings) {
  const std::vector<std::pair<Bytes, Text>> cases = {
      // clang-format off
      {{}, u""}, {{0x80}, u""}, {{0x81, 0x05}, u""}, {{0x82, 0x02, 0x04}, u""},
      {{0x80, 0x00, 0x41, 0xFF, 0xFF}, u"A"}, {{0x80, 0x00, 0x41, 0x00}, u"A"},
      {{0x80, 0x00, 0x41, 0x00, 0x00, 0x00, 0x42}, u"A"},
      {{0x81, 0x03, 0x08, 0x90, 0x41, 0x91}, u"\u0410A\u0411"},
      {{0x81, 0x02, 0x00, 0x1B, 0x28, 0x41, 0x42}, u"{A"}, {{0x81, 0xFF, 0xFF, 0xFF}, u"\u7FFF"},
      {{0x81, 0x05, 0x08, 0x1B}, u" "}, {{0x81, 0x05, 0x08, 0x1B, 0x90}, u" \u0410"},
      {{0x81, 0x00, 0x08, 0x90}, u""}, {{0x82, 0x02, 0x04, 0x10, 0x80, 0x81}, u"\u0410\u0411"},
      {{0x82, 0x02, 0xFF, 0xF0, 0x80, 0x91}, u"\uFFF0\u0001"}, {{0x41, 0x1B, 0x28, 0x42}, u"A{B"},
      {{0x41, 0x1B}, u"A "}, {{0x1B, 0x0A}, u" \n"}, {{0x1B, 0x1B, 0x41}, u" A"},
      {{0x5B, 0x5D, 0x10, 0x11, 0x08, 0xFF}, u"[]\u0394_\u00F2 "},
      {{0x90, 0x41}, Text(1, 0)}, {Bytes(190, 0x41), Text(160, 'A')},
      // clang-format on
  };
  for (const auto& [id, text] : cases) EXPECT_EQ(identifier(id, 190), text) << id.size();
  EXPECT_EQ(identifier({0x90, 0x41}, 0), u"");
  EXPECT_EQ(identifier({1, 2, 3, 4, 5}, 2).size(), 2u);
}

class Items : public testing::Test {
 protected:
  ~Items() override { QL_808182CodeSupportSet(0); }

  // A text is whole in a buffer of `needed` units; with one unit less, it is refused and the buffer
  // stays. That no other size differs is shown by fuzz.items.
  template <typename String, typename Call>
  static void expect_whole_or_untouched(const String& text, size_t needed, Call call) {
    for (const size_t size : {needed - 1, needed}) {
      String buffer(size + 8, '#'), expected = buffer;
      ASSERT_EQ(call(buffer.data(), static_cast<int>(size)), size < needed) << size;
      if (size == needed) expected.replace(0, text.size() + 1, text.c_str(), text.size() + 1);
      ASSERT_EQ(buffer, expected);
    }
  }
};

constexpr char kRefused[] = "refused";  // and logged, by every function

TEST_F(Items, Encode) {
  const struct {
    std::wstring text;
    int flag, extended;
    std::string hex;
  } cases[] = {
      // clang-format off
      {L"ab{", 0, 2, "61621B28"}, {L"Aé", 0, 1, "4105"}, {L"中", 0, 1, "804E2D"},
      {L"ò", 0, 1, "8000F2"}, {L"", 0, 1, ""}, {L"", 1, 0, ""}, {L"AB", 1, 0, "00410042"},
      {L"a{", 0, 0, "0061007B"}, {L"Пр", 0, 0, "041F0440"}, {L"Пр", 1, 1, "80041F0440"},
      {L"Пa", 1, 0, "8102089F61"}, {L"П^", 1, 0, "8102089F1B14"}, {L"^П", 1, 0, "8102081B149F"},
      {L"éā", 1, 0, "00E90101"}, {L"é中", 1, 0, "00E94E2D"}, {L"a^", 1, 0, "0061005E"},
      {L"`a", 1, 0, "8102002061"}, {L"`a}", 1, 0, "00600061007D"},
      {L"\x80\xFF", 1, 0, "81020180FF"}, {L"\x7FFF", 1, 0, "8101FFFF"}, {L"\x8000", 1, 0, "8000"},
      {L"\xFF\x17F", 1, 0, "00FF017F"}, {L"\xFF\x17E", 1, 0, "00FF017E"},
      {L"\x400\x47F", 1, 0, "81020880FF"}, {L"\x7F80\x7FFF", 1, 0, "8102FF80FF"},
      {L"Город", 1, 0, "81050893BEC0BEB4"},  // 17 bytes, yet the estimate asks for 22
      // up to the limits of each form, and beyond
      {wide(160, L'a'), 0, 1, digits(160, "61")}, {wide(80, L'{'), 0, 1, digits(80, "1B28")},
      {wide(39, L'中'), 0, 1, "80" + digits(39, "4E2D")},
      {wide(79, L'П'), 1, 0, "814F08" + digits(79, "9F")},
      {L"П" + wide(39, L'{'), 1, 0, "8128089F" + digits(39, "1B28")},
      {wide(260, L'é') + L"中", 0, 0, digits(260, "00E9") + "4E2D"},
      {wide(161, L'a'), 0, 1, kRefused}, {wide(80, L'{') + L"a", 0, 1, kRefused},
      {wide(40, L'中'), 0, 1, kRefused}, {wide(80, L'П'), 1, 0, kRefused},
      {L"ПП" + wide(39, L'{'), 1, 0, kRefused}, {wide(261, L'中'), 1, 0, kRefused},
      {L"\x1F600", 1, 0, kRefused}, {wide(1, static_cast<wchar_t>(0xFFFFFFFF)), 0, 0, kRefused},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.hex);
    QL_808182CodeSupportSet(c.flag);
    int pure = 7;
    if (c.hex == kRefused) {
      test::clear_records();
      std::string buffer(5000, '#');
      EXPECT_EQ(QL_encodePBItem(c.text.c_str(), buffer.data(), 4000, &pure, c.extended), 1);
      EXPECT_EQ(test::logged("lib_pb", LOG_ERR).size(), 1u);
      EXPECT_EQ(PB_EncodeItem(c.text.c_str(), buffer.data(), c.extended), 0);
      EXPECT_EQ(c.flag == 1 && PB808182EncodeItem(c.text.c_str(), buffer.data()), 0);
      EXPECT_EQ(buffer, std::string(5000, '#'));
      continue;
    }
    uint32_t estimate = 0;
    CODE_PreEncodeGsmUcs(c.text.c_str(), &estimate);
    const size_t needed = std::max<size_t>(estimate, c.hex.size() + 1);
    expect_whole_or_untouched(c.hex, needed, [&](char* out, int size) {
      return QL_encodePBItem(c.text.c_str(), out, size, &pure, c.extended);
    });
    EXPECT_EQ(pure, estimate == 2 * c.text.size());
  }
}

TEST_F(Items, Decode) {
  const struct {
    std::string hex;
    int extended;
    std::wstring text;
    size_t count;  // as CODE_PreDecodeGsmUcs has it
  } cases[] = {
      // clang-format off
      {"00410042", 0, L"AB", 4}, {"", 0, L"", 0}, {"80", 1, L"", 0}, {"611B28", 1, L"a{", 3},
      {"804E2D", 1, L"中", 1}, {"8102089FC0", 1, L"Пр", 2}, {"820204108081", 1, L"АБ", 2},
      {"41424", 1, L"AB", 2}, {"8341", 1, L" A", 2}, {"81", 1, L"", 0}, {"82", 1, L"", 0},
      {"800041000000420043", 1, L"A", 4},
      {"8102008041", 1, L"", 2},  // the base's own code point is U+0000
      {"4a", 1, L"j", 1},         // read as 0x40 | 0x2A: only upper case is a digit
      {"00410042", 2, L"AB", 4},  // only 1 is a vendor contact to the decoder
      // sized by the tag that they seem to have
      {"80014E2D", 0, L"\x8001中", 1}, {"82014E2D4E2D", 0, L"\x8201中中", 2},
      {digits(127, "41") + "4", 1, wide(127, L'A'), 127},
      {digits(63, "4E2D") + "4", 0, wide(63, L'中'), 126},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.hex);
    expect_whole_or_untouched(c.text, std::max(c.count, c.text.size() + 1),
                              [&](wchar_t* out, int size) {
                                return QL_decodePBItem(c.hex.c_str(), out, size, c.extended);
                              });
  }
  wchar_t buffer[400] = L"#";
  for (const auto& [hex, extended] :
       {std::pair{std::string("4"), 1}, {digits(128, "41"), 1}, {digits(127, "00"), 0}}) {
    test::clear_records();
    EXPECT_EQ(QL_decodePBItem(hex.c_str(), buffer, 400, extended), 1) << hex;
    EXPECT_EQ(test::logged("lib_pb", LOG_ERR).size(), 1u);
    EXPECT_EQ(PB_DecodeItem(hex.c_str(), buffer, extended), 0);
  }
  EXPECT_EQ(QL_decodePBItem("81", buffer, -3, 1), 1) << "a count below 0 is no room";
  EXPECT_STREQ(buffer, L"#");
}

TEST_F(Items, ArgumentsThatAreRefused) {
  char hex[20];
  wchar_t text[20];
  int value = 0;
  CODE_Find_Ucs2_To_Gsm7_Extend(10, nullptr, 0, nullptr, nullptr, L"{", &value);
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(nullptr, 0, nullptr, nullptr, L"€", &value);
  QL_808182CodeSupportSet(2);
  // clang-format off
  for (const auto& [result, expected] : {
           std::pair{value, 0}, {is808182CodeSupport, 0},
           {QL_encodePBItem(nullptr, hex, 20, &value, 0), 1},
           {QL_encodePBItem(L"a", nullptr, 20, &value, 0), 1},
           {QL_encodePBItem(L"a", hex, 20, nullptr, 0), 1},
           {QL_decodePBItem(nullptr, text, 20, 0), 1}, {QL_decodePBItem("41", nullptr, 20, 0), 1},
           {QL_preEncodePBItem(L"a", nullptr), 1}, {QL_preDecodePBItem(nullptr, &value), 1},
           {PB_EncodeItem(nullptr, hex, 0), 0}, {PB808182EncodeItem(L"a", nullptr), 0},
           {PB_DecodeItem(nullptr, text, 0), 0}, {ChoosePhoneBookTextCodecType(L"П", nullptr), 0},
           {CODE_GetDecodeType(nullptr, &value), 0}, {CODE_PreDecodeGsmUcs(nullptr, &value), 0},
           {CODE_Usc2orGsm7ToAscDecode("41", nullptr, 0), 0},
           {CODE_utAlphaIdToUcs2(nullptr, 4, nullptr, 6), 1},
           {CODE_Ucs2ToGsm7(nullptr, text, 4, 0), 0}, {CODE_Gsm7ToUcs2(text, nullptr, 4, 0), -1},
           {CODE_IsPureGsm7Code(L"a", 0, nullptr), 0},
           {CODE_GetCodecTableValue(Ucs2_To_Gsm7_Extend, 1, 0x7B, 10), -1},
           {CODE_String2Bytes("41", nullptr, 2), -1}, {CODE_Encode7bit(nullptr, nullptr, 1), -1},
           {CODE_DecodePduTimeToQaltTime(nullptr).year, 0}}) {
    // clang-format on
    EXPECT_EQ(result, expected);
  }
}

}  // namespace
