// Configuration discovery: how full the storage is, which command family the modem offers, which
// indices are valid and how long the fields may be. No failure of a command reaches the caller;
// what a failing step would have set keeps its earlier value.
#include <unistd.h>

#include <cstring>

#include "common/text.h"
#include "pb/engine.h"

namespace qalt {
namespace {

constexpr int kAttempts = 10;
constexpr size_t kStorageNameSize = 10;

// Positions of a capability answer.
enum { kMinIndex, kMaxIndex, kNumber, kText, kNumber2, kNumber3, kEmail, kExtraText };

// A modem may be busy for seconds after power-up: up to ten attempts, a second apart, also behind
// the last. `failures` counts those before the current one, for the log and for clients to see.
template <typename Command, typename Log>
bool attempt(int32_t& failures, Command succeeds, Log log_failure) {
  for (failures = 0; failures != kAttempts; ++failures) {
    if (succeeds()) return true;
    log_failure(failures);
    sleep(1);
  }
  return false;
}

bool probes_nothing() {
  return on_platform(PB_PLATFORM_7) || on_platform(PB_PLATFORM_8);
}

// Which family's capability test gives the range and the lengths. Platform 0 takes the vendor's
// already when it is offered, though it reads entries with it only on a USIM.
bool vendor_test_gives_limits(const PbType& type) {
  if (on_platform(PB_PLATFORM_4)) return true;
  if (on_platform(PB_PLATFORM_DEFAULT) || on_platform(PB_PLATFORM_1)) {
    return type.IsSupportExtend == 1;
  }
  return type.IsSupportExtend == 1 && type.IsSupportUSim == 1;
}

void take_limits(const CpbrTestResult& values, PbParam& param) {
  _CpbrTestToFieldability(values[kMinIndex], values[kMaxIndex], values[kNumber], values[kText],
                          values[kNumber2], values[kNumber3], values[kEmail], values[kExtraText],
                          PB_FIELD_TYPES, param.FieldAbility);
  param.MinIndex = values[kMinIndex];
  param.MaxIndex = values[kMaxIndex];
}

// On platform 4 a query of its own tells which of the further numbers the card has; they are as
// long as the first. Without its answer both count.
void take_number_lengths(int32_t query, CpbrTestResult& values) {
  if (query != 1) values[kNumber2] = values[kNumber];
  if (query != 2) values[kNumber3] = values[kNumber];
}

}  // namespace
}  // namespace qalt

using namespace qalt;

int32_t g_cpbs_pb_busy_count;
int32_t g_cpbr_pb_busy_count;

int QL_getPhonebookInfo(int storageType, PbParam* pPbParam) {
  if (storageType != kSimStorage || pPbParam == nullptr) return PB_ERR_PARAM;
  _GetPbParam(storageType, &g_module_param);
  PBB_InitPbBuffer(g_module_param.MinIndex, g_module_param.MaxIndex, g_module_param.MaxEntries);
  *pPbParam = g_module_param;

  const PbType& type = pPbParam->PbType;
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.EntriesUsed is %d\n ", pPbParam->EntriesUsed);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.MaxEntries is %d\n ", pPbParam->MaxEntries);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.MinIndex is %d\n ", pPbParam->MinIndex);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.MaxIndex is %d\n ", pPbParam->MaxIndex);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.PbType.IsSupportExtend is %d\n ",
                 type.IsSupportExtend);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.PbType.IsSupportUSim is %d\n ",
                 type.IsSupportUSim);
  QALT_LOG_DEBUG("QL_getPhonebookInfo output pPbParam.PbType.IsSupportJCPBM is %d\n ",
                 type.IsSupportJCPBM);
  return PB_OK;
}

int _GetPbParam(int storageType, PbParam* pPbParam) {
  if (pPbParam == nullptr) return PB_ERR_PARAM;
  for (int32_t k = 0; k != PB_FIELD_TYPES; ++k) pPbParam->FieldAbility[k].fieldType = k;

  _GetPhonebookStorebility(storageType, pPbParam);
  if (!on_platform(PB_PLATFORM_5)) _InitWcdmaPbPara(storageType, pPbParam);

  if (vendor_test_gives_limits(pPbParam->PbType)) {
    QALT_LOG_DEBUG("_GetPbParam  _InitWcdmaPbPara enter _InitQaltExtendPbConfig");
    _InitQaltExtendPbConfig(storageType, pPbParam);
  } else {
    _InitStdPbConfig(storageType, pPbParam);
  }
  return PB_OK;
}

