// terminal.h - texts on a terminal: how wide they are, and what must not reach it.
#ifndef QALT_CLI_TERMINAL_H_
#define QALT_CLI_TERMINAL_H_

#include <string>
#include <string_view>
#include <vector>

namespace qalt::cli {

// Columns that a UTF-8 text takes: two for East Asian wide characters and emoji, none for combining
// ones. Does not depend on the locale.
int display_width(std::string_view text);

// The text without what a terminal would act on: control characters and changes of the writing
// direction become U+FFFD, as malformed bytes do.
std::string printable(std::string_view text);

// The text with blanks behind it up to `width` columns.
std::string padded(std::string_view text, int width);

// The text in pieces of at most `width` columns, none of them empty unless the text is.
std::vector<std::string> wrapped(std::string_view text, int width);

// Columns of the terminal at `descriptor`, 80 where there is none.
int terminal_columns(int descriptor);

}  // namespace qalt::cli

#endif  // QALT_CLI_TERMINAL_H_
