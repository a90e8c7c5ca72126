// The command lines of the entry writes, to the byte.
#include <gtest/gtest.h>

#include <cstring>
#include <string>

#include "qalt_at/commands.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace {

using test::ScriptedModem;

template <size_t kSize>
void put(char (&member)[kSize], const std::string& text) {
  std::memset(member, 0, kSize);
  text.copy(member, kSize);  // may fill the member to its last byte
}

CpbwRecord cpbw(int32_t index, const std::string& number, int32_t type, const std::string& text) {
  CpbwRecord record = {};
  record.storageIndex = index;
  put(record.number, number);
  record.numberType = type;
  put(record.text, text);
  return record;
}

JcpbwRecord jcpbw(int32_t index, const std::string& number, int32_t type, const std::string& text,
                  const std::string& number2, const std::string& number3, const std::string& email,
                  const std::string& extra) {
  JcpbwRecord record = {};
  record.storageIndex = index;
  put(record.number, number);
  record.numberType = type;
  put(record.text, text);
  put(record.number2, number2);
  put(record.number3, number3);
  put(record.email, email);
  put(record.extraText, extra);
  return record;
}

const JcpbwRecord kLee = jcpbw(2, "+111", 7, "Lee", "222", "+333", "lee-mail", "note");

TEST(EntryWrite, Lines) {
  const struct {
    std::function<uint32_t()> write;
    std::string line;
    uint32_t timeout_ms;
  } cases[] = {
      {[] {
         auto r = cpbw(5, "+4930123", 145, "Ann");
         return CPBW_Set(&r);
       },
       R"(AT+CPBW=5,"+4930123",145,"Ann")", 10000},
      {[] {
         auto r = cpbw(0, "+4930123", 145, "Ann");
         return CPBW_Set(&r);
       },
       R"(AT+CPBW=,"+4930123",,"Ann")", 10000},
      {[] {
         auto r = cpbw(5, "", 0, "Ann");
         return CPBW_Set(&r);
       },
       R"(AT+CPBW=5,"",,"Ann")", 10000},
      {[] {
         auto r = cpbw(5, "1", -1, "");
         return CPBW_Set(&r);
       },
       R"(AT+CPBW=5,"1",-1,"")", 10000},
      {[] {
         auto r = cpbw(5, "", 145, "");
         return CPBW_Set(&r);
       },
       "AT+CPBW=5", 10000},
      {[] {
         auto r = cpbw(0, "", 0, "");
         return CPBW_Set(&r);
       },
       "AT+CPBW=0", 10000},
      {[] {
         auto r = jcpbw(3, "123", 129, "Bob", "456", "", "", "");
         return JCPBW_Set(&r);
       },
       R"(AT+JCPBW=3,"123",129,"Bob","456","","","")", 5000},
      {[] { return JCPBW_Set(&kLee); },
       R"(AT+JCPBW=2,"+111",7,"Lee","222","+333","lee-mail","note")", 5000},
      {[] { return SCPBW_Set(&kLee); },
       R"(AT^SCPBW=2,"+111",145,"+333",145,"222",129,"222",129,"Lee",1,"lee-mail")", 5000},
      {[] {
         auto r = jcpbw(0, "1", 0, "A", "", "", "", "");
         return SCPBW_Set(&r);
       },
       R"(AT^SCPBW=,"1",129,"",129,"",129,"",129,"A",1,"")", 5000},
      {[] {
         auto r = jcpbw(2, "", 0, "", "9", "", "", "");
         return SCPBW_Set(&r);
       },
       "AT^SCPBW=2", 5000},
      {[] { return CSCS_Set({"UCS2"}); }, R"(AT+CSCS="UCS2")", 5000},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    ScriptedModem modem;
    modem.on("AT", test::kOk);
    EXPECT_EQ(0u, c.write());
    ASSERT_EQ(1u, modem.sent().size());
    EXPECT_EQ((test::SentCommand{c.line, c.timeout_ms}), modem.sent()[0]);
    modem.on("AT", std::string("\r\n+CME ERROR: 20\r\n"));
    EXPECT_EQ(1u, c.write());
  }
}

TEST(EntryWrite, MembersFilledToTheirLastByteAreNotReadPast) {
  ScriptedModem modem;
  modem.on("AT", test::kOk);
  const auto full =
      jcpbw(9, std::string(100, '1'), 129, std::string(64, 't'), std::string(100, '2'),
            std::string(100, '3'), std::string(132, 'm'), std::string(64, 'x'));
  EXPECT_EQ(0u, JCPBW_Set(&full));
  EXPECT_EQ("AT+JCPBW=9,\"" + std::string(100, '1') + "\",129,\"" + std::string(64, 't') + "\",\"" +
                std::string(100, '2') + "\",\"" + std::string(100, '3') + "\",\"" +
                std::string(132, 'm') + "\",\"" + std::string(64, 'x') + "\"",
            modem.sent()[0].line);
  CharsetName name;
  std::memset(&name, 'U', sizeof name);
  EXPECT_EQ(1u, CSCS_Set(name));  // does not fit the line
  EXPECT_EQ(1u, modem.sent().size());
}

TEST(EntryWrite, NothingIsSentThatWouldBeAnotherCommand) {
  ScriptedModem modem;
  modem.on("AT", test::kOk);
  for (const char* text : {"A\"B", "A\rAT+CFUN=0", "A\nB", "A\x1A", "A\x1B"}) {
    const CpbwRecord standard = cpbw(1, "1", 129, text);
    const JcpbwRecord vendor = jcpbw(1, "1", 129, "A", "", "", text, "");
    EXPECT_EQ(1u, CPBW_Set(&standard));
    EXPECT_EQ(1u, JCPBW_Set(&vendor));
    EXPECT_EQ(1u, SCPBW_Set(&vendor));
  }
  const CpbwRecord nowhere = cpbw(-1, "", 0, "");
  EXPECT_EQ(1u, CPBW_Set(&nowhere));
  EXPECT_TRUE(modem.sent().empty());
}

TEST(EntryWrite, UnreadableAnswersAreLogged) {
  ScriptedModem modem;
  modem.on("AT", std::string(""));
  const CpbwRecord record = cpbw(1, "1", 129, "A");
  test::clear_records();
  EXPECT_EQ(1u, CPBW_Set(&record));
  EXPECT_EQ(1u, JCPBW_Set(&kLee));
  EXPECT_EQ((std::vector<std::string>{"###K47D LOG###  Bk_Parse_At_Res return UNI_ERROR_FALSE\n",
                                      "###K47D LOG###   Bk_Parse_At_Res return UNI_ERROR_FALSE\n"}),
            test::logged("AtCodec/PB_AtWrapper", 3));
}

}  // namespace
