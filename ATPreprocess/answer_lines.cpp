// Joining the information lines of an answer into one payload.
#include <cstring>

#include "common/quoted_search.h"
#include "common/text.h"
#include "qalt_at/parser.h"

namespace {

constexpr size_t kLineSize = 1024;     // bytes of the line buffer, terminating NUL included
constexpr size_t kAppendLimit = 1024;  // characters of a line that the payload takes at most

// Where the running join stands, so that no line makes it search the payload's end or the rest of
// the text again. Guarded by the parser mutex like g_iProcDataLen, and valid only while its record
// is being joined: a step that is called by itself finds another record (null) and searches.
struct JoinProgress {
  const AtParseBuf* record;
  size_t length;               // characters in the record's payload
  bool looked_ahead;           // whether next_separator holds
  const char* next_separator;  // the first ": " at or behind the last place looked from, or null
};
constinit JoinProgress g_join{};

void append(AtParseBuf* record, const char* text, size_t length) {
  const bool joining = g_join.record == record;
  const size_t end =
      joining ? g_join.length : qalt::bounded_length(record->ParaBuf, sizeof record->ParaBuf - 1);
  const size_t count =
      qalt::copy_text(record->ParaBuf + end, sizeof record->ParaBuf - end, text, length);
  if (joining) g_join.length = end + count;
}

void append_line(AtParseBuf* record, const char* line) {
  append(record, line, qalt::bounded_length(line, kAppendLimit));
}

// Whether a named line can still follow. An earlier look-ahead holds until its finding is passed:
// every line begins outside quotes, so that both searches see the same quotes.
bool name_follows(const AtParseBuf* record, const char* rest) {
  if (g_join.record != record) return qalt::find_unquoted(rest, ": ") != nullptr;
  if (!g_join.looked_ahead || (g_join.next_separator != nullptr && g_join.next_separator < rest)) {
    g_join.next_separator = qalt::find_unquoted(rest, ": ");
    g_join.looked_ahead = true;
  }
  return g_join.next_separator != nullptr;
}

int join_lines(const char* text, char* line, AtParseBuf* record) {
  while (const char* line_end = qalt::find_unquoted(text, "\r\n")) {
    if (line_end != text) {
      qalt::copy_text(line, kLineSize, text, static_cast<size_t>(line_end - text));
      if (const char* colon = qalt::find_unquoted(line, ": ")) {
        if (ParseCmdLineWithCmdName(record, line, colon) == 0) return AT_PARSE_NOT_FOUND;
      } else {
        ParseCmdLineWithoutCmdName(record, line, text);
      }
    }
    text = line_end + 2;
  }
  return AT_PARSE_OK;
}

}  // namespace

int _Parse_At_Ok_Res(AtRes* pAtRes, AtParseBuf* pParseBuf) {
  if (pAtRes == nullptr || pParseBuf == nullptr) return AT_PARSE_NULL;
  char line[kLineSize];
  _First_Parse_At_OK_Res(pAtRes->Paras + qalt::bounded_length(pAtRes->Paras, 2), line, pParseBuf);
  return AT_PARSE_OK;
}

int _First_Parse_At_OK_Res(const char* pStr, char* pLine, AtParseBuf* pParseBuf) {
  if (pStr == nullptr || pLine == nullptr || pParseBuf == nullptr) return AT_PARSE_NOT_FOUND;
  g_join = {pParseBuf, qalt::bounded_length(pParseBuf->ParaBuf, sizeof pParseBuf->ParaBuf - 1),
            false, nullptr};
  const int iRes = join_lines(pStr, pLine, pParseBuf);
  g_join = {};
  return iRes;
}

int ParseCmdLineWithCmdName(AtParseBuf* pParseBuf, const char* pLine, const char* pColon) {
  if (pParseBuf == nullptr || pLine == nullptr || pColon == nullptr) return 0;
  constexpr size_t kNameLimit = sizeof pParseBuf->CmdName - 1;
  const size_t length = static_cast<size_t>(pColon - pLine);
  if (pParseBuf->CmdName[0] == '\0') {
    qalt::copy_text(pParseBuf->CmdName, sizeof pParseBuf->CmdName, pLine, length);
  } else {
    const size_t compared = length < kNameLimit ? length : kNameLimit;
    if (std::strncmp(pParseBuf->CmdName, pLine, compared) != 0) return 0;
    append(pParseBuf, ";", 1);
  }
  append_line(pParseBuf, pColon + 2);
  return 1;
}

void ParseCmdLineWithoutCmdName(AtParseBuf* pParseBuf, const char* pLine, const char* pRest) {
  if (pParseBuf == nullptr || pLine == nullptr || pRest == nullptr) return;
  if (pParseBuf->CmdName[0] != '\0') {
    append(pParseBuf, ",\"", 2);
    append_line(pParseBuf, pLine);
    append(pParseBuf, "\"", 1);
  } else if (!name_follows(pParseBuf, pRest)) {
    append_line(pParseBuf, pLine);
  }
}
