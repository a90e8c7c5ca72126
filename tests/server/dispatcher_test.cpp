// The order of things on the modem line, with a simulated modem and a clock of the test's own.
#include "server/dispatcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "sim/modem.h"

namespace qalt::server {
namespace {

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
  void note(int, const std::string&) override {}
};

const std::string kOk = "\r\nOK\r\n";
const std::string kError = "\r\nERROR\r\n";
const std::string kCsq = "\r\n+CSQ: 20,99\r\n" + kOk;
const std::string kPin = "\r\n+CPIN: READY\r\n" + kOk;

// In order, each with the time that it asked for, counted from the sending.
TEST(Dispatcher, OneAtATime) {
  Line line({"*:AT+:delay=900"});
  for (const char* command : {"AT+CSQ", "AT+CPIN?", "AT+NONE"}) line.submit(command);
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r"}));
  line.run(milliseconds(900));
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "AT+CPIN?\r"}));
  line.run(milliseconds(5000));
  EXPECT_EQ(line.answers, (Answers{{1, kCsq}, {2, kPin}, {3, kError}}));
  EXPECT_EQ(line.dispatcher.deadline(), std::nullopt);
}

TEST(Dispatcher, WhatComesLateNeverReachesTheNextCommand) {
  // The answer comes: never; late, while the server probes; cut; late, in single bytes and with a
  // report in it; as an error; a command without information; as a prompt.
  const struct {
    const char* rule;
    const char* command;
    bool bytewise;
  } rows[] = {
      {"1:AT+CSQ:never", "AT+CSQ", false},
      {"1:AT+CSQ:delay=1001", "AT+CSQ", false},
      {"1:AT+CSQ:delay=2500", "AT+CSQ", true},
      {"1:AT+CSQ:delay=9000", "AT+CSQ", false},
      {"1:AT+CSQ:cut=9", "AT+CSQ", false},
      {"1:AT+CSQ:cut=17", "AT+CSQ", true},
      {"1:AT+NONE:delay=1500", "AT+NONE", false},
      {"1:AT+CPBW:delay=1500", "AT+CPBW=1", false},
      {"1:AT+CMGS:delay=1500", "AT+CMGS=\"1\"", false},
      {"1:AT+CSQ:answer=\\r\\n+CSQ: \"\\r\\nOK\\r\\n\\r\\n> ", "AT+CSQ", false},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.rule);
    sim::Config config;
    config.faults.single_bytes = row.bytewise;
    Line line({row.rule}, config);
    const uint64_t late = line.submit(row.command);
    const uint64_t next = line.submit("AT+CPIN?");
    line.run(milliseconds(999));
    EXPECT_EQ(line.answers.count(next), line.answers.count(late));
    line.run(milliseconds(30'000));
    if (std::string(row.rule).find("answer") == std::string::npos) {
      EXPECT_EQ(line.answers[late], "");
    }
    EXPECT_EQ(line.answers[next], kPin);
    EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
    EXPECT_TRUE(line.reports.empty());
    EXPECT_EQ(line.given_up, 0);
  }
}

TEST(Dispatcher, ADeadModemIsGivenUp) {
  Line line;
  line.mute = true;
  EXPECT_EQ(line.ask("AT+CSQ"), "");
  EXPECT_EQ(line.given_up, 1);
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "AT\r", "AT\r", "AT\r", "AT\r", "AT\r"}));
  // Closed: no waiting, and nothing is due.
  EXPECT_EQ(line.ask("AT"), "");
  EXPECT_EQ(line.dispatcher.deadline(), std::nullopt);
  // Opened again with something on the line: it is cleared before the start lines.
  line.mute = false;
  line.sent.clear();
  line.dispatcher.opened(line.now, false);
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  EXPECT_EQ(line.sent, (Texts{"AT\r", "ATE0\r", "AT+CSQ\r"}));
}

TEST(Dispatcher, AHangUpEndsEverythingAtHand) {
  Line line({"1:AT+CSQ:hang-up=4"});
  line.submit("AT+CSQ");
  line.submit("AT");
  line.run(milliseconds(0));
  EXPECT_EQ(line.answers, (Answers{{1, ""}, {2, ""}}));
  line.dispatcher.opened(line.now, true);
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
}

