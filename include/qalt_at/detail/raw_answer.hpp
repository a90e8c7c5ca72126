/*
 * raw_answer.hpp - the lines of an answer as the modem sent them.
 */
#ifndef QALT_AT_DETAIL_RAW_ANSWER_HPP
#define QALT_AT_DETAIL_RAW_ANSWER_HPP

#include <algorithm>
#include <string>
#include <string_view>

namespace qalt {
namespace detail {

/*
 * Takes the lines without a name out that stand behind one which begins with `prefix`: reports that
 * the AT server cannot know for some, such as "PB DONE". The parser would join each to the line
 * before it, as one more parameter of that contact. A line end inside quotes is none.
 */
inline std::string without_unnamed_lines(std::string_view raw, std::string_view prefix) {
  const size_t end = raw.rfind("\r\nOK\r\n");
  if (prefix.empty() || end == raw.npos) return std::string(raw);
  std::string kept;
  bool behind_own = false;
  bool quoted = false;
  for (size_t start = 0; start < end;) {
    const size_t line_end = std::min(raw.find("\r\n", start), end);
    const size_t next = std::min(line_end + 2, end);
    const std::string_view content = raw.substr(start, line_end - start);
    const bool named = content.empty() || content.find(": ") != content.npos;
    behind_own |= content.substr(0, prefix.size()) == prefix;
    if (named || quoted || !behind_own) {
      kept += raw.substr(start, next - start);
      quoted ^= std::count(content.begin(), content.end(), '"') % 2 != 0;
    }
    start = next;
  }
  return kept.append(raw.substr(end));
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_RAW_ANSWER_HPP */
