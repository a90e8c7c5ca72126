// The response parser: what the flags of the table stand for, what a parse writes, and the search
// for the earliest flag. How lines are joined and where they are cut is compared with a literal
// parser, in tests/exhaustive/.
#include "qalt_at/parser.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <memory>
#include <random>
#include <string>
#include <vector>

#include "tests/support/recorder.h"

namespace {

const std::string kOk = "\r\nOK\r\n";
const std::string kEnd = "\r\n\r\nOK\r\n";  // of an information line and of the answer

// Puts the tables back after a test has changed them.
class Parser : public testing::Test {
 protected:
  ~Parser() override {
    std::copy(flags_.begin(), flags_.end(), QaltWcdma_AtEndFlgTable);
    QaltWcdma_AtEndFlgTableSize = 54;
  }
  static void set_flag(int row, const std::string& flag, uint32_t id = 77, uint32_t have_para = 0) {
    AtEndFlgEntry& entry = QaltWcdma_AtEndFlgTable[row];
    entry = {{}, AT_RES_REPORT, id, have_para, 0};
    flag.copy(entry.EndFlag, sizeof entry.EndFlag);
  }
  // "result,type,identifier,payload|rest". The text stands in a block of exactly its size, so that
  // a sanitizer sees every step beyond it.
  std::string parsed(const std::string& text) {
    const auto block = std::make_unique<char[]>(text.size() + 1);
    text.copy(block.get(), text.size());
    *record_ = {};
    const int result = Bk_Parse_At_Res(block.get(), record_.get());
    const int type = record_->ResType;
    const std::string payload = record_->Paras;
    return std::to_string(result) + "," + std::to_string(type) + "," +
           std::to_string(record_->CmdId) + "," + payload + "|" + block.get();
  }

  const std::vector<AtEndFlgEntry> flags_{std::begin(QaltWcdma_AtEndFlgTable),
                                          std::end(QaltWcdma_AtEndFlgTable)};
  std::unique_ptr<AtRes> record_ = std::make_unique<AtRes>();
};

TEST_F(Parser, ReducesOneBlock) {
  for (const auto& [text, expected] : std::vector<std::pair<std::string, std::string>>{
           {"AT+CPBR=1,2\r\r\n+CPBR: 1,\"A\"\r\n+CPBR: 2,\"B\"" + kEnd, "0,1,1,1,\"A\";2,\"B\"|"},
           {"\r\n+CPBR: 1\r\n\r\nERROR\r\n", "0,2,2,|\r\n+CPBR: 1\r\n"},
           {"\r\nnot support\r\n", "0,13,6,|"},
           {"\r\n+JEND\r\n" + kOk, "0,12,4111,|" + kOk},
           {"\r\n+CMS ERROR: 500\r\n", "0,3,3,500|"},
           {"\r\n+JMCON: 1\r\n", "0,12,57, 1|"},
           {"\r\n+STKPCI: \"a\r\nb\"\r\nc", "0,12,4110,\"a\r\nb\"|c"},
           {"\r\n+CDS: 25\r\n0791\r\n" + kOk, "0,12,27,25\r\n0791\r\n" + kOk + "|"},
           // The earliest flag wins, and a report's name comes before a command's.
           {"\r\n+CSQ: 1\r\n\r\n+CMTI: \"S\",3\r\n" + kOk, "0,12,25,\"S\",3|\r\n+CSQ: 1\r\n" + kOk},
           {"\r\n+EUSIM: 1" + kEnd, "0,12,4181,1|" + kOk}}) {
    EXPECT_EQ(parsed(text), expected);
  }
}

// A record that the caller did not clear shows which members a parse writes.
TEST_F(Parser, WritesOnlyItsMembers) {
  const auto after = [this](std::string text) -> AtRes& {
    std::memset(record_.get(), 'd', sizeof *record_);
    EXPECT_EQ(Bk_Parse_At_Res(text.data(), record_.get()), AT_PARSE_OK);
    EXPECT_EQ(record_->reserved + record_->reserved2[0] + record_->reserved2[7], 3 * 'd');
    return *record_;
  };
  EXPECT_EQ(after("\r\nERROR\r\n").Paras[0], 'd');
  EXPECT_EQ(after("\r\n+CSQ: 20" + kEnd).ParaLen, 0x64646464u);
  EXPECT_EQ(std::string(record_->Paras, sizeof record_->Paras),
            "20" + std::string(sizeof record_->Paras - 2, '\0'));
  EXPECT_EQ(std::string(after("\r\n+CME ERROR: 3\r\n").Paras, 3), std::string("3\0d", 3));
}

// Every report's identifier is that of the last command-table row with its name.
TEST_F(Parser, TablesAgreeOnReports) {
  int without_row = 0;
  for (const AtEndFlgEntry& flag : flags_) {
    if (flag.ResType != AT_RES_REPORT) continue;
    const std::string text = flag.EndFlag;
    const std::string name = text.substr(2, text.find_first_of(":\r", 2) - 2);
    int64_t id = -1;
    for (const auto& command : QaltWcdma_AtCmdTable) {
      if (command.CmdName == name) id = command.CmdId;
    }
    without_row += id == -1;
    EXPECT_TRUE(id == -1 || id == flag.CmdId) << name;
    EXPECT_EQ(flag.HavePara, text.find(':') != std::string::npos) << name;
  }
  EXPECT_EQ(without_row, 3);  // +TSTUD, +TSTC, and +STKPCI with +JPSTM's identifier
}

// The one pass finds what a search of the whole text for each row finds, also for rows of a client:
// shared beginnings, flags that begin with a quote, an empty one, one that fills its field.
TEST_F(Parser, OnePassFindsTheEarliestFlag) {
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
      const std::string flag(QaltWcdma_AtEndFlgTable[i].EndFlag, 32);
      char* found = _Find_Sub_Str(text.data(), flag.c_str());
      if (found == nullptr || found >= place) continue;
      place = found;
      row = i;
    }
    char* head = nullptr;
    int index = -1;
    EXPECT_EQ(_Parse_At_PreProcess(text.data(), &head, &index), row < 0 ? 19 : 0) << text;
    EXPECT_TRUE(head == place && index == row) << text;
  }
}

