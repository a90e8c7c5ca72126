// replay_port.h - a modem that says again what a transcript holds, so that a field problem can be
// looked at on the desk.
//
// A command is answered with what followed the next recording of the same command, the search going
// on from the last one found and once around; a command that was never recorded gets ERROR.
#ifndef QALT_SERVER_REPLAY_PORT_H_
#define QALT_SERVER_REPLAY_PORT_H_

#include <asio.hpp>
#include <vector>

#include "at/transcript.h"
#include "server/modem_port.h"

namespace qalt::server {

class ReplayPort : public ModemPort {
 public:
  // Throws std::runtime_error when the file cannot be opened, holds nothing of a modem line, or one
  // of its lines is none of a transcript.
  ReplayPort(asio::io_context& context, const std::string& path);

  void open() override;
  void write(std::string_view bytes) override;
  void close() override { ++session_; }
  bool clean_at_open() const override { return true; }
  std::string name() const override { return "replay of " + path_; }

 private:
  void say(std::string bytes);

  asio::io_context& context_;
  std::string path_;
  std::vector<at::TranscriptEntry> entries_;  // without remarks
  size_t position_ = 0;                       // behind the last command found
  unsigned session_ = 0;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_REPLAY_PORT_H_
