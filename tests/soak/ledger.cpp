#include "tests/soak/ledger.h"

#include <algorithm>
#include <cstdio>

namespace soak {

Ledger::Ledger(int first, int count) : first_(first), allowed_(size_t(count), {Content{}}) {}

void Ledger::wrote(int index, const Content& content, bool succeeded) {
  std::vector<Content>& allowed = allowed_[size_t(index - first_)];
  if (succeeded) allowed.clear();
  if (std::find(allowed.begin(), allowed.end(), content) == allowed.end()) {
    allowed.push_back(content);
  }
}

std::vector<int> Ledger::read(int first, int last, const Contents& found) {
  std::vector<int> wrong;
  for (int index = first; index <= last; ++index) {
    const auto at = found.find(index);
    const Content content = at == found.end() ? Content{} : at->second;
    const std::vector<Content>& may = allowed(index);
    if (std::find(may.begin(), may.end(), content) == may.end()) {
      wrong.push_back(index);
    } else {
      wrote(index, content, true);
    }
  }
  return wrong;
}

std::string answer_line(int index, const Content& content) {
  std::string line = "+CPBR: " + std::to_string(index) + ",\"" + content.number + "\"," +
                     (content.number.starts_with('+') ? "145" : "129") + ",\"";
  for (const wchar_t c : content.name) {
    char digits[9];
    std::snprintf(digits, sizeof digits, "%04X", unsigned(c));
    line += digits;
  }
  return line + '"';
}

}  // namespace soak