void _GetStorageParam(int storageType, char* pName) {
  if (pName == nullptr) return;
  copy_text(pName, kStorageNameSize, storageType == kSimStorage ? "SM" : "ME", 2);
}

int _GetPhonebookStorebility(int storageType, PbParam* pPbParam) {
  QALT_LOG_DEBUG("_GetPhonebookStorebility storageType is %d\n", storageType);
  if (pPbParam == nullptr) return PB_ERR_COMMAND;
  char name[kStorageNameSize] = {};
  _GetStorageParam(storageType, name);
  const bool selected = attempt(
      g_cpbs_pb_busy_count, [&] { return CPBS_Set(name) == PB_OK; },
      [](int32_t count) { QALT_LOG_DEBUG("CPBS_Set error===g_cpbs_pb_busy_count=%d\n", count); });
  if (!selected) return PB_ERR_COMMAND;
  return CPBS_Read(&pPbParam->EntriesUsed, &pPbParam->MaxEntries) == PB_OK ? PB_OK : PB_ERR_COMMAND;
}

int _InitWcdmaPbPara(int storageType, PbParam* pPbParam) {
  QALT_LOG_DEBUG("_GetPbParam  _InitWcdmaPbPara g_phone_book_currentPlatform is %d\n",
                 g_phone_book_currentPlatform);
  if (pPbParam == nullptr) return PB_ERR_COMMAND;
  char name[kStorageNameSize] = {};
  _GetStorageParam(storageType, name);
  if (CPBS_Set(name) != PB_OK) return PB_ERR_COMMAND;
  pPbParam->PbType.IsSupportExtend = _IsSupportExtendPhonebook();
  pPbParam->PbType.IsSupportUSim = _IsSupportUSim();
  pPbParam->PbType.IsSupportJCPBM = _IsSupportJCPBM();
  return PB_OK;
}

int _IsSupportExtendPhonebook(void) {
  if (probes_nothing()) return 0;
  int32_t supported = 0;
  CpbrTestResult dropped = {};
  if (on_platform(PB_PLATFORM_4)) {
    SCPBR_Test(&supported, dropped);
  } else {
    JCPBR_Test(&supported, dropped);
  }
  return supported == 1 ? 1 : 0;
}

int _IsSupportUSim(void) {
  if (probes_nothing()) return 0;
  int32_t value = 0;
  if (on_platform(PB_PLATFORM_4)) {
    // A card mode of 1 is a SIM; a modem that does not tell counts as one with a USIM.
    CARDMODE_Test(&value);
    return value == 1 ? 0 : 1;
  }
  JUSIM_Test(&value);
  return value != 0 ? 1 : 0;
}

int _IsSupportJCPBM(void) {
  return JCPBM_Test() == PB_OK ? 1 : 0;
}

void _InitStdPbConfig(int, PbParam* pPbParam) {
  if (pPbParam == nullptr) return;
  CpbrTestResult values = {};
  const bool answered = attempt(
      g_cpbr_pb_busy_count, [&] { return CPBR_Test(values) == PB_OK; },
      [](int32_t count) { QALT_LOG_DEBUG("CPBR_test error,g_cpbr_pb_busy_count=%d\n", count); });
  if (!answered) return;
  QALT_LOG_DEBUG("CPBR_test success");
  take_limits(values, *pPbParam);
}

void _InitQaltExtendPbConfig(int, PbParam* pPbParam) {
  if (pPbParam == nullptr) return;
  CpbrTestResult values = {};
  int32_t supported = 0;
  if (on_platform(PB_PLATFORM_4)) {
    int32_t query = 0;
    SCPBR_Test(&supported, values);
    JCPBQ_Set(1, &query);
    take_number_lengths(query, values);
  } else {
    JCPBR_Test(&supported, values);
  }
  if (supported == 1) take_limits(values, *pPbParam);
}

void _CpbrTestToFieldability(int32_t, int32_t, int32_t iNumber, int32_t iText, int32_t iNumber2,
                             int32_t iNumber3, int32_t iEmail, int32_t iExtraText, int32_t nCount,
                             PbFieldAbility* pAbility) {
  if (pAbility == nullptr) return;
  // In the order of the field types; the answer gives the last two the other way round.
  const int32_t lengths[PB_FIELD_TYPES] = {iNumber, iText, iNumber2, iNumber3, iExtraText, iEmail};
  for (int32_t k = 0; k < nCount; ++k) {
    const int32_t type = pAbility[k].fieldType;
    pAbility[k].maxLength = type >= 0 && type < PB_FIELD_TYPES ? lengths[type] : 0;
  }
}
