// GSM text and UCS2: every code of every alphabet and extension in both directions, against the
// alphabets as texts; the check for pure GSM texts. That texts are their characters' codes in a row
// is shown by fuzz.gsm.
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
const Cells kIdentifierExtension = cells("\x14\x1B()/<=>@e", U"^ {}\\[~]|€");
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
      SCOPED_TRACE(uint32_t{point});
      const wchar_t text[] = {static_cast<wchar_t>(point)};
      const auto found = expected.find(point);
      const bool written = found != expected.end();
      ASSERT_EQ(encode({text[0]}, language.id), written ? found->second : Bytes{0x20});
      ASSERT_TRUE(written || CODE_FindFromCodecTable(text, 1, language.id) == 0);
    }
    EXPECT_EQ(encode({static_cast<wchar_t>(0xFFFFFFE9)}, language.id), Bytes{0x20});
  }
  EXPECT_EQ(decode({0x41, 0x1B}, 0), U"A\x1B") << "an escape at the end stands for itself";
}

TEST(Gsm, DecodesEveryCodeOfAnIdentifier) {
  const auto decoded = [](const Bytes& id) {
    uint16_t out[2] = {};
    const uint16_t count = CODE_utAlphaIdGsmToUcs2(out, 2, id.data(), uint16_t(id.size()));
    return std::u32string(out, out + count);
  };
  for (uint8_t code = 0; code < 128; ++code) {
    const auto cell = kIdentifierExtension.find(code);
    const std::u32string pair = cell != kIdentifierExtension.end()
                                    ? std::u32string{cell->second}
                                    : std::u32string{U' ', kIdentifier[code]};
    EXPECT_EQ(decoded({code}), std::u32string{kIdentifier[code]}) << int{code};
    EXPECT_EQ(decoded({0x1B, code}), pair) << int{code};
  }
}

TEST(Gsm, CheckIsStricterThanTheEncoder) {
  const struct {
    const wchar_t* text;
    int accepted[4];  // by language; 1 is the default's record
  } cases[] = {
      {L"", {1, 1, 1, 1}},       {L"abc{}€", {1, 1, 1, 1}}, {L"ç", {0, 0, 1, 1}},
      {L"Ç", {1, 1, 0, 1}},      {L"á", {0, 0, 0, 1}},      {L"ò", {0, 0, 1, 0}},
      {L"\u00A0", {1, 1, 1, 1}}, {L"Ξ", {1, 1, 1, 0}},      {L"∞", {0, 0, 0, 1}},
      {L"aaa中", {0, 0, 0, 0}},  {L"\x1B", {0, 0, 0, 0}},   {L"`", {0, 0, 0, 1}},
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

}  // namespace
