// The parameter codec: a line rewritten for scanning, scanned fields turned back, texts cut into
// pieces. Every short text, and those at the bounds, go through it in tests/exhaustive/; here is
// what that does not see.
#include "qalt_at/parameters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using Split = std::function<void(ParasList*, const char*)>;
using Pieces = std::vector<std::string>;

std::string repeated(size_t count, const std::string& piece) {
  std::string text;
  for (size_t i = 0; i < count; ++i) text += piece;
  return text;
}

std::string rewritten(void (*function)(unsigned char*), std::string field) {
  field.resize(ATCODEC_PARA_LEN + 1);
  field += "####";
  function(reinterpret_cast<unsigned char*>(field.data()));
  EXPECT_EQ(field.substr(ATCODEC_PARA_LEN + 1), "####");
  return field.c_str();
}

// 0xFE stands for a blank, 0xFD for an empty parameter, 0xFC for a tab, 0xFA 0xFB for a line end.
TEST(ParameterLine, IsRewrittenForTheScanner) {
  const struct {
    std::string line, plain, special;  // special empty: as plain
  } cases[] = {
      // clang-format off
      {R"(5,"+49 89 123",145,"Mary Ann")", "5 +49\37689\376123 145 Mary\376Ann", ""},
      {R"(7,"",129,"")", "7 \375 129 \375", ""},
      {"(1-250),40,,18,", "(1-250) 40 \375 18 \375", ""},
      {R"("""a,b"x y)", "\375\375a,bx y", ""},
      {"1,\"a\tb\"\tc\"\r\n\"\r\n", "1 a\374b\tc\r\n\r\n", "1 a\374b\tc\372\373\r\n"},
      // clang-format on
  };
  for (const auto& c : cases) {
    EXPECT_EQ(rewritten(ATCodec_PreProc_Res_ParaLine, c.line), c.plain);
    EXPECT_EQ(rewritten(ATCodec_PreProc_Res_ParaLine_Special, c.line),
              c.special.empty() ? c.plain : c.special);
  }
}

TEST(ParameterLine, GroupsAreFlattenedAndTheRestCleared) {
  std::string line = "((1-250)),40,\"(b)\"";
  ATCodec_ProcRes_ParaLineEx(line.data());
  EXPECT_EQ(line, "1-250;40,\"b\"" + std::string(6, '\0'));
  char command[64];
  EXPECT_EQ(ATCodec_TranslateToCmdPara(command, "=%d,\"%s\",%u", 7, "Mary", 4000000000u), 0);
  EXPECT_STREQ(command, "=7,\"Mary\",4000000000");
}

const Split kLines = ATCodec_PreProc_Res_ParaList;
const Split kValues = ATCodec_PreProc_Res_ParaList_Special;
const Split kBlocks = ATCodec_PreProc_Res_Icera_ParaList;
const Split kRows = ATCodec_PreProc_Res_COPS5_ParaList;

Split by(const char* separator) {
  return [=](auto* list, auto* text) { ATCodec_PreProc_Res_ParaList_Ex(list, text, separator); };
}

TEST(ParameterList, Splits) {
  const struct {
    Split function;
    std::string text;
    Pieces pieces;
    int32_t before = 0;  // a count that the caller did not clear bounds what is stored
  } cases[] = {
      // clang-format off
      {kLines, R"(1,"12",129,"A;B";2,"45";)", {R"(1,"12",129,"A;B")", R"(2,"45")"}},
      {kLines, repeated(200, "p;"), Pieces(2, "p"), 98},
      {kLines, repeated(200, "p;"), {}, 1000},
      {kLines, repeated(200, "p;"), Pieces(100, "p"), -50},
      {kValues, R"(a,"b,c",,d)", {"a", R"("b,c")", "", "d"}},
      {kBlocks, R"(x"*STGC:"*STGC: 1,2*STGC: 3,4)", {" 1,2", " 3,4"}},
      {kRows, "\r\n+COPS: (2,\"A\r\nB\"),,(0-4)\r\n\r\nOK", {"+COPS: (2,\"A\r\nB\"),,(0-4)", "OK"}},
      {kRows, std::string(102400, 'x'), {std::string(1023, 'x')}},
      {by(nullptr), "a;b", {"a;b"}},
      {by(""), "a;b", {"a;b"}},
      // clang-format on
  };
  for (const auto& c : cases) {
    const auto list = std::make_unique<ParasList>();
    list->nCount = c.before;
    c.function(list.get(), c.text.c_str());
    EXPECT_EQ(list->nCount, c.before + static_cast<int>(c.pieces.size())) << c.text;
    for (size_t i = 0; i < c.pieces.size(); ++i) EXPECT_EQ(list->Para[i], c.pieces[i]) << c.text;
  }
}

TEST(ParameterList, WhatASplitWritesOfAListThatWasNotCleared) {
  const auto list = std::make_unique<ParasList>();
  const auto empty = std::make_unique<ParasList>();
  std::memset(list->Para, '#', sizeof list->Para);
  kLines(list.get(), "ab;cd");
  EXPECT_EQ(std::string(list->Para[0], 4), "ab##") << "a separator gives no terminator";
  EXPECT_STREQ(list->Para[1], "cd");
  const std::string too_long(102401, 'x');
  for (const char* text : {static_cast<const char*>(nullptr), "", too_long.c_str()}) {
    std::memset(list.get(), '#', sizeof *list);
    kRows(list.get(), text);
    EXPECT_EQ(std::memcmp(list.get(), empty.get(), sizeof *list), 0);
  }
}

TEST(ParameterList, Counts) {
  // clang-format off
  for (const auto& [text, count] : std::vector<std::pair<std::string, int32_t>>{
           {R"(x,"y,z",b)", 2}, {"a,b,", -7}, {repeated(99, ",") + "z", 99},
           {repeated(100, ",") + "z", -7}, {std::string(1023, 'x') + ",b", 1},
           {std::string(1024, 'x') + ",b", -7}}) {
    // clang-format on
    int32_t separators = -7;  // stays where nothing is stored
    ATCodec_PreProc_Res_ParaList_Entend(text.c_str(), &separators);
    EXPECT_EQ(separators, count) << text;
  }
}

TEST(ParameterList, SelectsOnePiece) {
  const struct {
    std::string text;
    int32_t index;
    std::string piece;
  } cases[] = {
      // clang-format off
      {"a,b,c", 2, "b"}, {"a,b,c", 3, "c"}, {"a,b,c", 0, "c"}, {"a,b,c", 99, "c"}, {"a,", 2, ""},
      {"a,b,c", 100, ""}, {"ab", 100, "ab"}, {R"("a,b",c)", 2, "c"},
      {std::string(1023, 'x') + ",b", 2, "b"}, {std::string(1024, 'x') + ",b", 2, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    std::string out(c.text.size() + 2, '\0');
    ATCodec_FindSubStrByIndex(c.text.c_str(), out.data(), c.index, ",");
    EXPECT_EQ(out.c_str(), c.piece) << c.text;
  }
}

}  // namespace
