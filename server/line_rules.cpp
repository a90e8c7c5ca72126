#include "server/line_rules.h"

#include <algorithm>
#include <array>
#include <string>

#include "at/at_line.h"

namespace qalt::server {
namespace {

struct Mode {
  std::string_view name;
  std::string_view value;  // that the line has
  LineRule otherwise;
};

// An echo reaches no client, so it does no harm until it is off again; X, which is not here, only
// chooses among results that are known.
// clang-format off
constexpr std::array<Mode, 6> kModes = {{
    {"E",  "0",  LineRule::kUndone},
    {"Q",  "0",  LineRule::kRefused},
    {"V",  "1",  LineRule::kRefused},
    {"S3", "13", LineRule::kRefused},
    {"S4", "10", LineRule::kRefused},
    {"S5", "8",  LineRule::kRefused},
}};
// clang-format on

// Data calls, and what changes the line under the server: its speed and framing, and 3GPP TS
// 27.010.
constexpr std::array<std::string_view, 5> kRefusedNames = {"O", "+CGDATA", "+CMUX", "+IPR", "+ICF"};
constexpr std::array<std::string_view, 3> kRestarting = {"Z", "&F", "+CFUN"};

template <typename List>
bool has(const List& list, std::string_view name) {
  return std::find(list.begin(), list.end(), name) != list.end();
}

// Numbers as they are meant: "" is 0, "013" is 13.
std::string number(std::string_view digits) {
  const size_t first = digits.find_first_not_of('0');
  return first == digits.npos ? "0" : std::string(digits.substr(first));
}

LineRule rule_of(const at::Command& command) {
  using at::Form;
  // Without a ";" behind the number it is a data call (3GPP TS 27.007, 6.2).
  if (command.name == "D" && !command.arguments.ends_with(';')) return LineRule::kRefused;
  if (command.form == Form::kQuery || command.form == Form::kTest) return LineRule::kSent;
  if (has(kRefusedNames, command.name)) return LineRule::kRefused;
  if (has(kRestarting, command.name)) return LineRule::kRestarts;
  const bool numbered = command.name[0] == 'S';
  const std::string name = numbered ? "S" + number(command.name.substr(1)) : command.name;
  const auto mode = std::find_if(kModes.begin(), kModes.end(),
                                 [&](const Mode& candidate) { return candidate.name == name; });
  if (mode == kModes.end()) return LineRule::kSent;
  // "S3" alone chooses it for a line "AT=59".
  const bool chosen = numbered && command.form == Form::kExecute;
  return !chosen && number(command.arguments) == mode->value ? LineRule::kSent : mode->otherwise;
}

}  // namespace

LineRule rule_of(std::string_view line) {
  const at::LineCommands read = at::read_line(line);
  // "A/" would repeat somebody's line, and a modem finds an "AT" that stands further on.
  if (!read.whole && read.commands.empty()) return LineRule::kRefused;
  LineRule rule = read.whole ? LineRule::kSent : LineRule::kUndone;
  for (const at::Command& command : read.commands) rule = std::max(rule, rule_of(command));
  return rule;
}

}  // namespace qalt::server
