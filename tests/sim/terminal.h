// terminal.h - a terminal on a simulated modem: a command in, everything that comes back out.
#ifndef QALT_TESTS_SIM_TERMINAL_H_
#define QALT_TESTS_SIM_TERMINAL_H_

#include <string>

#include "sim/modem.h"

namespace test {

class Terminal {
 public:
  explicit Terminal(qalt::sim::Config config = {}) : modem(std::move(config)) { send("ATE0"); }

  std::string send(std::string_view command) {
    modem.receive(std::string(command) + "\r");
    return taken();
  }
  std::string taken() {
    std::string bytes;
    for (const auto& output : modem.take()) bytes += output.bytes;
    return bytes;
  }

  qalt::sim::Modem modem;
};

inline const std::string kOk = "\r\nOK\r\n";
inline const std::string kError = "\r\nERROR\r\n";
inline std::string cme(int code) {
  return "\r\n+CME ERROR: " + std::to_string(code) + "\r\n";
}
inline std::string info(const std::string& line) {
  return "\r\n" + line + "\r\n" + kOk;
}

}  // namespace test

#endif  // QALT_TESTS_SIM_TERMINAL_H_
