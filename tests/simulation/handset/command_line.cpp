#include "tests/simulation/handset/command_line.h"

#include <algorithm>
#include <charconv>

namespace qalt::simulation {
namespace {

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_capital(char c) {
  return c >= 'A' && c <= 'Z';
}

// Where `wanted` stands outside of strings, or the end.
size_t find_unquoted(std::string_view text, char wanted) {
  bool in_string = false;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] == '"') in_string = !in_string;
    if (text[i] == wanted && !in_string) return i;
  }
  return text.size();
}

// What stands before `end`, which is taken off `text`, as is one character behind it.
std::string_view take_until(std::string_view& text, size_t end) {
  const std::string_view before = text.substr(0, end);
  text.remove_prefix(std::min(end + 1, text.size()));
  return before;
}

std::vector<std::string> split(std::string_view list) {
  std::vector<std::string> pieces;
  for (bool more = true; more;) {
    const size_t comma = find_unquoted(list, ',');
    more = comma < list.size();
    pieces.emplace_back(take_until(list, comma));
  }
  return pieces;
}

std::string_view take_digits(std::string_view& text) {
  const auto end = std::find_if_not(text.begin(), text.end(), is_digit);
  const auto length = static_cast<size_t>(end - text.begin());
  const std::string_view digits = text.substr(0, length);
  text.remove_prefix(length);
  return digits;
}

// V.250 5.4.1: a name that begins with "+" reaches to "=", "?" or the semicolon.
std::optional<Command> extended_command(std::string_view& body) {
  std::string_view text = take_until(body, find_unquoted(body, ';'));
  const size_t end = std::min(text.find_first_of("=?"), text.size());
  Command command{std::string(text.substr(0, end)), Form::kExecute, {}};
  text.remove_prefix(end);
  if (text.empty()) return command;
  if (text == "?" || text == "=?") {
    command.form = text.size() == 1 ? Form::kRead : Form::kTest;
  } else if (text.front() == '=') {
    command.form = Form::kSet;
    command.parameters = split(text.substr(1));
  } else {
    return {};
  }
  return command;
}

// V.250 5.3.2: "S", a number, and "?" or "=" and a value.
std::optional<Command> register_command(std::string_view& body) {
  Command command{"S" + std::string(take_digits(body)), Form::kRead, {}};
  if (body.empty()) return {};
  const char sign = body.front();
  body.remove_prefix(1);
  if (sign == '?') return command;
  command.form = Form::kSet;
  command.parameters = {std::string(take_digits(body))};
  return sign == '=' ? std::optional(command) : std::nullopt;
}

}  // namespace

std::string tidied(std::string_view body) {
  std::string text;
  bool in_string = false;
  for (char c : body) {
    if (c == '"') in_string = !in_string;
    const bool printed = static_cast<unsigned char>(c) > ' ' && c != '\x7f';
    if (in_string)
      text += c;
    else if (printed)
      text += c >= 'a' && c <= 'z' ? static_cast<char>(c - 'a' + 'A') : c;
  }
  return text;
}

std::optional<Command> next_command(std::string_view& body) {
  if (body.front() == '+') return extended_command(body);
  // V.250 5.3.1: a letter, before it perhaps "&", behind it perhaps a number, which is 0 otherwise.
  std::string name;
  if (body.front() == '&') name = "&", body.remove_prefix(1);
  if (body.empty() || !is_capital(body.front())) return {};
  name += body.front();
  body.remove_prefix(1);
  if (name == "S") return register_command(body);
  const std::string_view value = take_digits(body);
  return Command{name, Form::kSet, {std::string(value.empty() ? "0" : value)}};
}

const std::string* sole_parameter(const Command& command) {
  const bool sole = command.form == Form::kSet && command.parameters.size() == 1;
  return sole ? &command.parameters.front() : nullptr;
}

std::optional<int> number_of(std::string_view parameter) {
  if (parameter.empty() || !std::all_of(parameter.begin(), parameter.end(), is_digit)) return {};
  int value = 0;
  const auto read = std::from_chars(parameter.data(), parameter.data() + parameter.size(), value);
  return read.ec == std::errc() ? std::optional(value) : std::nullopt;
}

std::optional<std::string> string_of(std::string_view parameter, bool escapes) {
  if (parameter.size() < 2 || parameter.front() != '"' || parameter.back() != '"') return {};
  parameter = parameter.substr(1, parameter.size() - 2);
  if (parameter.find('"') != std::string_view::npos) return {};
  std::string text;
  while (!parameter.empty()) {
    if (!escapes || parameter.front() != '\\') {
      text += parameter.front();
      parameter.remove_prefix(1);
      continue;
    }
    const auto byte = byte_of(parameter.substr(1, 2));
    if (!byte) return {};
    text += static_cast<char>(*byte);
    parameter.remove_prefix(3);
  }
  return text;
}

std::string quoted(std::string_view text, bool escapes) {
  std::string string = "\"";
  for (char c : text) {
    const auto byte = static_cast<unsigned char>(c);
    if (escapes && (byte < ' ' || c == '"' || c == '\\'))
      string += "\\" + hex_of(byte, true);
    else
      string += c;
  }
  return string + '"';
}

std::string hex_of(unsigned byte, bool upper) {
  const char* digits = upper ? "0123456789ABCDEF" : "0123456789abcdef";
  return {digits[byte >> 4 & 15], digits[byte & 15]};
}

std::optional<unsigned> byte_of(std::string_view digits) {
  unsigned value = 0;
  const auto read = std::from_chars(digits.data(), digits.data() + digits.size(), value, 16);
  if (digits.size() != 2 || read.ptr != digits.data() + 2) return {};
  return value;
}

}  // namespace qalt::simulation
