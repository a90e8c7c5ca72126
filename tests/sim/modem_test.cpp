// The simulated modem as a terminal sees it, commands in and bytes out; and what it does wrong on
// demand.
#include "sim/modem.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <initializer_list>
#include <stdexcept>
#include <string>
#include <utility>

namespace qalt::sim {
namespace {

// The bytes of an answer: 21 is that error, otherwise "/" is a line end, and what does not begin
// with one is the lines of an information text, or a result.
std::string bytes_of(std::string text) {
  if (!text.empty() && text[0] >= '0' && text[0] <= '9') text = "/+CME ERROR: " + text + "/";
  if (text.find_first_of("+^") == 0) text += "//OK";
  if (!text.empty() && text[0] != '/') text = "/" + text + "/";
  for (size_t at = 0; (at = text.find('/', at)) != text.npos;) text.replace(at, 1, "\r\n");
  return text;
}

class Terminal {
 public:
  explicit Terminal(Config config = {}, std::string_view first = "ATE0\r")
      : modem(std::move(config)) {
    send(first);
  }

  // The bytes that come back, with each delay and hang-up where `timed`.
  std::string send(std::string_view bytes, bool timed = false) {
    modem.receive(bytes);
    std::string answer;
    for (const Output& output : modem.take()) {
      if (timed) answer += "|" + std::to_string(output.delay.count()) + ":";
      answer += output.bytes + (output.kind == Output::Kind::kHangUp ? "hang-up" : "");
    }
    return answer;
  }
  // Command lines, and what comes back.
  void expect(const std::vector<std::pair<std::string, std::string>>& rows) {
    for (const auto& [command, answer] : rows) {
      EXPECT_EQ(send(command + "\r"), bytes_of(answer)) << command;
    }
  }

