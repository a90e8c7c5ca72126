// file_access.h - files as the tool reads and writes them: whole, or an error.
#ifndef QALT_CLI_FILE_ACCESS_H_
#define QALT_CLI_FILE_ACCESS_H_

#include <string>
#include <string_view>

namespace qalt::cli {

// A path that means standard input or output.
constexpr char kStandardStream[] = "-";

// All bytes of a file, or of standard input. Throws Failure: kBadInput on any error, kInterrupted
// when the user interrupts first.
std::string read_file(const std::string& path);

// Replaces the file that a path leads to, through links, in one step: an earlier one stays whole
// until the new one is, and keeps its mode; a new one is its owner's alone. A pipe or a device is
// written to. Throws Failure.
void write_file(const std::string& path, const std::string& text);

// Whether a path is one of standard output's names.
bool is_standard_output(const std::string& path);

// Writes all bytes; false when the descriptor takes no more.
bool write_all(int descriptor, std::string_view text);

}  // namespace qalt::cli

#endif  // QALT_CLI_FILE_ACCESS_H_
