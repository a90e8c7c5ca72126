// Cutting texts into pieces: the list splitters, the counters and the selection of one piece.
#include <gtest/gtest.h>

#include <cstring>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "qalt_at/parameters.h"

namespace {

using Pieces = std::vector<std::string>;
using Split = std::function<void(ParasList*, const char*)>;

const Split lines = ATCodec_PreProc_Res_ParaList;
const Split values = ATCodec_PreProc_Res_ParaList_Special;
const Split blocks = ATCodec_PreProc_Res_Icera_ParaList;
const Split rows = ATCodec_PreProc_Res_COPS5_ParaList;

Pieces split(const Split& function, const std::string& text) {
  const auto list = std::make_unique<ParasList>();
  function(list.get(), text.c_str());
  Pieces pieces;
  for (int32_t i = 0; i < list->nCount; ++i) pieces.emplace_back(list->Para[i]);
  return pieces;
}

Split by(const char* separator) {
  return [=](ParasList* list, const char* text) {
    ATCodec_PreProc_Res_ParaList_Ex(list, text, separator);
  };
}

std::string repeated(int count, const std::string& piece) {
  std::string text;
  for (int i = 0; i < count; ++i) text += piece;
  return text;
}

TEST(ParameterList, Splits) {
  const std::string k1023(1023, 'x');
  const std::string k1024(1024, 'x');
  const struct {
    Split function;
    std::string text;
    Pieces pieces;
  } cases[] = {
      {lines, R"(1,"123",129,"A";2,"456",129,"B")", {R"(1,"123",129,"A")", R"(2,"456",129,"B")"}},
      {lines, R"(3,"789",129,"X;Y";4)", {R"(3,"789",129,"X;Y")", "4"}},
      {lines, R"(1,"abc;2;3)", {R"(1,"abc;2;3)"}},
      {lines, "a;;b", {"a", "", "b"}},
      {lines, ";a", {"", "a"}},
      {lines, "a;", {"a"}},
      {lines, ";", {""}},
      {lines, "", {}},
      {lines, "a;" + k1023 + ";b", {"a", k1023, "b"}},
      {lines, "a;" + k1024 + ";b", {"a"}},
      {lines, "a;" + std::string(1500, 'y'), {"a", std::string(1023, 'y')}},
      {lines, repeated(99, "p;") + "last",
       [] {
         Pieces p(99, "p");
         p.push_back("last");
         return p;
       }()},
      {lines, repeated(150, "p;"), Pieces(100, "p")},
      {lines, repeated(100, "p;") + "last", Pieces(100, "p")},
      {values, R"(a,"b,c",,d)", {"a", R"("b,c")", "", "d"}},
      {blocks, "x*STGC: 1,2*STGC: 3,4", {" 1,2", " 3,4"}},
      {blocks, "1,2", {"1,2"}},
      {blocks, "*STGC:", {}},
      {blocks, R"("*STGC:"*STGC:7)", {"7"}},
      {blocks, k1024 + "*STGC:7", {}},
      {rows,
       "\r\n+COPS: (2,\"A\",\"A\",\"001\",2),,(0-4),(0-2)\r\n\r\nOK\r\n",
       {"+COPS: (2,\"A\",\"A\",\"001\",2),,(0-4),(0-2)", "OK"}},
      {rows, "\r\n\r\n\r\n", {}},
      {rows, "\"a\r\nb\"\r\nc", {"\"a\r\nb\"", "c"}},
      {by("\r\n"), "a\r\nb", {"a", "\nb"}},
      {by(nullptr), "a;b", {"a;b"}},
      {by(""), "a;b", {"a;b"}},
      {by("\""), "a\"b\"c", {"a", "b", "c"}},
  };
  for (const auto& c : cases) EXPECT_EQ(split(c.function, c.text), c.pieces) << c.text;
}

// A list that the caller did not clear: the count bounds what is stored, and so do the slots.
TEST(ParameterList, KeepsToTheSlotsWhateverTheCount) {
  const struct {
    int32_t before, after;
  } cases[] = {{0, 100}, {98, 100}, {99, 100}, {100, 100}, {1000, 1000}, {-50, 50}};
  for (const auto& c : cases) {
    const auto list = std::make_unique<ParasList>();
    list->nCount = c.before;
    ATCodec_PreProc_Res_ParaList(list.get(), repeated(200, "p;").c_str());
    EXPECT_EQ(list->nCount, c.after);
  }
}

TEST(ParameterList, PieceAtASeparatorCarriesNoTerminator) {
  const auto list = std::make_unique<ParasList>();
  std::memset(list->Para, '#', sizeof list->Para);
  ATCodec_PreProc_Res_ParaList(list.get(), "ab;cd");
  EXPECT_EQ(std::string(list->Para[0], 4), "ab##");
  EXPECT_STREQ(list->Para[1], "cd");
}

