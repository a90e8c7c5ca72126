// Every code point through the encoders and back, and every pair of GSM codes through the decoders,
// in every language.
#include <gtest/gtest.h>

#include <cstring>
#include <map>
#include <string>

#include "qalt_at/text.h"

namespace {

constexpr int32_t kLanguages[] = {CODEC_LANG_DEFAULT, CODEC_LANG_SPANISH, CODEC_LANG_PORTUGUESE};
constexpr uint8_t kEscape = 0x1B;

std::string encoded(wchar_t character, int32_t language) {
  uint8_t bytes[2];
  return {bytes, bytes + CODE_Ucs2ToGsm7(bytes, &character, 1, language)};
}

std::wstring decoded(const std::string& codes, int32_t language) {
  std::wstring text(codes.size(), L'#');
  text.resize(CODE_Gsm7ToUcs2(text.data(), reinterpret_cast<const uint8_t*>(codes.data()),
                              uint32_t(codes.size()), language));
  return text;
}

// The characters that a language decodes to: of a code, of an escape and a code.
std::wstring known_characters(int32_t language) {
  std::wstring known;
  for (int code = 0; code < 0x80; ++code) {
    if (code != kEscape) known += decoded({char(code)}, language);
    known += decoded({kEscape, char(code)}, language);
  }
  return known;
}

TEST(AllCodePoints, ThroughTheGsmEncoderAndBack) {
  // What comes back as another character: the no-break space is written as the escape's own code;
  // in Portuguese the form feed's pair decodes to a line feed and the degree sign shares a code.
  const std::map<int32_t, std::wstring> changed_characters = {
      {CODEC_LANG_DEFAULT, L"\xA0"},
      {CODEC_LANG_SPANISH, L"\xA0"},
      {CODEC_LANG_PORTUGUESE, L"\f\xA0\xB0"},
  };
  for (const int32_t language : kLanguages) {
    const std::wstring known = known_characters(language);
    std::wstring unwritten, changed;
    for (wchar_t character = 0; character <= 0xFFFF; ++character) {
      const std::string codes = encoded(character, language);
      const bool written = codes != " " || character == L' ';
      if (!written && known.find(character) != known.npos) unwritten += character;
      if (written && decoded(codes, language) != std::wstring(1, character)) changed += character;
    }
    // Only what an undefined pair decodes to is known and cannot be written.
    EXPECT_EQ(unwritten, L"\x1B") << language;
    EXPECT_EQ(changed, changed_characters.at(language)) << language;
  }
}

// A contact's text of one character, as a standard contact, a vendor's, and a standard one in the
// compact form, told by its eight digits.
TEST(AllCodePoints, ThroughTheContactsTextsAndBack) {
  for (const auto& [vendor, allow_compact] : {std::pair(0, 0), {1, 0}, {0, 1}}) {
    is808182CodeSupport = allow_compact;
    for (wchar_t point = 1; point <= 0xFFFF; ++point) {
      const wchar_t text[] = {point, 0};
      char hex[16];
      ASSERT_EQ(PB_EncodeItem(text, hex, vendor), 1) << hex;
      const bool compact = vendor == 0 && std::strlen(hex) == 8;
      wchar_t back[128];
      ASSERT_EQ(PB_DecodeItem(hex, back, vendor != 0 || compact), 1) << hex;
      std::wstring expected = text;
      if (vendor != 0 && std::strlen(hex) <= 4) expected = decoded(encoded(point, 0), 0);
      if (compact && point < 0x80) expected = L" ";  // the grave accent has no GSM code
      if (point == 0xFFFF) expected.clear();         // ends an identifier
      ASSERT_EQ(std::wstring(back), expected) << hex;
    }
  }
  is808182CodeSupport = 0;
}

// The character behind an escape, looked up in the public tables.
wchar_t escaped_character(uint8_t code, int32_t language) {
  if (code == 0x65) return 0x20AC;
  if (language == CODEC_LANG_DEFAULT) return GsmToUcs2_ExtendAlphabet[code];
  if (language == CODEC_LANG_PORTUGUESE) return Portuguese_Gsm7_To_Ucs2_Extend[code];
  for (const CodecPair& pair : Spanish_Gsm7_To_Ucs2_Extend) {
    if (pair.key == code) return wchar_t(pair.value);
  }
  return kEscape;
}

TEST(AllPairsOfCodes, ThroughTheDecoders) {
  for (int pair = 0; pair < 0x4000; ++pair) {
    const auto first = uint8_t(pair >> 7), second = uint8_t(pair & 0x7F);
    const auto of_both = [=](auto single, wchar_t mapped) {
      return mapped != 0 ? std::wstring{mapped} : std::wstring{single(first), single(second)};
    };
    for (const int32_t language : kLanguages) {
      const uint16_t* alphabet = CODE_GetCodecTable(language)->pGsm7ToUcs2Alphabet;
      const auto single = [=](uint8_t code) -> wchar_t {
        return code == kEscape ? kEscape : alphabet[code];
      };
      const wchar_t mapped = first == kEscape ? escaped_character(second, language) : 0;
      const std::wstring text = decoded({char(first), char(second)}, language);
      ASSERT_EQ(text, of_both(single, mapped)) << language << " " << pair;
    }
    const auto single = [](uint8_t code) -> wchar_t {
      if (code == kEscape) return L' ';
      return GsmToUcs2[code] != 0 ? GsmToUcs2[code] : GsmGclToUcs2[code - 0x10];
    };
    const uint8_t id[] = {first, second};
    uint16_t out[3];
    const uint16_t count = CODE_utAlphaIdGsmToUcs2(out, 3, id, 2);
    const wchar_t mapped = first == kEscape ? ExtendedGsmToUcs2[second] : 0;
    ASSERT_EQ(std::wstring(out, out + count), of_both(single, mapped)) << pair;
  }
}

}  // namespace
