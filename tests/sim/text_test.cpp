// Texts on the wire, against values worked out from the standards by hand.
#include "sim/text.h"

#include <gtest/gtest.h>

#include <stdexcept>

namespace qalt::sim {
namespace {

using namespace std::string_literals;

TEST(Text, EachCharacterSet) {
  const struct {
    const char* text;
    std::string ira, gsm, ucs2, with81, item;
  } rows[] = {
      {"", "", "", "", "", ""},
      {"Ab", "Ab", "Ab", "00410062", "00410062", "4162"},
      {"é@", "?@", "\x05\0"s, "00E90040", "810201E900", "0500"},
      {"{€}", "{?}", "\x1B(\x1B\x65\x1B)", "007B20AC007D", "8103411B28AC1B29", "1B281B651B29"},
      {"Пp", "?p", "?p", "041F0070", "8102089F70", "8102089F70"},
      {"中", "?", "?", "4E2D", "81019CAD", "804E2D"},
      // One character on each side of a half page: no base of 0x81, but one of 0x82.
      {"\u04FE\u0500a", "??a", "??a", "04FE05000061", "04FE05000061", "820304FE808261"},
      // A character without a code below U+0080 keeps the offset codings away.
      {"П`", "?`", "??", "041F0060", "041F0060", "80041F0060"},
  };
  for (const auto& row : rows) {
    const Text text = from_utf8(row.text);
    EXPECT_EQ(encode(Charset::kIra, text), row.ira) << row.text;
    EXPECT_EQ(encode(Charset::kGsm, text), row.gsm) << row.text;
    EXPECT_EQ(encode(Charset::kUcs2, text), row.ucs2) << row.text;
    EXPECT_EQ(encode(Charset::kUcs2With81, text), row.with81) << row.text;
    EXPECT_EQ(encode_item(text), row.item) << row.text;
    for (Charset set : {Charset::kUcs2, Charset::kUcs2With81}) {
      EXPECT_EQ(decode(set, encode(set, text)), text) << row.text;
    }
    EXPECT_EQ(decode_item(row.item), text) << row.text;
  }
}

TEST(Text, RefusesWhatIsNoText) {
  for (const char* wire : {"004", "00G1", "0041006"}) {
    EXPECT_EQ(decode(Charset::kUcs2, wire), std::nullopt) << wire;
  }
  for (const char* wire : {"8004", "81", "810208", "8103089F70", "82010", "83", "1B", "4"}) {
    EXPECT_EQ(decode_item(wire), std::nullopt) << wire;
  }
  // U+8102 U+089F as a text of its own, where the tag would promise another number of characters.
  EXPECT_EQ(decode(Charset::kUcs2With81, "8105089F"), (Text{0x8105, 0x089F}));

  EXPECT_EQ(from_utf8("\U0001F600"), (Text{0xD83D, 0xDE00}));
  EXPECT_EQ(to_utf8({0xD83D, 0xDE00, u'x', 0xDE00}), "\U0001F600x\uFFFD");
  for (const char* bad : {"\x80", "\xC3", "\xC0\x80", "\xED\xA0\x80", "\xF4\x90\x80\x80"}) {
    EXPECT_THROW(from_utf8(bad), std::invalid_argument);
  }
}

}  // namespace
}  // namespace qalt::sim
