// command_line.h - how every program here reads its command line, where CLI11 alone would guess.
#ifndef QALT_COMMON_COMMAND_LINE_H_
#define QALT_COMMON_COMMAND_LINE_H_

#include <fcntl.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <string>
#include <utility>
#include <vector>

namespace qalt {

// A whole number, in decimal whatever it begins with: 010 is ten. CLI11 alone reads octal and
// hexadecimal digits, too, and nothing at all as 0.
inline CLI::Validator decimal() {
  return CLI::Validator(
      [](std::string& text) -> std::string {
        if (text.empty() || text.find_first_not_of("0123456789") != text.npos) {
          return "\"" + text + "\" is no whole number";
        }
        text.erase(0, std::min(text.find_first_not_of('0'), text.size() - 1));
        return "";
      },
      "", "");
}

// "--ready-fd": a descriptor that the starter opened for it. What is opened later under its number
// would get the line; the streams 0 to 2 have another use.
inline void add_ready_option(CLI::App& app, int& descriptor, const std::string& when) {
  app.add_option("--ready-fd", descriptor, "descriptor that gets the line \"ready\" once " + when)
      ->type_name("FD")
      ->check([](const std::string& text) -> std::string {
        const int number = text.size() < 10 ? std::stoi(text) : -1;
        if (number >= 0 && number <= STDERR_FILENO) return text + " is a standard stream";
        return ::fcntl(number, F_GETFD) == -1 ? "no descriptor " + text + " is open" : "";
      })
      ->transform(decimal());
}

// The option "--name" of the program or of one of its commands; null where there is none.
inline const CLI::Option* find_option(CLI::App& app, const std::string& name) {
  if (const CLI::Option* option = app.get_option_no_throw(name)) return option;
  for (CLI::App* command : app.get_subcommands({})) {
    if (const CLI::Option* option = find_option(*command, name)) return option;
  }
  return nullptr;
}

// Parses the command line. "--name=" gives the empty value; CLI11 alone would take the next
// argument for the value.
inline void parse_arguments(CLI::App& app, int argc, char** argv) {
  std::vector<std::string> arguments;
  bool options_end = false;
  for (int i = 1; i < argc; ++i) {
    const std::string argument = argv[i];
    options_end = options_end || argument == "--";
    const size_t equals = argument.find('=');
    const std::string name = argument.substr(0, equals);
    const CLI::Option* option =
        options_end || name.compare(0, 2, "--") != 0 ? nullptr : find_option(app, name);
    const bool takes_value = option != nullptr && option->get_items_expected_max() > 0;
    const bool empty_value = option != nullptr && equals + 1 == argument.size();
    if (empty_value && !takes_value) throw CLI::ValidationError(name, "takes no value");
    arguments.push_back(empty_value ? name : argument);
    if (empty_value) {
      arguments.emplace_back();
    } else if (takes_value && equals == argument.npos && i + 1 < argc) {
      arguments.emplace_back(argv[++i]);  // a value, whatever it looks like
    }
  }
  std::reverse(arguments.begin(), arguments.end());
  app.parse(std::move(arguments));
}

}  // namespace qalt

#endif  // QALT_COMMON_COMMAND_LINE_H_
