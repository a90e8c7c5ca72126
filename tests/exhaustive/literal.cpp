#include "tests/exhaustive/literal.h"

#include <algorithm>
#include <cstring>

#include "qalt_at/parameters.h"
#include "qalt_at/parser.h"

namespace literal {
namespace {

constexpr size_t kLongestPayload = QALT_AT_PARAS_SIZE - 1;
constexpr size_t kLongestLine = 1023;
constexpr size_t kLongestName = QALT_AT_NAME_SIZE - 1;
const string kLineEnd = "\r\n";

std::vector<string> end_flags() {
  std::vector<string> flags;
  for (const AtEndFlgEntry& row : QaltWcdma_AtEndFlgTable) {
    flags.emplace_back(row.EndFlag, strnlen(row.EndFlag, sizeof row.EndFlag));
  }
  return flags;
}

// The payload of an OK with the lines `text` before it.
string joined(const string& text) {
  string payload, name;
  size_t start = 0;
  for (size_t end; (end = find_unquoted(text, kLineEnd, start)) != string::npos; start = end + 2) {
    const string line = text.substr(start, std::min(end - start, kLongestLine));
    const size_t colon = find_unquoted(line, ": ");
    if (line.empty()) continue;
    if (colon != string::npos) {
      const string own = line.substr(0, std::min(colon, kLongestName));
      if (!name.empty() && name.substr(0, own.size()) != own) break;
      payload += (name.empty() ? "" : ";") + line.substr(colon + 2);
      if (name.empty()) name = own;
    } else if (!name.empty()) {
      payload += ",\"" + line + '"';
    } else if (find_unquoted(text, ": ", start) == string::npos) {
      payload += line;
    }
  }
  return payload.substr(0, kLongestPayload);
}

// What the scanner must not see, and what stands for it.
struct Mark {
  char character, mark;
  bool line_end;
};
constexpr Mark kMarks[] = {{' ', char(ATCODEC_MARK_SPACE), false},
                           {'\t', char(ATCODEC_MARK_TAB), false},
                           {'\r', char(ATCODEC_MARK_CR), true},
                           {'\n', char(ATCODEC_MARK_LF), true}};

}  // namespace

size_t find_unquoted(const string& text, const string& needle, size_t from) {
  long quotes = 0;
  for (size_t position = from;;) {
    const size_t found = text.find(needle, position);
    if (found == string::npos) return found;
    quotes += std::count(text.begin() + long(position), text.begin() + long(found), '"');
    if (quotes % 2 == 0) return found;
    position = found + 1;
  }
}

Parsed parse(string text) {
  Parsed parsed;
  const size_t line_end = find_unquoted(text, kLineEnd);
  if (line_end == string::npos) {
    parsed.rest = text.empty() ? text : text.substr(text.size() - 1);
    return parsed;
  }
  text.erase(0, line_end);
  parsed.rest = text;
  size_t head = text.size();
  static const std::vector<string> kFlags = end_flags();
  size_t found = kFlags.size();
  for (size_t i = 0; i < kFlags.size(); ++i) {
    const size_t place = find_unquoted(text, kFlags[i]);
    if (place >= head) continue;
    head = place;
    found = i;
  }
  if (found == kFlags.size()) return parsed;

  const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[found];
  parsed.result = 0;
  parsed.command = row.CmdId;
  parsed.type = row.ResType;
  size_t cut_from = head;
  size_t cut_to = head + kFlags[found].size();
  if (row.HavePara == 1) {
    bool to_end = false;
    for (const char* mark : {"CBM:", "CMT:", "CDS:", "JCLAS:"}) {
      to_end = to_end || text.find(mark) != string::npos;
    }
    const size_t end = to_end ? text.size() : find_unquoted(text, kLineEnd, cut_to);
    if (end != string::npos) {
      parsed.payload = text.substr(cut_to, std::min(end - cut_to, kLongestPayload));
      parsed.para_length = uint16_t(parsed.payload.size());
      cut_to = std::min(text.size(), end + (to_end ? 0 : 2));
    }
  } else if (row.ResType == AT_RES_OK && head != 0) {
    const string before = text.substr(0, std::min(head, kLongestPayload));
    parsed.payload = joined(before.substr(std::min<size_t>(2, before.size())));
    cut_from = 0;
  }
  parsed.rest = text.erase(cut_from, cut_to - cut_from);
  return parsed;
}

std::vector<string> split(const string& text, const string& separator, size_t resume,
                          bool drops_head, bool skips_empty) {
  std::vector<string> pieces;
  size_t start = 0;
  for (size_t at; (at = find_unquoted(text, separator, start)) != string::npos;) {
    const string piece = text.substr(start, at - start);
    start = at + resume;
    if (piece.empty() && skips_empty) continue;
    if (pieces.size() == ATCODEC_MAX_PARAS || piece.size() > kLongestLine) return pieces;
    if (!drops_head) pieces.push_back(piece);
    drops_head = false;
  }
  if (start < text.size() && pieces.size() < ATCODEC_MAX_PARAS) {
    pieces.push_back(text.substr(start, kLongestLine));
  }
  return pieces;
}

string rewritten(const string& line, bool with_line_ends) {
  string result;
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    char c = line[i];
    for (const Mark& mark : kMarks) {
      if (quoted && c == mark.character && (with_line_ends || !mark.line_end)) c = mark.mark;
    }
    const bool comma = c == ',' && !quoted;
    if (c != '"') result += comma ? ' ' : c;
    if (c == '"') quoted = !quoted;
    if (c == '"' ? next == '"' : comma && (next == ',' || next == '\0')) {
      result += char(ATCODEC_MARK_EMPTY);
    }
  }
  return std::max(line.size(), result.size()) <= kLongestLine ? result : line;
}

string restored(string field, bool with_line_ends) {
  if (field == string(1, char(ATCODEC_MARK_EMPTY))) return "";
  for (const Mark& mark : kMarks) {
    if (with_line_ends || !mark.line_end) {
      std::replace(field.begin(), field.end(), mark.mark, mark.character);
    }
  }
  return field;
}

string flattened(const string& line) {
  if (line.size() > kLongestLine) return line;
  string result;
  for (size_t i = 0; i < line.size(); ++i) {
    const bool ends_group = line.compare(i, 2, "),") == 0;
    if (ends_group) result += ';';
    if (line[i] != '(' && line[i] != ')') result += line[i];
    i += ends_group;
  }
  return result;
}

}  // namespace literal
