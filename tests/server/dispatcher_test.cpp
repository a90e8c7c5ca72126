// The order of things on the modem line, with a simulated modem and a clock of the test's own.
#include "server/dispatcher.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <map>

#include "server/back_off.h"
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
const std::string kAway = "\r\n+CME ERROR: 1\r\n";
const std::string kCops = "\r\n+COPS: 0,0,\"Testnet\",2\r\n" + kOk;
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

// In the table "/" stands for a line end and "~" for a NUL.
std::string wire(const std::string& text) {
  std::string bytes;
  for (const char c : text) bytes += c == '/' ? "\r\n" : std::string(1, c == '~' ? '\0' : c);
  return bytes;
}

// Whole and in single bytes; what the server sends meanwhile is not answered.
TEST(Dispatcher, AnswersAndReportsAreToldApart) {
  const auto xs = [](size_t count) { return std::string(count, 'x'); };
  const struct {
    const char* command;  // or empty: none is under way
    std::string bytes, answer, reports;
  } rows[] = {
      {"AT+CSQ", "/+CSQ: 20,99//OK/", "/+CSQ: 20,99//OK/", ""},
      {"AT+JUSIM=?", "/not support/", "/not support/", ""},
      {"AT+JUSIM=?", "/COMMAND NOT SUPPORT/", "/not support/", ""},
      {"AT+CMGD=9", "/+CMS ERROR: 321/", "/+CMS ERROR: 321/", ""},
      {"ATD1", "/CONNECT 9600/", "/CONNECT 9600/", ""},
      {"AT+CMGS=1", "/> ", "/> ", ""},
      // An odd quote hides nothing.
      {"AT+CPBR=1", "/+CPBR: 1,\"a\"b\"//OK/", "/+CPBR: 1,\"a\"b\"//OK/", ""},
      // Echo and noise.
      {"AT", "~/RING/AT\r/OK/", "/OK/", "/RING/"},
      {"AT+CPBR=1", "/+CPBR: 1,\"~~\"//OK/", "/+CME ERROR: 25/", ""},
      // Reports before, inside and after an answer.
      {"AT+A", "/RING//+A: 1/+A: 2//OK//RING/", "/+A: 1/+A: 2//OK/", "/RING//RING/"},
      {"AT+A", "/+A: 1//RING/+A: 2//OK/", "/+A: 1/+A: 2//OK/", "/RING/"},
      // Unframed, in the empty line before the result: the parser needs that line back.
      {"AT+A", "/+A: 1//+CMTI: \"SM\",3/OK/", "/+A: 1//OK/", "/+CMTI: \"SM\",3/"},
      // The command's own name is its answer, also in a line of several commands.
      {"AT+CSQ;+CGREG?", "/+CSQ: 1//+CGREG: 0//OK/", "/+CSQ: 1//+CGREG: 0//OK/", ""},
      {"AT+CGREG?", "/+CEREG: 5//+CGREG: 0//OK//+CGREG: 2/", "/+CGREG: 0//OK/",
       "/+CEREG: 5//+CGREG: 2/"},
      // No table knows them; a text may look the same.
      {"AT+CPBR=1,2", "/+CPBR: 1,\"\"/+CREG: 1,\"C3\"/+CPBR: 2,\"\"//^RSSI:18/OK/",
       "/+CPBR: 1,\"\"/+CPBR: 2,\"\"//OK/", "/+CREG: 1,\"C3\"//^RSSI:18/"},
      {"AT+CMGR=1", "/+CMGR: 1/> you/+MEET: here/> /OK/", "/+CMGR: 1/> you/+MEET: here/> /OK/", ""},
      {"ATI", "/Maker/+GCAP: +CGSM//OK/", "/Maker/+GCAP: +CGSM//OK/", ""},
      {"AT", "/NO CARRIER//+JEND//OK/", "/OK/", "/NO CARRIER//+JEND/"},
      // A stray result between commands is nobody's.
      {"", "/OK//+CME ERROR: 3//+NEW: 1/", "", "/+NEW: 1/"},
      // Reports of two lines; in text mode a status report is one line.
      {"AT+A", "/+A: 1//+CMT: ,5/OK//OK/", "/+A: 1//OK/", "/+CMT: ,5/OK/"},
      {"AT", "/+CDS: 25/0791//OK/", "/OK/", "/+CDS: 25/0791/"},
      {"AT", "/+CDS: 2,5//OK/", "/OK/", "/+CDS: 2,5/"},
      // What fits a frame, and one byte more; what comes after it is found again.
      {"AT", xs(10'233) + "/OK/", xs(10'233) + "/OK/", ""},
      {"AT", xs(10'234) + "/OK//RING/", "/+CME ERROR: 24/", "/RING/"},
      {"AT", "/+CMTI: " + xs(30'000) + "//OK/", "/OK/", ""},
  };
  for (const auto& row : rows) {
    for (const size_t piece : {size_t(1), size_t(50'000)}) {
      SCOPED_TRACE(row.command + row.bytes.substr(0, 50));
      Line line;
      line.mute = true;
      if (*row.command != '\0') line.submit(row.command);
      const std::string bytes = wire(row.bytes);
      for (size_t at = 0; at < bytes.size(); at += piece) {
        line.dispatcher.receive(bytes.substr(at, piece), line.now);
      }
      EXPECT_EQ(line.answers[1], wire(row.answer));
      std::string reports;
      for (const std::string& one : line.reports) reports += one;
      EXPECT_EQ(reports, wire(row.reports));
    }
  }
}

TEST(Dispatcher, WhatComesLateNeverReachesTheNextCommand) {
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
TEST(Dispatcher, EveryModemIsFoundAgain) {
  const struct {
    Texts rules;
    int delay = 0;
    const char* first = "AT+CPBW";
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
      // Left in a state in which there are digits for results, or none.
      {{}, 0, "ATV0"},
      {{}, 300, "ATQ1"},
      {{}, 300, "ATE1Q1V0"},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(testing::PrintToString(row.rules) + row.first);
    sim::Config config;
    for (const std::string& rule : row.rules) {
      config.faults.rules.push_back(sim::parse_fault_rule(rule));
    }
    config.faults.delay = milliseconds(row.delay);
    Line line({}, config);
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

TEST(Dispatcher, ADeadModemIsGivenUp) {
  Line line;
  line.mute = true;
  line.submit("AT+CSQ");
  const uint64_t waits = line.submit("AT+CPIN?");
  line.run(milliseconds(11'000));
  EXPECT_EQ(line.answers, (Answers{{waits - 1, ""}, {waits, kAway}}));
  EXPECT_EQ(line.given_up, 1);
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "ATE0Q0V1\r", "AT+CPAS\r", "ATE0Q0V1\r", "AT+CSQ\r"}));
  // Closed: no waiting, and nothing is due.
  EXPECT_EQ(line.ask("AT"), kAway);
  EXPECT_EQ(line.dispatcher.deadline(), std::nullopt);
  // Opened again with something on the line: it is cleared before the start lines.
  line.mute = false;
  line.sent.clear();
  line.dispatcher.opened(line.now, false);
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  EXPECT_EQ(line.sent,
            (Texts{"ATE0Q0V1\r", "AT+CFUN?\r", "AT+CSQ\r", "AT+CPAS\r", "ATE0\r", "AT+CSQ\r"}));
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

TEST(Dispatcher, ClientsThatLeave) {
  Line line({"*:AT+CSQ:delay=100"});
  for (const char* command : {"AT+CSQ", "AT+CPBW=1", "AT+CPIN?"}) line.submit(command);
  line.dispatcher.cancel(1);
  line.dispatcher.cancel(2);
  line.run(milliseconds(1000));
  EXPECT_EQ(line.answers, (Answers{{3, kPin}}));
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "AT+CPIN?\r"}));
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

// A process that selected nothing gets what stood before the others came.
TEST(Dispatcher, EachProcessFindsItsOwnSettings) {
  const Peer anna{1, 1};
  const Peer bob{2, 2};
  const struct {
    Peer peer;
    const char* line;
    const char* before;  // what the server sends in front of it
  } rows[] = {
      {bob, "AT+CPBR=1", ""},
      {anna, "AT+CPBS=\"ME\"", "AT+CPBS?\r"},
      {anna, "AT+CSCS=\"UCS2\"", "AT+CSCS?\r"},
      {bob, "AT+CSQ", ""},
      {bob, "AT+CPBR=1", "AT+CSCS=\"IRA\"\rAT+CPBS=\"SM\"\r"},
      {anna, "AT+CPBR=1", "AT+CSCS=\"UCS2\"\rAT+CPBS=\"ME\"\r"},
      {bob, "AT+CSCS?", "AT+CSCS=\"IRA\"\r"},
      // Texts outside the phonebook need the set only.
      {anna, "AT+COPS?", "AT+CSCS=\"UCS2\"\r"},
      // A name sent in UCS2 is put back in plain characters; lines of several commands.
      {bob, "AT+CSCS=\"00470053004D\";+CSQ", ""},
      {anna, "AT+COPS?;+CSCS=\"IRA\"", "AT+CSCS=\"UCS2\"\r"},
      {bob, "AT+COPS?", "AT+CSCS=\"GSM\"\r"},
      // After a failed line nobody knows which of its commands were carried out.
      {anna, "AT+CSCS=\"GSM\";+NONE", ""},
      {anna, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      {bob, "ATZ", ""},
      {bob, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      // A later process with the same number is another one.
      {anna, "AT+CSCS=\"UCS2\"", ""},
      {{1, 11}, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
  };
  Line line;
  for (const auto& row : rows) {
    line.sent.clear();
    line.ask(row.line, 1000, row.peer);
    std::string sent;
    for (const std::string& one : line.sent) sent += one;
    EXPECT_EQ(sent, row.before + std::string(row.line) + "\r");
  }
}

TEST(Dispatcher, ManyProcessesDoNotFillTheMemory) {
  Line line;
  line.ask("AT+CSCS=\"UCS2\"");
  for (int64_t process = 100; process < 2000; ++process) {
    line.ask("AT+CSCS=\"GSM\"", 1000, {process, 1});
  }
  // The first one was forgotten; it is served as one who selected nothing.
  line.sent.clear();
  line.ask("AT+COPS?");
  EXPECT_EQ(line.sent.front(), "AT+CSCS=\"IRA\"\r");
}

TEST(Dispatcher, ASettingThatCannotBePutBackRefusesTheCommand) {
  Line line({"*:AT+CSCS=\"IRA\":answer=\\r\\nERROR\\r\\n"});
  EXPECT_EQ(line.ask("AT+CSCS=\"UCS2\""), kOk);
  EXPECT_EQ(line.ask("AT+CPBW=1,\"1\",129,\"0041\"", 1000, {2, 2}), kError);
  EXPECT_EQ(line.modem.state().sim.find(1)->number, "+4930901820");
  // Without an answer to it each command ends, and the modem is there for the next.
  Line silent({"*:AT+CSCS=\"IRA\":never"});
  silent.ask("AT+CSCS=\"UCS2\"");
  for (int64_t process : {2, 3}) silent.submit("AT+CPBR=1", 2000, {process, 1});
  silent.run(milliseconds(15'000));
  EXPECT_EQ(silent.answers, (Answers{{1, kOk}, {2, ""}, {3, ""}}));
  EXPECT_EQ(silent.ask("AT+CSQ"), kCsq);
  // What only asks is not needed.
  Line mute({"*:AT+CSCS?:never"});
  EXPECT_EQ(mute.ask("AT+CSCS=\"UCS2\""), kOk);
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
  // Nor where there was no modem for the selection.
  Line away;
  away.dispatcher.closed();
  EXPECT_EQ(away.ask("AT+CSCS=\"UCS2\""), kAway);
  away.dispatcher.opened(away.now, true);
  EXPECT_EQ(away.ask(write), kOk);
  EXPECT_EQ(away.modem.state().sim.find(1)->name, u"A");
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
