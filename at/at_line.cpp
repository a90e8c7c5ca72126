#include "at/at_line.h"

#include <algorithm>

namespace qalt::at {
namespace {

char upper(char c) {
  return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}
bool is_letter(char c) {
  return upper(c) >= 'A' && upper(c) <= 'Z';
}
bool is_digit(char c) {
  return c >= '0' && c <= '9';
}

// The prefixes of extended commands: "+" of the standards, the others of vendors.
bool is_extended(char c) {
  return std::string_view("+^$%*#!@_-").find(c) != std::string_view::npos;
}
// V.250, 5.4.1.
bool is_name(char c) {
  return is_letter(c) || is_digit(c) ||
         std::string_view("!%-./:_").find(c) != std::string_view::npos;
}

std::string without_blanks(std::string_view line) {
  std::string text;
  bool quoted = false;
  for (const char c : line) {
    quoted ^= c == '"';
    if (c != ' ' || quoted) text += c;
  }
  return text;
}

size_t command_end(std::string_view line, size_t position) {
  bool quoted = false;
  for (; position < line.size(); ++position) {
    if (line[position] == '"') quoted = !quoted;
    if (line[position] == ';' && !quoted) break;
  }
  return position;
}

// What follows a name: "", "?", "=?" or "=" and the arguments.
bool read_form(std::string_view rest, Command& command) {
  if (rest.empty()) {
    command.form = Form::kExecute;
  } else if (rest == "?") {
    command.form = Form::kQuery;
  } else if (rest == "=?") {
    command.form = Form::kTest;
  } else if (rest[0] == '=') {
    command.form = Form::kSet;
    command.arguments = rest.substr(1);
  } else {
    return false;
  }
  return true;
}

// One basic command: a letter, "&" or "\" and a letter, or "S" and its number.
bool read_basic(std::string_view line, size_t& position, Command& command) {
  if (line[position] == '&' || line[position] == '\\') command.name += line[position++];
  if (position == line.size() || !is_letter(line[position])) return false;
  command.name += upper(line[position++]);
  if (command.name == "D") {
    const size_t end = std::min(command_end(line, position) + 1, line.size());
    command.arguments = line.substr(position, end - position);
    position = end;
    return true;
  }
  size_t end = position;
  while (end < line.size() && is_digit(line[end])) ++end;
  const std::string_view number = line.substr(position, end - position);
  position = end;
  if (command.name != "S") {
    command.arguments = number;
    return true;
  }
  command.name += number;
  end = position;
  while (end < line.size() && (line[end] == '=' || line[end] == '?' || is_digit(line[end]))) ++end;
  const std::string_view rest = line.substr(position, end - position);
  position = end;
  return read_form(rest, command);
}

}  // namespace

bool starts_with_nocase(std::string_view text, std::string_view prefix) {
  if (text.size() < prefix.size()) return false;
  for (size_t i = 0; i < prefix.size(); ++i) {
    if (upper(text[i]) != upper(prefix[i])) return false;
  }
  return true;
}

LineCommands read_line(std::string_view line) {
  const std::string dense = without_blanks(line);
  line = dense;
  if (!starts_with_nocase(line, "AT")) return {{}, false, 0};
  LineCommands read;
  const auto fault = [&read] {
    if (read.whole) read.before_fault = read.commands.size();
    read.whole = false;
  };
  for (size_t position = 2; position < line.size();) {
    if (line[position] == ';') {
      ++position;
      continue;
    }
    Command command;
    if (is_extended(line[position])) {
      const size_t end = command_end(line, position);
      command.name = line[position++];
      while (position < end && is_name(line[position])) command.name += upper(line[position++]);
      if (command.name.size() < 2) {
        fault();
        continue;
      }
      if (read_form(line.substr(position, end - position), command)) {
        position = end;
      } else {
        fault();
      }
    } else if (const size_t start = position; !read_basic(line, position, command)) {
      fault();
      position = std::max(position, start + 1);
      continue;
    }
    read.commands.push_back(std::move(command));
  }
  if (read.whole) read.before_fault = read.commands.size();
  return read;
}

std::optional<std::vector<Command>> split_line(std::string_view line) {
  LineCommands read = read_line(line);
  if (!read.whole) return std::nullopt;
  return std::move(read.commands);
}

std::optional<std::vector<Argument>> split_arguments(std::string_view arguments) {
  std::vector<Argument> list(1);
  for (size_t i = 0; i < arguments.size(); ++i) {
    const char c = arguments[i];
    Argument& current = list.back();
    if (c == ',') {
      list.emplace_back();
    } else if (c == '"' && current.value.empty() && !current.quoted) {
      const size_t end = arguments.find('"', i + 1);
      if (end == arguments.npos) return std::nullopt;
      current = {std::string(arguments.substr(i + 1, end - i - 1)), true};
      i = end;
    } else if (c != ' ') {
      if (current.quoted || c == '"') return std::nullopt;
      current.value += c;
    }
  }
  return list;
}

}  // namespace qalt::at
