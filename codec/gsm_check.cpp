// Whether a text can be written in GSM 7-bit, and what that means for its size.
#include <cwchar>
#include <iterator>

#include "codec/language_tables.h"
#include "codec/table_access.h"
#include "qalt_at/text.h"

namespace {

// The extension of the check. It is the default one for Spanish too, on purpose: a text is called
// Spanish only for what the Spanish alphabet adds.
struct Extension {
  const CodecPair* pairs;
  int32_t count;
};

Extension check_extension(int32_t language) {
  if (language == CODEC_LANG_PORTUGUESE) {
    return {Portuguese_Ucs2_To_Gsm7_Extend_ASC, std::size(Portuguese_Ucs2_To_Gsm7_Extend_ASC)};
  }
  return {Ucs2_To_Gsm7_Extend, std::size(Ucs2_To_Gsm7_Extend)};
}

bool accepts(const wchar_t* text, int32_t index, int32_t language, const CodecTable* table,
             const Extension& extension) {
  const uint32_t character = qalt::code_point(text[index]);
  if (qalt::has_direct_code(table->pUcs2ToGsm7AlphabetAsc, character) || character == qalt::kEuro) {
    return true;
  }
  if (character < qalt::kFirstPairPoint) {
    return CODE_FindFromCodecTable_Less(text, index, 0, extension.count, table, extension.pairs);
  }
  if (language == CODEC_LANG_PORTUGUESE) {
    return CODE_FindFromCodecTable_Portuguese(text, index, 0, table,
                                              Portuguese_Ucs2_To_Gsm7_Extend_UCS2);
  }
  return CODE_FindFromCodecTable_More(text, index, 0, table);
}

}  // namespace

int32_t CODE_FindFromCodecTable(const wchar_t* pText, int32_t nCount, int32_t language) {
  if (pText == nullptr) return 0;
  const CodecTable* table = CODE_GetCodecTable(language);
  const Extension extension = check_extension(language);
  for (int32_t i = 0; i < nCount; ++i) {
    if (!accepts(pText, i, language, table, extension)) return 0;
  }
  return 1;
}

int32_t CODE_FindFromCodecTable_Less(const wchar_t* pText, int32_t nIndex, int32_t nStart,
                                     int32_t nPairs, const CodecTable* pTable,
                                     const CodecPair* pExtend) {
  if (pText == nullptr || pTable == nullptr || pExtend == nullptr || nStart < 0) return 0;
  const uint32_t character = qalt::code_point(pText[nIndex]);
  if (qalt::has_direct_code(pTable->pUcs2ToGsm7AlphabetAsc, character)) return 1;
  const auto start = static_cast<uint32_t>(nStart);
  const uint32_t end = nPairs > nStart ? static_cast<uint32_t>(nPairs) : start + 1;
  return qalt::find_key(pExtend, start, end, character) != nullptr;
}

int32_t CODE_FindFromCodecTable_More(const wchar_t* pText, int32_t nIndex, int32_t nStart,
                                     const CodecTable* pTable) {
  if (pText == nullptr || pTable == nullptr || nStart < 0) return 0;
  return qalt::find_key(pTable->pUcs2ToGsm7AlphabetUcs2, static_cast<uint32_t>(nStart),
                        pTable->nAlphabetUcs2Size, qalt::code_point(pText[nIndex])) != nullptr;
}

int32_t CODE_FindFromCodecTable_Portuguese(const wchar_t* pText, int32_t nIndex, int32_t nStart,
                                           const CodecTable* pTable, const CodecPair* pExtend) {
  if (pExtend == nullptr || nStart < 0) return 0;
  if (CODE_FindFromCodecTable_More(pText, nIndex, nStart, pTable)) return 1;
  return pText != nullptr && pTable != nullptr &&
         qalt::find_key(pExtend, 0, std::size(Portuguese_Ucs2_To_Gsm7_Extend_UCS2),
                        qalt::code_point(pText[nIndex])) != nullptr;
}

int32_t CODE_IsPureGsm7Code(const wchar_t* pText, int32_t language, int* pIsDefaultGsm7) {
  if (pText == nullptr || pIsDefaultGsm7 == nullptr) return 0;
  const auto length = static_cast<int32_t>(std::wcslen(pText));
  if (CODE_FindFromCodecTable(pText, length, CODEC_LANG_DEFAULT)) {
    *pIsDefaultGsm7 = 1;
    return 1;
  }
  return language == CODEC_LANG_DEFAULT ? 0 : CODE_FindFromCodecTable(pText, length, language);
}

int32_t CODE_PreEncodeGsmUcs(const wchar_t* pText, uint32_t* pSize) {
  if (pText == nullptr || pSize == nullptr) return 1;
  const auto length = static_cast<uint32_t>(std::wcslen(pText));
  int is_default = 0;
  *pSize =
      CODE_IsPureGsm7Code(pText, CODEC_LANG_DEFAULT, &is_default) ? 2 * length : 4 * length + 2;
  return 1;
}