  Modem modem;
};

Config small(Profile profile = Profile::kStandard) {
  Config config;
  config.profile = profile;
  config.size = 5;
  config.sim_contacts = {{0, {"+491", 145, u"Zoë", "22", "+33", "z@x.org", u"П"}},
                         {2, {"555", 129, u"a\"b,c;d", "", "", "", u""}}};
  config.device_contacts = {};
  return config;
}

TEST(Modem, Framing) {
  Terminal terminal({}, "");
  const std::pair<std::string, std::string> rows[] = {
      {"AT\r", "AT\r/OK/"},
      {"ATE0\r", "ATE0\r/OK/"},
      {"AT+CSQ", ""},
      {"\r", "/+CSQ: 20,99//OK/"},
      {"\r\n\r\n", ""},
      {"noise\377AT\r", "/OK/"},
      {"ATE0S0=3+csq\r", "/+CSQ: 20,99//OK/"},
      {"AT+CPBW=4,\"5\",129,\"a;b\";+CSQ\r", "/+CSQ: 20,99//OK/"},
      {"AT+CPBW=4,\"5\",129,\"a;+CSQ\r", "/ERROR/"},
      {"AT+CSQ;+NONE;+CPAS\r", "/+CSQ: 20,99//ERROR/"},
      {"AT" + std::string(3000, 'E') + "\r", "/ERROR/"},
      {"AT+CMGS=\"1\"\r", "/> "},
      {"AT\r\x1B", "/OK/"},
  };
  for (const auto& [bytes, answer] : rows) {
    const size_t echo = std::min(answer.find('/'), answer.size());
    EXPECT_EQ(terminal.send(bytes), answer.substr(0, echo) + bytes_of(answer.substr(echo)));
  }
}

TEST(Modem, StandardPhonebook) {
  Terminal terminal(small());
  terminal.expect({
      {"AT+CPBR=?", "+CPBR: (1-5),40,18"},
      {"AT+CPBR=1,5", "+CPBR: 1,\"+491\",145,\"Zo?\"/+CPBR: 3,\"555\",129,\"a\"b,c;d\""},
      {"AT+CPBR=2", "OK"},
      {"AT+CPBR=0", "21"},
      {"AT+CPBW=2,\"12\",129,\"Bo\"", "OK"},
      {"AT+CPBR=2", "+CPBR: 2,\"12\",129,\"Bo\""},
      {"AT+CPBW=,\"+99\",,\"first free\"", "OK"},
      {"AT+CPBR=4", "+CPBR: 4,\"+99\",145,\"first free\""},
      {"AT+CPBW=,\"1\"", "OK"},
      {"AT+CPBW=,\"1\"", "20"},
      {"AT+CPBW=5", "OK"},
      {"AT+CPBR=5", "OK"},
      {"AT+CPBW=6", "21"},
      {"AT+CPBW=5,\"12a\"", "27"},
      {"AT+CPBW=5,\"1\",129,\"nineteen characters\"", "24"},
      {"AT+CPBW=5,\"1\",129,\"\xC3\xA9\"", "25"},
      {"AT+CPBW=5,\"1\",129,\"a\"b\"", "ERROR"},
      {"AT+CPBW=5,\"" + std::string(41, '1') + "\"", "26"},
      {"AT+CPBW=5,\"+" + std::string(40, '1') + "\"", "OK"},
      {"AT+CPBS=\"ME\"", "OK"},
      {"AT+CPBS?", "+CPBS: \"ME\",0,100"},
      {"AT+CMEE=2", "OK"},
      {"AT+CPBR=101", "/+CME ERROR: invalid index/"},
  });
}

TEST(Modem, TextsInTheSelectedSet) {
  Terminal terminal(small());
  terminal.expect({
      {"AT+CSCS=\"UCS2\"", "OK"},
      {"AT+CPBR=1", "+CPBR: 1,\"+491\",145,\"005A006F00EB\""},
      {"AT+CPBW=2,\"1\",129,\"4E2D\"", "OK"},
      {"AT+CPBW=2,\"1\",129,\"4E2\"", "25"},
      // In UCS2 a client may name sets and storages in UCS2 as well.
      {"AT+CPBS=\"0053004D\"", "OK"},
      {"AT+CSCS=\"00470053004D\"", "OK"},
      {"AT+CSCS?", "+CSCS: \"GSM\""},
      {"AT+CPBR=2", "+CPBR: 2,\"1\",129,\"?\""},
      {"AT+CPBW=4,\"1\",129,\"J~rg\x1B\x65\"", "OK"},
      {"AT+CSCS=\"UCS2_0X81\"", "OK"},
      {"AT+CPBR=2", "+CPBR: 2,\"1\",129,\"81019CAD\""},
      {"AT+CPBR=4", "+CPBR: 4,\"1\",129,\"004A00FC0072006720AC\""},
  });
}

TEST(Modem, VendorFamily) {
  Terminal terminal(small(Profile::kVendorUsim));
  terminal.expect({
      {"AT+JUSIM=?", "+JUSIM: 1"},
      {"AT+JCPBR=?", "+JCPBR: (1-5),40,30,40,40,64,30"},
      {"AT+JCPBR=1,2", "+JCPBR: 1,\"+491\",\"8103015A6FEB\",\"22\",\"+33\",\"z@x.org\",\"80041F\""},
      {"AT+JCPBW=2,\"9\",129,\"804E2D\",\"8\",\"7\",\"a@b\",\"41\"", "OK"},
      {"AT+JCPBR=2", "+JCPBR: 2,\"9\",\"804E2D\",\"8\",\"7\",\"a@b\",\"41\""},
      {"AT+JCPBW=,\"5\",,\"\",\"\",\"\",\"\",\"\"", "OK"},
      {"AT+JCPBR=4", "+JCPBR: 4,\"5\",\"\",\"\",\"\",\"\",\"\""},
      {"AT+JCPBW=2,\"9\",129,\"4\"", "25"},
      {"AT+JCPBW=2,\"9\",129,\"" + std::string(62, '4') + "\"", "24"},
  });
}

Config with_rules(std::initializer_list<const char*> rules) {
  Config config;
  for (const char* rule : rules) config.faults.rules.push_back(parse_fault_rule(rule));
  return config;
}

TEST(Faults, RulesCountTheLinesTheyMatch) {
  Terminal terminal(
      with_rules({"2:AT+CSQ:never", "3-:at+csq:answer=\\r\\nBUSY\\\\\\r\\n",
                  "*:AT+CPIN:report-before=+A: 1", "*:AT+CPBR:report-inside=+CDS: 5\n0011",
                  "*:AT+CPAS:report-after=RING", "*:AT+CPBW:report-inside=RING"}));
  terminal.expect({
      {"AT+CSQ", "+CSQ: 20,99"},
      {"AT+CPIN?", "/+A: 1//+CPIN: READY//OK/"},
      {"AT+CSQ", ""},
      {"AT+CSQ", "/BUSY\\/"},
      {"AT+CSQ", "/BUSY\\/"},
      {"AT", "OK"},
      {"AT+CPBR=19,20",
       "+CPBR: 19,\"\",129,\"No number yet\"//+CDS: 5/0011/+CPBR: 20,\"112\",129,\"\""},
      {"AT+CPAS", "/+CPAS: 0//OK//RING/"},
      {"AT+CPBW=250", "/RING//OK/"},
  });
  terminal.modem.inject_report("+CMTI: \"SM\",2");
  EXPECT_EQ(terminal.send(""), "\r\n+CMTI: \"SM\",2\r\n");
}

TEST(Faults, Schedule) {
  Config config = with_rules({"1:AT+CSQ:delay=300", "2:AT+CSQ:cut=9", "3:AT+CSQ:hang-up=4"});
  config.faults.delay = std::chrono::milliseconds(20);
  Terminal terminal(config, "");
  EXPECT_EQ(terminal.send("ATE0\r", true), "|0:ATE0\r|20:\r\nOK\r\n");
  EXPECT_EQ(terminal.send("AT+CSQ\r", true), "|320:\r\n+CSQ: 20,99\r\n\r\nOK\r\n");
  EXPECT_EQ(terminal.send("AT+CSQ\r", true), "|20:\r\n+CSQ: 2");
  EXPECT_EQ(terminal.send("AT+CSQ\r", true), "|20:\r\n+C|0:hang-up");
  config.faults.single_bytes = true;
  EXPECT_EQ(Terminal(config).send("AT\r", true), "|20:\r|0:\n|0:O|0:K|0:\r|0:\n");
}

TEST(Faults, RulesByChance) {
  const auto silences = [](unsigned seed) {
    Config config = with_rules({"1/8:AT+CSQ:never"});
    config.faults.seed = seed;
    Terminal terminal(config);
    std::string which;
    for (int i = 0; i < 800; ++i) which += terminal.send("AT+CSQ\r").empty() ? 'x' : '.';
    return which;
  };
  const std::string first = silences(1);
  EXPECT_NEAR(std::count(first.begin(), first.end(), 'x'), 100, 40);
  EXPECT_EQ(silences(1), first);
  EXPECT_NE(silences(2), first);
}

TEST(Faults, RefusedRules) {
  for (const char* rule : {"1:AT", "0:AT:never", "3-2:AT:never", "x:AT:never", "1:AT:vanish",
                           "1:AT:never=3", "1:AT:delay=", "1:AT:answer=\\x"}) {
    EXPECT_THROW(parse_fault_rule(rule), std::invalid_argument) << rule;
  }
}

}  // namespace
}  // namespace qalt::sim
