// GSM and UCS2 conversion beyond single characters, hex texts, and SIM alpha identifiers.
#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "qalt_at/text.h"

namespace {

using Bytes = std::vector<uint8_t>;

TEST(Conversion, TextsBothWays) {
  uint8_t gsm[14];
  gsm[9] = 0x65;  // what the escape at the end must not reach
  const Bytes wanted = {0x61, 0x1B, 0x28, 0x1B, 0x65, 0x05, 0x20, 0x41, 0x1B};
  EXPECT_EQ(CODE_Ucs2ToGsm7(gsm, L"a{€é中A\u00A0", 7, 0), wanted.size());
  EXPECT_EQ(Bytes(gsm, gsm + wanted.size()), wanted);
  wchar_t back[9] = {};
  EXPECT_EQ(CODE_Gsm7ToUcs2(back, gsm, 9, 0), 7u);
  EXPECT_STREQ(back, L"a{€é A\x1B") << "an escape at the end stands for itself";

  EXPECT_EQ(CODE_Gsm7ToUcs2(nullptr, gsm, 8, 0), UINT32_MAX);
  EXPECT_EQ(CODE_Gsm7ToUcs2(back, nullptr, 8, 0), UINT32_MAX);
  EXPECT_EQ(CODE_Gsm7ToUcs2(back, gsm, 0, 0), UINT32_MAX);
  EXPECT_EQ(CODE_Ucs2ToGsm7(nullptr, back, 6, 0) + CODE_Ucs2ToGsm7(gsm, nullptr, 6, 0), 0u);
}

TEST(Conversion, EncoderStepsLeaveThePositionOnTheCode) {
  const CodecTable* table = CODE_GetCodecTable(0);
  const CodecPair* pairs = Portuguese_Ucs2_To_Gsm7_Extend_UCS2;
  uint8_t out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  uint32_t position = 1;
  int found = 0;
  CODE_Find_Ucs2_To_Gsm7_Extend(2, table, 1, &position, out, L"a{", &found);
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(pairs, 0, &position, out, L"Δ", &found);
  CODE_Find_Ucs2_To_Gsm7_Extend(10, nullptr, 0, &position, out, L"{", &found);
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(nullptr, 0, &position, out, L"€", &found);
  EXPECT_EQ(found, 0);
  CODE_Find_Ucs2_To_Gsm7_Extend(10, table, 1, &position, out, L"a{", &found);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{0xEE, 0x1B, 0x28, 0xEE}));
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(pairs, 0, &position, out, L"€", &found);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{0xEE, 0x1B, 0x1B, 0x65}));
  EXPECT_EQ(position, 3u);
  EXPECT_EQ(found, 1);
}

TEST(Conversion, CheckIsStricterThanTheEncoder) {
  const struct {
    const wchar_t* text;
    int accepted[4];  // by language; 1 is the default's record
  } cases[] = {
      {L"", {1, 1, 1, 1}},      {L"abc{}€", {1, 1, 1, 1}}, {L"é", {1, 1, 1, 1}},
      {L"ç", {0, 0, 1, 1}},     {L"Ç", {1, 1, 0, 1}},      {L"á", {0, 0, 0, 1}},
      {L"Ò", {1, 1, 0, 0}},     {L"ò", {0, 0, 1, 0}},      {L"\u00A0", {1, 1, 1, 1}},
      {L"Ω", {1, 1, 1, 1}},     {L"Ξ", {1, 1, 1, 0}},      {L"∞", {0, 0, 0, 1}},
      {L"ÿ", {0, 0, 0, 0}},     {L"中", {0, 0, 0, 0}},     {L"`", {0, 0, 0, 1}},
      {L"aaa中", {0, 0, 0, 0}}, {L"\x1B", {0, 0, 0, 0}},   {L"\f", {1, 1, 1, 1}},
  };
  for (const auto& c : cases) {
    for (int32_t language = 0; language < 4; ++language) {
      const auto length = static_cast<int32_t>(wcslen(c.text));
      EXPECT_EQ(CODE_FindFromCodecTable(c.text, length, language), c.accepted[language])
          << testing::PrintToString(c.text) << " in " << language;
      int is_default = 7;
      const int pure = CODE_IsPureGsm7Code(c.text, language, &is_default);
      EXPECT_EQ(pure, c.accepted[0] | c.accepted[language]);
      EXPECT_EQ(is_default, c.accepted[0] ? 1 : 7);
    }
  }
  int unused = 0;
  EXPECT_EQ(CODE_FindFromCodecTable(nullptr, 0, 0), 0);
  EXPECT_EQ(CODE_FindFromCodecTable(L"中", -1, 0), 1);
  EXPECT_EQ(CODE_IsPureGsm7Code(nullptr, 0, &unused), 0);
  EXPECT_EQ(CODE_IsPureGsm7Code(L"a", 0, nullptr), 0);
}

