// literal.h - the response parser and the parameter codec once more, rule by rule and without
// regard to speed: every flag is searched for in the whole text and every text is a string of its
// own. What the library is compared with.
#ifndef QALT_TESTS_EXHAUSTIVE_LITERAL_H_
#define QALT_TESTS_EXHAUSTIVE_LITERAL_H_

#include <cstdint>
#include <string>
#include <vector>

namespace literal {

using std::string;

// First occurrence outside quotes at or behind `from`, quotes counted from there; npos without one.
size_t find_unquoted(const string& text, const string& needle, size_t from = 0);

// What a parse gave; a record that arrived zeroed is assumed.
struct Parsed {
  int result = 19;
  string rest;  // what is left of the text
  uint32_t command = 0, type = 0, para_length = 0;
  string payload;
};
Parsed parse(string text);

// The pieces that a split at `separator` stores, resuming `resume` behind each separator's start.
std::vector<string> split(const string& text, const string& separator, size_t resume,
                          bool drops_head = false, bool skips_empty = false);

// A line for a whitespace scan, and a scanned field with its marks turned back; with_line_ends:
// line ends inside quotes are marked too. The groups of a capability answer, flattened.
string rewritten(const string& line, bool with_line_ends);
string restored(string field, bool with_line_ends);
string flattened(const string& line);

}  // namespace literal

#endif  // QALT_TESTS_EXHAUSTIVE_LITERAL_H_
