// literal_parameters.h - the parameter codec once more, rule by rule and without regard to speed:
// what the library's splits and rewrites are compared with.
#ifndef QALT_TESTS_EXHAUSTIVE_LITERAL_PARAMETERS_H_
#define QALT_TESTS_EXHAUSTIVE_LITERAL_PARAMETERS_H_

#include <string>
#include <vector>

namespace literal {

// The pieces that a split at `separator` stores, resuming `resume` behind each separator's start.
std::vector<std::string> split(const std::string& text, const std::string& separator, size_t resume,
                               bool drops_head = false, bool skips_empty = false);

// A line for a whitespace scan; with_line_ends: line ends inside quotes are marked too.
std::string rewritten(const std::string& line, bool with_line_ends);

// A scanned field, marks turned back.
std::string restored(std::string field, bool with_line_ends);

// The groups of a capability answer, flattened.
std::string flattened(const std::string& line);

}  // namespace literal

#endif  // QALT_TESTS_EXHAUSTIVE_LITERAL_PARAMETERS_H_
