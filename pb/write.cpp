// Writing and deleting one contact.
#include <algorithm>
#include <cstring>

#include "common/text.h"
#include "pb/engine.h"
#include "pb/fields.h"

namespace qalt {
namespace {

int refused_write(int result) {
  QALT_LOG_ERROR("QL_setPhonebookEntry output para result is %d\n", result);
  return result;
}

int finished_write(int result) {
  QALT_LOG_DEBUG("QL_setPhonebookEntry output para result is %d\n", result);
  return result;
}

bool has_fields(const PhonebookEntry& entry) {
  return entry.pFieldList != nullptr || entry.FieldCount <= 0;
}

bool in_index_range(int index) {
  return index >= g_module_param.MinIndex && index <= g_module_param.MaxIndex;
}

// Copies one text member into a write record; false when the record cannot hold it whole.
template <size_t kTo, size_t kFrom>
bool copy_member(char (&to)[kTo], const char (&from)[kFrom]) {
  const size_t length = bounded_length(from, kFrom);
  return copy_text(to, kTo, from, length) == length;
}

int send_vendor_record(const JcpbwRecord& record) {
  const auto write = on_platform(PB_PLATFORM_4) ? SCPBW_Set : JCPBW_Set;
  return write(&record) == PB_OK ? PB_OK : PB_ERR_EXT_COMMAND;
}

}  // namespace
}  // namespace qalt

using namespace qalt;

int QL_setPhonebookEntry(int storageType, PhonebookEntry* pEntry) {
  QALT_LOG_DEBUG("QL_setPhonebookEntry input para storageType is %d\n", storageType);
  if (pEntry == nullptr || storageType != kSimStorage || !has_fields(*pEntry)) {
    return refused_write(PB_ERR_PARAM);
  }
  _GetPhonebookStorebility(storageType, &g_module_param);
  if (g_module_param.EntriesUsed > g_module_param.MaxEntries) return refused_write(PB_ERR_FULL);

  if (pEntry->storageIndex == 0) {
    const int free_index = PBB_GetFirstEmptyIndex();
    if (free_index == -1) return finished_write(PB_ERR_FULL);
    pEntry->storageIndex = free_index;
  } else if (!in_index_range(pEntry->storageIndex)) {
    return refused_write(PB_ERR_PARAM);
  }

  PbItem item = {};
  _TranslatePbEntryToPbItem(&item, pEntry);
  const int result = uses_vendor_family() ? _WriteQaltExtendContact(item, pEntry->storageIndex)
                                          : _WriteStdContact(item, pEntry->storageIndex);
  if (result == PB_OK) PBB_WritePB(&item);
  return finished_write(result);
}

int _TranslatePbEntryToPbItem(PbItem* pItem, const PhonebookEntry* pEntry) {
  if (pItem == nullptr || pEntry == nullptr || !has_fields(*pEntry)) return PB_ERR_PARAM;
  pItem->storageIndex = pEntry->storageIndex;
  pItem->coding = pEntry->coding;
  for (int32_t k = 0; k < pEntry->FieldCount; ++k) {
    _TranslateFieldToPbItem(pItem, &pEntry->pFieldList[k]);
  }
  return PB_OK;
}

void _TranslateFieldToPbItem(PbItem* pItem, const PbField* pField) {
  if (pItem == nullptr || pField == nullptr) return;
  const FieldRow* row = find_field(pField->fieldType);
  if (row == nullptr) return;
  _TranslateStringToPbItem(member_of(*pItem, *row), static_cast<int>(row->width), pField);
}

void _TranslateStringToPbItem(char* pMember, int nLimit, const PbField* pField) {
  if (pMember == nullptr || pField == nullptr || nLimit <= 0) return;
  const size_t length = bounded_length(pField->pField, sizeof pField->pField);
  const size_t limit = static_cast<size_t>(nLimit);
  if (length > limit) {
    QALT_LOG_ERROR("a text of %d characters is cut at %d\n", static_cast<int>(length), nLimit);
  }
  // Without a terminator: the item's zero fill supplies it unless the member is full.
  std::memcpy(pMember, pField->pField, std::min(length, limit));
}

int _WriteStdContact(PbItem tItem, int storageIndex) {
  CpbwRecord record = {};
  if (switches_charset()) _SetPbCharactorSet(kCharsetUcs2);
  copy_member(record.text, tItem.text);  // the record is the wider one
  copy_member(record.number, tItem.number);
  record.storageIndex = storageIndex;
  record.numberType = record.number[0] == '+' ? PB_TYPE_INTERNATIONAL : PB_TYPE_NATIONAL;
  QALT_LOG_DEBUG("_WriteStdContact,type=%d\n", record.numberType);
  const uint32_t result = CPBW_Set(&record);
  // After a refused write the set stays switched, for the caller's next attempt.
  if (result == PB_OK && switches_charset()) _SetPbCharactorSet(kCharsetRestore);
  return static_cast<int>(result);
}

int _WriteQaltExtendContact(PbItem tItem, int storageIndex) {
  JcpbwRecord record = {};
  record.storageIndex = storageIndex;
  record.numberType = PB_TYPE_NATIONAL;
  const bool whole =
      copy_member(record.text, tItem.text) && copy_member(record.number, tItem.number) &&
      copy_member(record.number2, tItem.number2) && copy_member(record.number3, tItem.number3) &&
      copy_member(record.email, tItem.email) && copy_member(record.extraText, tItem.extraText);
  if (!whole) {
    // A shortened contact would be a wrong one.
    QALT_LOG_ERROR("_WriteQaltExtendContact: a text does not fit the vendor record\n");
    return PB_ERR_PARAM;
  }
  return send_vendor_record(record);
}

int QL_deletePhonebookEntry(int storageType, int storageIndex) {
  QALT_LOG_DEBUG("QL_deletePhonebookEntry input para storageType is %d\n", storageType);
  QALT_LOG_DEBUG("QL_deletePhonebookEntry input para storageIndex is %d\n", storageIndex);
  if (storageIndex == 0 || storageType != kSimStorage) {
    QALT_LOG_ERROR("QL_deletePhonebookEntry output results  is %d\n", PB_ERR_PARAM);
    return PB_ERR_PARAM;
  }
  const int result = uses_vendor_family() ? _DeleteQaltExtendContact(storageIndex)
                                          : _DeleteStdContact(storageIndex);
  if (result == PB_OK) PBB_DeletePB(storageIndex);
  QALT_LOG_DEBUG("QL_deletePhonebookEntry output uResult  is %d\n", result);
  return result;
}

int _DeleteStdContact(int storageIndex) {
  CpbwRecord record = {};
  if (switches_charset()) _SetPbCharactorSet(kCharsetUcs2);
  record.storageIndex = storageIndex;
  const uint32_t result = CPBW_Set(&record);
  if (switches_charset()) _SetPbCharactorSet(kCharsetRestore);
  return static_cast<int>(result);
}

int _DeleteQaltExtendContact(int storageIndex) {
  JcpbwRecord record = {};
  record.storageIndex = storageIndex;
  return send_vendor_record(record);
}