TEST(ParameterList, LinesOfNoTextClearTheList) {
  const std::string longest(102400, 'x');
  const std::string too_long(102401, 'x');
  const auto list = std::make_unique<ParasList>();
  const auto empty = std::make_unique<ParasList>();
  for (const char* text : {static_cast<const char*>(nullptr), "", too_long.c_str()}) {
    std::memset(list.get(), '#', sizeof *list);
    ATCodec_PreProc_Res_COPS5_ParaList(list.get(), text);
    EXPECT_EQ(std::memcmp(list.get(), empty.get(), sizeof *list), 0);
  }
  EXPECT_EQ(split(ATCodec_PreProc_Res_COPS5_ParaList, longest), Pieces{std::string(1023, 'x')});
}

TEST(ParameterList, CountsSeparators) {
  const struct {
    std::string text;
    int32_t count;  // -7: nothing stored
  } cases[] = {
      {"a,b,c", 2},
      {"a", 0},
      {R"(x,"y,z")", 1},
      {"a,b,", -7},
      {"", -7},
      {repeated(99, ",") + "z", 99},
      {repeated(100, ",") + "z", -7},
      {std::string(1024, 'x') + ",b", -7},
      {std::string(1023, 'x') + ",b", 1},
  };
  for (const auto& c : cases) {
    int32_t count = -7;
    ATCodec_PreProc_Res_ParaList_Entend(c.text.c_str(), &count);
    EXPECT_EQ(count, c.count) << c.text;
  }
}

TEST(ParameterList, CountsPiecesByToken) {
  const struct {
    const char *text, *token;
    int32_t pieces;
  } cases[] = {
      {"a,b,c", ",", 3},      {"a,b,", ",", 2},          {"", ",", 0},     {R"("a,b")", "x", 1},
      {R"("a,b",c)", ",", 3}, {"a\r\nb\r\n", "\r\n", 3}, {"aaa", "aa", 3}, {"abc", "", 1},
      {nullptr, ",", 0},      {"a", nullptr, 0},
  };
  for (const auto& c : cases) EXPECT_EQ(ATCodec_GetSubStrCountByToken(c.text, c.token), c.pieces);
}

TEST(ParameterList, SelectsOnePiece) {
  enum Result { kOut, kNull, kText, kSeparator };
  const std::string k1024 = std::string(1024, 'x') + ",b";
  const struct {
    std::string text;
    int32_t index;
    const char* token;
    Result result;
    std::string piece;
  } cases[] = {
      {"a,b,c", 1, ",", kOut, "a"},        {"a,b,c", 2, ",", kOut, "b"},
      {"a,b,c", 3, ",", kOut, "c"},        {"a,b,c", 7, ",", kOut, "c"},
      {"a,b,c", 0, ",", kOut, "c"},        {"a,b,c", -1, ",", kOut, "c"},
      {"a,b,c", 100, ",", kSeparator, ""}, {"abc", 100, ",", kOut, "abc"},
      {"a,", 2, ",", kNull, ""},           {"", 1, ",", kNull, ""},
      {R"("a,b",c)", 2, ",", kOut, "c"},   {"a,b", 1, "", kOut, "a,b"},
      {"a,b", 1, nullptr, kOut, "a,b"},    {k1024, 2, ",", kSeparator, ""},
  };
  for (const auto& c : cases) {
    std::string out(c.text.size() + 2, '\0');
    const char* text = c.text.c_str();
    const char* separator = std::strchr(text, ',');
    const char* expected = c.result == kOut ? out.data() : c.result == kNull ? nullptr : separator;
    EXPECT_EQ(ATCodec_FindSubStrByIndex(text, out.data(), c.index, c.token), expected) << c.text;
    EXPECT_STREQ(out.c_str(), c.piece.c_str()) << c.text;
  }
  const char text[] = "a,b";
  EXPECT_EQ(ATCodec_FindSubStrByIndex(text, nullptr, 1, ","), text);
}

TEST(ParameterList, FindsOutsideQuotes) {
  const auto at = [](const char* text, const char* token) -> int {
    const auto* start = reinterpret_cast<const unsigned char*>(text);
    const unsigned char* found = ATCodec_Find_Sub_Str(start, token);
    return found == nullptr ? -1 : static_cast<int>(found - start);
  };
  EXPECT_EQ(at("\"a,b\",c", ","), 5);
  EXPECT_EQ(at("\"a,b", ","), -1);
  EXPECT_EQ(at("\"\"\"x", "\"x"), 2);  // its own quote is not counted
  EXPECT_EQ(at("a", ""), -1);
  EXPECT_EQ(at("a", nullptr), -1);
  EXPECT_EQ(ATCodec_Find_Sub_Str(nullptr, ","), nullptr);
}

TEST(ParameterList, NullsDoNothing) {
  const auto list = std::make_unique<ParasList>();
  for (const Split& function : {lines, values, blocks, rows, by(";")}) {
    function(nullptr, "a;b");
    function(list.get(), nullptr);
    EXPECT_EQ(list->nCount, 0);
  }
  ATCodec_PreProc_Res_ParaList_Entend(nullptr, &list->nCount);
  ATCodec_PreProc_Res_ParaList_Entend("a,b", nullptr);
  EXPECT_EQ(list->nCount, 0);
}

}  // namespace
