#include "sim/faults.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <limits>
#include <stdexcept>

#include "at/at_line.h"
#include "at/escape.h"

namespace qalt::sim {
namespace {

enum class Value { kNone, kNumber, kText };

struct ActionRow {
  std::string_view name;
  Action action;
  Value value;
};

// clang-format off
constexpr std::array<ActionRow, 8> kActions = {{
    {"delay",         Action::kDelay,        Value::kNumber},
    {"never",         Action::kNever,        Value::kNone},
    {"cut",           Action::kCut,          Value::kNumber},
    {"hang-up",       Action::kHangUp,       Value::kNumber},
    {"report-before", Action::kReportBefore, Value::kText},
    {"report-inside", Action::kReportInside, Value::kText},
    {"report-after",  Action::kReportAfter,  Value::kText},
    {"answer",        Action::kAnswer,       Value::kText},
}};
// clang-format on

[[noreturn]] void fail(std::string_view rule, const std::string& why) {
  throw std::invalid_argument("fault rule '" + std::string(rule) + "': " + why);
}

unsigned number(std::string_view rule, std::string_view text) {
  unsigned value = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc() || end != text.data() + text.size()) {
    fail(rule, "'" + std::string(text) + "' is not a number");
  }
  return value;
}

std::string unescaped(std::string_view rule, std::string_view text) {
  auto bytes = at::unescaped(text);
  if (!bytes) fail(rule, "a backslash stands before r, n, t, a backslash or x and two digits");
  return std::move(*bytes);
}

void read_which(std::string_view rule, std::string_view which, FaultRule& result) {
  constexpr unsigned kEvery = std::numeric_limits<unsigned>::max();
  if (which == "*") {
    result.last = kEvery;
    return;
  }
  if (which.substr(0, 2) == "1/") {
    result.one_in = number(rule, which.substr(2));
    if (result.one_in == 0) fail(rule, "one in none is not possible");
    return;
  }
  const size_t dash = which.find('-');
  result.first = result.last = number(rule, which.substr(0, dash));
  if (dash != which.npos) {
    const std::string_view last = which.substr(dash + 1);
    result.last = last.empty() ? kEvery : number(rule, last);
  }
  if (result.first == 0 || result.last < result.first) fail(rule, "commands are counted from 1");
}

}  // namespace

FaultRule parse_fault_rule(std::string_view rule) {
  const size_t first = rule.find(':');
  const size_t second = first == rule.npos ? rule.npos : rule.find(':', first + 1);
  if (second == rule.npos) fail(rule, "the form is WHICH:PREFIX:ACTION[=VALUE]");
  FaultRule result;
  read_which(rule, rule.substr(0, first), result);
  result.prefix = rule.substr(first + 1, second - first - 1);

  const std::string_view action = rule.substr(second + 1);
  const std::string_view name = action.substr(0, action.find('='));
  const auto row = std::find_if(kActions.begin(), kActions.end(),
                                [&](const ActionRow& candidate) { return candidate.name == name; });
  if (row == kActions.end()) fail(rule, "there is no action '" + std::string(name) + "'");
  const bool has_value = name.size() < action.size();
  if (has_value == (row->value == Value::kNone)) {
    fail(rule, has_value ? "this action takes no value" : "this action needs =VALUE");
  }
  result.action = row->action;
  if (has_value) {
    const std::string_view value = action.substr(name.size() + 1);
    if (row->value == Value::kNumber) result.value = number(rule, value);
    if (row->value == Value::kText) result.text = unescaped(rule, value);
  }
  return result;
}

bool FaultBook::is_due(size_t rule) {
  const FaultRule& known = rules_[rule];
  ++matched_[rule];
  const bool due = known.one_in > 0 ? chance_() % known.one_in == 0
                                    : matched_[rule] >= known.first && matched_[rule] <= known.last;
  done_[rule] += due;
  return due;
}

FaultPlan FaultBook::plan(std::string_view line) {
  FaultPlan plan;
  for (size_t i = 0; i < rules_.size(); ++i) {
    const FaultRule& rule = rules_[i];
    if (!at::starts_with_nocase(line, rule.prefix) || !is_due(i)) continue;
    switch (rule.action) {
      case Action::kDelay:
        plan.delay += std::chrono::milliseconds(rule.value);
        break;
      case Action::kNever:
        plan.silent = true;
        break;
      case Action::kHangUp:
        plan.hang_up = true;
        [[fallthrough]];
      case Action::kCut:
        plan.cut = rule.value;
        break;
      case Action::kReportBefore:
        plan.reports_before.push_back(rule.text);
        break;
      case Action::kReportInside:
        plan.reports_inside.push_back(rule.text);
        break;
      case Action::kReportAfter:
        plan.reports_after.push_back(rule.text);
        break;
      case Action::kAnswer:
        plan.answer = rule.text;
        break;
    }
  }
  return plan;
}

}  // namespace qalt::sim
