// line.h - the dispatcher on a simulated modem, with a clock of the test's own.
#ifndef QALT_TESTS_SERVER_LINE_H_
#define QALT_TESTS_SERVER_LINE_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "server/dispatcher.h"
#include "sim/modem.h"

namespace qalt::server {

using std::chrono::milliseconds;

using Answers = std::map<uint64_t, std::string>;
using Texts = std::vector<std::string>;

class Line : private Dispatcher::Host {
 public:
  explicit Line(std::initializer_list<const char*> rules = {}, sim::Config config = {})
      : modem(with(std::move(config), rules)), dispatcher(*this, {"ATE0"}) {
    dispatcher.opened(now, true);
    run(milliseconds(0));
    sent.clear();
  }

  uint64_t submit(const std::string& line, int timeout = 1000, Peer peer = {1, 1}) {
    dispatcher.submit({++last_id, line, milliseconds(timeout), peer}, now);
    return last_id;
  }

  // Lets time pass: outputs of the modem and deadlines come in their order.
  void run(milliseconds time) {
    const TimePoint end = now + time;
    for (;;) {
      const TimePoint deadline = dispatcher.deadline().value_or(TimePoint::max());
      const bool output = !outputs.empty() && outputs.front().first <= deadline;
      const TimePoint at = output ? outputs.front().first : deadline;
      if (at > end) break;
      now = std::max(now, at);
      if (!output) {
        dispatcher.tick(now);
        continue;
      }
      const sim::Output one = std::move(outputs.front().second);
      outputs.erase(outputs.begin());
      if (one.kind == sim::Output::Kind::kHangUp) {
        outputs.clear();
        dispatcher.closed();
      } else {
        dispatcher.receive(one.bytes, now);
      }
    }
    now = end;
  }

  std::string ask(const std::string& line, int timeout = 1000, Peer peer = {1, 1}) {
    const uint64_t id = submit(line, timeout, peer);
    run(milliseconds(60'000));
    return answers.contains(id) ? answers[id] : "none";
  }

  TimePoint now{};
  sim::Modem modem;
  std::vector<std::pair<TimePoint, sim::Output>> outputs;
  Answers answers;
  Texts reports;
  Texts sent;
  bool mute = false;
  int given_up = 0;
  int noted = 0;
  int64_t ended_below = 0;  // processes with smaller numbers have ended
  uint64_t last_id = 0;
  Dispatcher dispatcher;

 private:
  static sim::Config with(sim::Config config, std::initializer_list<const char*> rules) {
    for (const char* rule : rules) config.faults.rules.push_back(sim::parse_fault_rule(rule));
    return config;
  }
  void write_modem(std::string_view bytes) override {
    sent.emplace_back(bytes);
    if (mute) return;
    modem.receive(bytes);
    TimePoint at = outputs.empty() ? now : std::max(now, outputs.back().first);
    for (sim::Output& output : modem.take()) {
      at += output.delay;
      outputs.emplace_back(at, std::move(output));
    }
  }
  void answer(uint64_t id, std::string_view text) override {
    EXPECT_TRUE(answers.emplace(id, text).second) << "answered twice";
  }
  void report(std::string_view text) override { reports.emplace_back(text); }
  void give_up_port() override { ++given_up; }
  void note(int, const std::string&) override { ++noted; }
  bool runs(const Peer& peer) const override { return peer.process >= ended_below; }
};

inline const std::string kOk = "\r\nOK\r\n";
inline const std::string kError = "\r\nERROR\r\n";
inline const std::string kCsq = "\r\n+CSQ: 20,99\r\n" + kOk;
inline const std::string kAway = "\r\n+CME ERROR: 1\r\n";
inline const std::string kCops = "\r\n+COPS: 0,0,\"Testnet\",2\r\n" + kOk;
inline const std::string kPin = "\r\n+CPIN: READY\r\n" + kOk;

}  // namespace qalt::server

#endif  // QALT_TESTS_SERVER_LINE_H_
