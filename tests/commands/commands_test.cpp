// The command functions: line, time-out and result of each, the values read from answers, and what
// is refused before anything is sent.
#include "qalt_at/commands.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qalt_at/phonebook.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace {

using test::information;
using test::ScriptedModem;
using Call = std::function<uint32_t()>;
using Lines = std::vector<std::string>;

Call cpbw(const CpbwRecord& record) {
  return [record] { return CPBW_Set(&record); };
}
Call vendor(uint32_t (*write)(const JcpbwRecord*), const JcpbwRecord& record) {
  return [=] { return write(&record); };
}
Call read(uint32_t (*command)(int32_t, int32_t, PbItemList*), int32_t first, int32_t last) {
  return [=] {
    const auto list = std::make_unique<PbItemList>();
    return command(first, last, list.get());
  };
}

int32_t g_values[9];  // what the queries store

const Call kCpbsRead = [] { return CPBS_Read(g_values, g_values + 1); };
const Call kCpbrTest = [] { return CPBR_Test(g_values); };
const Call kJcpbrTest = [] { return JCPBR_Test(g_values + 8, g_values); };
const Call kScpbrTest = [] { return SCPBR_Test(g_values + 8, g_values); };
const Call kJcpbq = [] { return JCPBQ_Set(1, g_values); };
const Call kJusim = [] { return JUSIM_Test(g_values); };
const Call kCardmode = [] { return CARDMODE_Test(g_values); };
const Call kEusim = [] { return EUSIM_Read(g_values); };

TEST(Commands, LinesTimeoutsAndResults) {
  const JcpbwRecord lee = {2, "+111", 7, "Lee", "222", "+333", "lee-mail", "note"};
  JcpbwRecord full;  // members filled to their last byte are not read past
  std::memset(&full, 'f', sizeof full);
  const auto f = [](size_t count) { return '"' + std::string(count, 'f') + '"'; };
  full.storageIndex = full.numberType = 9;
  const struct {
    Call call;
    std::string line;
    uint32_t timeout_ms;
    uint32_t refused = 1;  // the result of an ERROR
  } cases[] = {
      // clang-format off
      {[] { return CPBS_Set("SM"); }, "AT+CPBS=\"SM\"", 5000},
      {[] { return CSCS_Set({"UCS2"}); }, "AT+CSCS=\"UCS2\"", 5000},
      {kCpbsRead, "AT+CPBS?", 5000},
      {kCpbrTest, "AT+CPBR=?", 10000},
      {kJcpbrTest, "AT+JCPBR=?", 5000},
      {kScpbrTest, "AT+CPBR=?", 10000},
      {kJcpbq, "AT+CPBR=1", 5000},
      {kJusim, "AT+JUSIM=?", 5000},
      {kCardmode, "AT^CARDMODE=?", 5000},
      {kEusim, "AT+EUSIM?", 5000},
      {read(CPBR_Set, 1, 250), "AT+CPBR=1,250", 249000, 9},
      {read(CPBR_Set, 7, 7), "AT+CPBR=7,7", 20000, 9},
      {read(CPBR_Set, INT32_MIN, INT32_MAX), "AT+CPBR=-2147483648,2147483647", UINT32_MAX, 9},
      {read(JCPBR_Set, 1, 9), "AT+JCPBR=1,9", 5000, 9},
      {read(SCPBR_Set, 1, 9), "AT^SCPBR=1,9", 5000},
      {cpbw({5, "+4930", 145, "Ann"}), R"(AT+CPBW=5,"+4930",145,"Ann")", 10000},
      {cpbw({0, "+4930", 145, "Ann"}), R"(AT+CPBW=,"+4930",,"Ann")", 10000},
      {cpbw({5, "", 0, "Ann"}), R"(AT+CPBW=5,"",,"Ann")", 10000},
      {cpbw({5, "1", -1, ""}), R"(AT+CPBW=5,"1",-1,"")", 10000},
      {cpbw({5, "", 145, ""}), "AT+CPBW=5", 10000},
      {vendor(JCPBW_Set, lee), R"(AT+JCPBW=2,"+111",7,"Lee","222","+333","lee-mail","note")", 5000},
      {vendor(JCPBW_Set, full), "AT+JCPBW=9," + f(100) + ",9," + f(64) + "," + f(100) + "," +
       f(100) + "," + f(132) + "," + f(64), 5000},
      {vendor(SCPBW_Set, lee),
       R"(AT^SCPBW=2,"+111",145,"+333",145,"222",129,"222",129,"Lee",1,"lee-mail")", 5000},
      {vendor(SCPBW_Set, {2, "", 0, "", "9", "", "", ""}), "AT^SCPBW=2", 5000},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.line);
    ScriptedModem modem;
    modem.on("AT", test::kOk);
    EXPECT_EQ(c.call(), 0u);
    EXPECT_EQ(modem.sent(), (std::vector<test::SentCommand>{{c.line, c.timeout_ms}}));
    modem.on("AT", test::kError);
    EXPECT_EQ(c.call(), c.refused);
    for (const char* answer : {"\r\n+CME ERROR: 20\r\n", "", "\r\nnot support\r\n"}) {
      modem.on("AT", std::string(answer));
      EXPECT_EQ(c.call(), 1u) << answer;
    }
  }
}

