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

// The first code, or escape and code, of each character that a language decodes to.
std::map<wchar_t, std::string> written_forms(int32_t language) {
  std::map<wchar_t, std::string> forms;
  for (const std::string& head : {std::string(), std::string(1, kEscape)}) {
    for (int code = 0; code < 0x80; ++code) {
      const std::string codes = head + char(code);
      if (codes != std::string(1, kEscape)) forms.emplace(decoded(codes, language)[0], codes);
    }
  }
  return forms;
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
    const auto forms = written_forms(language);
    size_t carried = 0;
    std::wstring unwritten, changed;
    for (uint32_t point = 0; point <= 0xFFFF; ++point) {
      const auto character = wchar_t(point);
      const std::string codes = encoded(character, language);
      const bool space = codes == " " && character != L' ';
      const bool known = forms.count(character) != 0;
      carried += !space;
      if (space && known) unwritten += character;
      if (!space && decoded(codes, language) != std::wstring(1, character)) changed += character;
    }
    // Only what an undefined pair decodes to is known and cannot be written.
    EXPECT_EQ(unwritten, L"\x1B") << language;
    EXPECT_EQ(changed, changed_characters.at(language)) << language;
    std::printf("65536 code points in language %d: %zu written\n", language, carried);
  }
}

// A contact's text of one character, as a standard contact, a vendor's, and a standard one in the
// compact form, told by its eight digits.
TEST(AllCodePoints, ThroughTheContactsTextsAndBack) {
  size_t tagless = 0, tagged = 0, gsm = 0, compact = 0;
  for (const auto& [vendor, allow_compact] : {std::pair(0, 0), {1, 0}, {0, 1}}) {
    is808182CodeSupport = allow_compact;
    for (uint32_t point = 1; point <= 0xFFFF; ++point) {
      const wchar_t text[] = {wchar_t(point), 0};
      char hex[16];
      ASSERT_EQ(PB_EncodeItem(text, hex, vendor), 1) << point;
      const size_t digits = std::strlen(hex);
      const bool is_compact = vendor == 0 && digits == 8;
      const bool is_gsm = vendor != 0 && digits <= 4;
      ++(is_compact ? compact : is_gsm ? gsm : vendor != 0 ? tagged : tagless);
      wchar_t back[128];
      ASSERT_EQ(PB_DecodeItem(hex, back, vendor != 0 || is_compact), 1) << hex;
      std::wstring expected = text;
      if (is_gsm) expected = decoded(encoded(text[0], 0), 0);
      if (is_compact && point < 0x80) expected = L" ";  // the grave accent has no GSM code
      if (point == 0xFFFF) expected.clear();            // ends an identifier
      ASSERT_EQ(std::wstring(back), expected) << hex;
    }
  }
  is808182CodeSupport = 0;
  std::printf("texts of one character: %zu tagless, %zu tagged 80, %zu GSM, %zu tagged 81\n",
              tagless, tagged, gsm, compact);
  EXPECT_EQ(tagless + tagged + gsm + compact, 3 * 65535u);
}

// The character of one code, or of the code behind an escape, looked up in the public tables.
wchar_t alphabet_character(uint8_t code, int32_t language) {
  return CODE_GetCodecTable(language)->pGsm7ToUcs2Alphabet[code];
}

wchar_t escaped_character(uint8_t code, int32_t language) {
  if (code == 0x65) return 0x20AC;
  if (language == CODEC_LANG_DEFAULT) return GsmToUcs2_ExtendAlphabet[code];
  if (language == CODEC_LANG_PORTUGUESE) return Portuguese_Gsm7_To_Ucs2_Extend[code];
  for (const CodecPair& pair : Spanish_Gsm7_To_Ucs2_Extend) {
    if (pair.key == code) return wchar_t(pair.value);
  }
  return kEscape;
}

TEST(AllPairsOfCodes, ThroughTheGsmDecoder) {
  for (const int32_t language : kLanguages) {
    for (int first = 0; first < 0x80; ++first) {
      for (int second = 0; second < 0x80; ++second) {
        std::wstring expected;
        if (first == kEscape) {
          expected = {escaped_character(uint8_t(second), language)};
        } else {
          expected = {
              alphabet_character(uint8_t(first), language),
              second == kEscape ? wchar_t(kEscape) : alphabet_character(uint8_t(second), language)};
        }
        const std::string codes = {char(first), char(second)};
        const std::wstring text = decoded(codes, language);
        ASSERT_EQ(text, expected) << language << " " << first << " " << second;
      }
    }
    std::printf("16384 pairs of codes in language %d\n", language);
  }
}

TEST(AllPairsOfCodes, ThroughTheIdentifierDecoder) {
  const auto single = [](uint8_t code) -> wchar_t {
    if (code == kEscape) return L' ';
    return GsmToUcs2[code] != 0 ? GsmToUcs2[code] : GsmGclToUcs2[code - 0x10];
  };
  for (int first = 0; first < 0x80; ++first) {
    for (int second = 0; second < 0x80; ++second) {
      const uint8_t id[] = {uint8_t(first), uint8_t(second)};
      uint16_t out[3];
      const uint16_t count = CODE_utAlphaIdGsmToUcs2(out, 3, id, 2);
      const uint16_t mapped = first == kEscape ? ExtendedGsmToUcs2[second] : 0;
      const std::wstring expected =
          mapped != 0 ? std::wstring{mapped} : std::wstring{single(id[0]), single(id[1])};
      ASSERT_EQ(std::wstring(out, out + count), expected) << first << " " << second;
    }
  }
  std::printf("16384 pairs of codes in identifiers\n");
}

}  // namespace
