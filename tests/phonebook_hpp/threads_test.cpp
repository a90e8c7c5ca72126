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
  qalt::Contact contact;
  contact.name = "A";
  const auto add_some = [&] {
    for (int i = 0; i != 5; ++i) {
      EXPECT_TRUE(book.add(contact));
      EXPECT_TRUE(book.check(contact)) << book.info().used;
    }
  };
  std::vector<std::thread> threads;
  for (int i = 0; i != 4; ++i) threads.emplace_back(add_some);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(20u, lines.size());
}

}  // namespace
