// Reading a range of contacts.
#include <unistd.h>

#include <algorithm>
#include <cstddef>
#include <cstring>

#include "common/text.h"
#include "pb/engine.h"
#include "pb/fields.h"

namespace qalt {
namespace {

constexpr int kRetries = 3;
constexpr int32_t kFieldsOfExtendedUsim = PB_FIELD_TYPES;
constexpr int32_t kFieldsOtherwise = 2;  // number and text

int32_t field_count() {
  const PbType& type = g_module_param.PbType;
  return type.IsSupportExtend == 1 && type.IsSupportUSim == 1 ? kFieldsOfExtendedUsim
                                                              : kFieldsOtherwise;
}

// Records that the caller has for a range.
int32_t room_for(int begin, int end) {
  const int64_t length = int64_t{end} - begin + 1;
  return static_cast<int32_t>(std::clamp<int64_t>(length, 1, PB_READ_MAX));
}

int read_contacts(PbItemList* list, int begin, int end) {
  return uses_vendor_family() ? _ReadQaltExtendContact(list, begin, end)
                              : _ReadStdContact(list, begin, end);
}

// A modem that is still loading the card refuses a read with ERROR, which leaves the list empty; it
// is asked again.
int read_with_retries(PbItemList* list, int begin, int end) {
  // No answer fills more items than these; clearing the others would only take stack.
  std::memset(list, 0, offsetof(PbItemList, items) + PB_READ_MAX * sizeof(PbItem));
  int result = read_contacts(list, begin, end);
  for (int retry = 0; result == PB_ERR_READ_REFUSED && retry != kRetries; ++retry) {
    sleep(1);
    result = read_contacts(list, begin, end);
  }
  return result;
}

}  // namespace
}  // namespace qalt

using namespace qalt;

int QL_getPhonebookEntry(int storageType, int beginIndex, int endIndex,
                         PhonebookEntry* pPhonebookArray) {
  QALT_LOG_DEBUG("QL_getPhonebookEntry input para storageType is %d\n", storageType);
  QALT_LOG_DEBUG("QL_getPhonebookEntry input para beginIndex is %d\n", beginIndex);
  QALT_LOG_DEBUG("QL_getPhonebookEntry input para endIndex is %d\n", endIndex);
  if (pPhonebookArray == nullptr || storageType != kSimStorage) return PB_ERR_PARAM;

  if (switches_charset()) _SetPbCharactorSet(kCharsetUcs2);
  PbItemList list;
  int iRes = read_with_retries(&list, beginIndex, endIndex);
  for (int32_t i = 0; i < list.count; ++i) PBB_WritePB(&list.items[i]);
  QALT_LOG_DEBUG("QL_getPhonebookEntry count is %d\n", list.count);
  if (const int32_t room = room_for(beginIndex, endIndex); list.count > room) {
    // Nothing asked for them, and the caller has no records for them.
    QALT_LOG_ERROR("the modem sent %d entries, more than the range has: %d are dropped\n",
                   list.count, list.count - room);
    list.count = room;
  }
  if (list.count > 0) iRes = _TranslatePbItemToPbEntry(&list, pPhonebookArray);
  if (switches_charset()) _SetPbCharactorSet(kCharsetRestore);
  QALT_LOG_DEBUG("QL_getPhonebookEntry output para iRes is %d\n", iRes);
  return iRes;
}

int _ReadQaltPbContact(PbItemList* pList, int beginIndex, int endIndex) {
  if (pList == nullptr) return PB_ERR_PARAM;
  std::memset(pList, 0, sizeof *pList);
  return read_contacts(pList, beginIndex, endIndex);
}

int _ReadQaltExtendContact(PbItemList* pList, int beginIndex, int endIndex) {
  const auto read = on_platform(PB_PLATFORM_4) ? SCPBR_Set : JCPBR_Set;
  return static_cast<int>(read(beginIndex, endIndex, pList));
}

int _ReadStdContact(PbItemList* pList, int beginIndex, int endIndex) {
  return static_cast<int>(CPBR_Set(beginIndex, endIndex, pList));
}

int _TranslatePbItemToPbEntry(const PbItemList* pList, PhonebookEntry* pPhonebookArray) {
  if (pList == nullptr || pPhonebookArray == nullptr) return PB_ERR_PARAM;
  int result = PB_OK;
  for (int32_t i = 0; i < pList->count && i < PB_LIST_SIZE; ++i) {
    PhonebookEntry& entry = pPhonebookArray[i];
    _TranslatePbItemToFields(&pList->items[i], &entry);
    QALT_LOG_DEBUG("pPbItem pPhonebookArray[%d].coding is %d\n", i, entry.coding);
    QALT_LOG_DEBUG("pPbItem pPhonebookArray[%d].storageIndex is %d\n", i, entry.storageIndex);
    QALT_LOG_DEBUG("pPbItem pPhonebookArray[%d].FieldCount is %d\n", i, entry.FieldCount);
    if (entry.pFieldList == nullptr) {
      QALT_LOG_ERROR("pPhonebookArray[%d] has no field list\n", i);
      result = PB_ERR_PARAM;
      continue;
    }
    QALT_LOG_DEBUG("pPbItem pPhonebookArray[%d].pFieldList[0].pField is %s\n", i,
                   entry.pFieldList[0].pField);
    QALT_LOG_DEBUG("pPbItem pPhonebookArray[%d].pFieldList[1].pField is %s\n", i,
                   entry.pFieldList[1].pField);
  }
  return result;
}

void _TranslatePbItemToFields(const PbItem* pItem, PhonebookEntry* pEntry) {
  if (pItem == nullptr || pEntry == nullptr) return;
  pEntry->storageIndex = pItem->storageIndex;
  pEntry->coding = pItem->coding;
  pEntry->FieldCount = pEntry->pFieldList == nullptr ? 0 : field_count();
  for (int32_t k = 0; k < pEntry->FieldCount; ++k) {
    pEntry->pFieldList[k].fieldType = k;
    _TranslatePbItemToField(pItem, &pEntry->pFieldList[k]);
  }
}

void _TranslatePbItemToField(const PbItem* pItem, PbField* pField) {
  if (pItem == nullptr || pField == nullptr) return;
  const FieldRow* row = find_field(pField->fieldType);
  if (row == nullptr) return;
  // A member may be filled to its last byte; the next step takes a terminated text.
  const char* member = member_of(*pItem, *row);
  char text[kWidestField + 1];
  copy_text(text, sizeof text, member, bounded_length(member, row->width));
  _TranslatePbItemToString(text, pField);
}

void _TranslatePbItemToString(const char* pText, PbField* pField) {
  if (pText == nullptr || pField == nullptr) return;
  std::memset(pField->pField, 0, sizeof pField->pField);
  copy_text(pField->pField, sizeof pField->pField, pText, std::strlen(pText));
}
