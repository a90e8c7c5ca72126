// The codec's first use, made by several threads at once.
#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "qalt_at/text.h"

TEST(FirstUse, FillsTheRecordsForEveryThread) {
  uint32_t direct_codes[6] = {};
  std::vector<std::thread> threads;
  for (uint32_t& count : direct_codes) {
    const auto language = static_cast<int32_t>(&count - direct_codes);
    threads.emplace_back([&count, language] {
      const CodecTable* table = CODE_GetCodecTable(language);
      if (table->pUcs2ToGsm7AlphabetAsc[0x41] == 0x41) count = table->nAlphabetAscSize;
      CODE_InitCodecTable();
    });
  }
  for (std::thread& thread : threads) thread.join();
  for (uint32_t count : direct_codes) EXPECT_EQ(count, 256u);
}
