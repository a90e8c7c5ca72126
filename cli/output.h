// output.h - what the tool prints: a table for eyes, JSON for programs, messages on standard error.
#ifndef QALT_CLI_OUTPUT_H_
#define QALT_CLI_OUTPUT_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "qalt_at/detail/contact.hpp"
#include "qalt_at/detail/result.hpp"

namespace qalt::cli {

using Json = nlohmann::ordered_json;

// A contact as an object: index, name, number, number2, number3, email, extra, coding, further.
Json json_of(const Contact& contact);
// One line of JSON; malformed bytes become U+FFFD.
std::string line_of(const Json& value);
// An array with one element a line.
std::string array_of(const std::vector<Contact>& contacts);

// The contacts in aligned columns, within `columns` of them; a long name goes on below itself.
std::string table_of(const std::vector<Contact>& contacts, int columns);

// "\"Anna\" +4930..." for messages.
std::string label_of(const Contact& contact);

// What is left of a job that ended early.
struct Remainder {
  std::vector<int> unknown;  // indices whose change was sent, and nothing tells what became of it
  size_t left = 0;           // changes that were not made, and not refused
};
// "; what became of index 4 is not known; 11 left to do"; empty where nothing is left.
std::string text_of(const Remainder& rest);

// "qalt-pb: what; advice" or {"error": {"code", "class", "message", "advice"}} on standard error.
void say_error(const Error& error, bool json);
// The same for what does not stop the command.
void say_warning(const std::string& text, bool json);

}  // namespace qalt::cli

#endif  // QALT_CLI_OUTPUT_H_