TEST(Dispatcher, ClientsThatLeave) {
  Line line({"*:AT+CSQ:delay=100"});
  for (const char* command : {"AT+CSQ", "AT+CPBW=1", "AT+CPIN?"}) line.submit(command);
  line.dispatcher.cancel(1);
  line.dispatcher.cancel(2);
  line.run(milliseconds(1000));
  EXPECT_EQ(line.answers, (Answers{{3, kPin}}));
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "AT+CPIN?\r"}));
}

TEST(Dispatcher, AnswersThatAFrameCannotCarry) {
  sim::Config config;
  config.name_length = 240;
  config.sim_contacts.assign(1, {0, {"1", 129, u"a@b", "", "", "", u""}});
  for (int i = 1; i < 50; ++i) {
    config.sim_contacts.push_back({i, {"1", 129, std::u16string(240, u'x'), "", "", "", u""}});
  }
  Line line({}, config);
  EXPECT_EQ(line.ask("AT+CPBR=2,50"), "\r\n+CME ERROR: 24\r\n");
  EXPECT_EQ(line.ask("AT+CSCS=\"GSM\""), kOk);
  EXPECT_EQ(line.ask("AT+CPBR=1"), "\r\n+CME ERROR: 25\r\n");
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
}

TEST(Dispatcher, APromptIsAnsweredAndCancelled) {
  Line line;
  EXPECT_EQ(line.ask("AT+CMGS=\"1\""), "\r\n> ");
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  EXPECT_EQ(line.sent[1], "\x1B");
}

TEST(Dispatcher, ReportsGoTheirOwnWay) {
  Line line({"*:AT+CSQ:report-inside=RING"});
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  // A stray result between commands is nobody's.
  line.dispatcher.receive("\r\nOK\r\n\r\n+CME ERROR: 3\r\n\r\n+NEW: 1\r\n", line.now);
  EXPECT_EQ(line.reports, (Texts{"\r\nRING\r\n", "\r\n+NEW: 1\r\n"}));
  EXPECT_EQ(line.ask("AT+CPIN?"), kPin);
}

TEST(Dispatcher, TwoProcessesReadTheirOwnNames) {
  const Peer anna{1, 1};
  const Peer bob{2, 2};
  Line line({"2:AT+CSCS=\"IRA\":answer=\\r\\nERROR\\r\\n"});
  const std::string plain = line.ask("AT+CPBR=1", 1000, bob);
  EXPECT_EQ(line.ask("AT+CSCS=\"UCS2\"", 1000, anna), kOk);
  const std::string hex = line.ask("AT+CPBR=1", 1000, anna);
  EXPECT_NE(hex, plain);
  EXPECT_EQ(line.ask("AT+CPBR=1", 1000, bob), plain);
  EXPECT_EQ(line.ask("AT+CPBR=1", 1000, anna), hex);
  // Where the setting cannot be put back the command is not carried out with the other's.
  EXPECT_EQ(line.ask("AT+CPBW=1,\"1\",129,\"0041\"", 1000, bob), kError);
  EXPECT_EQ(line.modem.state().sim.find(1)->number, "+4930901820");
}

// A client that goes on after a selection without an answer must not have its digits stored.
TEST(Dispatcher, ATextIsNeverTakenInAnotherSet) {
  const std::string write = "AT+CPBW=1,\"1\",129,\"0041\"";
  for (const char* rule : {"1:AT+CSCS=\"UCS2\":never", "1:AT+CSCS=\"UCS2\":hang-up=3"}) {
    Line line({rule});
    EXPECT_EQ(line.ask("AT+CSCS=\"UCS2\""), "");
    line.dispatcher.opened(line.now, true);
    EXPECT_EQ(line.ask(write), kOk);
    EXPECT_EQ(line.modem.state().sim.find(1)->name, u"A") << rule;
  }
  // Before the server was killed this one may have selected a set, and this server has not seen it.
  Line line({});
  line.dispatcher.submit({++line.last_id, write, milliseconds(1000), {1, 1}, true}, line.now);
  EXPECT_EQ(line.answers[line.last_id], "");
  EXPECT_NE(line.modem.state().sim.find(1)->number, "1");
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  // After a time-out nobody knows what the modem still has selected.
  Line silent({"1:AT+CSQ:never"});
  silent.ask("AT+CSCS=\"UCS2\"");
  EXPECT_EQ(silent.ask("AT+CSQ"), "");
  silent.sent.clear();
  silent.ask("AT+CPBR=1");
  EXPECT_EQ(silent.sent.front(), "AT+CSCS=\"UCS2\"\r");
}

}  // namespace
}  // namespace qalt::server
