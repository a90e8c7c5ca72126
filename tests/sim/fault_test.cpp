// What the simulated modem does wrong on demand.
#include <gtest/gtest.h>

#include <stdexcept>

#include "tests/sim/terminal.h"

namespace qalt::sim {
namespace {

using std::chrono::milliseconds;
using test::cme;
using test::info;
using test::kError;
using test::kOk;
using test::Terminal;

Config with_rules(std::initializer_list<const char*> rules) {
  Config config;
  for (const char* rule : rules) config.faults.rules.push_back(parse_fault_rule(rule));
  return config;
}

TEST(Faults, RulesCountTheLinesTheyMatch) {
  Terminal terminal(with_rules({"2:AT+CSQ:never", "3-:at+csq:answer=\\r\\nBUSY\\\\\\r\\n",
                                "*:AT+CPIN:report-before=+CMTI: \"SM\",1"}));
  const std::string csq = info("+CSQ: 20,99");
  EXPECT_EQ(terminal.send("AT+CSQ"), csq);
  EXPECT_EQ(terminal.send("AT+CPIN?"), "\r\n+CMTI: \"SM\",1\r\n" + info("+CPIN: READY"));
  EXPECT_EQ(terminal.send("AT+CSQ"), "");
  EXPECT_EQ(terminal.send("AT+CSQ"), "\r\nBUSY\\\r\n");
  EXPECT_EQ(terminal.send("AT+CSQ"), "\r\nBUSY\\\r\n");
  EXPECT_EQ(terminal.send("AT"), kOk);
}

TEST(Faults, ReportsAndTheAnswer) {
  Terminal terminal(with_rules({"*:AT+CPBR:report-inside=+CDS: 5\n0011",
                                "*:AT+CSQ:report-after=RING", "*:AT+CPBW:report-inside=RING"}));
  EXPECT_EQ(terminal.send("AT+CPBR=19,20"),
            "\r\n+CPBR: 19,\"\",129,\"No number yet\"\r\n\r\n+CDS: 5\r\n0011\r\n"
            "+CPBR: 20,\"112\",129,\"\"\r\n" +
                kOk);
  EXPECT_EQ(terminal.send("AT+CSQ"), info("+CSQ: 20,99") + "\r\nRING\r\n");
  EXPECT_EQ(terminal.send("AT+CPBW=250"), "\r\nRING\r\n" + kOk);
  terminal.modem.inject_report("+CMTI: \"SM\",2");
  EXPECT_EQ(terminal.taken(), "\r\n+CMTI: \"SM\",2\r\n");
}

TEST(Faults, Schedule) {
  Config config = with_rules({"1:AT+CSQ:delay=300", "2:AT+CSQ:cut=9", "3:AT+CSQ:hang-up=4"});
  config.faults.delay = milliseconds(20);
  Terminal terminal(config);
  const auto outputs = [&] {
    terminal.modem.receive("AT+CSQ\r");
    return terminal.modem.take();
  };
  auto first = outputs();
  ASSERT_EQ(first.size(), 1u);
  EXPECT_EQ(first[0].delay, milliseconds(320));
  EXPECT_EQ(outputs()[0].bytes, "\r\n+CSQ: 2");
  auto third = outputs();
  ASSERT_EQ(third.size(), 2u);
  EXPECT_EQ(third[0].bytes, "\r\n+C");
  EXPECT_EQ(third[1].kind, Output::Kind::kHangUp);

  config.faults.single_bytes = true;
  Terminal bytewise(config);
  bytewise.modem.receive("AT\r");
  const auto bytes = bytewise.modem.take();
  ASSERT_EQ(bytes.size(), kOk.size());
  EXPECT_EQ(bytes[0].delay, milliseconds(20));
  EXPECT_EQ(bytes[1].delay, milliseconds(0));
}

TEST(Faults, StatesOfThePhonebook) {
  Config config;
  config.faults.busy = 2;
  config.faults.refused_reads = 1;
  config.faults.always_echo = true;
  config.faults.drop_writes = true;
  Terminal terminal(config);
  EXPECT_EQ(terminal.send("AT+CPBS=\"SM\""), "AT+CPBS=\"SM\"\r" + cme(14));
  EXPECT_EQ(terminal.send("AT+CPBS?"), "AT+CPBS?\r" + info("+CPBS: \"SM\",15,250"));
  EXPECT_EQ(terminal.send("AT+CPBR=?"), "AT+CPBR=?\r" + cme(14));
  EXPECT_EQ(terminal.send("AT+CPBR=1"), "AT+CPBR=1\r" + kError);
  EXPECT_EQ(terminal.send("AT+CPBW=1"), "AT+CPBW=1\r" + kOk);
  EXPECT_NE(terminal.send("AT+CPBR=1"), "AT+CPBR=1\r" + kOk);

  Config full;
  full.faults.memory_full = true;
  Terminal crowded(full);
  EXPECT_EQ(crowded.send("AT+CPBW=,\"1\""), cme(20));
  EXPECT_EQ(crowded.send("AT+CPBW=4,\"1\""), cme(20));
  EXPECT_EQ(crowded.send("AT+CPBW=1,\"1\""), kOk);
}

TEST(Faults, RefusedRules) {
  for (const char* rule :
       {"", "1", "1:AT", "0:AT:never", "3-2:AT:never", "x:AT:never", "1:AT:vanish", "1:AT:never=3",
        "1:AT:delay", "1:AT:delay=", "1:AT:delay=1s", "1:AT:answer=\\x", "1:AT:answer=\\"}) {
    EXPECT_THROW(parse_fault_rule(rule), std::invalid_argument) << rule;
  }
}

}  // namespace
}  // namespace qalt::sim
