// pty_line.h - a pseudo-terminal under a name of the user's choice, the modem's end in this
// process.
#ifndef QALT_SIM_PTY_LINE_H_
#define QALT_SIM_PTY_LINE_H_

#include <asio.hpp>
#include <functional>
#include <string>

namespace qalt::sim {

class PtyLine {
 public:
  // `link` becomes a symbolic link to the terminal; one that is there already is replaced, anything
  // else is not. Throws std::runtime_error with a message for the user.
  PtyLine(asio::io_context& context, std::string link);
  ~PtyLine();
  PtyLine(const PtyLine&) = delete;
  PtyLine& operator=(const PtyLine&) = delete;

  void start(std::function<void(std::string_view)> received);
  void write(std::string_view bytes);
  // Whoever has the terminal open loses it; a new one takes its place.
  void hang_up();

 private:
  void open();
  void close();
  void receive();
  void send();

  asio::posix::stream_descriptor modem_end_;
  // Kept open, so that the line lives on between one program and the next and reading the modem's
  // end does not fail meanwhile.
  int terminal_end_ = -1;
  std::string link_;
  std::string terminal_;
  std::function<void(std::string_view)> received_;
  std::array<char, 4096> buffer_;
  std::string unsent_;
  std::string sending_;
  unsigned session_ = 0;
};

}  // namespace qalt::sim

#endif  // QALT_SIM_PTY_LINE_H_
