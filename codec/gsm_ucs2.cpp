// GSM bytes to wide text and back (3GPP TS 23.038), with the tables of a language.
#include <iterator>

#include "codec/language_tables.h"
#include "codec/table_access.h"
#include "qalt_at/text.h"

static_assert(sizeof(wchar_t) == 4, "wide text is 32-bit");

namespace {

constexpr uint32_t kSpace = 0x20;

const uint16_t* extension_of(int32_t language) {
  if (language == CODEC_LANG_PORTUGUESE) return Portuguese_Gsm7_To_Ucs2_Extend;
  return language == CODEC_LANG_SPANISH ? qalt::kSpanishExtension.data() : GsmToUcs2_ExtendAlphabet;
}

const qalt::EncodeMap& encode_map_of(int32_t language) {
  if (language == CODEC_LANG_PORTUGUESE) return qalt::kPortugueseEncodeMap;
  return language == CODEC_LANG_SPANISH ? qalt::kSpanishEncodeMap : qalt::kDefaultEncodeMap;
}

// The character of the code behind an escape.
uint32_t escaped_character(uint8_t code, const uint16_t* extension) {
  if (code >= 0x80) return kSpace;
  return code == qalt::kEuroCode ? qalt::kEuro : extension[code];
}

// Writes escape and code when the character is a key of the pairs; the position stays on the code.
void find_extend(const CodecPair* pairs, uint32_t count, uint32_t character, uint32_t* position,
                 uint8_t* out, int* found) {
  const CodecPair* pair = qalt::find_key(pairs, 0, count, character);
  if (pair == nullptr) return;
  out[(*position)++] = qalt::kEscape;
  out[*position] = static_cast<uint8_t>(pair->value);
  *found = 1;
}

}  // namespace

uint32_t CODE_Gsm7ToUcs2(wchar_t* pOut, const uint8_t* pGsm, uint32_t nLength, int32_t language) {
  if (pOut == nullptr || pGsm == nullptr || nLength == 0) return UINT32_MAX;
  const uint16_t* const alphabet = CODE_GetCodecTable(language)->pGsm7ToUcs2Alphabet;
  const uint16_t* const extension = extension_of(language);
  uint32_t count = 0;
  for (uint32_t i = 0; i < nLength; ++i) {
    const uint8_t code = pGsm[i];
    uint32_t character;
    if (code == qalt::kEscape) {
      const bool last = ++i == nLength;
      character = last ? qalt::kEscape : escaped_character(pGsm[i], extension);
    } else {
      character = code < 0x80 ? alphabet[code] : kSpace;
    }
    pOut[count++] = static_cast<wchar_t>(character);
  }
  return count;
}

uint32_t CODE_Ucs2ToGsm7(uint8_t* pOut, const wchar_t* pText, uint32_t nCount, int32_t language) {
  if (pOut == nullptr || pText == nullptr) return 0;
  const qalt::EncodeMap& map = encode_map_of(language);
  uint32_t position = 0;
  for (uint32_t i = 0; i < nCount; ++i) {
    uint8_t code = map[qalt::place_of(qalt::code_point(pText[i]))];
    if (code >= qalt::kEscaped) {
      pOut[position++] = qalt::kEscape;
      code -= qalt::kEscaped;
    }
    pOut[position++] = code;
  }
  return position;
}

void CODE_Find_Ucs2_To_Gsm7_Extend(uint32_t nPairs, const CodecTable* pTable, uint32_t nIndex,
                                   uint32_t* pPosition, uint8_t* pOut, const wchar_t* pText,
                                   int* pFound) {
  if (pTable == nullptr || pPosition == nullptr || pOut == nullptr || pText == nullptr ||
      pFound == nullptr) {
    return;
  }
  find_extend(pTable->pUcs2ToGsm7ExtendAsc, nPairs, qalt::code_point(pText[nIndex]), pPosition,
              pOut, pFound);
}

void CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(const CodecPair* pPairs, uint32_t nIndex,
                                        uint32_t* pPosition, uint8_t* pOut, const wchar_t* pText,
                                        int* pFound) {
  if (pPairs == nullptr || pPosition == nullptr || pOut == nullptr || pText == nullptr ||
      pFound == nullptr) {
    return;
  }
  find_extend(pPairs, std::size(Portuguese_Ucs2_To_Gsm7_Extend_UCS2),
              qalt::code_point(pText[nIndex]), pPosition, pOut, pFound);
}
