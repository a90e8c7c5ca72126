// Every text up to a length over the words that mean something, and texts at the bounds, through
// two fuzz targets: the parser and the parameter codec, beside their literal versions.
// QALT_EXHAUSTIVE_LENGTH sets the length.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

extern "C" int try_parser(const uint8_t* bytes, size_t size);
extern "C" int try_parameters(const uint8_t* bytes, size_t size);

namespace {

using Words = std::vector<std::string>;

void try_text(int (*target)(const uint8_t*, size_t), const std::string& text) {
  target(reinterpret_cast<const uint8_t*>(text.data()), text.size());
}

std::string repeated(size_t count, const std::string& piece) {
  std::string text;
  while (count-- > 0) text += piece;
  return text;
}

// Calls the target with head and text, for each text of at most so many words; it ends the program
// with the first text that breaks a property.
void try_all(int (*target)(const uint8_t*, size_t), const std::string& head, const Words& words) {
  const char* length = std::getenv("QALT_EXHAUSTIVE_LENGTH");
  const size_t longest = length != nullptr ? std::strtoul(length, nullptr, 10) : 6;
  size_t texts = 0;
  std::vector<size_t> places;  // the text's words
  for (size_t i = 0; places.size() <= longest; ++texts) {
    std::string text = head;
    for (const size_t place : places) text += words[place];
    try_text(target, text);
    for (i = 0; i < places.size() && ++places[i] == words.size(); ++i) places[i] = 0;
    if (i == places.size()) places.push_back(0);
  }
  std::printf("%zu texts\n", texts);
}

TEST(AllTexts, OfCharactersThroughTheParser) {
  try_all(try_parser, "", {"\r", "\n", "\"", ":", " ", "O", "K", ">"});
}

TEST(AllTexts, OfWordsThroughTheParser) {
  try_all(try_parser, "",
          {"\r\n", "\"", "+A: ", "+AB: ", "x", "\r\nOK\r\n", "+CME ERROR: ", "+CMT: ", ","});
}

TEST(AllTexts, ThroughTheParameterCodec) {
  const std::string separator(",\"\0", 3);
  for (const Words& words : {Words{";", ",", "\"", "\r\n", "a"},
                             {",", "\"", " ", "\n", "\xFD", "a"},
                             {",", "\"", "\t", "\r"},
                             {"\xFA", "\xFB", "\xFC", "\xFD", "\xFE", "a"},
                             {"(", ")", ",", "a"}}) {
    try_all(try_parameters, separator, words);
  }
}

// A line counts with 1023 characters, a name with 29, a payload with 102399, before the join and
// where joining makes it grow.
TEST(TextsAtTheBounds, ThroughTheParser) {
  const std::string end = "\r\n\r\nOK\r\n", line = "\r\n+X: ", name = "\r\n" + repeated(27, "N");
  for (size_t over = 0; over < 4; ++over) {
    const std::string nearly = repeated(1016 + 2 * over, "v"), payload(102397 + over, 'p');
    for (const std::string& text :
         {line + nearly + "012345678", line + "1\r\n" + nearly + ": v",
          "\r\n" + nearly + "w: v\r\nb",
          name + repeated(over, "M") + "a: 1" + name + repeated(over, "M") + "b: 2",
          repeated(102, line + nearly), line + "1" + repeated(34131 + over, "\r\na"),
          line + payload, "\r\n" + payload}) {
      try_text(try_parser, text + end);
    }
    try_text(try_parser, "\r\n+CUSD: " + payload + "\r\n");
  }
}

// A piece and a line have 1023 characters, a list 100 pieces, an operator list 102399 characters.
TEST(TextsAtTheBounds, ThroughTheParameterCodec) {
  const std::string separator(",\"\0", 3);
  for (size_t length = 1019; length < 1026; ++length) {
    const std::string xs(length, 'x');
    for (const std::string& text : {xs, xs + ",", xs + ",,", "a," + xs, xs + ")", "a;" + xs + ";b",
                                    "a;" + xs, xs + "*STGC:7", xs + ",\"b", xs + "\r\nb"}) {
      try_text(try_parameters, separator + text);
    }
  }
  for (const size_t length : {102393, 102394}) {
    try_text(try_parameters, separator + std::string(length, 'x') + "\r\nOK\r\n");
  }
  for (size_t count = 98; count < 103; ++count) {
    for (const char* piece : {"p;", "p,", "p\r\n", "*STGC:p"}) {
      try_text(try_parameters, separator + repeated(count, piece) + "q");
    }
  }
}

}  // namespace
