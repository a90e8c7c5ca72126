// Storage and capability: which phonebook storage, how full, and what the modem offers
// (3GPP TS 27.007 clauses 8.11 and 8.12, and the device makers' own tests).
#include <cstdio>

#include "AtCodec/exchange.h"
#include "AtCodec/scanner.h"
#include "common/log.h"
#include "qalt_at/commands.h"
#include "qalt_at/parameters.h"

namespace qalt {
namespace {

constexpr char kLogModule[] = "AtCodec/PB_AtWrapper";

constexpr CommandRow kCpbsSet = {
    PB_CMD_TIMEOUT_MS, nullptr,
    [](const char*) { QALT_LOG_DEBUG("###K47D LOG### CPBS_Set return \n"); }, log_unreadable};
constexpr CommandRow kCpbsRead = {PB_CMD_TIMEOUT_MS, nullptr, nullptr, log_unreadable};
constexpr CommandRow kCpbrTest = {
    PB_CMD_LONG_TIMEOUT_MS, [] { QALT_LOG_ERROR("CPBR_Test cmd return Error"); },
    [](const char* raw) {
      QALT_LOG_DEBUG("CPBR_Test cmd return ok,and bufRes.aucDataBuf is %s\n", raw);
    },
    nullptr};
constexpr CommandRow kJusimTest = {
    PB_CMD_TIMEOUT_MS, nullptr, nullptr,
    [] { std::puts("###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE"); }};
constexpr CommandRow kEusimRead = {
    PB_CMD_TIMEOUT_MS, nullptr, nullptr,
    [] { QALT_LOG_DEBUG("###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE\n"); }};
constexpr CommandRow kSilent = {PB_CMD_TIMEOUT_MS, nullptr, nullptr, nullptr};
constexpr CommandRow kSilentLong = {PB_CMD_LONG_TIMEOUT_MS, nullptr, nullptr, nullptr};

// Rewritten for scanning, quotes and commas give way to blanks.
const char* rewritten(AtRes& answer) {
  ATCodec_PreProc_Res_ParaLine(reinterpret_cast<unsigned char*>(answer.Paras));
  return answer.Paras;
}

// A capability test that also tells whether the command exists: "not support" clears the flag, OK
// sets it and hands the payload to `read`, anything else leaves it.
uint32_t test_support(const char* line, const CommandRow& row, int32_t* supported, int32_t* values,
                      void (*read)(const char* payload, int32_t* values)) {
  if (supported == nullptr || values == nullptr) return PB_ERR_COMMAND;
  AtRes tAtRes;
  const int type = exchange(CommandLine(PB_CMD_LINE_LEN, line), row, tAtRes);
  if (type == AT_RES_NOT_SUPPORT) *supported = 0;
  if (type != AT_RES_OK) return PB_ERR_COMMAND;
  read(tAtRes.Paras, values);
  *supported = 1;
  return PB_OK;
}

// A query whose answer is one integer.
uint32_t read_value(const char* line, const CommandRow& row, int32_t* value) {
  if (value == nullptr) return PB_ERR_COMMAND;
  AtRes tAtRes;
  if (exchange(CommandLine(PB_CMD_LINE_LEN, line), row, tAtRes) != AT_RES_OK) return PB_ERR_COMMAND;
  Scanner(tAtRes.Paras).integer(*value);
  return PB_OK;
}

// "(1-250)"
bool scan_range(Scanner& scan, int32_t* values) {
  return scan.literal('(') && scan.integer(values[0]) && scan.literal('-') &&
         scan.integer(values[1]) && scan.literal(')');
}

// "(1-250),40,60,40,40,128,60"
void read_vendor_capability(const char* payload, int32_t* values) {
  Scanner scan(payload);
  if (!scan_range(scan, values)) return;
  for (int i = 2; i != PB_CAPABILITY_VALUES; ++i) {
    if (!scan.literal(',') || !scan.integer(values[i])) return;
  }
}

// "(1-300),40,16,64" or "(1-300),40,16,0,64": the e-mail length is the last one. Positions 4 and 5
// are the number lengths that JCPBQ_Set tells apart.
void read_scpbr_capability(const char* payload, int32_t* values) {
  Scanner scan(payload);
  if (scan_range(scan, values) && scan.literal(',') && scan.integer(values[2]) &&
      scan.literal(',') && scan.integer(values[3]) && scan.literal(',') &&
      scan.integer(values[6]) && scan.literal(',')) {
    scan.integer(values[6]);
  }
}

}  // namespace
}  // namespace qalt

