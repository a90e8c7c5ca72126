#include "tests/exhaustive/literal_parameters.h"

#include "qalt_at/parameters.h"
#include "tests/exhaustive/literal_parser.h"

namespace literal {
namespace {

using std::string;

constexpr size_t kLongest = ATCODEC_PARA_LEN - 1;

// What the scanner must not see, and what stands for it.
struct Mark {
  char character, mark;
  bool line_end;
};
constexpr Mark kMarks[] = {{' ', char(ATCODEC_MARK_SPACE), false},
                           {'\t', char(ATCODEC_MARK_TAB), false},
                           {'\r', char(ATCODEC_MARK_CR), true},
                           {'\n', char(ATCODEC_MARK_LF), true}};

bool taken(const string& line) {
  return !line.empty() && line.size() <= kLongest;
}

}  // namespace

std::vector<string> split(const string& text, const string& separator, size_t resume,
                          bool drops_head, bool skips_empty) {
  std::vector<string> pieces;
  size_t start = 0;
  for (size_t at; (at = find_unquoted(text, separator, start)) != string::npos;) {
    const string piece = text.substr(start, at - start);
    start = at + resume;
    if (piece.empty() && skips_empty) continue;
    if (pieces.size() == ATCODEC_MAX_PARAS || piece.size() > kLongest) return pieces;
    if (!drops_head) pieces.push_back(piece);
    drops_head = false;
  }
  if (start < text.size() && pieces.size() < ATCODEC_MAX_PARAS) {
    pieces.push_back(text.substr(start, kLongest));
  }
  return pieces;
}

string rewritten(const string& line, bool with_line_ends) {
  if (!taken(line)) return line;
  string result;
  bool quoted = false;
  for (size_t i = 0; i < line.size(); ++i) {
    const char next = i + 1 < line.size() ? line[i + 1] : '\0';
    char c = line[i];
    if (c == '"') {
      quoted = !quoted;
      if (next == '"') result += char(ATCODEC_MARK_EMPTY);
      continue;
    }
    for (const Mark& mark : kMarks) {
      if (quoted && c == mark.character && (with_line_ends || !mark.line_end)) c = mark.mark;
    }
    if (c == ',' && !quoted) {
      result += ' ';
      if (next == ',' || next == '\0') result += char(ATCODEC_MARK_EMPTY);
    } else {
      result += c;
    }
  }
  return result.size() <= kLongest ? result : line;
}

string restored(string field, bool with_line_ends) {
  if (field == string(1, char(ATCODEC_MARK_EMPTY))) return "";
  for (char& c : field) {
    for (const Mark& mark : kMarks) {
      if (c == mark.mark && (with_line_ends || !mark.line_end)) {
        c = mark.character;
        break;
      }
    }
  }
  return field;
}

string flattened(const string& line) {
  if (!taken(line)) return line;
  string result;
  for (size_t i = 0; i < line.size(); ++i) {
    if (line.compare(i, 2, "),") == 0) {
      result += ';';
      ++i;
    } else if (line[i] != '(' && line[i] != ')') {
      result += line[i];
    }
  }
  return result;
}

}  // namespace literal
