// The storage and capability commands: line, time-out, values read, and what stays untouched.
#include <gtest/gtest.h>

#include <algorithm>
#include <iterator>
#include <vector>

#include "qalt_at/commands.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace {

using test::information;
using test::ScriptedModem;
using Values = std::vector<int32_t>;

constexpr int32_t kKept = -77;  // what a value holds before the call

struct Capability {
  uint32_t (*command)(int32_t* supported, int32_t* values);
  std::string answer;
  uint32_t result;
  int32_t supported;
  Values values;
};

uint32_t cpbr_test(int32_t*, int32_t* values) {
  return CPBR_Test(values);
}

TEST(Capability, ReadsWhatTheAnswerGives) {
  const int32_t k = kKept;
  const Capability cases[] = {
      {cpbr_test, information({"+CPBR: (1-250),40,18"}), 0, k, {1, 250, 40, 18, k, k, k, k}},
      {cpbr_test,
       information({"+CPBR: (1-500),40,18,0,0,64"}),
       0,
       k,
       {1, 500, 40, 18, 0, 0, 64, k}},
      {cpbr_test, information({"+CPBR: (0-99)"}), 0, k, {0, 99, k, k, k, k, k, k}},
      {cpbr_test, information({"+CPBR: 1-250"}), 0, k, {k, k, k, k, k, k, k, k}},
      {cpbr_test, test::kOk, 0, k, {k, k, k, k, k, k, k, k}},
      {cpbr_test, "\r\n+CME ERROR: 14\r\n", 1, k, {k, k, k, k, k, k, k, k}},
      {JCPBR_Test,
       information({"+JCPBR: (1-250),40,60,40,41,128,61"}),
       0,
       1,
       {1, 250, 40, 60, 40, 41, 128, 61}},
      {JCPBR_Test, test::kNotSupport, 1, 0, {k, k, k, k, k, k, k, k}},
      {JCPBR_Test, test::kError, 1, k, {k, k, k, k, k, k, k, k}},
      {JCPBR_Test, "no end flag", 1, k, {k, k, k, k, k, k, k, k}},
      {SCPBR_Test, information({"+CPBR: (1-300),40,16,0,64"}), 0, 1, {1, 300, 40, 16, k, k, 64, k}},
      {SCPBR_Test, information({"+CPBR: (1-300),40,16,64"}), 0, 1, {1, 300, 40, 16, k, k, 64, k}},
      {SCPBR_Test, information({"+CPBR: (1-300),40,16"}), 0, 1, {1, 300, 40, 16, k, k, k, k}},
      {SCPBR_Test, test::kNotSupport, 1, 0, {k, k, k, k, k, k, k, k}},
  };
  for (const Capability& c : cases) {
    SCOPED_TRACE(c.answer);
    ScriptedModem modem;
    modem.on("AT+", c.answer);
    int32_t supported = kKept;
    Values values(8, kKept);
    EXPECT_EQ(c.result, c.command(&supported, values.data()));
    EXPECT_EQ(c.supported, supported);
    EXPECT_EQ(c.values, values);
  }
}

TEST(Capability, LinesAndTimeouts) {
  ScriptedModem modem;
  int32_t flag = 0;
  int32_t values[8] = {};
  CPBS_Set("SM");
  CPBS_Read(&flag, values);
  CPBR_Test(values);
  JCPBR_Test(&flag, values);
  SCPBR_Test(&flag, values);
  JCPBQ_Set(1, &flag);
  JUSIM_Test(&flag);
  CARDMODE_Test(&flag);
  EUSIM_Read(&flag);
  const std::vector<test::SentCommand> expected = {
      {"AT+CPBS=\"SM\"", 5000}, {"AT+CPBS?", 5000},      {"AT+CPBR=?", 10000},
      {"AT+JCPBR=?", 5000},     {"AT+CPBR=?", 10000},    {"AT+CPBR=1", 5000},
      {"AT+JUSIM=?", 5000},     {"AT^CARDMODE=?", 5000}, {"AT+EUSIM?", 5000}};
  EXPECT_EQ(expected, modem.sent());
  modem.forget();
  EXPECT_EQ(1u, JCPBM_Test());
  EXPECT_TRUE(modem.sent().empty());
}

