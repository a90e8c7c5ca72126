// Every code of every alphabet and extension, in both directions, against the alphabets as texts.
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
  EXPECT_EQ(result.size(), characters.size());
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
  std::map<char32_t, uint8_t> also;  // encoded without being decoded
};
const Language kLanguages[] = {
    {0, kDefault, kDefaultExtension, {{0xA0, 0x1B}}},
    {1, kDefault, kDefaultExtension, {{0xA0, 0x1B}}},
    {-1, kDefault, kDefaultExtension, {{0xA0, 0x1B}}},
    {2, kSpanish, kSpanishExtension, {}},
    {3, kPortuguese, kPortugueseExtension, {{0xB0, 0x24}}},
};

std::u32string decode(const Bytes& gsm, int32_t language) {
  std::vector<wchar_t> out(gsm.size() + 1, L'#');
  const uint32_t count = CODE_Gsm7ToUcs2(out.data(), gsm.data(), gsm.size(), language);
  EXPECT_EQ(out.back(), L'#');
  return std::u32string(out.begin(), out.begin() + count);
}

Bytes encode(wchar_t character, int32_t language) {
  uint8_t out[3] = {0xEE, 0xEE, 0xEE};
  const uint32_t count = CODE_Ucs2ToGsm7(out, &character, 1, language);
  EXPECT_EQ(out[2], 0xEE);
  return Bytes(out, out + count);
}

TEST(Tables, DecodeEveryCode) {
  for (const Language& language : kLanguages) {
    ASSERT_EQ(language.alphabet.size(), 128u);
    for (unsigned code = 0; code < 256; ++code) {
      SCOPED_TRACE(testing::Message() << "language " << language.id << " code " << code);
      const auto byte = static_cast<uint8_t>(code);
      const char32_t plain = code == 0x1B ? U'\x1B' : code < 128 ? language.alphabet[code] : U' ';
      EXPECT_EQ(decode({byte}, language.id), std::u32string(1, plain));

      const auto cell = language.extension.find(byte);
      const char32_t escaped = code >= 128                        ? U' '
                               : cell != language.extension.end() ? cell->second
                                                                  : U'\x1B';
      EXPECT_EQ(decode({0x1B, byte}, language.id), std::u32string(1, escaped));
    }
  }
}

TEST(Tables, EncodeEveryCodePoint) {
  for (const Language& language : kLanguages) {
    std::map<char32_t, Bytes> expected;
    for (const auto& [character, code] : language.also) expected[character] = {code};
    for (unsigned code = 0; code < 128; ++code) {
      if (code == 0x1B && language.id != 2 && language.id != 3) continue;
      expected[language.alphabet[code]] = {static_cast<uint8_t>(code)};
    }
    for (const auto& [code, character] : language.extension) {
      if (language.id == 3 && code == 0x1A) continue;
      expected.try_emplace(character, Bytes{0x1B, code});
    }
    if (language.id == 3) expected[U'\f'] = {0x1B, 0x0A};
    for (char32_t point = 0; point <= 0x10000; ++point) {
      const auto found = expected.find(point);
      const Bytes wanted = found != expected.end() ? found->second : Bytes{0x20};
      ASSERT_EQ(encode(static_cast<wchar_t>(point), language.id), wanted)
          << "language " << language.id << " U+" << std::hex << uint32_t{point};
    }
    EXPECT_EQ(encode(static_cast<wchar_t>(0xFFFFFFE9), language.id), Bytes{0x20});
  }
}

TEST(Tables, IdentifierTables) {
  for (unsigned code = 0; code < 128; ++code) {
    const char32_t wanted = kIdentifier[code];
    const bool greek = wanted > 0xFF;
    EXPECT_EQ(GsmToUcs2[code], greek ? 0 : wanted) << code;
    if (code >= 0x10 && code <= 0x1A) {
      EXPECT_EQ(GsmGclToUcs2[code - 0x10], greek ? wanted : 0);
    }

    const auto cell = kDefaultExtension.find(static_cast<uint8_t>(code));
    const bool mapped = cell != kDefaultExtension.end() && code != 0x0A;
    EXPECT_EQ(ExtendedGsmToUcs2[code], mapped ? cell->second : code == 0x1B ? 0x20 : 0) << code;
  }
}

