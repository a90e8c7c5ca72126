// The entry reads and their answer processors, on every platform's form of the line.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "qalt_at/commands.h"
#include "qalt_at/phonebook.h"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace {

using test::ScriptedModem;

struct Item {
  int32_t index = 0;
  std::string number = {};
  int32_t type = 0;
  std::string text = {}, number2 = {}, number3 = {}, email = {}, extra = {};
  int32_t coding = 0;

  bool operator==(const Item&) const = default;
};

void PrintTo(const Item& i, std::ostream* out) {
  *out << i.index << '|' << i.number << '|' << i.type << '|' << i.text << '|' << i.number2 << '|'
       << i.number3 << '|' << i.email << '|' << i.extra << '|' << i.coding;
}

Item item_of(const PbItem& p) {
  return {p.storageIndex, p.number, p.numberType, p.text,  p.number2,
          p.number3,      p.email,  p.extraText,  p.coding};
}

using Processor = uint32_t (*)(AtRes*, PbItemList*);

std::vector<Item> process(Processor processor, int platform, const std::string& payload) {
  QL_setCurrentPlatform(platform);
  auto answer = std::make_unique<AtRes>();
  auto list = std::make_unique<PbItemList>();
  payload.copy(answer->Paras, sizeof answer->Paras - 1);
  EXPECT_EQ(0u, processor(answer.get(), list.get()));
  std::vector<Item> items;
  for (int32_t k = 0; k < list->count; ++k) items.push_back(item_of(list->items[k]));
  QL_setCurrentPlatform(0);
  return items;
}

TEST(AnswerProcessor, Lines) {
  const std::string digits41(41, '7');
  const std::string number99(99, '5');
  const struct {
    Processor processor;
    int platform;
    std::string payload;
    std::vector<Item> items;
  } cases[] = {
      {CPBR_SetATResProcess,
       0,
       R"(1,"123",129,"Ann";2,"+4930",145,"Bob")",
       {{1, "123", 129, "Ann"}, {2, "+4930", 145, "Bob"}}},
      {CPBR_SetATResProcess,
       0,
       R"(3,"5 5",129,"Smith; Mary, Ann")",
       {{3, "5 5", 129, "Smith; Mary, Ann"}}},
      {CPBR_SetATResProcess, 0, R"(4,"666",129,"Eve",0)", {{4, "666", 129, "Eve 0"}}},
      {CPBR_SetATResProcess, 1, R"(4,"666",129,"Eve",0)", {{4, "666", 129, "Eve"}}},
      {CPBR_SetATResProcess, 0, R"(5,"",129,"Zed")", {{5, "", 129, "Zed"}}},
      {CPBR_SetATResProcess, 0, R"(5,"1",129,"")", {{5, "1", 129, ""}}},
      {CPBR_SetATResProcess, 0, R"(6,"1",129)", {{6, "1", 129, ""}}},
      {CPBR_SetATResProcess, 0, "junk", {{}}},
      // More digits than the format takes spill into the type; the text still starts at the third
      // separator.
      {CPBR_SetATResProcess,
       0,
       "7,\"" + digits41 + "\",129,\"Kim\"",
       {{7, std::string(40, '7'), 7, "Kim"}}},
      {CPBR_SetATResProcess, 1, "7,\"" + digits41 + "\",129,\"Kim\"", {{7, digits41, 129, "Kim"}}},
      // The third separator lies behind the first 399 characters.
      {CPBR_SetATResProcess,
       0,
       "8,\"" + std::string(395, '1') + "\",129,\"Far\"",
       {{8, std::string(40, '1'), INT32_MAX, ""}}},
      {CPBR_SetATResProcess, 8, R"(6,"777",129,"Kim")", {{6, "777", 129, "Kim"}}},
      {CPBR_SetATResProcess,
       8,
       R"(6,"777",129,"Kim, Al";7,"",129,"";8,"9)",
       {{6, "777", 129, "Ki"}, {7, "", 129, ""}, {8}}},
      {JCPBR_SetATResProcess,
       0,
       R"(7,"123","Ann A","456","789","ann-mail","x y";8,"1","","","","","")",
       {{7, "123", 0, "Ann A", "456", "789", "ann-mail", "x y"}, {8, "1"}}},
      {JCPBR_SetATResProcess,
       0,
       "9,\"1\",\"" + std::string(62, 'A') + "\",\"2\"",
       {{9, "1", 0, std::string(60, 'A'), "AA", "2"}}},
      {SCPBR_SetATResProcess,
       4,
       R"(8,"111",129,"222",129,"333",129,"",129,"Lee B",1,"lee-mail")",
       {{8, "111", 129, "Lee B", "333", "222", "lee-mail", "", 1}}},
      {SCPBR_SetATResProcess,
       4,
       R"(8,"111",129,"222",0,"333",129,"",129,"Lee",1,"")",
       {{8, "111", 129, "Lee", "333", "", "", "", 1}}},
      {SCPBR_SetATResProcess,
       4,
       R"(8,"111",129,"222",129,"333",129)",
       {{8, "111", 129, "", "333", "222"}}},
      {SCPBR_SetATResProcess, 4, R"(8,"111",129,"222",129)", {{8, "111", 129, "", "", "222"}}},
      {SCPBR_SetATResProcess, 4, R"(8,"111",129,"222")", {{8, "111", 129}}},
  };
  for (const auto& c : cases) {
    SCOPED_TRACE(c.payload + " on platform " + std::to_string(c.platform));
    EXPECT_EQ(c.items, process(c.processor, c.platform, c.payload));
  }
}

