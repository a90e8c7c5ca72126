// Many threads parse at once; each gets its own answer whole.
#include <gtest/gtest.h>

#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qalt_at/parser.h"
#include "tests/support/recorder.h"  // keeps the traces off the system's log

namespace {

TEST(ParserThreads, EachGetsItsOwnAnswer) {
  const auto parse_often = [](int number) {
    const auto record = std::make_unique<AtRes>();
    std::string answer, payload;
    for (int line = 0; line < 10 + number; ++line) {
      const std::string value = std::to_string(number * 1000 + line);
      answer += "\r\n+CPBR: " + value + "\r\n" + value;
      payload += (line == 0 ? "" : ";") + value + ",\"" + value + "\"";
    }
    for (int round = 0; round < 50; ++round) {
      std::string text = answer + "\r\n\r\nOK\r\n";
      EXPECT_EQ(Bk_Parse_At_Res(text.data(), record.get()), AT_PARSE_OK);
      EXPECT_EQ(record->Paras + std::string(text.c_str()), payload);
      EXPECT_EQ(Bk_Parse_At_Res(nullptr, record.get()), AT_PARSE_NULL);
    }
  };
  std::vector<std::thread> threads;
  for (int number = 1; number <= 4; ++number) threads.emplace_back(parse_often, number);
  for (std::thread& thread : threads) thread.join();
}

}  // namespace