// Cells and pairs that no conversion reaches, and the order of the pairs.
TEST(Tables, CellsOutOfReach) {
  EXPECT_EQ(GsmToUcs2_DefaultAlphabet[0x1B], 0x20);
  EXPECT_EQ(GsmToUcs2_ExtendAlphabet[0x65], 0xA4);
  EXPECT_EQ(CODE_GetCodecTableValue(Spanish_Ucs2_To_Gsm7_Extend, 0, 0xA4, 19), 0x65);
  EXPECT_EQ(CODE_GetCodecTableValue(Spanish_Ucs2_To_Gsm7_Extend, 0, 0x0D, 19), -1);
  EXPECT_EQ(CODE_GetCodecTableValue(Portuguese_Ucs2_To_Gsm7_Extend_ASC, 0, 0xEA, 30), 0x05);
  EXPECT_EQ(CODE_GetCodecTableValue(Portuguese_Ucs2_To_Gsm7_Extend_UCS2, 0, 0x20AC, 8), 0x65);
  EXPECT_EQ(Ucs2_To_Gsm7_Alphabet_ASC[0xFF], 0x20);
  const auto ordered = [](const CodecPair* pairs, int count) {
    for (int i = 1; i < count; ++i) EXPECT_LT(pairs[i - 1].value, pairs[i].value) << i;
  };
  ordered(Ucs2_To_Gsm7_Alphabet_UCS2, 10);
  ordered(Ucs2_To_Gsm7_Extend, 10);
  ordered(Spanish_Ucs2_To_Gsm7_Extend, 19);
  ordered(Portuguese_Ucs2_To_Gsm7_Extend_ASC, 30);
  ordered(Portuguese_Ucs2_To_Gsm7_Extend_UCS2, 8);
}

template <typename T, size_t N>
void expect_accessor(const T* (*accessor)(uint32_t*), const T (&table)[N]) {
  uint32_t stored = 0;
  EXPECT_EQ(accessor(&stored), table);
  EXPECT_EQ(stored, N);
  EXPECT_EQ(accessor(nullptr), table);
}

TEST(Tables, AccessorsAndRecords) {
// clang-format off
#define CHECK(name) expect_accessor(Get_##name, name);
  CHECK(GsmToUcs2_DefaultAlphabet) CHECK(Ucs2_To_Gsm7_Alphabet_ASC)
  CHECK(Ucs2_To_Gsm7_Alphabet_UCS2) CHECK(Ucs2_To_Gsm7_Extend)
  CHECK(Spanish_Gsm7_To_Ucs2_Alphabet) CHECK(Spanish_Gsm7_To_Ucs2_Extend)
  CHECK(Spanish_Ucs2_To_Gsm7_Alphabet_ASC) CHECK(Spanish_Ucs2_To_Gsm7_Alphabet_UCS2)
  CHECK(Spanish_Ucs2_To_Gsm7_Extend) CHECK(Portuguese_Gsm7_To_Ucs2_Alphabet)
  CHECK(Portuguese_Gsm7_To_Ucs2_Extend) CHECK(Portuguese_Ucs2_To_Gsm7_Alphabet_ASC)
  CHECK(Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2) CHECK(Portuguese_Ucs2_To_Gsm7_Extend_ASC)
  CHECK(Portuguese_Ucs2_To_Gsm7_Extend_UCS2)
#undef CHECK
      // clang-format on
      const CodecTable* standard = CODE_GetCodecTable(0);
  for (int32_t other : {1, 4, -1}) EXPECT_EQ(CODE_GetCodecTable(other), standard);
  EXPECT_EQ(standard->pGsm7ToUcs2Extend, nullptr);
  EXPECT_EQ(standard->nExtendSize, 10u);
  EXPECT_EQ(CODE_GetCodecTable(2)->nExtendSize, 19u);
  EXPECT_EQ(CODE_GetCodecTable(3)->pUcs2ToGsm7ExtendUcs2, Portuguese_Ucs2_To_Gsm7_Extend_UCS2);
  EXPECT_EQ(CODE_GetCodecTable(3)->nExtendSize, 128u);
}

TEST(Tables, Lookups) {
  EXPECT_EQ(CODE_GetAlphabetTableValue(GsmToUcs2_DefaultAlphabet, 0x08, 128), 0xD2u);
  EXPECT_EQ(CODE_GetAlphabetTableValue(GsmToUcs2_DefaultAlphabet, 200, 128), 200u);
  EXPECT_EQ(CODE_GetAlphabetTableValue(GsmToUcs2_DefaultAlphabet, 128, 128), 128u);
  EXPECT_EQ(CODE_GetAlphabetTableValue(nullptr, 8, 128), 8u);
  const struct {
    int32_t mode;
    uint32_t item;
    int32_t count;
    int32_t result;
  } cases[] = {{0, 0x7B, 10, 0x28}, {0, 0x28, 10, 0x7B}, {1, 0x28, 10, 0x7B}, {1, 0x7B, 10, -1},
               {2, 0x28, 10, -1},   {0, 0x7B, 2, -1},    {0, 0x7B, -1, -1},   {-1, 0x28, 10, -1}};
  for (const auto& c : cases) {
    EXPECT_EQ(CODE_GetCodecTableValue(Ucs2_To_Gsm7_Extend, c.mode, c.item, c.count), c.result);
  }
  EXPECT_EQ(CODE_GetCodecTableValue(nullptr, 0, 0x7B, 10), -1);
}

}  // namespace
