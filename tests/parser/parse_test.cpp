// Bk_Parse_At_Res: what a modem's answer is reduced to and what stays of its text.
#include <gtest/gtest.h>

#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "qalt_at/parser.h"
#include "tests/support/recorder.h"

namespace {

struct Parsed {
  int result;
  int type;
  int id;
  std::string payload;
  std::string rest;
  uint32_t length;  // ParaLen
};

// The text stands in a block of exactly its size, so that a sanitizer sees every step beyond it.
Parsed parse(const std::string& text) {
  const auto buffer = std::make_unique<char[]>(text.size() + 1);
  std::memcpy(buffer.get(), text.c_str(), text.size() + 1);
  const auto record = std::make_unique<AtRes>();
  const int result = Bk_Parse_At_Res(buffer.get(), record.get());
  return {result, record->ResType, record->CmdId, record->Paras, buffer.get(), record->ParaLen};
}

std::string repeated(int count, const std::string& piece) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

const std::string kOk = "\r\nOK\r\n";
const std::string kEnd = "\r\n\r\nOK\r\n";  // of an information line and of the answer

TEST(Parse, ReducesOneBlock) {
  const struct {
    std::string text;
    int result, type, id;
    std::string payload, rest;
  } cases[] = {
      // An OK and its information.
      {kOk, 0, 1, 1, "", ""},
      {"AT\r" + kOk, 0, 1, 1, "", ""},
      {"\r\n+CSQ: 20,99" + kEnd, 0, 1, 1, "20,99", ""},
      {"AT+CPBR=1,2\r\r\n+CPBR: 1,\"1\",129,\"A\"\r\n+CPBR: 2,\"2\",129,\"B\"" + kEnd, 0, 1, 1,
       "1,\"1\",129,\"A\";2,\"2\",129,\"B\"", ""},
      {"\r\n+CMGR: 1,2\r\nsome text" + kEnd, 0, 1, 1, "1,2,\"some text\"", ""},
      {"\r\n358240051111110" + kEnd, 0, 1, 1, "358240051111110", ""},
      {"\r\na\r\nb" + kEnd, 0, 1, 1, "ab", ""},
      {"\r\ndropped\r\nalso\r\n+CSQ: 1" + kEnd, 0, 1, 1, "1", ""},
      {"\r\n\r\n\r\n+CSQ: 1\r\n\r\n+CSQ: 2" + kEnd, 0, 1, 1, "1;2", ""},
      {"\r\n+CSQ: 1" + kEnd + "\r\nrest", 0, 1, 1, "1", "\r\nrest"},
      // A join ends at another name; names are compared over the length of the line's own.
      {"\r\n+CPBR: 1\r\n+CSQ: 2\r\n+CPBR: 3" + kEnd, 0, 1, 1, "1", ""},
      {"\r\n+CPBR: 1\r\n+CPB: 2" + kEnd, 0, 1, 1, "1;2", ""},
      {"\r\n+CPB: 1\r\n+CPBR: 2" + kEnd, 0, 1, 1, "1", ""},
      {"\r\n: 1\r\n+X: 2\r\n" + kOk, 0, 1, 1, "12", ""},
      // No empty line before the OK: the line has no end of its own, and is lost.
      {"\r\n+CSQ: 20,99" + kOk, 0, 1, 1, "", ""},
      // A colon without a blank makes no name.
      {"\r\n+CSQ:20" + kEnd, 0, 1, 1, "+CSQ:20", ""},
      {"\r\n+CPBR: 1\r\n+CPBR:2" + kEnd, 0, 1, 1, "1,\"+CPBR:2\"", ""},
      // Quotes hide separators, line ends and flags; a stray one hides all that follows.
      {"\r\n+CPBR: 1,\"A\r\nOK\r\nB: C\"" + kEnd, 0, 1, 1, "1,\"A\r\nOK\r\nB: C\"", ""},
      {"\r\n\"a: b\"" + kEnd, 0, 1, 1, "\"a: b\"", ""},
      {"\r\n+CPBR: 1,\"A" + kEnd, 19, 0, 0, "", "\r\n+CPBR: 1,\"A" + kEnd},
      // Flags that stand alone leave the text before them.
      {"\r\nERROR\r\n", 0, 2, 2, "", ""},
      {"\r\n+CPBR: 1\r\n\r\nERROR\r\n", 0, 2, 2, "", "\r\n+CPBR: 1\r\n"},
      {"\r\nnot support\r\n", 0, 13, 6, "", ""},
      {"\r\n> ", 0, 11, 5, "", ""},
      {"\r\n+JEND\r\n" + kOk, 0, 12, 0x100F, "", kOk},
      // Flags with a parameter.
      {"\r\n+CME ERROR: 10\r\n", 0, 4, 4, "10", ""},
      {"\r\n+CMS ERROR: 500\r\n", 0, 3, 3, "500", ""},
      {"\r\n+CME ERROR: 10", 0, 4, 4, "", "10"},
      {"\r\n+CMTI: \r\n", 0, 12, 25, "", ""},
      {"\r\n+JMCON: 1\r\n", 0, 12, 57, " 1", ""},
      {"\r\n+STKPCI: \"a\r\nb\"\r\nc", 0, 12, 0x100E, "\"a\r\nb\"", "c"},
      {"\r\n+CDS: 25\r\n0791\r\n" + kOk, 0, 12, 27, "25\r\n0791\r\n" + kOk, ""},
      {"\r\n+CMTI: \"SM\",3\r\nxCMT:", 0, 12, 25, "\"SM\",3\r\nxCMT:", ""},
      // The earliest flag wins; a report name that a command shares is a report first.
      {"\r\n+CSQ: 1\r\n\r\n+CMTI: \"SM\",3\r\n" + kOk, 0, 12, 25, "\"SM\",3",
       "\r\n+CSQ: 1\r\n" + kOk},
      {"\r\n+EUSIM: 1" + kEnd, 0, 12, 0x1055, "1", kOk},
      // Nothing to find.
      {"", 19, 0, 0, "", ""},
      {"x", 19, 0, 0, "", "x"},
      {"OK\n\rabc", 19, 0, 0, "", "c"},
      {"\"\r\nOK\r\n", 19, 0, 0, "", "\n"},
      {"ATI\r\r\nhello\r\n", 19, 0, 0, "", "\r\nhello\r\n"},
      {"\r\nok\r\n", 19, 0, 0, "", "\r\nok\r\n"},
  };
  for (const auto& c : cases) {
    const Parsed parsed = parse(c.text);
    EXPECT_EQ(parsed.result, c.result) << c.text;
    EXPECT_EQ(parsed.type, c.type) << c.text;
    EXPECT_EQ(parsed.id, c.id) << c.text;
    EXPECT_EQ(parsed.payload, c.payload) << c.text;
    EXPECT_EQ(parsed.rest, c.rest) << c.text;
    const bool parameter = c.type == 3 || c.type == 4 || c.type == 12;
    EXPECT_EQ(parsed.length, parameter ? c.payload.size() : 0) << c.text;
  }
}

TEST(Parse, CutsWhatIsTooLong) {
  const std::string same(29, 'N');
  const std::string line = "\r\n+X: ";
  const std::string most(102399, 'p');
  const struct {
    std::string text, payload;
  } cases[] = {
      // A line counts with its first 1023 characters, also where its ": " lies behind them.
      {line + std::string(1500, 'v') + kEnd, std::string(1019, 'v')},
      {"\r\n" + std::string(1021, 'n') + ": v" + kEnd, ""},
      {"\r\n" + std::string(1022, 'n') + ": v" + kEnd, ""},
      {line + "1\r\n" + std::string(1022, 'n') + ": v" + kEnd,
       "1,\"" + std::string(1022, 'n') + ":\""},
      {"\r\n" + std::string(1500, 'n') + ": v\r\nb" + kEnd, "b"},
      // A name counts with its first 29.
      {"\r\n" + same + "a: 1\r\n" + same + "bcd: 2\r\n" + same + ": 3" + kEnd, "1;2;3"},
      // The payload ends at 102399: before the join, and where joining makes it grow.
      {repeated(200, line + std::string(1010, 'v')) + kEnd,
       repeated(101, std::string(1010, 'v') + ";").substr(0, 101100 - 1)},
      {line + "1" + repeated(34000, "\r\na") + kEnd,
       repeated(34000, "a\",\"").insert(0, "1,\"").substr(0, 102399)},
      {repeated(40000, "\r\n\r\n") + kEnd, ""},
  };
  for (const auto& c : cases) {
    const Parsed parsed = parse(c.text);
    EXPECT_EQ(parsed.payload, c.payload);
    EXPECT_EQ(parsed.rest, "");
  }
  for (const size_t length : {size_t{65535}, size_t{70000}, most.size(), most.size() + 500}) {
    const std::string parameter(length, 'p');
    const Parsed parsed = parse("\r\n+CUSD: " + parameter + "\r\n");
    EXPECT_EQ(parsed.payload, parameter.substr(0, most.size()));
    EXPECT_EQ(parsed.length, parsed.payload.size() & 0xFFFF);
    EXPECT_EQ(parsed.rest, "");
  }
}

// A record that the caller did not clear shows which members a parse writes.
TEST(Parse, WritesOnlyItsMembers) {
  const auto record = std::make_unique<AtRes>();
  const auto after = [&](std::string text) -> AtRes& {
    std::memset(record.get(), 'd', sizeof *record);
    EXPECT_EQ(Bk_Parse_At_Res(text.data(), record.get()), AT_PARSE_OK);
    EXPECT_EQ(record->reserved, 'd');
    EXPECT_EQ(std::string(reinterpret_cast<char*>(record->reserved2), 8), "dddddddd");
    return *record;
  };
  constexpr uint32_t kUntouched = 0x64646464;
  EXPECT_EQ(after("\r\nERROR\r\n").Paras[0], 'd');
  EXPECT_EQ(after("\r\n+CSQ: 20\r\n\r\nOK\r\n").ParaLen, kUntouched);
  EXPECT_EQ(std::string(record->Paras, sizeof record->Paras),
            "20" + std::string(sizeof record->Paras - 2, '\0'));
  EXPECT_EQ(std::string(after("\r\n+CME ERROR: 3\r\n").Paras, 3), std::string("3\0d", 3));
  EXPECT_EQ(after("\r\n+CME ERROR: 3").ParaLen, kUntouched);
}

TEST(Parse, LogsEachBlock) {
  test::clear_records();
  parse("AT\r\r\n+CSQ: 1" + kEnd + "x");
  parse("nothing");
  const std::string answer = "\r\n+CSQ: 1\r\n";
  const std::vector<std::string> expected = {
      "Bk_Parse_At_Res-pStr=" + answer + kOk + "x,pBlockHead=" + kOk + "x,iFlagIndex=0",
      "Bk_Parse_At_Res-g_iProcDataLen=6",
      "Bk_Parse_At_Res-pStr=" + answer + kOk + "x,pAtRes->Paras=1",
  };
  EXPECT_EQ(test::logged("ATPreprocess/ATPreprocess", 7), expected);
  EXPECT_EQ(test::logs().size(), expected.size());
}

TEST(Parse, NullArgumentsLeaveTheLockFree) {
  const auto record = std::make_unique<AtRes>();
  char text[] = "\r\nOK\r\n";
  EXPECT_EQ(Bk_Parse_At_Res(nullptr, record.get()), AT_PARSE_NULL);
  EXPECT_EQ(Bk_Parse_At_Res(text, nullptr), AT_PARSE_NULL);
  EXPECT_EQ(Bk_Parse_At_Res(text, record.get()), AT_PARSE_OK);
}

}  // namespace