TEST(Commands, ValuesThatAnswersGive) {
  const struct {
    Call call;
    std::string line;    // of information; without one the modem answers ERROR
    std::string values;  // "-" where nothing is stored
  } cases[] = {
      // clang-format off
      {kCpbrTest, "+CPBR: (1-250),40,18", "1 250 40 18 - - - - -"},
      {kCpbrTest, "+CPBR: (1-500),40,18,0,0,64", "1 500 40 18 0 0 64 - -"},
      {kCpbrTest, "+CPBR: 1-250", "- - - - - - - - -"},
      {kJcpbrTest, "+JCPBR: (1-250),40,60,40,41,128,61", "1 250 40 60 40 41 128 61 1"},
      {kJcpbrTest, "", "- - - - - - - - -"},
      {kJcpbrTest, "not support", "- - - - - - - - 0"},
      {kScpbrTest, "+CPBR: (1-300),40,16,0,64", "1 300 40 16 - - 64 - 1"},
      {kScpbrTest, "+CPBR: (1-300),40,16,64", "1 300 40 16 - - 64 - 1"},
      {kScpbrTest, "+CPBR: (1-300),40,16", "1 300 40 16 - - - - 1"},
      {kCpbsRead, "+CPBS: \"SM\",12,250", "12 250 - - - - - - -"},
      {kCpbsRead, "+CPBS: \"SM\",99999999999", "2147483647 - - - - - - - -"},
      {kJusim, "+JUSIM: 1", "1 - - - - - - - -"},
      {kJusim, "+JUSIM: (0-1)", "- - - - - - - - -"},
      {kCardmode, "^CARDMODE: 2", "2 - - - - - - - -"},
      // "+EUSIM: " is also a report's beginning, and a report comes first.
      {kEusim, "+EUSIM: 1", "- - - - - - - - -"},
      {kEusim, "1", "1 - - - - - - - -"},
      {kJcpbq, "+CPBR: 1,2,3", "3 - - - - - - - -"},
      {kJcpbq, "+CPBR: 1,\"123\",129,\"A\"", "- - - - - - - - -"},
      // clang-format on
  };
  for (const auto& c : cases) {
    ScriptedModem modem;
    if (!c.line.empty()) modem.on("AT", information({c.line}));
    std::fill(std::begin(g_values), std::end(g_values), -77);
    c.call();
    std::string values;
    for (int32_t value : g_values) values += (value == -77 ? "-" : std::to_string(value)) + " ";
    EXPECT_EQ(values, c.values + " ") << c.line;
  }
}

TEST(Commands, NothingIsSentThatWouldBeAnotherCommand) {
  ScriptedModem modem;
  modem.on("AT", test::kOk);
  test::clear_records();
  for (const char* text : {"A\"B", "A\rAT+CFUN=0", "A\nB", "A\x1A", "A\x1B"}) {
    JcpbwRecord record = {1, "1", 129, "A", "", "", "", ""};
    CpbwRecord standard = {1, "1", 129, ""};
    std::strcpy(record.email, std::strcpy(standard.text, text));
    EXPECT_EQ(CPBW_Set(&standard) + JCPBW_Set(&record) + SCPBW_Set(&record), 3u);
    EXPECT_EQ(CPBS_Set(text), 1u);
  }
  CharsetName name;
  std::memset(&name, 'U', sizeof name);
  EXPECT_EQ(CSCS_Set(name), 1u);
  EXPECT_EQ(CPBS_Set(std::string(90, 'x').c_str()), 1u);
  EXPECT_EQ(test::logged("AtCodec/PB_AtWrapper", 3).size(), 22u);
  EXPECT_EQ(cpbw({-1, "", 0, ""})(), 1u);
  for (uint32_t result : {JCPBM_Test(), CPBS_Set(nullptr), CPBS_Read(g_values, nullptr),
                          CPBR_Test(nullptr), SCPBR_Test(g_values, nullptr), JUSIM_Test(nullptr),
                          CPBR_Set(1, 2, nullptr), CPBW_Set(nullptr)}) {
    EXPECT_EQ(result, 1u);
  }
  EXPECT_TRUE(modem.sent().empty());
  EXPECT_EQ(CPBS_Set(std::string(89, 'x').c_str()), 0u);
}

