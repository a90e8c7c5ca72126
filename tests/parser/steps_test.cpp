// The tables, the search for the earliest flag, and the steps of a parse called by themselves.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <random>
#include <string>

#include "qalt_at/parser.h"

namespace {

// Puts the tables back after a test has changed them.
class Tables : public testing::Test {
 protected:
  ~Tables() override {
    std::memcpy(QaltWcdma_AtEndFlgTable, flags_.get(), sizeof QaltWcdma_AtEndFlgTable);
    QaltWcdma_AtEndFlgTableSize = 54;
    QaltWcdma_AtCmdTableSize = 293;
  }

  static void set_flag(int row, const std::string& flag, uint32_t id = 77, uint32_t have_para = 0) {
    AtEndFlgEntry& entry = QaltWcdma_AtEndFlgTable[row];
    entry = {{}, AT_RES_REPORT, id, have_para, 0};
    std::memcpy(entry.EndFlag, flag.data(), flag.size());
  }

  std::unique_ptr<char[]> flags_ = [] {
    auto copy = std::make_unique<char[]>(sizeof QaltWcdma_AtEndFlgTable);
    std::memcpy(copy.get(), QaltWcdma_AtEndFlgTable, sizeof QaltWcdma_AtEndFlgTable);
    return copy;
  }();
  std::unique_ptr<AtRes> record_ = std::make_unique<AtRes>();
  std::unique_ptr<AtParseBuf> work_ = std::make_unique<AtParseBuf>();
};

TEST_F(Tables, LookUpCommands) {
  const struct {
    uint32_t id;
    int row;  // -1: not found
    const char* name;
    int name_row;
  } cases[] = {
      {0x200A, 157, "^SYSINFO", 157}, {0x1020, 103, "*TSTMS", 103},
      {0x0005, -1, "+cusd", -1},      {0x0007, 0, "", 0},
      {0x0069, 96, "+CUSD", 95},      {0x0004, 98, "+CME ERROR", 98},
      {0x1084, 292, "^JWIMEI", 292},  {0x10007, -1, "+CPB", -1},
      {0x003E, 54, "+CPBR", 54},
  };
  for (const auto& c : cases) {
    int32_t row = -1;
    EXPECT_EQ(_Find_Cmd_By_ID(&row, c.id), c.row < 0 ? 19 : 0);
    EXPECT_EQ(row, c.row);
    row = -1;
    EXPECT_EQ(_Find_Cmd_By_Name(&row, c.name), c.name_row < 0 ? 19 : 0);
    EXPECT_EQ(row, c.name_row) << c.name;
  }
  int32_t row = -1;
  EXPECT_EQ(_Find_Cmd_By_ID(nullptr, 7), 19);
  EXPECT_EQ(_Find_Cmd_By_Name(nullptr, "D"), 19);
  EXPECT_EQ(_Find_Cmd_By_Name(&row, nullptr), 19);
  QaltWcdma_AtCmdTableSize = 0;
  EXPECT_EQ(_Find_Cmd_By_ID(&row, 7), 19);
  EXPECT_EQ(_Find_Cmd_By_Name(&row, ""), 19);
}

// Every report's identifier is that of the last command-table row with its name.
TEST_F(Tables, AgreeOnReports) {
  int without_row = 0;
  for (const AtEndFlgEntry& flag : QaltWcdma_AtEndFlgTable) {
    EXPECT_EQ(std::strncmp(flag.EndFlag, "\r\n", 2), 0);
    if (flag.ResType != AT_RES_REPORT) continue;
    const std::string text = flag.EndFlag + 2;
    const std::string name = text.substr(0, text.find_first_of(":\r"));
    int last = -1;
    for (int i = 0; i < QaltWcdma_AtCmdTableSize; ++i) {
      if (QaltWcdma_AtCmdTable[i].CmdName == name) last = i;
    }
    if (last < 0)
      ++without_row;
    else
      EXPECT_EQ(QaltWcdma_AtCmdTable[last].CmdId, flag.CmdId) << name;
    EXPECT_EQ(flag.HavePara, text.find(':') != std::string::npos) << name;
  }
  EXPECT_EQ(without_row, 3);  // +TSTUD, +TSTC, and +STKPCI with +JPSTM's identifier
}

// The one pass finds what a search of the whole text for each row finds, also for rows that a
// client put into the table: shared beginnings, a flag that begins with a quote, an empty one, one
// that fills its field.
TEST_F(Tables, OnePassFindsTheEarliestFlag) {
  const std::string full(32, 'f');
  set_flag(3, "O");
  set_flag(5, "\"K");
  set_flag(6, "\"\"");
  set_flag(8, full);
  set_flag(9, "K\"a");
  const std::string pieces[] = {"\r\n", "OK",     "ERROR", "\"", "\"K", "K",
                                "a",    "+CDS: ", "> ",    "f",  full};
  std::mt19937 random(7);
  for (int round = 0; round < 20000; ++round) {
    QaltWcdma_AtEndFlgTableSize = static_cast<int>(random() % 24);
    set_flag(23, round % 50 == 0 ? "" : "zz");
    std::string text = "\r\n";
    for (size_t n = random() % 12; n > 0; --n) text += pieces[random() % std::size(pieces)];
    char* place = text.data() + text.size();
    int row = -1;
    for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
      const std::string flag(QaltWcdma_AtEndFlgTable[i].EndFlag,
                             strnlen(QaltWcdma_AtEndFlgTable[i].EndFlag, 32));
      char* found = _Find_Sub_Str(text.data(), flag.c_str());
      if (found == nullptr || found >= place) continue;
      place = found;
      row = i;
    }
    char* block_head = nullptr;
    int index = -1;
    EXPECT_EQ(_Parse_At_PreProcess(text.data(), &block_head, &index), row < 0 ? 19 : 0) << text;
    EXPECT_EQ(block_head, place) << text;
    EXPECT_EQ(index, row) << text;
  }
}

