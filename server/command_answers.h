// command_answers.h - what the answer to a command can hold, as far as its name tells.
#ifndef QALT_SERVER_COMMAND_ANSWERS_H_
#define QALT_SERVER_COMMAND_ANSWERS_H_

#include <string_view>

#include "at/at_line.h"

namespace qalt::server {

// Whether the modem may prompt for a text ("\r\n> ", 3GPP TS 27.005, 3.5.1 and 4.3) before it
// answers.
bool may_prompt(const at::Command& command);

// Whether each information line of the answer bears the command's own name, so that a line of
// another name is a report (3GPP TS 27.007, 4). Not so where an answer has texts in it, and where a
// vendor's command is not known.
bool answers_by_name(const at::Command& command);

// How some modems say that they do not know a command; clients know kNotSupported.
constexpr std::string_view kCommandNotSupport = "COMMAND NOT SUPPORT";
constexpr std::string_view kNotSupported = "not support";

// Whether a line, without its line end, is the final result of any command.
bool is_result(std::string_view line);

// Whether a line says that what follows is a call's data: "CONNECT", "CONNECT 9600" (ITU-T V.250,
// 5.7.1). "CONNECT OK" of vendors does not.
bool is_connect(std::string_view line);

// "+CREG: 1", "^RSSI:18": a line that bears a name.
bool bears_name(std::string_view line);

// Whether a line is one of an answer of the phonebook's commands, and never a report.
bool is_phonebooks(std::string_view line);

// Whether a line cannot belong to the answer of `command`, nor be a report: it bears the name of
// another of the phonebook's commands, or an index that was not asked for. The answers are then
// those to the questions before, because of a result too many.
bool is_anothers(const at::Command& command, std::string_view line);

}  // namespace qalt::server

#endif  // QALT_SERVER_COMMAND_ANSWERS_H_
