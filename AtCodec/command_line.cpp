#include "AtCodec/command_line.h"

#include <charconv>
#include <cstring>

#include "common/text.h"

namespace qalt {
namespace {

// A quote ends the string; a line end executes the line; Ctrl-Z and ESC end or leave text input.
bool ends_quotes(char c) {
  return c == '"' || c == '\r' || c == '\n' || c == 0x1A || c == 0x1B;
}

}  // namespace

CommandLine::CommandLine(size_t limit, const char* start) : limit_(limit) {
  put(start);
}

CommandLine& CommandLine::put(const char* text) {
  append(text, std::strlen(text));
  return *this;
}

CommandLine& CommandLine::put_number(int32_t number) {
  char digits[12];
  const char* end = std::to_chars(digits, digits + sizeof digits, number).ptr;
  append(digits, static_cast<size_t>(end - digits));
  return *this;
}

CommandLine& CommandLine::put_quoted(const char* text, size_t width) {
  const size_t length = bounded_length(text, width);
  for (size_t i = 0; i != length; ++i) usable_ = usable_ && !ends_quotes(text[i]);
  put("\"");
  append(text, length);
  return put("\"");
}

void CommandLine::append(const char* text, size_t length) {
  const size_t copied = copy_text(text_ + length_, limit_ - length_, text, length);
  usable_ = usable_ && copied == length;
  length_ += copied;
}

}  // namespace qalt
