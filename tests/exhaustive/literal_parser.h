// literal_parser.h - the response parser once more, rule by rule and without regard to speed: every
// flag is searched for in the whole text and every text is a string of its own. What the library's
// parser is compared with.
#ifndef QALT_TESTS_EXHAUSTIVE_LITERAL_PARSER_H_
#define QALT_TESTS_EXHAUSTIVE_LITERAL_PARSER_H_

#include <cstdint>
#include <string>

namespace literal {

// First occurrence outside quotes at or behind `from`, quotes counted from there; npos without one.
size_t find_unquoted(const std::string& text, const std::string& needle, size_t from = 0);

// What a parse gave; a record that arrived zeroed is assumed.
struct Parsed {
  int result = 19;
  std::string rest;  // what is left of the text
  uint16_t command = 0;
  uint8_t type = 0;
  uint32_t para_length = 0;
  std::string payload;
};

Parsed parse(std::string text);

}  // namespace literal

#endif  // QALT_TESTS_EXHAUSTIVE_LITERAL_PARSER_H_
