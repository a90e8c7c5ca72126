// terminal.h - a terminal on a simulated modem, and a short way to write what comes back.
#ifndef QALT_TESTS_SIM_TERMINAL_H_
#define QALT_TESTS_SIM_TERMINAL_H_

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "sim/modem.h"

namespace test {

// The bytes of an answer: 21 is that error, otherwise "/" is a line end, and what does not begin
// with one is the lines of an information text, or a result.
inline std::string bytes_of(std::string text) {
  if (!text.empty() && text[0] >= '0' && text[0] <= '9') text = "/+CME ERROR: " + text + "/";
  if (text.find_first_of("+^") == 0) text += "//OK";
  if (!text.empty() && text[0] != '/') text = "/" + text + "/";
  for (size_t at = 0; (at = text.find('/', at)) != text.npos;) text.replace(at, 1, "\r\n");
  return text;
}

struct Row {
  std::string command;
  std::string answer;
};

class Terminal {
 public:
  explicit Terminal(qalt::sim::Config config = {}, std::string_view first = "ATE0\r")
      : modem(std::move(config)) {
    send(first);
  }

  std::string send(std::string_view bytes) {
    modem.receive(bytes);
    std::string answer;
    for (const auto& output : modem.take()) answer += output.bytes;
    return answer;
  }
  void expect(const std::vector<Row>& rows) {
    for (const Row& row : rows) {
      EXPECT_EQ(send(row.command + "\r"), bytes_of(row.answer)) << row.command;
    }
  }

  qalt::sim::Modem modem;
};

}  // namespace test

#endif  // QALT_TESTS_SIM_TERMINAL_H_