using namespace qalt;

uint32_t CPBS_Set(const char* pStorage) {
  if (pStorage == nullptr) return PB_ERR_COMMAND;
  CommandLine line(PB_CMD_LINE_LEN, "AT+CPBS=");
  line.put_quoted(pStorage, PB_CMD_LINE_LEN);
  if (line.usable()) QALT_LOG_DEBUG("AT+CPBS=\"%s\" send to at server\n", pStorage);
  AtRes tAtRes;
  return exchange(line, kCpbsSet, tAtRes) == AT_RES_OK ? PB_OK : PB_ERR_COMMAND;
}

uint32_t CPBS_Read(int32_t* iUser, int32_t* iTotal) {
  if (iUser == nullptr || iTotal == nullptr) return PB_ERR_COMMAND;
  QALT_LOG_DEBUG("AT+CPBS?\n");
  AtRes tAtRes;
  if (exchange(CommandLine(PB_CMD_LINE_LEN, "AT+CPBS?"), kCpbsRead, tAtRes) != AT_RES_OK)
    return PB_ERR_COMMAND;
  QALT_LOG_DEBUG("AT+CPBS? ok\n");

  Scanner scan(rewritten(tAtRes));
  char storage[12];
  bool cut = false;  // a storage name of any length: only the counts behind it matter
  if (scan.word(PB_CMD_LINE_LEN, {storage, sizeof storage, &cut}) && scan.integer(*iUser)) {
    scan.integer(*iTotal);
  }
  QALT_LOG_DEBUG("CPBS_Read iUser is %d and iTotal is %d\n", *iUser, *iTotal);
  return PB_OK;
}

uint32_t CPBR_Test(int32_t* pResult) {
  if (pResult == nullptr) return PB_ERR_COMMAND;
  AtRes tAtRes;
  if (exchange(CommandLine(PB_CMD_LINE_LEN, "AT+CPBR=?"), kCpbrTest, tAtRes) != AT_RES_OK)
    return PB_ERR_COMMAND;
  Scanner scan(rewritten(tAtRes));
  bool matched = scan_range(scan, pResult);
  for (int i = 2; matched && i != PB_CAPABILITY_VALUES; ++i) matched = scan.integer(pResult[i]);
  return PB_OK;
}

uint32_t JCPBR_Test(int32_t* pSupported, int32_t* pResult) {
  return test_support("AT+JCPBR=?", kSilent, pSupported, pResult, read_vendor_capability);
}

uint32_t SCPBR_Test(int32_t* pSupported, int32_t* pResult) {
  return test_support("AT+CPBR=?", kSilentLong, pSupported, pResult, read_scpbr_capability);
}

uint32_t JCPBQ_Set(int32_t n, int32_t* pValue) {
  if (pValue == nullptr) return PB_ERR_COMMAND;
  CommandLine line(PB_CMD_LINE_LEN, "AT+CPBR=");
  line.put_number(n);
  AtRes tAtRes;
  if (exchange(line, kSilent, tAtRes) != AT_RES_OK) return PB_ERR_COMMAND;
  Scanner scan(tAtRes.Paras);
  int32_t ignored;
  if (scan.integer(ignored) && scan.literal(',') && scan.integer(ignored) && scan.literal(',')) {
    scan.integer(*pValue);
  }
  return PB_OK;
}

uint32_t JUSIM_Test(int32_t* pValue) {
  return read_value("AT+JUSIM=?", kJusimTest, pValue);
}

uint32_t CARDMODE_Test(int32_t* pValue) {
  return read_value("AT^CARDMODE=?", kSilent, pValue);
}

uint32_t EUSIM_Read(int32_t* pValue) {
  return read_value("AT+EUSIM?", kEusimRead, pValue);
}

uint32_t JCPBM_Test(void) {
  return PB_ERR_COMMAND;
}
