// command_line.h - builds one AT command line in a fixed buffer.
//
// Two things must never reach the modem: a line that was cut, and a text that ends its quotes or
// the line early, since what follows would be taken for another parameter or another command.
// Either makes the line unusable, and the command function refuses the call.
#ifndef QALT_ATCODEC_COMMAND_LINE_H_
#define QALT_ATCODEC_COMMAND_LINE_H_

#include <cstddef>
#include <cstdint>

#include "qalt_at/commands.h"

namespace qalt {

class CommandLine {
 public:
  // `limit`: the line's length with its terminator, PB_CMD_LINE_LEN or PB_WRITE_LINE_LEN.
  CommandLine(size_t limit, const char* start);

  CommandLine& put(const char* text);
  CommandLine& put_number(int32_t number);

  // A record's text, which may fill its member to the last byte, in double quotes.
  CommandLine& put_quoted(const char* text, size_t width);
  template <size_t kWidth>
  CommandLine& put_quoted(const char (&member)[kWidth]) {
    return put_quoted(member, kWidth);
  }

  bool usable() const { return usable_; }
  const char* c_str() const { return text_; }

 private:
  void append(const char* text, size_t length);

  size_t limit_;
  size_t length_ = 0;
  bool usable_ = true;
  char text_[PB_WRITE_LINE_LEN];
};

}  // namespace qalt

#endif  // QALT_ATCODEC_COMMAND_LINE_H_
