#include "AtCodec/exchange.h"

#include <cstddef>
#include <cstring>

#include "common/log.h"

namespace qalt {
namespace {
constexpr char kLogModule[] = "AtCodec/PB_AtWrapper";
}  // namespace

void log_unreadable() {
  QALT_LOG_ERROR("###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE\n");
}

[[gnu::noinline]] int exchange(const CommandLine& line, const CommandRow& row, AtRes& answer) {
  if (!line.usable()) {
    QALT_LOG_ERROR("command refused, a parameter is too long or ends the line early\n");
    return kNoAnswer;
  }
  // The parser sets what the answer has and relies on zeros elsewhere; behind an empty payload
  // nothing of the 100 KB is looked at.
  std::memset(&answer, 0, offsetof(AtRes, Paras) + 1);

  AtMsg bufRes;  // ClientSendCmd zeroes it
  if (ClientSendCmd(line.c_str(), &bufRes, row.timeout_ms) != 0) {
    if (row.on_no_answer) row.on_no_answer();
    return kNoAnswer;
  }
  if (row.on_answer) row.on_answer(bufRes.aucDataBuf);
  if (Bk_Parse_At_Res(bufRes.aucDataBuf, &answer) != 0) {
    if (row.on_unreadable) row.on_unreadable();
    return kNoAnswer;
  }
  return answer.ResType;
}

}  // namespace qalt
