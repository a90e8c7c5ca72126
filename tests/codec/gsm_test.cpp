// GSM text and UCS2: every code of every alphabet and extension, in both directions, against the
// alphabets as texts; the check for pure GSM texts; the steps and look-ups offered to clients.
#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "qalt_at/text.h"

namespace {

using Bytes = std::vector<uint8_t>;
using Cells = std::map<uint8_t, char32_t>;

// TS 23.038 in the order of the codes; the escape is given as what its cell decodes to.
const std::u32string kDefault =
    U"@£$¥èéùìÒÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
const std::u32string kIdentifier =
    U"@£$¥èéùìòÇ\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZ[Ö]Ü§¿abcdefghijklmnopqrstuvwxyzäöñüà";
const std::u32string kSpanish =
    U"@£$¥èéùìòç\nØø\rÅåΔ_ΦΓΛΩΠΨΣΘΞ\u00A0ÆæßÉ !\"#¤%&'()*+,-./0123456789:;<=>?"
    U"¡ABCDEFGHIJKLMNOPQRSTUVWXYZÄÖÑÜ§¿abcdefghijklmnopqrstuvwxyzäöñüà";
const std::u32string kPortuguese =
    U"@£$¥êéúíóç\nÔô\rÁáΔ_ªÇÀ∞^\\€Ó|\u00A0ÂâÊÉ !\"#º%&'()*+,-./0123456789:;<=>?"
    U"ÍABCDEFGHIJKLMNOPQRSTUVWXYZÃÕÚÜ§~abcdefghijklmnopqrstuvwxyzãõ`üà";

// Cells from a text of codes and the text of their characters.
Cells cells(const std::string& codes, const std::u32string& characters) {
  Cells result;
  for (size_t i = 0; i < codes.size(); ++i) result[static_cast<uint8_t>(codes[i])] = characters[i];
  return result;
}
const Cells kDefaultExtension = cells("\n\x14()/<=>@e", U"\f^{}\\[~]|€");
const Cells kSpanishExtension = cells("\t\n\r\x14()/<=>@AIOUaeiou", U"ç\f\r^{}\\[~]|ÁÍÓÚá€íóú");
// As decoded: a line feed at 0x0A and a second bar at 0x1A.
const Cells kPortugueseExtension =
    cells("\x05\t\n\v\f\r\x0E\x0F\x12\x13\x14\x15\x16\x17\x18\x19\x1A\x1F()/<=>@AIOU[\\aeiou{|\x7F",
          U"êç\nÔô\rÁáΦΓ^ΩΠΨΣΘ|Ê{}\\[~]|ÀÍÓÚÃÕÂ€íóúãõâ");

struct Language {
  int32_t id;
  const std::u32string& alphabet;
  const Cells& extension;
  std::map<char32_t, Bytes> also;  // encoded without being decoded
};
const Language kLanguages[] = {
    {0, kDefault, kDefaultExtension, {{0xA0, {0x1B}}}},
    {-1, kDefault, kDefaultExtension, {{0xA0, {0x1B}}}},
    {2, kSpanish, kSpanishExtension, {}},
    {3, kPortuguese, kPortugueseExtension, {{0xB0, {0x24}}, {U'\f', {0x1B, 0x0A}}}},
};

std::u32string decode(const Bytes& gsm, int32_t language) {
  std::vector<wchar_t> out(gsm.size() + 1, L'#');
  const uint32_t count = CODE_Gsm7ToUcs2(out.data(), gsm.data(), gsm.size(), language);
  EXPECT_EQ(out.back(), L'#');
  return std::u32string(out.begin(), out.begin() + count);
}

Bytes encode(const std::wstring& text, int32_t language) {
  Bytes out(2 * text.size() + 1, 0xEE);
  const uint32_t count = CODE_Ucs2ToGsm7(out.data(), text.data(), text.size(), language);
  EXPECT_EQ(out.back(), 0xEE);
  return Bytes(out.begin(), out.begin() + count);
}

TEST(Gsm, DecodesEveryCode) {
  for (const Language& language : kLanguages) {
    for (unsigned code = 0; code < 256; ++code) {
      const auto byte = static_cast<uint8_t>(code);
      const auto cell = language.extension.find(byte);
      const char32_t plain = code == 0x1B ? U'\x1B' : code < 128 ? language.alphabet[code] : U' ';
      const char32_t pair = cell != language.extension.end() ? cell->second : U'\x1B';
      EXPECT_EQ(decode({byte}, language.id), std::u32string(1, plain)) << code;
      EXPECT_EQ(decode({0x1B, byte}, language.id), std::u32string(1, code < 128 ? pair : U' '))
          << "language " << language.id << " code " << code;
    }
  }
}

TEST(Gsm, EncodesEveryCodePoint) {
  for (const Language& language : kLanguages) {
    std::map<char32_t, Bytes> expected = language.also;
    for (unsigned code = 0; code < 128; ++code) {
      if (code == 0x1B && language.id < 2) continue;
      expected[language.alphabet[code]] = {static_cast<uint8_t>(code)};
    }
    for (const auto& [code, character] : language.extension) {
      if (language.id != 3 || code != 0x1A) expected.try_emplace(character, Bytes{0x1B, code});
    }
    for (char32_t point = 0; point <= 0x10000; ++point) {
      const auto found = expected.find(point);
      ASSERT_EQ(encode({static_cast<wchar_t>(point)}, language.id),
                found != expected.end() ? found->second : Bytes{0x20})
          << "language " << language.id << " U+" << std::hex << uint32_t{point};
    }
    EXPECT_EQ(encode({static_cast<wchar_t>(0xFFFFFFE9)}, language.id), Bytes{0x20});
  }
  const Bytes text = {0x61, 0x1B, 0x28, 0x1B, 0x65, 0x05, 0x20, 0x41, 0x1B};
  EXPECT_EQ(encode(L"a{€é中A\u00A0", 0), text);
  EXPECT_EQ(decode(text, 0), U"a{€é A\x1B") << "an escape at the end stands for itself";
}

TEST(Gsm, TablesOfIdentifiersAndCellsOutOfReach) {
  for (unsigned code = 0; code < 128; ++code) {
    const char32_t wanted = kIdentifier[code];
    const bool greek = wanted > 0xFF;
    EXPECT_EQ(GsmToUcs2[code], greek ? 0 : wanted) << code;
    const bool in_greek_table = code >= 0x10 && code <= 0x1A;
    EXPECT_EQ(in_greek_table ? GsmGclToUcs2[code - 0x10] : 0, greek ? wanted : 0) << code;
    const auto cell = kDefaultExtension.find(static_cast<uint8_t>(code));
    const bool mapped = cell != kDefaultExtension.end() && code != 0x0A;
    EXPECT_EQ(ExtendedGsmToUcs2[code], mapped ? cell->second : code == 0x1B ? 0x20 : 0) << code;
  }
  EXPECT_EQ(GsmToUcs2_DefaultAlphabet[0x1B], 0x20);
  EXPECT_EQ(GsmToUcs2_ExtendAlphabet[0x65], 0xA4);
  EXPECT_EQ(Ucs2_To_Gsm7_Alphabet_ASC[0xFF], 0x20);
  EXPECT_EQ(Get_Spanish_Gsm7_To_Ucs2_Extend(nullptr), Spanish_Gsm7_To_Ucs2_Extend);
  EXPECT_EQ(CODE_GetCodecTable(0)->pGsm7ToUcs2Extend, nullptr);
  EXPECT_EQ(CODE_GetCodecTable(3)->nExtendSize, 128u);
  for (const auto& [pairs, count] : {std::pair{Ucs2_To_Gsm7_Alphabet_UCS2, 10},
                                     {Ucs2_To_Gsm7_Extend, 10},
                                     {Spanish_Ucs2_To_Gsm7_Extend, 19},
                                     {Portuguese_Ucs2_To_Gsm7_Extend_ASC, 30},
                                     {Portuguese_Ucs2_To_Gsm7_Extend_UCS2, 8}}) {
    for (int i = 1; i < count; ++i) EXPECT_LT(pairs[i - 1].value, pairs[i].value) << i;
  }
}

TEST(Gsm, CheckIsStricterThanTheEncoder) {
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
      SCOPED_TRACE(testing::PrintToString(c.text) + " in " + std::to_string(language));
      const auto length = static_cast<int32_t>(wcslen(c.text));
      EXPECT_EQ(CODE_FindFromCodecTable(c.text, length, language), c.accepted[language]);
      int is_default = 7;
      const int pure = CODE_IsPureGsm7Code(c.text, language, &is_default);
      EXPECT_EQ(pure, c.accepted[0] | c.accepted[language]);
      EXPECT_EQ(is_default, c.accepted[0] ? 1 : 7);
    }
    uint32_t size = 0;
    EXPECT_EQ(CODE_PreEncodeGsmUcs(c.text, &size), 1);
    EXPECT_EQ(size, c.accepted[0] ? 2 * wcslen(c.text) : 4 * wcslen(c.text) + 2);
  }
}

