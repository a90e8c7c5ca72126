// What the simulated modem does wrong on demand.
#include <algorithm>
#include <stdexcept>

#include "tests/sim/terminal.h"

namespace qalt::sim {
namespace {

using test::Terminal;

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
  // The outputs as one text, with the delay before each.
  const auto outputs = [](Modem& modem, const char* command) {
    modem.receive(command);
    std::string text;
    for (const Output& output : modem.take()) {
      text += std::to_string(output.delay.count()) + ":" + output.bytes + "|";
      if (output.kind == Output::Kind::kHangUp) text += "hang-up";
    }
    return text;
  };
  Modem modem(config);
  EXPECT_EQ(outputs(modem, "ATE0\r"), "0:ATE0\r|20:\r\nOK\r\n|");
  EXPECT_EQ(outputs(modem, "AT+CSQ\r"), "320:\r\n+CSQ: 20,99\r\n\r\nOK\r\n|");
  EXPECT_EQ(outputs(modem, "AT+CSQ\r"), "20:\r\n+CSQ: 2|");
  EXPECT_EQ(outputs(modem, "AT+CSQ\r"), "20:\r\n+C|0:|hang-up");
  config.faults.single_bytes = true;
  Modem bytewise(config);
  outputs(bytewise, "ATE0\r");
  EXPECT_EQ(outputs(bytewise, "AT\r"), "20:\r|0:\n|0:O|0:K|0:\r|0:\n|");
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