TEST_F(Parser, HonoursRowsOfAClient) {
  set_flag(20, "\r\n+CLIP: ", 89, 1);
  set_flag(21, "\r\n+ODD: ", 0x1004D, 2);
  EXPECT_EQ(parsed("\r\n+ODD: 1\r\n"), "0,12,77,|1\r\n");
  // The answer to the query has two values and is followed directly by the OK.
  EXPECT_EQ(parsed("\r\n+CLIP: \"1,2\",0" + kEnd + "x"), "0,1,89,\"1,2\",0|x");
  EXPECT_EQ(parsed("\r\n+CLIP: 1,0" + kEnd), "0,1,89,1,0|");
  EXPECT_EQ(parsed("\r\n+CLIP: 1,2,3" + kEnd), "0,12,89,1,2,3|" + kOk);
  EXPECT_EQ(parsed("\r\n+CLIP: 1" + kEnd + "a,b"), "0,12,89,1|" + kOk + "a,b");
  EXPECT_EQ(parsed("\r\n+CLIP: 1,0" + kOk), "0,12,89,1,0|OK\r\n");
  QaltWcdma_AtEndFlgTableSize = -1;
  EXPECT_EQ(parsed(kOk), "19,0,0,|" + kOk);
}

TEST_F(Parser, ArgumentsThatAreRefused) {
  char text[] = "\r\nOK\r\n";
  int32_t row = -1;
  AtRes* const res = record_.get();
  EXPECT_EQ(_Find_Cmd_By_ID(&row, 0x10007), 19);
  EXPECT_EQ(_Find_Cmd_By_Name(&row, "+cusd"), 19);
  EXPECT_EQ(_Parse_At_PreProcess(text, nullptr, &row), 19);
  EXPECT_EQ(_Parse_At_ParaOfTheEndColon(text, text, nullptr, res), 20);
  EXPECT_EQ(ProcessClipCmd(text, nullptr, res, nullptr), 0);
  EXPECT_EQ(Bk_Parse_At_Res(text, nullptr), 20);
  EXPECT_EQ(Bk_Parse_At_COPS5_Res(nullptr, res), 20);
}

}  // namespace
