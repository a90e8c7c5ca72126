// Calls of several threads are serialised: no job sees another one's character set or index.
#include <thread>

#include "tests/phonebook_hpp/book_modem.h"

namespace {

using test::Book;

TEST_F(Book, ThreadsTakeTurns) {
  bool ucs2 = false;
  on("AT+CSCS=", [&](const std::string& line) {
    const bool to_ucs2 = line.find("UCS2") != line.npos;
    EXPECT_NE(ucs2, to_ucs2) << "a job within another one";
    ucs2 = to_ucs2;
    return test::kOk;
  });
  open();
  constexpr int kThreads = 4;
  constexpr int kEach = 5;
  std::vector<std::thread> threads;
  for (int t = 0; t != kThreads; ++t) {
    threads.emplace_back([this, t] {
      for (int i = 0; i != kEach; ++i) {
        qalt::Contact contact;
        contact.name = std::to_string(t);
        EXPECT_TRUE(book.add(contact));
      }
    });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(size_t(kThreads * kEach), lines.size());
}

}  // namespace
