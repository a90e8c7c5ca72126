// The order of things on the modem line: answers, reports, clients and their settings.
#include "tests/server/line.h"

namespace qalt::server {
namespace {

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
      {"ATA", "/CONNECT 9600/", "/NO CARRIER/", ""},
      {"AT+CMGR=1", "/+CMGR: 1/CONNECT/RDY//OK/", "/+CMGR: 1/CONNECT/RDY//OK/", ""},
      {"AT+CMGS=1", "/> ", "/> ", ""},
      {"AT+CMGS=1", "/> //+CREG: 1/", "/> ", "/+CREG: 1/"},
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
      // The answer to a question before, behind a result too many.
      {"AT+CPBR=1,2", "/+CPBS: \"SM\",1,9//OK/", "", ""},
      {"AT+CPBR=3", "/+CPBR: 2,\"\"//OK/", "", ""},
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

TEST(Dispatcher, WhatBeganBeforeACommandIsNoAnswerToIt) {
  for (const std::string rest : {"\r\nO", "\r\n+CREG: 1", "\x07 noise", "\r"}) {
    SCOPED_TRACE(rest);
    Line line;
    line.mute = true;
    line.dispatcher.receive(rest, line.now);
    line.submit("AT+CSQ");
    line.dispatcher.receive((rest == "\r\nO" ? "K\r\n" : "\r\n") + std::string(kCsq), line.now);
    EXPECT_EQ(line.answers[1], kCsq);
  }
}

TEST(Dispatcher, ClientsThatLeave) {
  Line line({"*:AT+CSQ:delay=100"});
  for (const char* command : {"AT+CSQ", "AT+CPBW=1", "AT+CPIN?"}) line.submit(command);
  line.dispatcher.cancel(1, line.now);
  line.dispatcher.cancel(2, line.now);
  line.run(milliseconds(1000));
  EXPECT_EQ(line.answers, (Answers{{3, kPin}}));
  EXPECT_EQ(line.sent, (Texts{"AT+CSQ\r", "AT+CPIN?\r"}));
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
      // The name of a name: put back once.
      {bob, "AT+CSCS=\"0030003000340031\"", ""},
      {anna, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      {bob, "AT+COPS?", "AT+CSCS=\"0041\"\r"},
      {bob, "AT+CSCS=\"GSM\"", ""},
      // After a failed line nobody knows which of its commands were carried out.
      {anna, "AT+CSCS=\"GSM\";+NONE", ""},
      {anna, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      {bob, "ATZ", ""},
      {bob, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      // A later process with the same number is another one.
      {anna, "AT+CSCS=\"UCS2\"", ""},
      {{1, 11}, "AT+COPS?", "AT+CSCS=\"IRA\"\r"},
      {anna, "AT+CMEE=2", "AT+CMEE?\r"},
      {bob, "AT+CSQ", "AT+CMEE=1\r"},
      {anna, "AT+CSQ", "AT+CMEE=2\r"},
      // The modem passes over blanks, and carries out what stands before a fault.
      {anna, "AT+CSCS =\"IRA\"", ""},
      {bob, "AT+CSCS=\"UCS2\";-", "AT+CMEE=1\r"},
      {anna, "AT+COPS?", "AT+CSCS=\"IRA\"\rAT+CMEE=2\r"},
      // No value becomes a command.
      {anna, "AT+CSCS=\"0022003B0058\"", ""},
      {bob, "AT+COPS?", "AT+CSCS=\"IRA\"\rAT+CMEE=1\r"},
      {anna, "AT+COPS?", "AT+CSCS=\"0022003B0058\"\rAT+CMEE=2\r"},
      {anna, "AT+CMEE=\"1;X\"", ""},
      {bob, "AT+CSQ", "AT+CMEE=1\r"},
      {anna, "AT+CSQ", ""},
  };
  Line line({"*:AT+CMEE=\":answer=\\r\\nOK\\r\\n", "*:AT+CSCS=\"0022:answer=\\r\\nOK\\r\\n",
             "*:AT+CSCS=\"003:answer=\\r\\nOK\\r\\n", "*:AT+CSCS=\"0041:answer=\\r\\nOK\\r\\n"});
  for (const auto& row : rows) {
    line.sent.clear();
    line.ask(row.line, 1000, row.peer);
    std::string sent;
    for (const std::string& one : line.sent) sent += one;
    std::erase(sent, '\x1B');
    EXPECT_EQ(sent.substr(0, sent.find("ATE0")), row.before + std::string(row.line) + "\r");
  }
}

// A selection is kept while its process runs, whatever others send; where too many run that have
// selected something, the first of them hears of it once.
TEST(Dispatcher, WhatManyProcessesSelected) {
  Line line;
  const auto by_many = [&](const char* command, int64_t first, int64_t last) {
    for (int64_t process = first; process <= last; ++process) {
      line.ask(command, 1000, {process, 1});
    }
  };
  const Peer anna{5000, 1};
  line.ask("AT+CPBS=\"ME\"", 1000, anna);
  line.ask("AT+CSCS=\"UCS2\"", 1000, anna);
  by_many("AT+CPBR=1", 100, 500);
  line.ended_below = 1100;
  by_many("AT+CSCS=\"GSM\"", 600, 1200);
  line.sent.clear();
  EXPECT_NE(line.ask("AT+CPBR=1", 1000, anna), "");
  EXPECT_EQ(line.sent.front(), "AT+CSCS=\"UCS2\"\r");
  by_many("AT+CSCS=\"GSM\"", 6000, 6300);
  // The storage alone is not enough.
  EXPECT_EQ(line.ask("AT+CSCS=\"UCS2\"", 1000, anna), kOk);
  EXPECT_EQ(line.ask("AT+CPBR=1", 1000, anna), "");
  EXPECT_NE(line.ask("AT+CPBR=1", 1000, anna), "");
}

// Where clients cannot be told apart, no selection is one client's.
TEST(Dispatcher, AClientWithoutANameSelectsNothing) {
  Line line;
  const Peer nobody{};
  for (const char* text : {"AT+CSCS=\"UCS2\"", "AT+CPBR=1", "AT+CSQ;+CPBS=\"ME\""}) {
    EXPECT_EQ(line.ask(text, 1000, nobody), "\r\n+CME ERROR: 3\r\n");
  }
  EXPECT_EQ(line.ask("AT+CSQ", 1000, nobody), kCsq);
  const Peer handle{0, 0, 77}, other{0, 0, 78};
  EXPECT_EQ(line.ask("AT+CSCS=\"UCS2\"", 1000, handle), kOk);
  line.sent.clear();
  line.ask("AT+COPS?", 1000, other);
  EXPECT_EQ(line.sent.front(), "AT+CSCS=\"IRA\"\r");
}

// How long one process waits at most beside others, each command of the modem taking 100 ms.
TEST(Dispatcher, ProcessesTakeTurns) {
  const struct {
    int processes, commands, timeout;
    const char* line;
    bool leave;
    int most;
  } rows[] = {
      {1, 200, 1000, "AT+CPAS", false, 200},
      // Late ones take one turn together: the answer, the way back and the start line.
      {50, 2, 1, "AT+CPAS", false, 700},
      {50, 2, 600'000, "AT+CIMI", true, 1200},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    sim::Config config;
    config.faults.delay = milliseconds(100);
    Line line({"*:AT+CIMI:never"}, config);
    line.run(milliseconds(100));
    for (int round = 0; round < 20; ++round) {
      for (int k = 0; k < row.processes * row.commands; ++k) {
        const uint64_t id = line.submit(row.line, row.timeout, {100 + k % row.processes, 1});
        if (row.leave) line.dispatcher.cancel(id, line.now);
      }
      // Until it is known who is late, everybody has a turn.
      if (round == 0) line.run(std::chrono::seconds(60));
      const uint64_t id = line.submit("AT+CSQ");
      const TimePoint asked = line.now;
      while (!line.answers.contains(id)) line.run(milliseconds(10));
      EXPECT_LE(line.now - asked, milliseconds(row.most));
      EXPECT_EQ(line.answers[id], kCsq);
    }
  }
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
  // Nor where the client of the selection left before its turn.
  Line left({"*:AT+CSQ:delay=100"});
  left.submit("AT+CSQ");
  left.dispatcher.cancel(left.submit("AT+CSCS=\"UCS2\""), left.now);
  EXPECT_EQ(left.ask(write), kOk);
  EXPECT_EQ(left.modem.state().sim.find(1)->name, u"A");
  // Nor for a process that may have selected one at a server before, in a line of any command.
  left.dispatcher.submit({99, "AT+CMEE=1;" + write.substr(2), milliseconds(1000), {7, 7}, true},
                         left.now);
  left.run(milliseconds(1000));
  EXPECT_EQ(left.modem.state().sim.find(1)->name, u"A");
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