TEST_F(Tables, RowsOfAClientAreHonoured) {
  const auto parse = [&](std::string text) {
    *record_ = {};
    const int result = Bk_Parse_At_Res(text.data(), record_.get());
    return std::to_string(result) + "," + std::to_string(record_->ResType) + "," +
           std::to_string(record_->CmdId) + "," + record_->Paras + "|" + text.c_str();
  };
  set_flag(20, "\r\n+CLIP: ", 89, 1);
  set_flag(21, "\r\n+ODD: ", 0x1004D, 2);
  EXPECT_EQ(parse("\r\n+ODD: 1\r\n"), "0,12,77,|1\r\n");
  // The answer to the query has two values and is followed directly by the OK.
  EXPECT_EQ(parse("\r\n+CLIP: 1,0\r\n\r\nOK\r\nx"), "0,1,89,1,0|x");
  EXPECT_EQ(parse("\r\n+CLIP: \"1,2\",0\r\n\r\nOK\r\n"), "0,1,89,\"1,2\",0|");
  EXPECT_EQ(parse("\r\n+CLIP: 1,2,3\r\n\r\nOK\r\n"), "0,12,89,1,2,3|\r\nOK\r\n");
  EXPECT_EQ(parse("\r\n+CLIP: 1\r\n\r\nOK\r\na,b"), "0,12,89,1|\r\nOK\r\na,b");
  EXPECT_EQ(parse("\r\n+CLIP: 1,0\r\nOK\r\n"), "0,12,89,1,0|OK\r\n");
  QaltWcdma_AtEndFlgTableSize = 0;
  EXPECT_EQ(parse("\r\nOK\r\n"), "19,0,0,|\r\nOK\r\n");
  QaltWcdma_AtEndFlgTableSize = -1;
  EXPECT_EQ(parse("\r\nOK\r\n"), "19,0,0,|\r\nOK\r\n");
}

