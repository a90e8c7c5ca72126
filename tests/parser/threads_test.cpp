// Many threads at once: each parse gets its own answer whole, and the codec's first use fills its
// records for all.
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "qalt_at/parser.h"
#include "qalt_at/text.h"
#include "tests/support/recorder.h"  // keeps the traces off the system's log

namespace {

void on_four_threads(const std::function<void(int)>& body) {
  std::vector<std::thread> threads;
  for (int number = 0; number < 4; ++number) threads.emplace_back(body, number);
  for (std::thread& thread : threads) thread.join();
}

TEST(Threads, EachGetsItsOwnAnswer) {
  on_four_threads([](int number) {
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
  });
}

TEST(Threads, TheFirstUseFillsTheCodecsRecords) {
  on_four_threads([](int language) {
    const CodecTable* table = CODE_GetCodecTable(language);
    EXPECT_EQ(table->pUcs2ToGsm7AlphabetAsc[0x41], 0x41);
    EXPECT_EQ(table->nAlphabetAscSize, 256u);
  });
}

}  // namespace
