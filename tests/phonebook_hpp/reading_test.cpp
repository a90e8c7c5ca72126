// Reading through phonebook.hpp: what counts as empty, what is named, and what is waited for.
#include <thread>

#include "tests/phonebook_hpp/book_modem.h"

namespace {

using qalt::Cause;
using test::Book;
using test::cme;
using test::contact;
using test::information;
using test::kError;
using test::kOk;
using test::kSilence;
using Texts = std::vector<std::string>;

const std::string kAnn = "\"1\",129,\"0041006E006E\"";

// Every way in which a modem says that it has nothing there, and those which say that something is
// wrong. Index 2 spoils each step that it is in.
TEST_F(Book, OneBadIndexCostsOnlyItself) {
  const std::pair<std::string, bool> cases[] = {
      {kOk, false},
      {cme(22), false},
      {kError, false},
      {"\r\n+CME ERROR: not found\r\n", false},
      {cme(13), true},
      {"\r\n+CPBR: 2,\"1\",129,\"Screen 5\"\"\r\n\r\nOK\r\n", true},
      {information({"+CPBR: 2,\"1\",129,\"004\""}), true},
      {information({"+CPBR: two,\"1\",129,\"\""}), true},
      {information({"+CPBR: 7,\"1\",129,\"\""}), true},
  };
  stored = {{1, kAnn}, {3, kAnn}, {100, kAnn}};
  for (const auto& [answer, unreadable] : cases) {
    on_reads([&, alone = answer](int first, int last) {
      if (first == 2 && last == 2) return alone;
      return first <= 2 && last >= 2 ? kError : range(first, last);
    });
    open();
    const auto read = book.read(1, 120);
    ASSERT_TRUE(read);
    EXPECT_EQ(3u, read->contacts.size()) << answer;
    ASSERT_EQ(unreadable, read->unreadable.size() == 1) << answer;
    EXPECT_TRUE(!unreadable || read->unreadable[0].index == 2) << answer;
  }
}

// A card that is not ready says ERROR as well; the count tells that something is missing, but not
// which of the refused indices hold it.
TEST_F(Book, ARefusedReadIsNotAnEmptyIndex) {
  stored = {{1, kAnn}, {2, kAnn}, {3, kAnn}, {5, kAnn}};
  int refused = 7;
  on_reads([&](int first, int last) {
    return first <= 5 && last >= 4 && refused-- > 0 ? kError : range(first, last);
  });
  open();
  EXPECT_EQ(4u, book.read_all()->contacts.size());
  EXPECT_GT(pauses, 0);
  refused = 1000;
  const auto all = book.read_all();
  ASSERT_EQ(2u, all->unreadable.size());
  EXPECT_EQ(4 + 10 * 5, all->unreadable[0].index + 10 * all->unreadable[1].index);
  EXPECT_EQ(6, book.add(contact(qalt::kNoIndex, "B"))->index) << "they may be occupied";
  expect(Cause::kUsage, "index 4 may be occupied", book.add(contact(4, "B")));
}

// What a range does not give is asked for alone; what stays away is counted, and no index is free.
TEST_F(Book, WhatIsCountedIsLookedFor) {
  stored = {{1, kAnn}, {2, kAnn}, {3, kAnn}, {4, kAnn}};
  on_reads(
      [&](int first, int last) { return range(first, first < last ? std::min(last, 2) : last); });
  open();
  EXPECT_EQ(4u, book.read_all()->contacts.size());
  EXPECT_EQ(0, book.read_all()->missing);
  hidden = 1;
  EXPECT_EQ(1, book.read_all()->missing);
  expect(Cause::kRefused, "1 more", book.add(contact(qalt::kNoIndex, "B")));
  EXPECT_EQ(0, count("AT+CPBW"));
}

TEST_F(Book, OneForAProcessUntilTheModemIsGoneOrTheClientAsks) {
  qalt::Phonebook second;
  expect(Cause::kUsage, "not open", second.read_all());
  open();
  expect(Cause::kUsage, "open in this process", second.open(options));
  expect(Cause::kNotFound, "no index 251", book.get(251));
  on_reads([](int, int) { return kSilence; });
  expect(Cause::kNoAnswer, "did not answer", book.read_all());
  EXPECT_EQ(3, count("AT+CPBR=1,"));
  EXPECT_EQ("AT+CSCS=\"IRA\"", sent().back().line);
  int left = 9;  // behind the opening
  options.stop = [&left] { return left-- <= 0; };
  open();
  expect(Cause::kInterrupted, "before index", book.read_all());
}

TEST_F(Book, TextsOfEveryKind) {
  std::string seventy;
  std::string digits;
  for (int i = 0; i != 70; ++i) seventy += "é", digits += "00E9";
  stored = {{1, "\"1\",129,\"80014E2D\""},          // begins like a tag, is none
            {2, "\"2\",129,\"" + digits + "\",1"},  // longer than a record, and a parameter more
            {3, "\"3\",129,\"D83DDE0041\""},        // no whole characters
            {4, "\"4\",129,\"D83DDE000041\""},      // a pair of surrogates
            {5, "\"(1;2,3)\",129,\"0041000000420020\""}};  // a NUL and a blank
  open();
  const auto read = book.read_all();
  Texts names;
  for (const qalt::Contact& one : read->contacts) names.push_back(one.name);
  EXPECT_EQ((Texts{"\u8001\u4E2D", seventy, "😀A", std::string("A\0B ", 4)}), names);
  EXPECT_EQ("(1;2,3)", read->contacts.back().number);
  EXPECT_EQ(3, read->unreadable.at(0).index);
  EXPECT_EQ(0, _PBB_GetIndexIsEmpty(2)) << "used, although no record holds its text";
}

// A card that starts and a modem that is away are waited for as long as the client says.
TEST_F(Book, WhatIsWaitedFor) {
  int busy = 3;
  std::string said = cme(14);
  on("AT+CPBS=", [&](const std::string&) { return busy-- > 0 ? said : kOk; });
  open();
  EXPECT_EQ(3, pauses);
  busy = 3;
  options.wait_seconds = 1;
  expect(Cause::kRefused, "SIM busy", book.open(options));
  busy = 0;
  stored = {{1, kAnn}};
  open();
  int away = 1000;
  on_reads([&](int first, int last) { return away-- > 0 ? cme(1) : range(first, last); });
  pauses = 0;
  expect(Cause::kNoAnswer, "the modem is away", book.read_all());
  EXPECT_EQ(1, count("AT+CPBR=") + pauses);
  options.away_seconds = 5;
  away = 0;
  open();
  away = 4;
  EXPECT_TRUE(book.get(1));
  EXPECT_EQ(4, pauses);
  EXPECT_EQ(1 + 4, count("AT+CSCS=\"UCS2\"")) << "it may come back with another set";
  busy = 1000;
  said = cme(1);
  options.stop = [] { return true; };
  expect(Cause::kInterrupted, "", book.open(options));
  busy = 0;
  on("AT+CPBR=?", information({"+CPBR: (1-2000000000),40,18"}));
  EXPECT_FALSE(book.open(options)) << "such a range is a misread answer";
}

TEST_F(Book, ALockedCardIsNamed) {
  const struct {
    std::string selected, pin;
    const char* said;
  } cases[] = {
      {kError, information({"+CPIN: SIM PUK"}), "the card waits for its SIM PUK"},
      {kError, information({"+CPIN: READY"}), "answered ERROR"},
      {kError, cme(10), "+CME ERROR: 10 (SIM not inserted)"},
      {kError, kError, "answered ERROR"},
      {cme(11), kError, "+CME ERROR: 11 (SIM PIN required)"},
  };
  for (const auto& c : cases) {
    on("AT+CPBS=", c.selected);
    on("AT+CPIN?", c.pin);
    pauses = 0;
    expect(Cause::kRefused, c.said, book.open(options));
    EXPECT_EQ(c.selected == kError ? options.wait_seconds : 0, pauses) << "it may be starting";
  }
}

// Calls of several threads are serialised: no job sees another one's character set or index.
TEST_F(Book, ThreadsTakeTurns) {
  bool ucs2 = false;
  on("AT+CSCS=", [&](const std::string& line) {
    const bool to_ucs2 = line.find("UCS2") != line.npos;
    EXPECT_NE(ucs2, to_ucs2) << "a job within another one";
    ucs2 = to_ucs2;
    std::this_thread::yield();
    return kOk;
  });
  open();
  std::vector<std::thread> threads;
  for (int i = 0; i != 20; ++i) {
    threads.emplace_back([this] { EXPECT_TRUE(book.add(contact(qalt::kNoIndex, "A"))); });
  }
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(20u, stored.size());
}

}  // namespace