TEST_F(Tables, WholeTextIsTakenWithItsOk) {
  const auto take = [&](const std::string& text) {
    *record_ = {};
    return Bk_Parse_At_COPS5_Res(text.c_str(), record_.get());
  };
  const std::string list = "\r\n+COPS: (2,\"A\"),,(0-4)\r\n\r\nOK\r\n";
  EXPECT_EQ(take(list), 0);
  EXPECT_EQ(record_->Paras, list);
  EXPECT_EQ(record_->CmdId, 1);
  EXPECT_EQ(record_->ResType, AT_RES_OK);
  EXPECT_EQ(take("\"\r\nOK\r\n\""), 19);
  EXPECT_EQ(take(std::string(102393, 'x') + "\r\nOK\r\n"), 0);
  EXPECT_EQ(std::strlen(record_->Paras), 102399u);
  EXPECT_EQ(take(std::string(102394, 'x') + "\r\nOK\r\n"), 19);
  EXPECT_EQ(record_->Paras[0], '\0');
  EXPECT_EQ(Bk_Parse_At_COPS5_Res(nullptr, record_.get()), 20);
  EXPECT_EQ(Bk_Parse_At_COPS5_Res("x", nullptr), 20);
}

TEST_F(Tables, StepsWorkByThemselves) {
  char line[1024];
  for (int round = 0; round < 2; ++round) {  // a record filled with zeros again starts afresh
    *work_ = {};
    EXPECT_EQ(_First_Parse_At_OK_Res("+A: 1\r\n+B: 2\r\n", line, work_.get()), 19);
    EXPECT_STREQ(work_->ParaBuf, "1");
    const char* again = "+A: 2";
    EXPECT_EQ(ParseCmdLineWithCmdName(work_.get(), again, again + 2), 1);
    ParseCmdLineWithoutCmdName(work_.get(), "t", "t\r\n");
    EXPECT_STREQ(work_->ParaBuf, "1;2,\"t\"");
    EXPECT_EQ(ParseCmdLineWithCmdName(work_.get(), "+B: 3", again + 2), 0);
  }
  *work_ = {};
  const std::string long_text(3000, 'l');
  ParseCmdLineWithoutCmdName(work_.get(), long_text.c_str(), "before\r\n+A: 1");
  EXPECT_STREQ(work_->ParaBuf, "");
  ParseCmdLineWithoutCmdName(work_.get(), long_text.c_str(), "rest");
  EXPECT_EQ(work_->ParaBuf, std::string(1024, 'l'));
  *record_ = {};
  EXPECT_EQ(_Parse_At_Ok_Res(record_.get(), work_.get()), 0);

  char text[] = "\r\n+CLIP: 1,0\r\n\r\nOK\r\n";
  char* head = text;
  record_->CmdId = 89;
  g_iProcDataLen = 9;
  EXPECT_EQ(_Parse_At_End_Flag(text, record_.get(), &head, work_.get(), 1), 0);
  EXPECT_EQ(record_->ResType, AT_RES_OK);
  EXPECT_EQ(g_iProcDataLen, 20);
  EXPECT_EQ(_Parse_At_End_Flag(text, record_.get(), &head, work_.get(), 2), 19);
}

TEST_F(Tables, StepsTakeNulls) {
  char text[] = "\r\nOK\r\n";
  char* head = nullptr;
  EXPECT_EQ(_Find_Sub_Str(nullptr, "x"), nullptr);
  EXPECT_EQ(_Parse_At_PreProcess(text, &head, nullptr), 19);
  for (const uint32_t have_para : {0u, 1u}) {
    EXPECT_EQ(_Parse_At_End_Flag(text, record_.get(), nullptr, work_.get(), have_para), 19);
    EXPECT_EQ(_Parse_At_End_Flag(text, record_.get(), &head, work_.get(), have_para), 19);
  }
  EXPECT_EQ(_Parse_At_ParaOfTheEndColon(text, text, nullptr, record_.get()), 20);
  EXPECT_EQ(_Parse_At_Ok_Res(record_.get(), nullptr), 20);
  EXPECT_EQ(_First_Parse_At_OK_Res(text, nullptr, work_.get()), 19);
  EXPECT_EQ(ParseCmdLineWithCmdName(work_.get(), text, nullptr), 0);
  ParseCmdLineWithoutCmdName(nullptr, text, text);
  EXPECT_EQ(ProcessClipCmd(text, nullptr, record_.get(), work_.get()), 0);
}

}  // namespace