// Every entry as "index|number|type|text|number2|number3|email|extra|coding ".
std::string processed(uint32_t (*processor)(AtRes*, PbItemList*), int platform,
                      const std::string& payload) {
  QL_setCurrentPlatform(platform);
  const auto answer = std::make_unique<AtRes>();
  const auto list = std::make_unique<PbItemList>();
  payload.copy(answer->Paras, sizeof answer->Paras - 1);
  EXPECT_EQ(processor(answer.get(), list.get()), 0u);
  std::string all;
  for (const PbItem& i : std::vector<PbItem>(list->items, list->items + list->count)) {
    char line[1000];
    std::snprintf(line, sizeof line, "%d|%s|%d|%s|%s|%s|%s|%s|%d ", i.storageIndex, i.number,
                  i.numberType, i.text, i.number2, i.number3, i.email, i.extraText, i.coding);
    all += line;
  }
  QL_setCurrentPlatform(0);
  return all;
}

TEST(AnswerProcessors, Lines) {
  const auto cpbr = CPBR_SetATResProcess;
  const auto jcpbr = JCPBR_SetATResProcess;
  const auto scpbr = SCPBR_SetATResProcess;
  const std::string d40(40, '7'), w60(60, 'A'), wide(300, 'W');
  const struct {
    uint32_t (*processor)(AtRes*, PbItemList*);
    int platform;
    std::string payload, items;
    size_t cut = 0;  // entries with a text wider than its member, each logged
  } cases[] = {
      // clang-format off
      {cpbr, 0, R"(1,"+49",145,"A";3,"5 5",129,"Smith; Mary, Ann")",
       "1|+49|145|A|||||0 3|5 5|129|Smith; Mary, Ann|||||0 "},
      {cpbr, 0, R"(4,"666",129,"Eve",0)", "4|666|129|Eve 0|||||0 "},
      {cpbr, 1, R"(4,"666",129,"Eve",0)", "4|666|129|Eve|||||0 "},
      {cpbr, 0, R"(5,"",129,"";6,"1",129)", "5||129||||||0 6|1|129||||||0 "},
      {cpbr, 0, "junk", "0||0||||||0 "},
      // More digits than the format takes spill into the type; the text still starts at the third
      // separator.
      {cpbr, 0, "7,\"" + d40 + "7\",129,\"Kim\"", "7|" + d40 + "|7|Kim|||||0 "},
      {cpbr, 1, "7,\"" + d40 + "7\",129,\"Kim\"", "7|" + d40 + "7|129|Kim|||||0 "},
      {cpbr, 8, R"(6,"777",129,"Kim, Al";7,"",129,"";8,"9)",
       "6|777|129|Ki|||||0 7||129||||||0 8||0||||||0 "},
      {jcpbr, 0, R"(7,"123","Ann A","456","789","mail","x y";8,"1","","","","","")",
       "7|123|0|Ann A|456|789|mail|x y|0 8|1|0||||||0 "},
      {jcpbr, 0, "9,\"1\",\"" + w60 + "AA\",\"2\"", "9|1|0|" + w60 + "|AA|2|||0 "},
      {scpbr, 4, R"(8,"111",129,"222",129,"333",129,"",129,"Lee B",1,"mail")",
       "8|111|129|Lee B|333|222|mail||1 "},
      {scpbr, 4, R"(8,"111",129,"222",0,"333",129,"",129,"Lee",1,"")", "8|111|129|Lee|333||||1 "},
      {scpbr, 4, R"(7,"1",129,"2",129,"3",129;8,"1",129,"2",129;9,"1",129,"2")",
       "7|1|129||3|2|||0 8|1|129|||2|||0 9|1|129||||||0 "},
      {cpbr, 0, "1,\"2\",129,\"" + wide + "\"", "1|2|129|" + wide.substr(0, 127) + "|||||0 ", 1},
      {cpbr, 1, "1,\"2\",129,\"" + wide + "\"", "1|2|129|" + wide.substr(0, 127) + "|||||0 ", 1},
      {cpbr, 8, "1,\"" + wide + "\",129,\"b\"", "1|" + wide.substr(0, 98) + "|129|b|||||0 ", 1},
      {scpbr, 4, "1,\"2\",129,\"" + wide.substr(0, 120) + "\",129,\"3\",129,\"\",129,\"" +
       wide.substr(0, 140) + "\",2,\"m\"",
       "1|2|129|" + wide.substr(0, 127) + "|3|" + wide.substr(0, 99) + "|m||2 ", 1},
      // clang-format on
  };
  for (const auto& c : cases) {
    test::clear_records();
    EXPECT_EQ(processed(c.processor, c.platform, c.payload), c.items) << c.platform;
    EXPECT_EQ(test::logged("lib_pb", 3).size(), c.cut) << c.payload;
  }
}

}  // namespace
