// exchange.h - what every phonebook command has in common: the line goes to the AT server, the
// answer comes back parsed.
#ifndef QALT_ATCODEC_EXCHANGE_H_
#define QALT_ATCODEC_EXCHANGE_H_

#include <cstdint>

#include "AtCodec/command_line.h"
#include "qalt_at/link.h"
#include "qalt_at/parser.h"

namespace qalt {

// One command's time-out and what it says on the way; a null entry says nothing.
struct CommandRow {
  uint32_t timeout_ms;
  void (*on_no_answer)();
  void (*on_answer)(const char* raw_answer);
  void (*on_unreadable)();
};

// The line that most commands write when an answer has no end flag.
void log_unreadable();

// Sends the line and parses the answer into `answer`, whose type it returns: AT_RES_OK and so on,
// or kNoAnswer when there is no answer, no end flag in it, or the line is not usable (then nothing
// is sent). The raw answer lives only in this call, so that its 10 KB are off the stack again when
// the payload is read.
constexpr int kNoAnswer = 0;
int exchange(const CommandLine& line, const CommandRow& row, AtRes& answer);

}  // namespace qalt

#endif  // QALT_ATCODEC_EXCHANGE_H_