TEST(Storage, CountsAndSelection) {
  struct {
    std::string answer;
    uint32_t result;
    int32_t used, total;
  } const cases[] = {
      {information({"+CPBS: \"SM\",12,250"}), 0, 12, 250},
      {information({"+CPBS: \"A storage with a very long name\",3,4"}), 0, 3, 4},
      {information({"+CPBS: \"SM\",12"}), 0, 12, kKept},
      {information({"+CPBS: \"SM\",99999999999,1"}), 0, INT32_MAX, 1},
      {test::kError, 1, kKept, kKept},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answer);
    ScriptedModem modem;
    modem.on("AT+CPBS?", c.answer);
    int32_t used = kKept, total = kKept;
    EXPECT_EQ(c.result, CPBS_Read(&used, &total));
    EXPECT_EQ(c.used, used);
    EXPECT_EQ(c.total, total);
  }
  ScriptedModem modem;
  modem.on("AT+CPBS=", test::kOk);
  EXPECT_EQ(0u, CPBS_Set("SM"));
  modem.forget();
  // A name that would end the quotes, or does not fit the line, never reaches the modem.
  for (const std::string& name :
       {std::string("S\"M"), std::string("SM\rATZ"), std::string(90, 'x')}) {
    test::clear_records();
    EXPECT_EQ(1u, CPBS_Set(name.c_str()));
    EXPECT_EQ(1u, test::logged("AtCodec/PB_AtWrapper", 3).size());
  }
  EXPECT_TRUE(modem.sent().empty());
  EXPECT_EQ(0u, CPBS_Set(std::string(89, 'x').c_str()));
}

TEST(Queries, OneInteger) {
  struct {
    uint32_t (*command)(int32_t*);
    std::string payload;
    int32_t value;
  } const cases[] = {
      {JUSIM_Test, "+JUSIM: 1", 1},          {JUSIM_Test, "+JUSIM: (0-1)", kKept},
      {CARDMODE_Test, "^CARDMODE: 2", 2},    {CARDMODE_Test, "1", 1},
      {CARDMODE_Test, "^CARDMODE: ", kKept},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.payload);
    ScriptedModem modem;
    modem.on("AT", information({c.payload}));
    int32_t value = kKept;
    EXPECT_EQ(0u, c.command(&value));
    EXPECT_EQ(c.value, value);
  }
  // "+EUSIM: " is also a report's beginning, and a report comes first.
  ScriptedModem modem;
  modem.on("AT+EUSIM?", information({"+EUSIM: 1"}));
  int32_t value = kKept;
  EXPECT_EQ(1u, EUSIM_Read(&value));
  EXPECT_EQ(kKept, value);
  modem.on("AT+EUSIM?", information({"1"}));
  EXPECT_EQ(0u, EUSIM_Read(&value));
  EXPECT_EQ(1, value);
  for (const auto& [payload, third] : std::vector<std::pair<std::string, int32_t>>{
           {"+CPBR: 1,2,3", 3}, {"+CPBR: 1,\"123\",129,\"A\"", kKept}}) {
    modem.on("AT+CPBR=1", information({payload}));
    value = kKept;
    EXPECT_EQ(0u, JCPBQ_Set(1, &value));
    EXPECT_EQ(third, value);
  }
}

TEST(Commands, FailAndLogWhenNobodyAnswersOrNothingCanBeRead) {
  int32_t value = 0;
  int32_t values[8];
  test::clear_records();
  EXPECT_EQ(1u, CPBR_Test(values));  // no server: 300 attempts, one second apart
  EXPECT_EQ(300u, test::sleeps().size());
  EXPECT_TRUE(test::has_logged(3, "CPBR_Test cmd return Error"));

  ScriptedModem modem;
  modem.on("AT", std::string("\r\ngarbage\r\n"));
  test::clear_records();
  EXPECT_EQ(1u, CPBS_Set("SM"));
  EXPECT_EQ(1u, EUSIM_Read(&value));
  EXPECT_EQ(1u, CARDMODE_Test(&value));
  EXPECT_TRUE(test::has_logged(7, "AT+CPBS=\"SM\" send to at server\n"));
  EXPECT_TRUE(test::has_logged(7, "###K47D LOG### CPBS_Set return \n"));
  const std::string unreadable = "###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE\n";
  EXPECT_EQ(std::vector<std::string>{unreadable}, test::logged("AtCodec/PB_AtWrapper", 3));
  EXPECT_TRUE(test::has_logged(7, unreadable));
  testing::internal::CaptureStdout();
  EXPECT_EQ(1u, JUSIM_Test(&value));
  EXPECT_EQ("###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE\n",
            testing::internal::GetCapturedStdout());
}

TEST(Commands, NullArgumentsSendNothing) {
  ScriptedModem modem;
  int32_t value = 0;
  int32_t values[8];
  EXPECT_EQ(1u, CPBS_Set(nullptr));
  EXPECT_EQ(1u, CPBS_Read(nullptr, &value));
  EXPECT_EQ(1u, CPBS_Read(&value, nullptr));
  EXPECT_EQ(1u, CPBR_Test(nullptr));
  EXPECT_EQ(1u, JCPBR_Test(nullptr, values));
  EXPECT_EQ(1u, SCPBR_Test(&value, nullptr));
  EXPECT_EQ(1u, JCPBQ_Set(1, nullptr));
  EXPECT_EQ(1u, JUSIM_Test(nullptr));
  EXPECT_EQ(1u, CPBR_Set(1, 2, nullptr));
  EXPECT_EQ(1u, CPBW_Set(nullptr));
  EXPECT_EQ(1u, SCPBW_Set(nullptr));
  EXPECT_TRUE(modem.sent().empty());
}

}  // namespace