TEST(Gsm, StepsAndLookUpsOfClients) {
  const CodecTable* t = CODE_GetCodecTable(0);
  const CodecTable* pt = CODE_GetCodecTable(3);
  const CodecPair* ext = Ucs2_To_Gsm7_Extend;  // form feed, caret, brace, ...
  const CodecPair* wide = Portuguese_Ucs2_To_Gsm7_Extend_UCS2;
  const auto less = CODE_FindFromCodecTable_Less;
  const auto more = CODE_FindFromCodecTable_More;
  const auto portuguese = CODE_FindFromCodecTable_Portuguese;
  const auto value = CODE_GetCodecTableValue;
  const auto cell = CODE_GetAlphabetTableValue;
  uint8_t out[4] = {0xEE, 0xEE, 0xEE, 0xEE};
  wchar_t text[4] = L"";
  uint32_t position = 1;
  int found = 0;
  // clang-format off
  for (const auto& [result, expected] : std::vector<std::pair<int32_t, int32_t>>{
           {less(L"a\f", 1, 0, 10, t, ext), 1}, {less(L"\f", 0, 1, 10, t, ext), 0},
           {less(L"\f", 0, 0, 0, t, ext), 1},  // one pair at least
           {less(L"{", 0, 0, 2, t, ext), 0}, {less(L" ", 0, 0, 10, t, ext), 1},
           {more(L"Δ", 0, 0, t), 1}, {more(L"Δ", 0, 1, t), 0},
           {portuguese(L"Δ", 0, 0, pt, wide), 1}, {portuguese(L"Δ", 0, 1, pt, wide), 0},
           {portuguese(L"Φ", 0, 9, pt, wide), 1}, {value(ext, 0, 0x7B, 10), 0x28},
           {value(ext, 0, 0x28, 10), 0x7B}, {value(ext, 1, 0x28, 10), 0x7B},
           {value(ext, 1, 0x7B, 10), -1}, {value(ext, 2, 0x28, 10), -1},
           {value(ext, -1, 0x28, 10), -1}, {value(ext, 0, 0x7B, 2), -1},
           {value(Spanish_Ucs2_To_Gsm7_Extend, 0, 0xA4, 19), 0x65},
           {value(Spanish_Ucs2_To_Gsm7_Extend, 0, 0x0D, 19), -1}, {value(wide, 0, 0x20AC, 8), 0x65},
           {value(Portuguese_Ucs2_To_Gsm7_Extend_ASC, 0, 0xEA, 30), 0x05},
           {cell(GsmToUcs2_DefaultAlphabet, 8, 128), 0xD2},
           {cell(GsmToUcs2_DefaultAlphabet, 128, 128), 128}, {cell(nullptr, 8, 128), 8},
           {less(nullptr, 0, 0, 10, t, ext), 0}, {less(L"\f", 0, -1, 10, t, ext), 0},
           {more(L"Δ", 0, 0, nullptr), 0}, {portuguese(nullptr, 0, 0, pt, wide), 0},
           {value(nullptr, 0, 0x7B, 10), -1}, {CODE_FindFromCodecTable(nullptr, 0, 0), 0},
           {CODE_FindFromCodecTable(L"中", -1, 0), 1}, {CODE_IsPureGsm7Code(nullptr, 0, &found), 0},
           {CODE_IsPureGsm7Code(L"a", 0, nullptr), 0}, {CODE_PreEncodeGsmUcs(L"a", nullptr), 1},
           {CODE_PreEncodeGsmUcs(nullptr, &position), 1}, {CODE_Gsm7ToUcs2(nullptr, out, 4, 0), -1},
           {CODE_Gsm7ToUcs2(text, nullptr, 4, 0), -1}, {CODE_Gsm7ToUcs2(text, out, 0, 0), -1},
           {CODE_Ucs2ToGsm7(nullptr, text, 4, 0), 0}, {CODE_Ucs2ToGsm7(out, nullptr, 4, 0), 0}}) {
    // clang-format on
    EXPECT_EQ(result, expected);
  }
  // The encoder's steps leave the position on the code.
  CODE_Find_Ucs2_To_Gsm7_Extend(2, t, 1, &position, out, L"a{", &found);
  CODE_Find_Ucs2_To_Gsm7_Extend(10, nullptr, 0, &position, out, L"{", &found);
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(nullptr, 0, &position, out, L"€", &found);
  EXPECT_EQ(found, 0);
  CODE_Find_Ucs2_To_Gsm7_Extend(10, t, 1, &position, out, L"a{", &found);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{0xEE, 0x1B, 0x28, 0xEE}));
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(wide, 0, &position, out, L"€", &found);
  EXPECT_EQ(Bytes(out, out + 4), (Bytes{0xEE, 0x1B, 0x1B, 0x65}));
  EXPECT_EQ(position, 3u);
}

}  // namespace
