// Every text up to a length over the characters that mean something, through the parser and the
// parameter codec and beside their literal versions. QALT_EXHAUSTIVE_LENGTH sets the length.
#include <gtest/gtest.h>

#include <cstddef>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <vector>

#include "qalt_at/parameters.h"
#include "qalt_at/parser.h"
#include "tests/exhaustive/literal_parameters.h"
#include "tests/exhaustive/literal_parser.h"

namespace {

using std::string;
using Words = std::vector<string>;

size_t longest() {
  const char* length = std::getenv("QALT_EXHAUSTIVE_LENGTH");
  return length != nullptr ? std::strtoul(length, nullptr, 10) : 6;
}

// Calls check(text) for each text of at most longest() words, until one fails.
template <typename Check>
void for_all_texts(const char* what, const Words& words, Check check) {
  size_t texts = 0;
  std::vector<size_t> places;  // the text's words, last first
  for (bool more = true; more && !testing::Test::HasFailure();) {
    string text;
    for (auto word = places.rbegin(); word != places.rend(); ++word) text += words[*word];
    check(text);
    ++texts;
    size_t i = 0;
    while (i < places.size() && ++places[i] == words.size()) places[i++] = 0;
    if (i == places.size()) {
      more = places.size() < longest();
      places.push_back(0);
    }
  }
  std::printf("%zu texts through %s\n", texts, what);
}

// A text in a field of its own, without room behind it.
class Field {
 public:
  Field(const string& text, size_t size) : bytes_(new char[size]) {
    std::memcpy(bytes_.get(), text.c_str(), text.size() + 1);
  }
  explicit Field(const string& text) : Field(text, text.size() + 1) {}
  char* text() { return bytes_.get(); }
  unsigned char* line() { return reinterpret_cast<unsigned char*>(text()); }

 private:
  std::unique_ptr<char[]> bytes_;
};

void check_parser(const string& source) {
  static AtRes answer;  // all zero again after each text
  Field text(source);
  const literal::Parsed expected = literal::parse(source);
  EXPECT_EQ(Bk_Parse_At_Res(text.text(), &answer), expected.result) << source;
  EXPECT_EQ(text.text(), expected.rest) << source;
  EXPECT_EQ(answer.CmdId, expected.command) << source;
  EXPECT_EQ(answer.ResType, expected.type) << source;
  EXPECT_EQ(answer.ParaLen, expected.para_length) << source;
  EXPECT_EQ(answer.Paras, expected.payload) << source;
  std::memset(&answer, 0, offsetof(AtRes, Paras) + expected.payload.size() + 1);
}

TEST(AllTexts, OfCharactersThroughTheParser) {
  for_all_texts("the parser", {"\r", "\n", "\"", ":", " ", "O", "K", ">"}, check_parser);
}

TEST(AllTexts, OfWordsThroughTheParser) {
  for_all_texts("the parser, of words",
                {"\r\n", "\"", "+A: ", "+AB: ", "x", "\r\nOK\r\n", "+CME ERROR: ", "+CMT: ", ","},
                check_parser);
}

template <typename Split>
void expect_pieces(const string& source, const Words& expected, Split split) {
  static ParasList list;  // all zero again after each text
  Field text(source);
  split(&list, text.text());
  ASSERT_EQ(list.nCount, int(expected.size())) << source;
  for (size_t i = 0; i < expected.size(); ++i) EXPECT_EQ(list.Para[i], expected[i]) << source;
  std::memset(&list, 0, sizeof list.nCount + (expected.size() + 1) * ATCODEC_PARA_LEN);
}

TEST(AllTexts, ThroughTheSplits) {
  for_all_texts("the splits", {";", ",", "\"", "\r\n", "a"}, [](const string& text) {
    expect_pieces(text, literal::split(text, ";", 1), ATCodec_PreProc_Res_ParaList);
    expect_pieces(text, literal::split(text, ",", 1), ATCodec_PreProc_Res_ParaList_Special);
    expect_pieces(text, literal::split(text, "\r\n", 2, false, true),
                  ATCodec_PreProc_Res_COPS5_ParaList);
    expect_pieces(text, literal::split(text, ",\"", 1), [](ParasList* list, const char* source) {
      ATCodec_PreProc_Res_ParaList_Ex(list, source, ",\"");
    });
  });
}

TEST(AllTexts, ThroughTheRewrites) {
  for_all_texts("the rewrites", {",", "\"", " ", "\t", "\r", "\n", "\xFD", "a"},
                [](const string& line) {
                  Field plain(line, ATCODEC_PARA_LEN), special(line, ATCODEC_PARA_LEN);
                  ATCodec_PreProc_Res_ParaLine(plain.line());
                  ATCodec_PreProc_Res_ParaLine_Special(special.line());
                  EXPECT_EQ(plain.text(), literal::rewritten(line, false)) << line;
                  EXPECT_EQ(special.text(), literal::rewritten(line, true)) << line;
                });
}

TEST(AllTexts, ThroughTheRestores) {
  for_all_texts("the restores", {"\xFA", "\xFB", "\xFC", "\xFD", "\xFE", "a"},
                [](const string& line) {
                  Field plain(line), special(line);
                  ATCodec_Restore_String_Para(plain.text());
                  ATCodec_Restore_String_Para_Special(special.text());
                  EXPECT_EQ(plain.text(), literal::restored(line, false)) << line;
                  EXPECT_EQ(special.text(), literal::restored(line, true)) << line;
                });
}

TEST(AllTexts, ThroughTheFlattening) {
  for_all_texts("the flattening", {"(", ")", ",", "a"}, [](const string& line) {
    Field flat(line);
    ATCodec_ProcRes_ParaLineEx(flat.text());
    EXPECT_EQ(flat.text(), literal::flattened(line)) << line;
  });
}

}  // namespace
