// line_rules.h - what clients may do to the line that they share. Its modes belong to the server:
// an answer without words, with other line ends or none at all would be nobody's (ITU-T V.250,
// 6.2.1 to 6.2.6), and a data call would take everybody's commands for its data.
#ifndef QALT_SERVER_LINE_RULES_H_
#define QALT_SERVER_LINE_RULES_H_

#include <string_view>

namespace qalt::server {

// In the order of what they cost.
enum class LineRule {
  kSent,      // as it is
  kUndone,    // sent, and the modes are set again before the next line
  kRestarts,  // sent; the modem is as after power-up then
  kRefused,   // not sent
};

LineRule rule_of(std::string_view line);

}  // namespace qalt::server

#endif  // QALT_SERVER_LINE_RULES_H_
