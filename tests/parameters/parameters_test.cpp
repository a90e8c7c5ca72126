// The parameter codec where a text alone does not show it: lists that were not cleared, separators
// that are none, counts and selections. Every short text, and those at the bounds, go through the
// splits and rewrites in tests/exhaustive/.
#include "qalt_at/parameters.h"

#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

namespace {

using Split = std::function<void(ParasList*, const char*)>;

const Split kLines = ATCodec_PreProc_Res_ParaList;
const Split kRows = ATCodec_PreProc_Res_COPS5_ParaList;

Split by(const char* separator) {
  return [=](auto* list, auto* text) { ATCodec_PreProc_Res_ParaList_Ex(list, text, separator); };
}

TEST(ParameterList, WhatASplitMakesOfAListThatWasNotCleared) {
  const std::string many(400, ';'), longest(102400, 'x');
  const struct {
    Split function;
    std::string text;
    int32_t before;  // bounds what is stored
    size_t pieces;
    std::string first;  // a separator gives no terminator
  } cases[] = {
      {kLines, "ab;cd", 0, 2, "ab##"},
      {kLines, many, 98, 2, "####"},
      {kLines, many, 1000, 0, "####"},
      {kLines, many, -50, 100, "####"},
      {by(nullptr), "a;b", 0, 1, "a;b"},
      {by(""), "a;b", 0, 1, "a;b"},
      {kRows, longest, 0, 1, "xxxx"},
      {kRows, "", 1, 0, {0, 0, 0, 0}},
      {kRows, longest + "x", 1, 0, {0, 0, 0, 0}},
  };
  for (const auto& c : cases) {
    const auto list = std::make_unique<ParasList>();
    std::memset(list.get(), '#', sizeof *list);
    list->nCount = c.before;
    c.function(list.get(), c.text.c_str());
    const bool cleared = c.first[0] == '\0';
    EXPECT_EQ(list->nCount, cleared ? 0 : c.before + static_cast<int>(c.pieces)) << c.text;
    EXPECT_EQ(std::string(list->Para[0], c.first.size()), c.first) << c.text;
    EXPECT_EQ(list->Para[99][1023], cleared ? '\0' : '#');
  }
}

TEST(ParameterList, CountsAndSelects) {
  const struct {
    std::string text;
    int32_t count;  // of separators; -7 where nothing is stored
    int32_t index;
    std::string piece;
  } cases[] = {
      // clang-format off
      {R"(x,"y,z",b)", 2, 2, R"("y,z")"}, {"a,b,", -7, 3, ""}, {"a,b,c", 2, 2, "b"},
      {"a,b,c", 2, 3, "c"}, {"a,b,c", 2, 0, "c"}, {"a,b,c", 2, 99, "c"}, {"a,b,c", 2, 100, ""},
      {"ab", 0, 100, "ab"}, {std::string(99, ',') + "z", 99, 99, ""},
      {std::string(100, ',') + "z", -7, 1, ""}, {std::string(1023, 'x') + ",b", 1, 2, "b"},
      {std::string(1024, 'x') + ",b", -7, 2, ""},
      // clang-format on
  };
  for (const auto& c : cases) {
    int32_t separators = -7;
    ATCodec_PreProc_Res_ParaList_Entend(c.text.c_str(), &separators);
    EXPECT_EQ(separators, c.count) << c.text;
    std::string out(c.text.size() + 2, '\0');
    ATCodec_FindSubStrByIndex(c.text.c_str(), out.data(), c.index, ",");
    EXPECT_EQ(out.c_str(), c.piece) << c.text;
  }
}

TEST(ParameterLine, GroupsAreFlattenedAndTheRestCleared) {
  std::string line = "((1-250)),40,\"(b)\"";
  ATCodec_ProcRes_ParaLineEx(line.data());
  EXPECT_EQ(line, "1-250;40,\"b\"" + std::string(6, '\0'));
}

}  // namespace
