// book_modem.h - a modem with contacts in memory, and a phonebook in front of it that never waits.
#ifndef QALT_TESTS_PHONEBOOK_HPP_BOOK_MODEM_H_
#define QALT_TESTS_PHONEBOOK_HPP_BOOK_MODEM_H_

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <map>
#include <string>
#include <vector>

#include "qalt_at/phonebook.hpp"
#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace test {

inline const std::string kSilence;
inline const std::string kRange = information({"+CPBR: (1-250),40,18"});
inline std::string cme(int code) {
  return "\r\n+CME ERROR: " + std::to_string(code) + "\r\n";
}
inline qalt::Contact contact(int index, const std::string& name, const std::string& number = "") {
  return {index, name, number, "", "", "", "", 0};
}

// What a write brings, as an answer has it: behind the text, <hidden> is the first of eight there
// and the last of them here (3GPP TS 27.007, 8.12 and 8.14).
inline std::string as_answered(const std::string& written) {
  std::vector<std::string> pieces = qalt::detail::split_outside_quotes(written, ",");
  if (pieces.size() == 3) return written;
  pieces.resize(3 + 8);
  std::rotate(pieces.begin() + 3, pieces.end() - 1, pieces.end());
  while (pieces.back().empty()) pieces.pop_back();
  std::string line;
  for (const std::string& piece : pieces) line += "," + piece;
  return line.substr(1);
}

// Answers +CPBR and +CPBW from `stored`: by index, what stands behind "index," in an answer.
class Book : public testing::Test, public ScriptedModem {
 protected:
  Book() {
    on("AT+CPBS=", kOk);
    on("AT+CSCS=", kOk);
    on("AT+CSCS?", information({"+CSCS: \"UCS2\""}));
    on("AT+JCPBR=?", kNotSupport);
    on("AT+CPBS?", [this](const std::string&) {
      return information({"+CPBS: \"SM\"," + std::to_string(stored.size() + hidden) + ",250"});
    });
    on_reads([this](int first, int last) { return range(first, last); });
    on("AT+CPBW=", [this](const std::string& line) {
      const size_t comma = line.find(',');
      const int index = std::stoi(line.substr(8));
      if (comma == line.npos) {
        stored.erase(index);
      } else {
        stored[index] = as_answered(line.substr(comma + 1));
      }
      return kOk;
    });
    options.pause = [this] { ++pauses; };
  }

  void on_reads(const std::function<std::string(int first, int last)>& answer) {
    on("AT+CPBR=", [answer](const std::string& line) {
      int first = 0, last = 0;
      const int found = std::sscanf(line.c_str(), "AT+CPBR=%d,%d", &first, &last);
      return found == 2 ? answer(first, last) : kRange;
    });
  }
  std::string range(int first, int last) const {
    std::vector<std::string> found;
    for (auto at = stored.lower_bound(first); at != stored.end() && at->first <= last; ++at) {
      found.push_back("+CPBR: " + std::to_string(at->first) + "," + at->second);
    }
    return found.empty() ? kOk : information(found);
  }
  void open() {
    const auto info = book.open(options);
    ASSERT_TRUE(info) << info.error().what;
    forget();
  }
  int count(const std::string& start) const {
    const std::vector<std::string> all = lines();
    return int(std::count_if(all.begin(), all.end(),
                             [&](const std::string& line) { return line.rfind(start, 0) == 0; }));
  }
  template <typename Value>
  static void expect(qalt::Cause cause, const std::string& said,
                     const qalt::Result<Value>& result) {
    ASSERT_FALSE(result) << said;
    EXPECT_EQ(cause, result.error().cause) << result.error().what;
    EXPECT_NE(said.npos, result.error().what.find(said)) << result.error().what;
  }

  std::map<int, std::string> stored;
  int hidden = 0;  // contacts that +CPBS? counts and no read gives
  int pauses = 0;
  qalt::Options options;
  qalt::Phonebook book;
};

}  // namespace test

#endif  // QALT_TESTS_PHONEBOOK_HPP_BOOK_MODEM_H_