TEST(AnswerProcessor, TextsWiderThanTheirMemberAreCutAndLogged) {
  const std::string wide(300, 'W');
  const struct {
    Processor processor;
    int platform;
    std::string payload;
    Item item;
  } cases[] = {
      {CPBR_SetATResProcess, 0, "1,\"2\",129,\"" + wide + "\"", {1, "2", 129, wide.substr(0, 127)}},
      {CPBR_SetATResProcess, 1, "1,\"2\",129,\"" + wide + "\"", {1, "2", 129, wide.substr(0, 127)}},
      {CPBR_SetATResProcess, 8, "1,\"" + wide + "\",129,\"b\"", {1, wide.substr(0, 98), 129, "b"}},
      {SCPBR_SetATResProcess,
       4,
       "1,\"2\",129,\"" + wide.substr(0, 120) + "\",129,\"3\",129,\"\",129,\"" +
           wide.substr(0, 140) + "\",2,\"m\"",
       {1, "2", 129, wide.substr(0, 127), "3", wide.substr(0, 99), "m", "", 2}},
  };
  for (const auto& c : cases) {
    test::clear_records();
    EXPECT_EQ(std::vector<Item>{c.item}, process(c.processor, c.platform, c.payload));
    EXPECT_EQ(1u, test::logged("lib_pb", 3).size());
  }
}

TEST(EntryRead, LinesTimeoutsAndResults) {
  auto list = std::make_unique<PbItemList>();
  ScriptedModem modem;
  modem.on("AT", test::kOk);
  EXPECT_EQ(0u, CPBR_Set(1, 250, list.get()));
  EXPECT_EQ(0u, CPBR_Set(1, 5, list.get()));
  EXPECT_EQ(0u, CPBR_Set(7, 7, list.get()));
  EXPECT_EQ(0u, CPBR_Set(9, 7, list.get()));
  EXPECT_EQ(0u, CPBR_Set(INT32_MIN, INT32_MAX, list.get()));
  EXPECT_EQ(0u, JCPBR_Set(1, 9, list.get()));
  EXPECT_EQ(0u, SCPBR_Set(1, 9, list.get()));
  EXPECT_EQ((std::vector<test::SentCommand>{{"AT+CPBR=1,250", 249000},
                                            {"AT+CPBR=1,5", 4000},
                                            {"AT+CPBR=7,7", 20000},
                                            {"AT+CPBR=9,7", 20000},
                                            {"AT+CPBR=-2147483648,2147483647", UINT32_MAX},
                                            {"AT+JCPBR=1,9", 5000},
                                            {"AT^SCPBR=1,9", 5000}}),
            modem.sent());
  EXPECT_EQ(0, list->count);

  const struct {
    std::string answer;
    uint32_t cpbr, jcpbr, scpbr;
  } cases[] = {{test::kError, 9, 9, 1},
               {"\r\n+CME ERROR: 22\r\n", 1, 1, 1},
               {"", 1, 1, 1},
               {test::kNotSupport, 1, 1, 1}};
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answer);
    modem.on("AT", c.answer);
    EXPECT_EQ(c.cpbr, CPBR_Set(1, 2, list.get()));
    EXPECT_EQ(c.jcpbr, JCPBR_Set(1, 2, list.get()));
    EXPECT_EQ(c.scpbr, SCPBR_Set(1, 2, list.get()));
  }
  EXPECT_TRUE(test::has_logged(3, "###K47D LOG###   CPBR read return ERROR\n"));
  EXPECT_TRUE(test::has_logged(3, "###K47D LOG###   JCPBR read return ERROR\n"));
}

TEST(EntryRead, AtMostAHundredLinesOfOneAnswer) {
  std::vector<std::string> lines;
  for (int i = 1; i <= 150; ++i)
    lines.push_back("+CPBR: " + std::to_string(i) + ",\"1\",129,\"N\"");
  ScriptedModem modem;
  modem.on("AT+CPBR=", test::information(lines));
  auto list = std::make_unique<PbItemList>();
  test::clear_records();
  EXPECT_EQ(0u, CPBR_Set(1, 150, list.get()));
  EXPECT_EQ(100, list->count);
  EXPECT_EQ(100, list->items[99].storageIndex);
  EXPECT_EQ(0, list->items[100].storageIndex);
  EXPECT_EQ((std::vector<std::string>{"tParasList.nCount is 100\n"}), test::logged("lib_pb", 7));
}

}  // namespace
