// Every code point through a contact's text and back. tests/codec/ has every code of every GSM
// alphabet.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qalt_at/text.h"

namespace {

// What the GSM alphabet gives back of a character.
wchar_t through_gsm(wchar_t character) {
  uint8_t codes[2];
  wchar_t back[2];
  CODE_Gsm7ToUcs2(back, codes, CODE_Ucs2ToGsm7(codes, &character, 1, CODEC_LANG_DEFAULT),
                  CODEC_LANG_DEFAULT);
  return back[0];
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
      if (vendor != 0 && std::strlen(hex) <= 4) expected = through_gsm(point);
      if (compact && point < 0x80) expected = L" ";  // the grave accent has no GSM code
      if (point == 0xFFFF) expected.clear();         // ends an identifier
      ASSERT_EQ(std::wstring(back), expected) << hex;
    }
  }
  is808182CodeSupport = 0;
}

}  // namespace
