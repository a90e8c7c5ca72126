// The way back to a modem that was late, silent, strange or away.
#include "server/back_off.h"
#include "server/log_limit.h"
#include "tests/server/line.h"

namespace qalt::server {
namespace {

TEST(Recovery, WhatComesLateNeverReachesTheNextCommand) {
  // The answer comes: never; while the server probes, or later; cut; as an error; as a prompt; with
  // an odd quote in it.
  const struct {
    const char* rule;
    const char* command;
    bool bytewise;
  } rows[] = {
      {"1:AT+CSQ:never", "AT+CSQ", false},
      {"1:AT+CSQ:delay=2500", "AT+CSQ", true},
      {"1:AT+CSQ:delay=9000", "AT+CSQ", false},
      {"1:AT+CSQ:cut=17", "AT+CSQ", true},
      {"1:AT+NONE:delay=1500", "AT+NONE", false},
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

// After the first command's time-out, whatever the modem is like, the answers are those to the
// questions again.
TEST(Recovery, EveryModemIsFoundAgain) {
  const struct {
    Texts rules;
    int delay = 0;
    const char* first = "AT+CPBW";
    const char* state = "";
  } rows[] = {
      {{"1:AT+CPBW:delay=2500"}, 300},
      {{"1:AT+CPBW:delay=2500"}, 900},
      {{"1:AT+CPBW:never"}, 3000},
      // Late by several attempts.
      {{"1:AT+CPBW:delay=9000"}, 700},
      // Bytes were lost: of a wake line, of a question's answer.
      {{"1:AT+CPBW:never", "1:ATE0Q0V1:never", "1:AT+CMEE:cut=7"}, 100},
      // The wake line is refused, as AT is; or never answered.
      {{"1:AT+CPBW:delay=1500", "*:ATE:answer=\\r\\nERROR\\r\\n"}, 300},
      {{"1:AT+CPBW:never", "*:ATE:never"}, 300},
      // Questions are refused: one, three, all.
      {{"1:AT+CPBW:delay=1500", "*:AT+CPAS:answer=\\r\\nERROR\\r\\n"}, 300},
      {{"1:AT+CPBW:delay=1500", "*:AT+CPAS:never", "*:AT+CMEE:answer=\\r\\nERROR\\r\\n",
        "*:AT+CSQ:answer=\\r\\nERROR\\r\\n"},
       300},
      {{"1:AT+CPBW:delay=1500", "*:ATE:answer=\\r\\nERROR\\r\\n",
        "*:AT+C:answer=\\r\\nERROR\\r\\n"},
       300},
      // A late answer and reports that have a question's name.
      {{"1:AT+CMEE?:delay=2500", "*:AT+CPAS:report-before=+CSQ: 1,99",
        "*:ATE:report-after=+CPAS: 0"},
       300,
       "AT+CMEE?"},
      // In a state in which there are digits for results, or none.
      {{}, 0, "AT+CSQ", "ATV0\r"},
      {{}, 300, "AT+CSQ", "ATQ1\r"},
      {{}, 300, "AT+CSQ", "ATE1Q1V0\r"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.rules) + row.first);
    sim::Config config;
    for (const std::string& rule : row.rules) {
      config.faults.rules.push_back(sim::parse_fault_rule(rule));
    }
    config.faults.delay = milliseconds(row.delay);
    Line line({}, config);
    line.modem.receive(row.state);
    line.modem.take();
    line.submit(row.first);
    for (const char* next : {"AT+COPS?", "AT^NONE", "AT+CPIN?", "ATI"}) line.submit(next, 5000);
    line.run(milliseconds(60'000));
    const bool refuses = line.answers[2] == kError;
    EXPECT_EQ(line.answers, (Answers{{1, ""},
                                     {2, refuses ? kError : kCops},
                                     {3, kError},
                                     {4, refuses ? kError : kPin},
                                     {5, "\r\nSimulated modem\r\n" + kOk}}));
    EXPECT_EQ(line.given_up, 0);
  }
}

const std::string kEscapedWake =
    "\x1B"
    "ATE0Q0V1\r";

// What asks for a text unforeseen is left, and nothing is sent into it.
TEST(Recovery, APromptThatIsNotTakenForOne) {
  Line line({"*:AT+CMGS:never"});
  EXPECT_EQ(line.ask("AT+CMGS=\"1\""), "");
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  EXPECT_EQ(line.given_up, 0);
}

TEST(Recovery, ADeadModemIsGivenUp) {
  Line line;
  line.mute = true;
  line.submit("AT+CSQ");
  const uint64_t waits = line.submit("AT+CPIN?");
  line.run(milliseconds(11'000));
  EXPECT_EQ(line.answers, (Answers{{waits - 1, ""}, {waits, kAway}}));
  EXPECT_EQ(line.given_up, 1);
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", kEscapedWake, "AT+CPAS\r", kEscapedWake, "AT+CSQ\r"}));
  // Closed: no waiting, and nothing is due.
  EXPECT_EQ(line.ask("AT"), kAway);
  EXPECT_EQ(line.dispatcher.deadline(), std::nullopt);
  // Opened again with something on the line: it is cleared before the start lines.
  line.mute = false;
  line.sent.clear();
  line.dispatcher.opened(line.now, false);
  // A byte is no answer, which would make the next pause short.
  line.dispatcher.receive("\r", line.now);
  EXPECT_FALSE(line.dispatcher.serving());
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  EXPECT_TRUE(line.dispatcher.serving());
  EXPECT_EQ(line.sent,
            (Texts{kEscapedWake, "AT+CFUN?\r", "AT+CSQ\r", "AT+CPAS\r", "ATE0\r", "AT+CSQ\r"}));
  // Bytes without sense do not keep it open either.
  line.mute = true;
  line.submit("AT+CSQ");
  line.run(milliseconds(1000));
  for (int i = 0; i < 300; ++i) {
    line.run(milliseconds(100));
    line.dispatcher.receive("\r\nOK\r\n", line.now);
  }
  EXPECT_EQ(line.given_up, 2);
}

// Row by row: what happens at a second of the test's, and when the port is due then.
TEST(BackOff, IsShortWhileSomebodyAsks) {
  BackOff back_off;
  const TimePoint start{};
  enum class Event { kFails, kAsks, kAnswers };
  using enum Event;
  const struct {
    int at;
    Event event;
    double due;
  } rows[] = {
      {0, kFails, 0.25},  {1, kFails, 1.5},     {2, kFails, 3},        {3, kFails, 5},
      {5, kFails, 9},     {9, kFails, 17},      {17, kFails, 33},      {33, kFails, 63},
      {63, kFails, 93},   {70, kAsks, 64},      {71, kFails, 72},      {129, kFails, 130},
      {130, kFails, 160}, {140, kAnswers, 160}, {150, kFails, 150.25}, {151, kFails, 151.5},
  };
  for (const auto& row : rows) {
    const TimePoint now = start + std::chrono::seconds(row.at);
    if (row.event == kFails) back_off.failed(now);
    if (row.event == kAsks) back_off.asked(now);
    if (row.event == kAnswers) back_off.answered();
    EXPECT_EQ(back_off.due() - start, milliseconds(int(row.due * 1000))) << row.at;
  }
}

TEST(LogLimit, CountsWhatItLeavesOut) {
  LogLimit limit;
  std::string written;
  for (int second = 0; second < 130; ++second) {
    const TimePoint now = TimePoint() + std::chrono::seconds(second);
    written += limit.limited("a", "a", now).value_or("");
    if (second % 60 == 0) written += limit.limited("b", "b", now).value_or("");
  }
  const std::string more = "a (and 55 such lines left out)";
  EXPECT_EQ(written, "abaaaa" + more + "baaaa" + more + "baaaa");
  // Each reset brings a start line again, which may be refused each time.
  Line line({"*:ATE0:answer=\\r\\nERROR\\r\\n"});
  for (int i = 0; i < 50; ++i) line.submit("ATZ");
  line.run(milliseconds(9000));
  EXPECT_LT(line.noted, 25);
}

}  // namespace
}  // namespace qalt::server
