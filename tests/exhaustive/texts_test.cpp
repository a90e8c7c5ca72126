// Every text up to a length over the words that mean something, through two fuzz targets: the
// parser and the parameter codec, beside their literal versions. QALT_EXHAUSTIVE_LENGTH sets the
// length.
#include <gtest/gtest.h>

#include <cstdlib>
#include <string>
#include <vector>

extern "C" int try_parser(const uint8_t* bytes, size_t size);
extern "C" int try_parameters(const uint8_t* bytes, size_t size);

namespace {

using Words = std::vector<std::string>;

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
    target(reinterpret_cast<const uint8_t*>(text.data()), text.size());
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

}  // namespace
