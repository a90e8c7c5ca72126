#include "tests/exhaustive/literal_parser.h"

#include <algorithm>

#include "qalt_at/parser.h"

namespace literal {
namespace {

using std::string;

constexpr size_t kLongestPayload = QALT_AT_PARAS_SIZE - 1;
constexpr size_t kLongestLine = 1023;
constexpr size_t kLongestName = QALT_AT_NAME_SIZE - 1;
const string kLineEnd = "\r\n";

string flag_of(const AtEndFlgEntry& row) {
  return string(row.EndFlag, std::find(row.EndFlag, row.EndFlag + sizeof row.EndFlag, '\0'));
}

bool contains(const string& text, const char* needle) {
  return text.find(needle) != string::npos;
}

// The payload of an OK with the lines `text` before it.
string joined(const string& text) {
  string payload, name;
  const auto add = [&](const string& piece) {
    payload += piece;
    if (payload.size() > kLongestPayload) payload.resize(kLongestPayload);
  };
  for (size_t start = 0;;) {
    const size_t end = find_unquoted(text, kLineEnd, start);
    if (end == string::npos) return payload;
    const string line = text.substr(start, std::min(end - start, kLongestLine));
    const size_t colon = find_unquoted(line, ": ");
    if (line.empty()) {
      // skipped
    } else if (colon != string::npos) {
      const string own = line.substr(0, std::min(colon, kLongestName));
      if (name.empty()) {
        name = own;
      } else if (name.substr(0, own.size()) == own) {
        add(";");
      } else {
        return payload;
      }
      add(line.substr(colon + 2));
    } else if (!name.empty()) {
      add(",\"");
      add(line);
      add("\"");
    } else if (find_unquoted(text, ": ", start) == string::npos) {
      add(line);
    }
    start = end + 2;
  }
}

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
  int found = -1;
  for (int row = 0; row < QaltWcdma_AtEndFlgTableSize; ++row) {
    const size_t place = find_unquoted(text, flag_of(QaltWcdma_AtEndFlgTable[row]));
    if (place < head) {
      head = place;
      found = row;
    }
  }
  if (found == -1) return parsed;

  const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[found];
  parsed.result = 0;
  parsed.command = static_cast<uint16_t>(row.CmdId);
  parsed.type = static_cast<uint8_t>(row.ResType);
  size_t cut_from = head;
  size_t cut_to = head + flag_of(row).size();
  if (row.HavePara == 1) {
    const bool to_end = contains(text, "CBM:") || contains(text, "CMT:") ||
                        contains(text, "CDS:") || contains(text, "JCLAS:");
    const size_t end = to_end ? text.size() : find_unquoted(text, kLineEnd, cut_to);
    if (end != string::npos) {
      parsed.payload = text.substr(cut_to, std::min(end - cut_to, kLongestPayload));
      parsed.para_length = static_cast<uint16_t>(parsed.payload.size());
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

}  // namespace literal
