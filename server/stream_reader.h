// stream_reader.h - the modem's bytes cut into answers and reports. Pure: no I/O and no clock.
//
// The modem's output is read line by line. A line is the command's echo, a report, a final result,
// or an information line of the answer; inside the answer to a command whose lines bear its name, a
// line of another name is a report, known or not. Quotes do not matter here: only a line that is a
// final result ends an answer, so an odd quote in a stored name hides nothing.
//
// What holds for any input: memory is bounded by the longest answer and the longest line, and every
// byte is looked at a bounded number of times. The events depend on how the bytes were cut into
// pieces in two cases only: while a command is under way that asks for a text, a "> " at the
// beginning of a line is the modem's prompt when nothing stands behind it yet; and of a line longer
// than two of the longest answers some bytes are left out, which ones depends on the cuts.
#ifndef QALT_SERVER_STREAM_READER_H_
#define QALT_SERVER_STREAM_READER_H_

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "at/at_line.h"
#include "qalt_at/link.h"

namespace qalt::server {

struct StreamEvent {
  enum class Kind {
    kAnswer,  // the command is answered; `text` as the modem sent it, without echo and reports
    kPrompt,  // as kAnswer, but the modem asks for text and waits
    kReport,  // a report, each of its lines framed by "\r\n"
    kLine     // any other line outside an answer, without its line end
  };
  Kind kind;
  std::string text;
  bool too_long = false;    // does not fit a frame; `text` is empty
  bool unfit = false;       // holds a NUL, which a frame's text cannot; `text` is empty
  bool anothers = false;    // holds lines of the answer to another command
  bool open_quote = false;  // an odd number of quotes: it may have ended too early
  bool echoed = false;      // the modem sent the command back first
  bool connected = false;   // the line is a data call's now
  bool restart = false;     // the modem says that it has begun anew
};

class StreamReader {
 public:
  static constexpr size_t kLongestAnswer = QALT_AT_TEXT_SIZE - 1;

  // A command was written; what comes is its answer up to its final result.
  void expect_answer(std::string_view command);
  // `command` was written to find the end of what the modem still says to those before; lines that
  // bear the name of one of these are still no reports.
  void expect_resync(std::string_view command);
  // No answer is expected; lines of the last command's name are reports again.
  void expect_nothing();

  void feed(std::string_view bytes) { input_.append(bytes); }
  // The next event, none if the bytes so far make up no further one.
  std::optional<StreamEvent> next();
  // Forgets everything: the port was opened anew.
  void reset();

 private:
  void begin(std::string_view command);
  std::optional<std::string_view> next_line();
  std::optional<StreamEvent> take_line(std::string_view line);
  std::optional<StreamEvent> take_answer_line(std::string_view line, std::string_view content,
                                              bool cut, bool stale);
  bool take_echo(std::string_view line, std::string_view content);
  std::optional<StreamEvent> report_head(std::string_view content);
  StreamEvent finish(StreamEvent::Kind kind);
  void append(std::string_view line);
  void append_blank(std::string_view line);
  void withdraw_blank();
  bool is_own(std::string_view content) const;
  bool is_final(std::string_view content) const;
  bool connects(std::string_view content) const;

  std::string input_;
  size_t consumed_ = 0;  // bytes of input_ that are done with
  size_t scanned_ = 0;   // bytes of input_ known to hold no further line end
  size_t stale_ = 0;     // bytes of input_ that came before the command was written
  bool line_cut_ = false;

  bool expecting_ = false;
  bool dialling_ = false;
  bool prompting_ = true;  // the command, unknown at first, may make the modem ask for a text
  bool named_ = true;      // what bears another name than the command's is no line of its answer
  bool echo_possible_ = false;
  bool echoed_ = false;
  bool resyncing_ = false;
  std::string command_;
  std::vector<std::string> own_names_;
  std::optional<at::Command> sole_;  // the command, where the line has one that is known

  std::string answer_;
  bool too_long_ = false;
  bool odd_quotes_ = false;
  bool anothers_ = false;
  size_t blank_ = 0;      // length of the empty line that the answer ends with at the moment
  bool owed_ = false;     // a report took the empty line before it along
  std::string headline_;  // a report that waits for its line of data
};

}  // namespace qalt::server

#endif  // QALT_SERVER_STREAM_READER_H_