TEST(Conversion, CheckStepsHonourTheStart) {
  const CodecTable* t = CODE_GetCodecTable(0);
  const CodecTable* pt = CODE_GetCodecTable(3);
  const CodecPair* ext = Ucs2_To_Gsm7_Extend;  // form feed, caret, brace, ...
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L"a\f", 1, 0, 10, t, ext), 1);
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L"\f", 0, 1, 10, t, ext), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L"\f", 0, 0, 0, t, ext), 1) << "one pair at least";
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L"{", 0, 0, 2, t, ext), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L" ", 0, 0, 10, t, ext), 1);
  EXPECT_EQ(CODE_FindFromCodecTable_More(L"Δ", 0, 0, t), 1);
  EXPECT_EQ(CODE_FindFromCodecTable_More(L"Δ", 0, 1, t), 0);
  const CodecPair* wide = Portuguese_Ucs2_To_Gsm7_Extend_UCS2;
  EXPECT_EQ(CODE_FindFromCodecTable_Portuguese(L"Δ", 0, 0, pt, wide), 1);
  EXPECT_EQ(CODE_FindFromCodecTable_Portuguese(L"Δ", 0, 1, pt, wide), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_Portuguese(L"Φ", 0, 9, pt, wide), 1);
  EXPECT_EQ(CODE_FindFromCodecTable_Less(nullptr, 0, 0, 10, t, ext), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_Less(L"\f", 0, -1, 10, t, ext), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_More(L"Δ", 0, 0, nullptr), 0);
  EXPECT_EQ(CODE_FindFromCodecTable_Portuguese(nullptr, 0, 0, pt, wide), 0);
}

TEST(Conversion, Estimates) {
  uint32_t size = 0;
  for (const auto& [text, wanted] :
       {std::pair{L"abc", 6u}, {L"ab中", 14u}, {L"", 0u}, {L"{", 2u}, {L"ç", 6u}}) {
    EXPECT_EQ(CODE_PreEncodeGsmUcs(text, &size), 1);
    EXPECT_EQ(size, wanted);
  }
  EXPECT_EQ(CODE_PreEncodeGsmUcs(nullptr, &size), 1);
  EXPECT_EQ(CODE_PreEncodeGsmUcs(L"a", nullptr), 1);

  const struct {
    const char* hex;
    TextCoding coding;
    int32_t count;
  } cases[] = {
      // clang-format off
      {"80004100420043", 1, 3}, {"8103", 2, -1}, {"81", 2, -2}, {"4142", 0, 2}, {"", 0, 0},
      {"8", 0, 0}, {"80", 1, 0}, {"82", 3, -3}, {"8202041080", 3, 1}, {"8341", 0, 2},
      // clang-format on
  };
  for (const auto& c : cases) {
    TextCoding coding = -1;
    int32_t count = -9;
    EXPECT_EQ(CODE_GetDecodeType(c.hex, &coding), 1);
    EXPECT_EQ(coding, c.coding) << c.hex;
    EXPECT_EQ(CODE_PreDecodeGsmUcs(c.hex, &count), 1);
    EXPECT_EQ(count, c.count) << c.hex;
  }
  int32_t untouched = 5;
  EXPECT_EQ(CODE_GetDecodeType(nullptr, &untouched), 0);
  EXPECT_EQ(CODE_PreDecodeGsmUcs(nullptr, &untouched), 0);
  EXPECT_EQ(untouched, 5);
}

TEST(Conversion, HexTexts) {
  const struct {
    std::string hex;
    int32_t language;
    int32_t result;
    std::wstring text;
  } cases[] = {
      // clang-format off
      {"", 0, 0, L""}, {"4", 0, 0, L""}, {"41424", 0, 1, L"AB"}, {"801", 0, 1, L""},
      {"80", 0, 1, L""}, {"00", 0, 1, L"@"}, {"414243", 0, 1, L"ABC"}, {"8341", 0, 1, L" A"},
      {"80004100420043", 0, 1, L"ABC"}, {"800041000000420043", 0, 1, L"A"},
      {"8102089FC0", 0, 1, L"Пр"}, {"820204108081", 0, 1, L"АБ"},
      {"8102008041", 0, 1, L""},  // the base's own code point is U+0000
      {"1B61", 2, 1, L"á"}, {"1B61", 0, 1, L"\x1B"},
      {"4a", 0, 1, L"j"},  // read as 0x40 | 0x2A: only upper case is a digit
      {std::string(512, '4'), 0, 1, std::wstring(256, L'D')}, {std::string(513, '4'), 0, 0, L""},
      {"80" + std::string(510, '4'), 0, 1, std::wstring(127, L'\x4444')},
      {"81FF08" + std::string(504, '4'), 0, 1, std::wstring(160, L'D')},
      // clang-format on
  };
  for (const auto& c : cases) {
    std::vector<wchar_t> out(c.hex.size() / 2 + 2, L'#');
    EXPECT_EQ(CODE_Usc2orGsm7ToAscDecode(c.hex.c_str(), out.data(), c.language), c.result) << c.hex;
    EXPECT_EQ(out.back(), L'#');
    const std::wstring written = c.result == 1 ? c.text + L'\0' : L"#";
    EXPECT_EQ(std::wstring(out.data(), written.size()), written) << c.hex;
  }
  wchar_t out[4];
  EXPECT_EQ(CODE_Usc2orGsm7ToAscDecode(nullptr, out, 0), 0);
  EXPECT_EQ(CODE_Usc2orGsm7ToAscDecode("41", nullptr, 0), 0);
}

