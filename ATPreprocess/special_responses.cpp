// Answers with rules of their own: the +CLIP query and the operator list.
#include <cstring>

#include "ATPreprocess/parse_state.h"
#include "common/quoted_search.h"
#include "common/text.h"
#include "qalt_at/parser.h"

namespace {

constexpr char kOk[] = "\r\nOK\r\n";
constexpr char kLineEndAndOk[] = "\r\n\r\nOK\r\n";
constexpr size_t kLineEndAndOkLength = sizeof kLineEndAndOk - 1;

// Whether exactly one comma outside quotes stands before `end`.
bool has_two_values(const char* start, const char* end) {
  const char* comma = qalt::find_unquoted(start, ",");
  if (comma == nullptr || comma >= end) return false;
  const char* second = qalt::find_unquoted(comma + 1, ",");
  return second == nullptr || second >= end;
}

}  // namespace

int ProcessClipCmd(const char* pParaStart, const char* pParaEnd, AtRes* pAtRes,
                   AtParseBuf* pParseBuf) {
  if (pParaStart == nullptr || pParaEnd == nullptr || pAtRes == nullptr || pParseBuf == nullptr) {
    return 0;
  }
  if (std::strncmp(pParaEnd, kLineEndAndOk, kLineEndAndOkLength) != 0) return 0;
  if (!has_two_values(pParaStart, pParaEnd)) return 0;
  const size_t length = static_cast<size_t>(pParaEnd - pParaStart);
  pAtRes->ResType = AT_RES_OK;
  qalt::copy_text(pAtRes->Paras, sizeof pAtRes->Paras, pParaStart, length);
  qalt::consume(length + kLineEndAndOkLength);
  return 1;
}

int Bk_Parse_At_COPS5_Res(const char* pStr, AtRes* pAtRes) {
  if (pStr == nullptr || pAtRes == nullptr) return AT_PARSE_NULL;
  const size_t length = qalt::bounded_length(pStr, sizeof pAtRes->Paras);
  if (length == sizeof pAtRes->Paras) return AT_PARSE_NOT_FOUND;
  if (qalt::find_unquoted(pStr, kOk) == nullptr) return AT_PARSE_NOT_FOUND;
  pAtRes->CmdId = 1;
  pAtRes->ResType = AT_RES_OK;
  qalt::copy_text(pAtRes->Paras, sizeof pAtRes->Paras, pStr, length);
  return AT_PARSE_OK;
}
