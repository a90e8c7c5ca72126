// command_line.h - a command line as V.250 5.2 to 5.4 has it.
#ifndef QALT_TESTS_SIMULATION_HANDSET_COMMAND_LINE_H_
#define QALT_TESTS_SIMULATION_HANDSET_COMMAND_LINE_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace qalt::simulation {

enum class Form { kExecute, kRead, kTest, kSet };

struct Command {
  std::string name;  // in capitals: "E", "&F", "S3", "+CPBR"
  Form form = Form::kExecute;
  std::vector<std::string> parameters;  // as written, strings in their quotes
};

// The body of a line, in capitals and without blanks and control characters, its strings untouched.
std::string tidied(std::string_view body);

// Takes the next command off a tidied body; nothing where what begins there is none.
std::optional<Command> next_command(std::string_view& body);

// What a command is set to; none where it is not set to one value.
const std::string* sole_parameter(const Command& command);

// A parameter as a decimal number.
std::optional<int> number_of(std::string_view parameter);

// A parameter as a string, without its quotes.
std::optional<std::string> string_of(std::string_view parameter, bool escapes);

// The other way.
std::string quoted(std::string_view text, bool escapes);

// A byte in hexadecimal digits, and back from two digits.
std::string hex_of(unsigned byte, bool upper);
std::optional<unsigned> byte_of(std::string_view digits);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_COMMAND_LINE_H_
