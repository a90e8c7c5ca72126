// The parse of one block: find its end flag, run the handler of the flag, cut the block out.
#include <pthread.h>

#include <algorithm>
#include <cstddef>
#include <cstring>
#include <iterator>

#include "ATPreprocess/parse_state.h"
#include "common/held_lock.h"
#include "common/log.h"
#include "common/quoted_search.h"
#include "common/text.h"
#include "qalt_at/parser.h"

static_assert(sizeof(AtRes) == 102416);
static_assert(offsetof(AtRes, reserved) == 2);
static_assert(offsetof(AtRes, ResType) == 3);
static_assert(offsetof(AtRes, ParaLen) == 4);
static_assert(offsetof(AtRes, reserved2) == 8);
static_assert(offsetof(AtRes, Paras) == 16);
static_assert(sizeof(AtParseBuf) == 102430);
static_assert(offsetof(AtParseBuf, ParaBuf) == 30);

constinit int g_iProcDataLen = 0;

namespace {

constexpr char kLogModule[] = "ATPreprocess/ATPreprocess";
constexpr char kFunctionName[] = "Bk_Parse_At_Res";
constexpr uint16_t kClipCmdId = 89;

// Held for the whole of a parse: g_iProcDataLen belongs to one call at a time.
constinit pthread_mutex_t g_parser_mutex = PTHREAD_MUTEX_INITIALIZER;

bool any_null(const void* text, const void* record, char* const* block_head, const void* work) {
  return text == nullptr || record == nullptr || block_head == nullptr || *block_head == nullptr ||
         work == nullptr;
}

// Reports whose data goes on over line ends, up to the end of the text.
constexpr char kReportsToTheEnd[][7] = {"CBM:", "CMT:", "CDS:", "JCLAS:"};

bool runs_to_end(const char* text) {
  return std::any_of(std::begin(kReportsToTheEnd), std::end(kReportsToTheEnd),
                     [text](const char* name) { return std::strstr(text, name) != nullptr; });
}

}  // namespace

int Bk_Parse_At_Res(char* pStr, AtRes* pAtRes) {
  const qalt::HeldLock lock(g_parser_mutex);
  if (pStr == nullptr || pAtRes == nullptr) return AT_PARSE_NULL;
  char* pBlockHead = nullptr;
  int iFlagIndex = -1;
  if (_Parse_At_PreProcess(pStr, &pBlockHead, &iFlagIndex) != AT_PARSE_OK) {
    return AT_PARSE_NOT_FOUND;
  }
  QALT_LOG_DEBUG("%s-pStr=%s,pBlockHead=%s,iFlagIndex=%d", kFunctionName, pStr, pBlockHead,
                 iFlagIndex);
  const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[iFlagIndex];
  pAtRes->CmdId = static_cast<uint16_t>(row.CmdId);
  pAtRes->ResType = static_cast<uint8_t>(row.ResType);
  g_iProcDataLen = static_cast<int>(qalt::bounded_length(row.EndFlag, sizeof row.EndFlag));
  QALT_LOG_DEBUG("%s-g_iProcDataLen=%d", kFunctionName, g_iProcDataLen);

  AtParseBuf parse_buf;  // two empty texts; what stands behind their ends is never read
  parse_buf.CmdName[0] = '\0';
  parse_buf.ParaBuf[0] = '\0';
  _Parse_At_End_Flag(pStr, pAtRes, &pBlockHead, &parse_buf, row.HavePara);
  // A record that was not zeroed, and that this block did not fill, may have no NUL.
  QALT_LOG_DEBUG("%s-pStr=%s,pAtRes->Paras=%.*s", kFunctionName, pStr,
                 static_cast<int>(sizeof pAtRes->Paras), pAtRes->Paras);

  const char* rest = qalt::behind_consumed(pBlockHead);
  std::memmove(pBlockHead, rest, std::strlen(rest) + 1);
  return AT_PARSE_OK;
}

int _Parse_At_End_Flag(char* pStr, AtRes* pAtRes, char** pBlockHead, AtParseBuf* pParseBuf,
                       uint32_t ulHavePara) {
  switch (ulHavePara) {
    case 0:
      return _Parse_At_End_Flag_NoPara(pStr, pAtRes, pBlockHead, pParseBuf);
    case 1:
      return _Parse_At_End_Flag_HavePara(pStr, pAtRes, pBlockHead, pParseBuf);
    default:
      return AT_PARSE_NOT_FOUND;
  }
}

int _Parse_At_End_Flag_NoPara(char* pStr, AtRes* pAtRes, char** pBlockHead, AtParseBuf* pParseBuf) {
  if (any_null(pStr, pAtRes, pBlockHead, pParseBuf)) return AT_PARSE_NOT_FOUND;
  if (pAtRes->ResType != AT_RES_OK || *pBlockHead <= pStr) return AT_PARSE_NOT_FOUND;
  const size_t length = static_cast<size_t>(*pBlockHead - pStr);
  qalt::consume(length);
  qalt::copy_text(pAtRes->Paras, sizeof pAtRes->Paras, pStr, length);
  _Parse_At_Ok_Res(pAtRes, pParseBuf);
  // The lines just joined stand in Paras: all of it behind the payload is cleared.
  const size_t joined =
      qalt::copy_text(pAtRes->Paras, sizeof pAtRes->Paras, pParseBuf->ParaBuf,
                      qalt::bounded_length(pParseBuf->ParaBuf, sizeof pParseBuf->ParaBuf));
  std::memset(pAtRes->Paras + joined, 0, sizeof pAtRes->Paras - joined);
  *pBlockHead = pStr;
  return AT_PARSE_OK;
}

int _Parse_At_End_Flag_HavePara(char* pStr, AtRes* pAtRes, char** pBlockHead,
                                AtParseBuf* pParseBuf) {
  if (any_null(pStr, pAtRes, pBlockHead, pParseBuf)) return AT_PARSE_NOT_FOUND;
  const char* start = qalt::behind_consumed(*pBlockHead);
  const bool to_end = runs_to_end(pStr);
  const char* end = to_end ? start + std::strlen(start) : qalt::find_unquoted(start, "\r\n");
  if (end == nullptr) return AT_PARSE_NOT_FOUND;
  if (pAtRes->CmdId == kClipCmdId && ProcessClipCmd(start, end, pAtRes, pParseBuf) == 1) {
    return AT_PARSE_OK;
  }
  qalt::consume(static_cast<size_t>(end - start) + (to_end ? 0 : 2));
  return _Parse_At_ParaOfTheEndColon(pStr, start, end, pAtRes);
}

int _Parse_At_ParaOfTheEndColon(const char* pStr, const char* pParaStart, const char* pParaEnd,
                                AtRes* pAtRes) {
  if (pStr == nullptr || pParaStart == nullptr || pParaEnd == nullptr || pAtRes == nullptr) {
    return AT_PARSE_NULL;
  }
  const size_t length = pParaEnd > pParaStart ? static_cast<size_t>(pParaEnd - pParaStart) : 0;
  const size_t copied = qalt::copy_text(pAtRes->Paras, sizeof pAtRes->Paras, pParaStart, length);
  pAtRes->ParaLen = static_cast<uint16_t>(copied);
  return AT_PARSE_OK;
}
