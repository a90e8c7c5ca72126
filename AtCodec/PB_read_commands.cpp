// Entry reads: a range of phonebook entries in each of the three command families
// (+CPBR: 3GPP TS 27.007 clause 8.12).
#include <algorithm>
#include <cstring>

#include "AtCodec/exchange.h"
#include "common/log.h"
#include "qalt_at/commands.h"

namespace qalt {
namespace {

constexpr char kLogModule[] = "AtCodec/PB_AtWrapper";
constexpr int32_t kMsPerIndex = 1000;
constexpr uint32_t kOneIndexMs = 20000;

// One command family's read.
struct ReadRow {
  const char* start;                          // of the command line
  void (*on_answer)(const char* raw_answer);  // null: says nothing
  void (*on_error)();                         // the modem answered ERROR; null: says nothing
  uint32_t error_result;                      // the result then
  void (*on_ok)(const AtRes& answer);         // null: says nothing
  bool processes_empty;                       // whether an OK without lines is processed too
  uint32_t (*process)(AtRes* answer, PbItemList* list);
};

void log_cpbr_answer(const char* raw) {
  QALT_LOG_ERROR("###K47D LOG###   bufRes.aucDataBuf len=%d,buf=%s\n",
                 static_cast<int>(std::strlen(raw)), raw);
}
void log_cpbr_payload(const AtRes& answer) {
  QALT_LOG_DEBUG("###K47D LOG###   tAtRes.Paras=%s\n", answer.Paras);
  QALT_LOG_DEBUG("###K47D LOG###   strlen(tAtRes.Paras)=%d\n",
                 static_cast<int>(std::strlen(answer.Paras)));
}

constexpr ReadRow kCpbr = {"AT+CPBR=",
                           log_cpbr_answer,
                           [] { QALT_LOG_ERROR("###K47D LOG###   CPBR read return ERROR\n"); },
                           PB_ERR_READ_REFUSED,
                           log_cpbr_payload,
                           false,
                           CPBR_SetATResProcess};
constexpr ReadRow kJcpbr = {"AT+JCPBR=",
                            nullptr,
                            [] { QALT_LOG_ERROR("###K47D LOG###   JCPBR read return ERROR\n"); },
                            PB_ERR_READ_REFUSED,
                            nullptr,
                            true,
                            JCPBR_SetATResProcess};
constexpr ReadRow kScpbr = {"AT^SCPBR=",          nullptr, nullptr, PB_ERR_COMMAND, nullptr, true,
                            SCPBR_SetATResProcess};

uint32_t read_entries(const ReadRow& row, int32_t first, int32_t last, uint32_t timeout_ms,
                      PbItemList* list) {
  if (list == nullptr) return PB_ERR_COMMAND;
  CommandLine line(PB_CMD_LINE_LEN, row.start);
  line.put_number(first).put(",").put_number(last);
  AtRes tAtRes;
  switch (exchange(line, {timeout_ms, nullptr, row.on_answer, log_unreadable}, tAtRes)) {
    case AT_RES_OK:
      if (row.on_ok) row.on_ok(tAtRes);
      if (row.processes_empty || tAtRes.Paras[0] != '\0') row.process(&tAtRes, list);
      return PB_OK;
    case AT_RES_ERROR:
      if (row.on_error) row.on_error();
      return row.error_result;
    default:
      return PB_ERR_COMMAND;
  }
}

// A second for each index of the range; a modem that is asked for one entry may still have to
// search the card for it.
uint32_t range_timeout(int32_t first, int32_t last) {
  const int64_t span = int64_t{last} - first;
  return span < 1 ? kOneIndexMs
                  : static_cast<uint32_t>(std::min<int64_t>(span * kMsPerIndex, UINT32_MAX));
}

}  // namespace
}  // namespace qalt

using namespace qalt;

uint32_t CPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList) {
  return read_entries(kCpbr, iFirst, iLast, range_timeout(iFirst, iLast), pList);
}

uint32_t JCPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList) {
  return read_entries(kJcpbr, iFirst, iLast, PB_CMD_TIMEOUT_MS, pList);
}

uint32_t SCPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList) {
  return read_entries(kScpbr, iFirst, iLast, PB_CMD_TIMEOUT_MS, pList);
}