using Text = std::u16string;

// The decoded text; the values behind it must have stayed as they were, but for `touched`.
Text identifier(const Bytes& id, uint16_t max, size_t touched = 0) {
  std::vector<uint16_t> out(200, 0xEEEE);
  EXPECT_EQ(CODE_utAlphaIdToUcs2(out.data(), max, id.data(), static_cast<uint16_t>(id.size())), 1);
  Text text(out.begin(), out.end());
  text.resize(text.find(u'\xEEEE') == Text::npos ? text.size() : text.find(u'\xEEEE'));
  if (touched == 0) return text;
  EXPECT_EQ(text, Text(touched, 0));
  return Text();
}

TEST(Identifier, Codings) {
  const struct {
    Bytes id;
    Text text;
  } cases[] = {
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
      {{0x1B, 0x20}, u"  "}, {{0x5B, 0x5D, 0x10, 0x11, 0x08, 0xFF}, u"[]\u0394_\u00F2 "},
      // clang-format on
  };
  for (const auto& c : cases)
    EXPECT_EQ(identifier(c.id, 190), c.text) << testing::PrintToString(c.id);
  EXPECT_EQ(identifier({0x90, 0x41}, 190, 1), u"");
  EXPECT_EQ(identifier({0x90, 0x41}, 0), u"");
  EXPECT_EQ(identifier({1, 2, 3, 4, 5}, 2).size(), 2u);
  EXPECT_EQ(identifier(Bytes(190, 0x41), 190).size(), 160u);
}

TEST(Identifier, SingleDecoders) {
  uint16_t out[4] = {0xEEEE, 0xEEEE, 0xEEEE, 0xEEEE};
  const uint8_t ended[] = {0x80, 0x00, 0x41, 0xFF, 0xFF};
  EXPECT_EQ(CODE_utAlphaId80ToUcs2(out, 4, ended, 5), 1);
  EXPECT_EQ(out[1], 0) << "the end of the text is stored, not counted";
  EXPECT_EQ(out[2], 0xEEEE);
  out[1] = 0xEEEE;
  EXPECT_EQ(CODE_utAlphaId80ToUcs2(out, 1, ended, 5), 1);
  EXPECT_EQ(out[1], 0xEEEE);
  const uint8_t based[] = {0x81, 0x03, 0x08, 0x90, 0x91, 0x92};
  EXPECT_EQ(CODE_utAlphaId81ToUcs2(out, 2, based, 6), 2);
  EXPECT_EQ(CODE_utAlphaId82ToUcs2(out, 4, based, 6), 2);
  EXPECT_EQ(out[0], 0x0890 + 0x11);
  for (auto decoder : {CODE_utAlphaIdGsmToUcs2, CODE_utAlphaId80ToUcs2, CODE_utAlphaId81ToUcs2,
                       CODE_utAlphaId82ToUcs2}) {
    EXPECT_EQ(decoder(nullptr, 4, based, 6) + decoder(out, 4, nullptr, 6), 0);
    EXPECT_EQ(decoder(out, 4, based, 0), 0);
  }
  EXPECT_EQ(CODE_utAlphaIdToUcs2(nullptr, 4, based, 6), 1);

  uint16_t used = 0;
  int result = 0;
  EXPECT_EQ(CODE_mapEGsmToUcs2(0x1B, 0x65, out, &used), 2);
  EXPECT_EQ(out[0], 0x20AC);
  EXPECT_EQ(CODE_mapEGsmToUcs2(0x90, 0x65, out, &used), 1);
  CODE_mapEGsmToUcs2_EXTENDED_ALPHABET(0x1B, 0x3C, out, &used, &result);
  EXPECT_EQ(out[0], u'[');
  EXPECT_EQ(result + used, 4);
  EXPECT_EQ(CODE_mapEGsmToUcs2(0x41, 0, nullptr, &used), 0);
}

}  // namespace
