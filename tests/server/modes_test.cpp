// The modes of the line: what clients may change, and what a modem that began anew has lost.
#include "tests/server/line.h"

namespace qalt::server {
namespace {

const std::string kNotAllowed = "\r\n+CME ERROR: 3\r\n";
const std::string kWake = "ATE0Q0V1\r";
const std::string kUcs2 = "AT+CSCS=\"UCS2\"";

std::string all(const Texts& texts) {
  std::string text;
  for (const std::string& one : texts) text += one;
  return text;
}

TEST(Modes, AreTheServers) {
  enum { kKept, kUndone, kRestarts };
  const struct {
    const char* line;
    std::string answer;
    int then = kKept;
  } rows[] = {
      {"ATQ1", kNotAllowed},
      {"at v", kNotAllowed},
      {"ATE1V0+CSQ", kNotAllowed},
      {"AT+CSQ;Q01", kNotAllowed},
      {"ATS3=59", kNotAllowed},
      {"AT S 0 3 = 59", kNotAllowed},
      {"ATS3", kNotAllowed},
      {"ATS5=48", kNotAllowed},
      {"AT+CMUX=0", kNotAllowed},
      {"ATD123", kNotAllowed},
      {"ATD1;Q1", kNotAllowed},
      {"ATD\"a;b\"", kNotAllowed},
      {"ATDT1;D2;O", kNotAllowed},
      {"AT!X;+IPR=300", kNotAllowed},
      {"AT\\Q0+IPR=300", kNotAllowed},
      {"AT%C1+IPR=300", kNotAllowed},
      {"AT!X;D*99#", kNotAllowed},
      {"A/", kNotAllowed},
      {"AT\\Q3", kError},
      {"AT!GSTATUS?", kError},
      {"AT-CMD?1", kError, kUndone},
      {"ATE0V1Q0X4S0=0", kOk},
      {"AT+CPBW=1,\"1\",129,\"E1;Q1\"", kOk},
      {"ATS3?", kError},
      {"ATE1", kOk, kUndone},
      {"AT@X;E1", kError, kUndone},
      {"ATZ", kOk, kRestarts},
      {"AT&F+CSQ", kCsq, kRestarts},
      {"AT+CFUN=1", kOk, kRestarts},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.line);
    Line line;
    EXPECT_EQ(line.ask(row.line), row.answer);
    std::string sent = all(line.sent);
    EXPECT_EQ(sent.find(row.line + std::string("\r")) != sent.npos, row.answer != kNotAllowed);
    EXPECT_EQ(sent.ends_with(kWake), row.then == kUndone) << sent;
    EXPECT_EQ(sent.ends_with("\rATE0\r"), row.then == kRestarts) << sent;
    EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
    EXPECT_FALSE(line.modem.state().echo);
  }
}

// The modem begins anew under a client that has selected a set: it says so at rest or in front of
// an answer, or its echo does. No text goes in the set that is selected then.
TEST(Modes, ComeBackAfterARestart) {
  const std::string write = "AT+CPBW=1,\"1\",129,\"0041\"";
  for (const char* says : {"RDY", "^SYSSTART AIRPLANE MODE", "*EBOOT: 1", "+CPIN: READY", ""}) {
    for (const bool inside : {false, true}) {
      SCOPED_TRACE(says + std::string(inside ? " inside" : ""));
      Line line({"2:AT+CSQ:delay=500"});
      line.ask(kUcs2);
      line.ask("AT+CSQ");
      if (inside) line.submit("AT+CSQ", 30'000);
      line.modem.receive("ATZ\r");
      line.modem.take();
      line.sent.clear();
      const std::string report = "\r\n" + std::string(says) + "\r\n";
      if (*says != '\0') {
        line.dispatcher.receive(report, line.now);
      } else {
        EXPECT_EQ(line.ask("AT+CPBR=2"), "");
      }
      EXPECT_EQ(line.ask(write), kOk);
      EXPECT_TRUE(all(line.sent).ends_with("\rATE0\r" + kUcs2 + "\r" + write + "\r"));
      EXPECT_EQ(line.modem.state().sim.find(1)->name, u"A");
      EXPECT_EQ(line.reports, *says == '\0' ? Texts{} : Texts{report});
    }
  }
  // Or its errors have no class any more.
  sim::Config classless;
  classless.cmee = 0;
  Line line({}, classless);
  for (const std::string& one : {kUcs2, std::string("AT+CMEE=1"), std::string("AT+CPBR=999")}) {
    line.ask(one);
  }
  line.modem.receive("ATZE0\r");
  line.modem.take();
  EXPECT_EQ(line.ask("AT+CPBW=999"), kError);
  line.sent.clear();
  EXPECT_EQ(line.ask(write), kOk);
  EXPECT_EQ(line.sent.front(), "AT+CMEE?\r");
  EXPECT_EQ(line.modem.state().sim.find(1)->name, u"A");
  // Not for ever, where a start line is what restarts it, or every line.
  for (const char* rule : {"*:ATE0:report-after=RDY", "*:AT:report-before=RDY"}) {
    Line endless({rule});
    endless.submit("AT+CSQ");
    endless.submit("AT+CSQ");
    endless.run(milliseconds(60'000));
    EXPECT_EQ(endless.answers, (Answers{{1, kCsq}, {2, kCsq}}));
    EXPECT_LT(endless.sent.size(), 80u);
  }
}

TEST(Modes, ADataCallIsEnded) {
  Line line({"*:ATA:answer=\\r\\nCONNECT 9600\\r\\n"});
  const uint64_t call = line.submit("ATA");
  const uint64_t next = line.submit("AT+CSQ");
  line.run(milliseconds(2000));
  EXPECT_EQ(line.answers, (Answers{{call, "\r\nNO CARRIER\r\n"}}));
  EXPECT_EQ(line.sent, (Texts{"ATA\r", "+++"}));
  line.run(milliseconds(1000));
  EXPECT_EQ(line.answers[next], kCsq);
  EXPECT_EQ(line.sent[2], "ATH\r");
  // Of a line that is not understood; one that the modem took by itself; and a modem that knows
  // nothing else.
  line.mute = true;
  const uint64_t unknown = line.submit("AT-X?1");
  for (int question = 0; question < 3; ++question) line.dispatcher.receive(kOk, line.now);
  line.dispatcher.receive("\r\nCONNECT\r\n", line.now);
  line.mute = false;
  line.run(milliseconds(20'000));
  EXPECT_EQ(line.answers[unknown], "\r\nNO CARRIER\r\n");
  line.dispatcher.receive("\r\nCONNECT\r\n", line.now);
  EXPECT_EQ(line.ask("AT+CSQ"), kCsq);
  Line stuck({"*:AT:answer=\\r\\nCONNECT\\r\\n"});
  EXPECT_EQ(stuck.ask("AT+CSQ"), kAway);
  EXPECT_EQ(stuck.given_up, 1);
}

}  // namespace
}  // namespace qalt::server
