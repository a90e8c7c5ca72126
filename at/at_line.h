// at_line.h - the syntax of an AT command line (ITU-T V.250, 5.2 to 5.4): the commands of a line
// and the parameters of a command.
#ifndef QALT_AT_AT_LINE_H_
#define QALT_AT_AT_LINE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qalt::at {

enum class Form {
  kExecute,  // "+CSQ", "E0", "D112;"
  kSet,      // "+CPBS="SM"", "S0=3"
  kQuery,    // "+CPBS?"
  kTest      // "+CPBS=?"
};

struct Command {
  std::string name;  // upper case, prefix included: "+CPBR", "^SCPBR", "E", "&F", "S0", "D"
  Form form = Form::kExecute;
  std::string arguments;  // of a basic command its number, of a set what follows "="
};

struct LineCommands {
  std::vector<Command> commands;
  bool whole = true;        // the line has nothing else
  size_t before_fault = 0;  // how many stand before what breaks the syntax: all where it is whole
};

// The commands of a line that begins with "AT" in either case, in order. Behind what breaks the
// syntax there is what a lenient modem might take for commands. "AT" alone gives an empty list.
// Blanks outside quotes do not count (V.250, 5.2.1). A ";" inside quotes does not end a command;
// that of "D" belongs to what it dials (V.250, 6.3.1).
LineCommands read_line(std::string_view line);

// As read_line(), but none for a line that breaks the syntax anywhere.
std::optional<std::vector<Command>> split_line(std::string_view line);

struct Argument {
  std::string value;  // without its quotes
  bool quoted = false;
};

// The parameters between commas outside quotes. None when a quoted one is not closed or text
// stands around it. Empty arguments give one empty parameter.
std::optional<std::vector<Argument>> split_arguments(std::string_view arguments);

// Whether `text` begins with `prefix`, ASCII letters compared in either case.
bool starts_with_nocase(std::string_view text, std::string_view prefix);

}  // namespace qalt::at

#endif  // QALT_AT_AT_LINE_H_
