// GSM bytes to wide text and back (3GPP TS 23.038), with the tables of a language.
#include <iterator>

#include "codec/table_access.h"
#include "qalt_at/text.h"

static_assert(sizeof(wchar_t) == 4, "wide text is 32-bit");

namespace {

constexpr uint8_t kEuroCode = 0x65;
constexpr uint32_t kEuro = 0x20AC;
constexpr uint32_t kSpace = 0x20;

// The character of the code behind an escape.
uint32_t escaped_character(uint8_t code, int32_t language, const CodecTable& table) {
  if (code >= 0x80) return kSpace;
  if (code == kEuroCode) return kEuro;
  if (language == CODEC_LANG_PORTUGUESE) {
    return qalt::indexed_value(table.pGsm7ToUcs2Extend, code, table.nExtendSize);
  }
  if (language == CODEC_LANG_SPANISH) {
    const CodecPair* pair = qalt::find_key(Spanish_Gsm7_To_Ucs2_Extend, 0,
                                           std::size(Spanish_Gsm7_To_Ucs2_Extend), code);
    return pair != nullptr ? pair->value : qalt::kUndefined;
  }
  return GsmToUcs2_ExtendAlphabet[code];
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

// Encodes a character that has no direct code. Returns the position behind the last byte written.
uint32_t encode_by_pairs(uint8_t* out, uint32_t position, const wchar_t* text, uint32_t index,
                         int32_t language, const CodecTable& table) {
  const uint32_t character = qalt::code_point(text[index]);
  int found = 0;
  if (character < qalt::kFirstPairPoint) {
    const uint32_t count = language == CODEC_LANG_PORTUGUESE
                               ? uint32_t{std::size(Portuguese_Ucs2_To_Gsm7_Extend_ASC)}
                               : table.nExtendSize;
    CODE_Find_Ucs2_To_Gsm7_Extend(count, &table, index, &position, out, text, &found);
  } else if (const CodecPair* pair = qalt::find_key(table.pUcs2ToGsm7AlphabetUcs2, 0,
                                                    table.nAlphabetUcs2Size, character)) {
    out[position] = static_cast<uint8_t>(pair->value);
    found = 1;
  } else if (language == CODEC_LANG_PORTUGUESE) {
    CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(Portuguese_Ucs2_To_Gsm7_Extend_UCS2, index, &position, out,
                                       text, &found);
  }
  if (found == 0 && character == kEuro) {
    out[position++] = qalt::kEscape;
    out[position] = kEuroCode;
  } else if (found == 0) {
    out[position] = kSpace;
  }
  return position + 1;
}

}  // namespace

uint32_t CODE_Gsm7ToUcs2(wchar_t* pOut, const uint8_t* pGsm, uint32_t nLength, int32_t language) {
  if (pOut == nullptr || pGsm == nullptr || nLength == 0) return UINT32_MAX;
  const CodecTable& table = *CODE_GetCodecTable(language);
  const uint16_t* const alphabet = table.pGsm7ToUcs2Alphabet;
  const uint32_t size = table.nGsm7ToUcs2AlphabetSize;
  uint32_t count = 0;
  for (uint32_t i = 0; i < nLength; ++i) {
    const uint8_t code = pGsm[i];
    uint32_t character;
    if (code == qalt::kEscape) {
      const bool last = ++i == nLength;
      character = last ? qalt::kEscape : escaped_character(pGsm[i], language, table);
    } else {
      character = code < 0x80 ? qalt::indexed_value(alphabet, code, size) : kSpace;
    }
    pOut[count++] = static_cast<wchar_t>(character);
  }
  return count;
}

uint32_t CODE_Ucs2ToGsm7(uint8_t* pOut, const wchar_t* pText, uint32_t nCount, int32_t language) {
  if (pOut == nullptr || pText == nullptr) return 0;
  const CodecTable& table = *CODE_GetCodecTable(language);
  const uint8_t* const direct = table.pUcs2ToGsm7AlphabetAsc;
  uint32_t position = 0;
  for (uint32_t i = 0; i < nCount; ++i) {
    const uint32_t character = qalt::code_point(pText[i]);
    if (qalt::has_direct_code(direct, character)) {
      pOut[position++] = direct[character];
    } else {
      position = encode_by_pairs(pOut, position, pText, i, language, table);
    }
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
