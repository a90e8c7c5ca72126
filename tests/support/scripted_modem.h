// scripted_modem.h - an AT server inside the test program: its own connect, send and recv stand in
// for the whole link, so that a command is answered at once, without a socket, a thread or a pause.
#ifndef QALT_TESTS_SUPPORT_SCRIPTED_MODEM_H_
#define QALT_TESTS_SUPPORT_SCRIPTED_MODEM_H_

#include <cstdint>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace test {

struct SentCommand {
  std::string line;
  uint32_t timeout_ms;

  bool operator==(const SentCommand&) const = default;
};

// Only one at a time; commands sent while none exists find no server.
class ScriptedModem {
 public:
  using Answer = std::function<std::string(const std::string& line)>;

  ScriptedModem();
  ~ScriptedModem();
  ScriptedModem(const ScriptedModem&) = delete;
  ScriptedModem& operator=(const ScriptedModem&) = delete;

  // The answer to each line that begins with `start`; the rule set last is tried first. A line that
  // no rule knows is answered ERROR.
  void on(std::string start, Answer answer);
  void on(std::string start, std::string answer);

  const std::vector<SentCommand>& sent() const { return sent_; }
  std::vector<std::string> lines() const;
  void forget() { sent_.clear(); }

  std::string receive(const std::string& line, uint32_t timeout_ms);

  bool listening = true;    // whether connections are taken
  unsigned user = 0;        // who listens
  unsigned interrupts = 0;  // so many of the next calls of the link are interrupted by a signal

 private:
  std::vector<std::pair<std::string, Answer>> rules_;
  std::vector<SentCommand> sent_;
};

// Answers as a modem frames them.
inline const std::string kOk = "\r\nOK\r\n";
inline const std::string kError = "\r\nERROR\r\n";
inline const std::string kNotSupport = "\r\nnot support\r\n";
// In place of an answer: the server is gone before it answers.
inline const std::string kHangUp = "hang up";
std::string information(const std::vector<std::string>& lines);  // the lines, then OK

}  // namespace test

#endif  // QALT_TESTS_SUPPORT_SCRIPTED_MODEM_H_
