// The engine's settings and records: what touches neither the modem nor the index buffer.
#include <cstddef>

#include "pb/engine.h"

namespace qalt {

// The records are the library's binary interface, on 32-bit and 64-bit processors alike.
static_assert(sizeof(PbItem) == 700);
static_assert(offsetof(PbItem, number) == 4 && offsetof(PbItem, numberType) == 104);
static_assert(offsetof(PbItem, text) == 108 && offsetof(PbItem, number2) == 236);
static_assert(offsetof(PbItem, number3) == 336 && offsetof(PbItem, email) == 436);
static_assert(offsetof(PbItem, extraText) == 566 && offsetof(PbItem, coding) == 696);
static_assert(sizeof(PbItemList) == 175004 && offsetof(PbItemList, items) == 4);
static_assert(sizeof(PbField) == 524 && offsetof(PbField, pField) == 4);
static_assert(offsetof(PhonebookEntry, FieldCount) == 4 &&
              offsetof(PhonebookEntry, pFieldList) == 8);
static_assert(offsetof(PhonebookEntry, coding) == 8 + sizeof(void*));
static_assert(sizeof(PhonebookEntry) == (sizeof(void*) == 8 ? 24 : 16));
static_assert(sizeof(PbType) == 12 && offsetof(PbType, IsSupportUSim) == 8);
static_assert(offsetof(PbType, IsSupportExtend) == 0 && offsetof(PbType, IsSupportJCPBM) == 4);
static_assert(sizeof(PbFieldAbility) == 8 && offsetof(PbFieldAbility, maxLength) == 4);
static_assert(sizeof(PbParam) == 76 && offsetof(PbParam, MaxEntries) == 4);
static_assert(offsetof(PbParam, MinIndex) == 8 && offsetof(PbParam, MaxIndex) == 12);
static_assert(offsetof(PbParam, PbType) == 16 && offsetof(PbParam, FieldAbility) == 28);
static_assert(sizeof(CpbwRecord) == 660 && offsetof(CpbwRecord, number) == 4);
static_assert(offsetof(CpbwRecord, numberType) == 132 && offsetof(CpbwRecord, text) == 136);
static_assert(sizeof(JcpbwRecord) == 568 && offsetof(JcpbwRecord, number) == 4);
static_assert(offsetof(JcpbwRecord, numberType) == 104 && offsetof(JcpbwRecord, text) == 108);
static_assert(offsetof(JcpbwRecord, number2) == 172 && offsetof(JcpbwRecord, number3) == 272);
static_assert(offsetof(JcpbwRecord, email) == 372 && offsetof(JcpbwRecord, extraText) == 504);
static_assert(sizeof(CharsetName) == 255 && sizeof(CpbrTestResult) == 32);

PbParam g_module_param;

namespace {
// Written by clients, consulted by nothing: the setting is part of the interface only.
[[maybe_unused]] int32_t g_phonebook_type;
}  // namespace
}  // namespace qalt

using namespace qalt;

int32_t g_phone_book_currentPlatform;
PbType gPbType;

int QL_setCurrentPlatform(int currentPlatform) {
  QALT_LOG_DEBUG("QL_setCurrentPlatform==PB==in-currentPlatform:%d", currentPlatform);
  g_phone_book_currentPlatform = currentPlatform;
  return 0;
}

int QL_setPBType(int iPbType) {
  QALT_LOG_DEBUG("QL_setPBType input para PbType is %d\n", iPbType);
  PB_SetPBType(iPbType);
  return 0;
}

void PB_SetPBType(int iPbType) {
  g_phonebook_type = iPbType;
}

int _IsOldPhonebook(void) {
  return gPbType.IsSupportExtend == 0 && gPbType.IsSupportJCPBM == 0 ? 1 : 0;
}
