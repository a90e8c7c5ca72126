#include <algorithm>
#include <array>

#include "tests/simulation/handset/character_sets.h"
#include "tests/simulation/handset/phone.h"

namespace qalt::simulation {
namespace {

// Settings that are a number: where they are, clause included, what they may be, and what +X? has
// behind them.
struct Value {
  std::string_view name;
  int Settings::*place;
  int first, last;
  std::string_view behind;
};
constexpr std::array<Value, 10> kValues = {{
    {"E", &Settings::echo, 0, 1, ""},
    {"Q", &Settings::quiet, 0, 1, ""},
    {"V", &Settings::verbose, 0, 1, ""},
    {"X", &Settings::monitor, 0, 4, ""},
    {"S3", &Settings::end_of_line, 0, 127, ""},
    {"S4", &Settings::line_feed, 0, 127, ""},
    {"S5", &Settings::backspace, 0, 127, ""},
    {"+CMEE", &Settings::errors, 0, 2, ""},
    {"+CREG", &Settings::registration, 0, 2, ",1"},
    {"+CMGF", &Settings::message_format, 0, 1, ""},
}};

Result run_value(Phone& phone, const Value& value, const Command& command, Lines& lines) {
  const bool is_register = value.name.front() == 'S';
  const std::string name(value.name);
  if (command.form == Form::kTest) {
    lines = {name + ": (" + std::to_string(value.first) + '-' + std::to_string(value.last) + ')'};
    return Result::kOk;
  }
  if (command.form == Form::kRead) {
    const std::string digits = std::to_string(phone.now.*value.place);
    // V.250 5.3.2: a register is read as three digits.
    lines = {is_register ? std::string(3 - digits.size(), '0') + digits
                         : name + ": " + digits + std::string(value.behind)};
    return Result::kOk;
  }
  const std::string* parameter = sole_parameter(command);
  const auto number = number_of(parameter ? *parameter : "");
  if (!number || *number < value.first || *number > value.last) return Result::kError;
  phone.now.*value.place = *number;
  return Result::kOk;
}

// Texts that are always the same: an execution or a reading command.
struct Text {
  std::string_view name;
  Form form;
  std::string_view line;
};
constexpr std::array<Text, 9> kTexts = {{
    {"I", Form::kSet, "Handset 2"},                    // V.250 6.1.3
    {"+GMM", Form::kExecute, "Handset 2"},             // V.250 6.1.5
    {"+CGMI", Form::kExecute, "Handset Works"},        // TS 27.007 5.1
    {"+CGMM", Form::kExecute, "Handset 2"},            // TS 27.007 5.2
    {"+CGMR", Form::kExecute, "2.0"},                  // TS 27.007 5.3
    {"+CGSN", Form::kExecute, "004999010640000"},      // TS 27.007 5.4
    {"+COPS", Form::kRead, "+COPS: 0,0,\"Example\""},  // TS 27.007 7.3
    {"+CFUN", Form::kRead, "+CFUN: 1"},                // TS 27.007 8.2
    {"+CSQ", Form::kExecute, "+CSQ: 17,99"},           // TS 27.007 8.5
}};

Result run_text(const Text& text, const Command& command, Lines& lines) {
  if (command.form == Form::kTest) return Result::kOk;
  if (command.form != text.form) return Result::kError;
  lines = {std::string(text.line)};
  return Result::kOk;
}

// V.250 6.1.1 and 6.1.2: Z has what somebody left, &F what the maker meant.
Result reset(Phone& phone, const Command& command, Lines&) {
  if (command.parameters != std::vector<std::string>{"0"}) return Result::kError;
  phone.now = command.name == "Z" ? phone.options.initial : Settings{};
  return Result::kOk;
}

Result character_set(Phone& phone, const Command& command, Lines& lines) {
  std::string& set = phone.now.set;
  if (command.form == Form::kTest) {
    lines = {"+CSCS: (" + list_of(phone, phone.options.sets) + ')'};
    return Result::kOk;
  }
  if (command.form == Form::kRead) {
    lines = {"+CSCS: " +
             (phone.options.set_named_in_itself ? said(phone, widened(set)) : quoted(set, false))};
    return Result::kOk;
  }
  const std::string* parameter = sole_parameter(command);
  for (const std::string& each : phone.options.sets) {
    if (!parameter || !is_word(phone, *parameter, each)) continue;
    set = each;
    return Result::kOk;
  }
  return Result::kError;
}

Result pin(Phone& phone, const Command& command, Lines& lines) {
  if (command.form == Form::kTest) return Result::kOk;
  if (phone.card == Card::kAbsent) return Result::kNoCard;
  if (command.form == Form::kRead) {
    lines = {phone.card == Card::kReady ? "+CPIN: READY" : "+CPIN: SIM PIN"};
    return Result::kOk;
  }
  const std::string* parameter = sole_parameter(command);
  if (!parameter) return Result::kError;
  if (phone.card == Card::kReady) return Result::kNotAllowed;
  const auto code = string_of(*parameter, phone.options.escapes);
  if (code.value_or(*parameter) != phone.options.pin) return Result::kWrongPassword;
  phone.card = Card::kReady;
  return Result::kOk;
}

Result list(Phone& phone, const Command& command, Lines& lines);

struct Row {
  std::string_view name;
  Result (*run)(Phone&, const Command&, Lines&);
};
constexpr std::array<Row, 10> kCommands = {{
    {"Z", reset},              // V.250 6.1.1
    {"&F", reset},             // V.250 6.1.2
    {"+CSCS", character_set},  // TS 27.007 5.5
    {"+CPIN", pin},            // TS 27.007 8.3
    {"+CPBS", phonebook},      // TS 27.007 8.11
    {"+CPBR", phonebook},      // TS 27.007 8.12
    {"+CPBF", phonebook},      // TS 27.007 8.13
    {"+CPBW", phonebook},      // TS 27.007 8.14
    {"+CLAC", list},           // TS 27.007 8.37
    {"+CMGR", read_message},   // TS 27.005 3.4.3
}};

template <typename Table>
const typename Table::value_type* row_of(const Table& table, std::string_view name) {
  const auto* row =
      std::find_if(table.begin(), table.end(), [&](const auto& each) { return each.name == name; });
  return row == table.end() ? nullptr : row;
}

Result list(Phone& phone, const Command& command, Lines& lines) {
  if (command.form == Form::kTest) return Result::kOk;
  if (command.form != Form::kExecute) return Result::kError;
  const auto add = [&](const auto& table) {
    for (const auto& row : table)
      if (!phone.options.unknown.contains(std::string(row.name)))
        lines.push_back("AT" + std::string(row.name));
  };
  add(kValues), add(kTexts), add(kCommands);
  return Result::kOk;
}

}  // namespace

void power_up(Phone& phone) {
  phone.now = phone.options.initial;
  phone.card = phone.options.card;
  phone.busy_for = phone.options.busy_for;
}

std::string said(const Phone& phone, std::u16string_view text) {
  return quoted(encoded(text, phone.now.set, phone.options.upper_hex), phone.options.escapes);
}

bool is_word(const Phone& phone, std::string_view parameter, std::string_view word) {
  const auto text = string_of(parameter, phone.options.escapes);
  return text && (*text == word || decoded(*text, phone.now.set) == widened(word));
}

std::string list_of(const Phone& phone, const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words)
    (list += list.empty() ? "" : comma(phone)) += quoted(word, false);
  return list;
}

std::string_view comma(const Phone& phone) {
  return phone.options.blanks ? ", " : ",";
}

Result run(Phone& phone, const Command& command, Lines& lines) {
  if (phone.options.unknown.contains(command.name)) return Result::kError;
  if (const auto* value = row_of(kValues, command.name))
    return run_value(phone, *value, command, lines);
  if (const auto* text = row_of(kTexts, command.name)) return run_text(*text, command, lines);
  const auto* row = row_of(kCommands, command.name);
  return row ? row->run(phone, command, lines) : Result::kError;
}

}  // namespace qalt::simulation
