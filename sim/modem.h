// modem.h - a simulated modem: bytes in, bytes out with a schedule. No I/O, no thread and no clock,
// so that a socket server, a pseudo-terminal and a test drive the same machine, and the same input
// always gives the same output.
#ifndef QALT_SIM_MODEM_H_
#define QALT_SIM_MODEM_H_

#include <chrono>
#include <string>
#include <string_view>
#include <vector>

#include "sim/commands.h"

namespace qalt::sim {

// What the modem does next: `delay` after its previous output it sends the bytes or closes the
// line.
struct Output {
  enum class Kind { kData, kHangUp };
  Kind kind = Kind::kData;
  std::chrono::milliseconds delay{0};
  std::string bytes;
};

class Modem {
 public:
  explicit Modem(Config config);

  // What a terminal sends: command lines ended by CR, in pieces of any size.
  void receive(std::string_view bytes);
  // The outputs since the last call, in order.
  std::vector<Output> take();
  // An unsolicited report, now; "\n" in it separates its lines.
  void inject_report(std::string_view text);
  // The line was closed and opened again: half a command is forgotten, everything else stays.
  void reopened();

  const State& state() const { return state_; }
  const FaultBook& faults() const { return faults_; }

 private:
  void execute(std::string_view line);
  // The whole answer to a line, as its text and where its final result begins.
  struct Answer {
    std::string text;
    size_t final_at = 0;
  };
  Answer answer(std::string_view line);
  std::string final_text(const std::string& result) const;
  void finish_prompt(bool send);
  void send(std::string_view bytes, std::chrono::milliseconds delay = {});

  State state_;
  FaultBook faults_;
  std::string line_;
  bool too_long_ = false;
  bool prompting_ = false;  // a short message is being typed
  std::vector<Output> outputs_;
};

}  // namespace qalt::sim

#endif  // QALT_SIM_MODEM_H_
