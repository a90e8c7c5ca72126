// Reading through phonebook.hpp: what counts as empty, what is named, and what is waited for.
#include "tests/phonebook_hpp/book_modem.h"

namespace {

using test::Book;
using test::cme;
using test::information;
using test::kError;
using test::kOk;
using test::kSilence;
using Lines = std::vector<std::string>;

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
  for (const auto& [answer, unreadable] : cases) {
    SCOPED_TRACE(answer);
    lines = {{1, kAnn}, {3, kAnn}, {100, kAnn}};
    on("AT+CPBR=1,", [&](const std::string& line) {
      const int last = std::stoi(line.substr(10));
      return last >= 2 ? kError : range(1, last);
    });
    on("AT+CPBR=2,2", answer);
    open();
    const auto read = book.read(1, 120);
    ASSERT_TRUE(read);
    EXPECT_EQ(3u, read->contacts.size());
    EXPECT_EQ(unreadable ? 1u : 0u, read->unreadable.size());
    for (const auto& one : read->unreadable) EXPECT_EQ(2, one.index);
  }
}

// A card that is not ready says ERROR as well; the count tells that something is missing.
TEST_F(Book, ARefusedReadIsNotAnEmptyIndex) {
  lines = {{1, kAnn}, {2, kAnn}};
  int refused = 7;
  on("AT+CPBR=1,", [&](const std::string& line) {
    return refused-- > 0 ? kError : range(1, std::stoi(line.substr(10)));
  });
  open();
  EXPECT_EQ(2u, book.read_all()->contacts.size());
  EXPECT_GT(pauses, 0);
  refused = 1000;
  EXPECT_EQ(1, book.read_all()->unreadable.at(0).index);
  qalt::Contact contact;
  contact.name = "B";
  EXPECT_EQ(3, book.add(contact)->index) << "what could not be read may be occupied";
}

// The count says how many contacts are missing, not which of the refused indices hold them.
TEST_F(Book, WhileAContactIsMissingNoRefusedIndexIsFree) {
  lines = {{1, kAnn}, {2, kAnn}, {3, kAnn}, {5, kAnn}};
  open();
  on("AT+CPBR=", [&](const std::string& line) {
    int first = 0, last = 0;
    std::sscanf(line.c_str(), "AT+CPBR=%d,%d", &first, &last);
    return first <= 5 && last >= 4 ? kError : range(first, last);
  });
  std::vector<int> named;
  const auto all = book.read_all();
  for (const auto& one : all->unreadable) named.push_back(one.index);
  EXPECT_EQ((std::vector<int>{4, 5}), named);
  qalt::Contact contact;
  contact.name = "B";
  EXPECT_EQ(6, book.add(contact)->index);
  contact.index = 4;
  EXPECT_EQ(qalt::Cause::kUsage, book.add(contact).error().cause);
}

// What a range does not give is asked for alone; what stays away is counted, and no index is free.
TEST_F(Book, WhatIsCountedIsLookedFor) {
  lines = {{1, kAnn}, {2, kAnn}, {3, kAnn}, {4, kAnn}};
  open();
  on("AT+CPBR=", [&](const std::string& line) {
    int first = 0, last = 0;
    std::sscanf(line.c_str(), "AT+CPBR=%d,%d", &first, &last);
    return first < last ? range(first, std::min(last, 2)) : range(first, last);
  });
  EXPECT_EQ(4u, book.read_all()->contacts.size());
  EXPECT_EQ(0, book.read_all()->missing);
  hidden = 1;
  EXPECT_EQ(1, book.read_all()->missing);
  qalt::Contact contact;
  contact.name = "B";
  EXPECT_EQ(qalt::Cause::kRefused, book.add(contact).error().cause);
  EXPECT_EQ(0, count("AT+CPBW"));
}

// Where every empty index is refused, and each long range from 21 on, the count decides, as it is
// in the job that reads.
TEST_F(Book, CountsAreThoseOfTheReading) {
  lines = {{1, kAnn}, {2, kAnn}};
  open();
  on("AT+CPBR=", [&](const std::string& line) {
    int first = 0, last = 0;
    std::sscanf(line.c_str(), "AT+CPBR=%d,%d", &first, &last);
    const std::string found = range(first, last);
    return found == kOk || (first > 20 && last > first) ? kError : found;
  });
  lines[30] = kAnn;  // by another client
  EXPECT_EQ(3u, book.read_all()->contacts.size());
  const qalt::Phonebook::Job job(book);
  EXPECT_TRUE(book.erase(30));
  forget();
  EXPECT_TRUE(book.read_all()->unreadable.empty());
  EXPECT_LT(sent().size(), 20u) << "no contact is missing";
  qalt::Contact contact;
  contact.name = "B";
  EXPECT_EQ(3, book.add(contact)->index);
}

TEST_F(Book, EndsWhenTheModemIsGoneOrTheClientAsks) {
  lines = {{1, kAnn}};
  open();
  on("AT+CPBR=", kSilence);
  EXPECT_EQ(qalt::Cause::kNoAnswer, book.read_all().error().cause);
  EXPECT_EQ(3, count("AT+CPBR="));
  EXPECT_EQ("AT+CSCS=\"IRA\"", sent().back().line);

  on("AT+CPBR=?", test::kRange);
  int left = 2;
  options.stop = [&left] { return left-- <= 0; };
  open();
  EXPECT_EQ(qalt::Cause::kInterrupted, book.read_all().error().cause);
}

TEST_F(Book, OneForAProcess) {
  qalt::Phonebook second;
  EXPECT_EQ(qalt::Cause::kUsage, second.read_all().error().cause) << "not open";
  open();
  EXPECT_EQ(qalt::Cause::kUsage, second.open(options).error().cause);
  EXPECT_EQ(qalt::Cause::kNotFound, book.get(251).error().cause);
}

TEST_F(Book, TextsOfEveryKind) {
  std::string seventy;
  std::string digits;
  for (int i = 0; i != 70; ++i) seventy += "é", digits += "00E9";
  lines = {{1, "\"1\",129,\"80014E2D\""},          // begins like a tag, is none
           {2, "\"2\",129,\"" + digits + "\",1"},  // longer than a record, and a parameter more
           {3, "\"3\",129,\"D83DDE0041\""},        // no whole characters
           {4, "\"4\",129,\"D83DDE000041\""},      // a pair of surrogates
           {5, "\"(1;2,3)\",129,\"0041000000420020\""}};  // a NUL and a blank
  open();
  const auto read = book.read_all();
  Lines names;
  for (const qalt::Contact& contact : read->contacts) names.push_back(contact.name);
  EXPECT_EQ((Lines{"\u8001\u4E2D", seventy, "😀A", std::string("A\0B ", 4)}), names);
  EXPECT_EQ("(1;2,3)", read->contacts.back().number);
  EXPECT_EQ(3, read->unreadable.at(0).index);
  PbItem item = {};
  EXPECT_EQ(0, _PBB_GetIndexIsEmpty(2)) << "used, although no record holds its text";
  EXPECT_EQ(1, PBB_ReadPB(2, &item));
  EXPECT_STREQ("", item.text);
}

TEST_F(Book, OpeningWaitsForAStartingCard) {
  int busy = 3;
  on("AT+CPBS=", [&](const std::string&) { return busy-- > 0 ? cme(14) : kOk; });
  open();
  EXPECT_EQ(3, pauses);
  busy = 3;
  options.wait_seconds = 1;
  EXPECT_EQ(qalt::Cause::kRefused, book.open(options).error().cause);
  busy = 0;
  on("AT+CPBR=?", information({"+CPBR: (1-2000000000),40,18"}));
  EXPECT_FALSE(book.open(options)) << "such a range is a misread answer";
}

// A modem that is away is waited for where the client says so, and ends a reading at once where
// not.
TEST_F(Book, AModemThatIsAway) {
  lines = {{1, kAnn}};
  open();
  int away = 1000;
  on("AT+CPBR=", [&](const std::string& line) {
    return away-- > 0 ? cme(1) : range(1, std::stoi(line.substr(10)));
  });
  on("AT+CPBR=?", test::kRange);
  const auto all = book.read_all();
  ASSERT_FALSE(all);
  EXPECT_EQ(qalt::Cause::kNoAnswer, all.error().cause);
  EXPECT_EQ(1, count("AT+CPBR="));
  EXPECT_EQ(0, pauses);
  options.away_seconds = 5;
  open();
  away = 4;
  EXPECT_TRUE(book.get(1));
  EXPECT_EQ(4, pauses);
  EXPECT_EQ(1 + 4, count("AT+CSCS=\"UCS2\"")) << "it may come back with another set";
  on("AT+CPBS=", cme(1));
  options.stop = [] { return true; };
  const auto opened = book.open(options);
  ASSERT_FALSE(opened);
  EXPECT_EQ(qalt::Cause::kInterrupted, opened.error().cause);
}

TEST_F(Book, ALockedCardIsNamed) {
  const struct {
    std::string selected, pin;
    const char* said;
  } cases[] = {
      {kError, information({"+CPIN: SIM PUK"}), "the card waits for its SIM PUK"},
      {kError, information({"+CPIN: PH-SIM PIN"}), "the card waits for its PH-SIM PIN"},
      {kError, information({"+CPIN: READY"}), "answered ERROR"},
      {kError, cme(10), "+CME ERROR: 10 (SIM not inserted)"},
      {kError, kError, "answered ERROR"},
      {cme(11), kError, "+CME ERROR: 11 (SIM PIN required)"},
  };
  for (const auto& c : cases) {
    on("AT+CPBS=", c.selected);
    on("AT+CPIN?", c.pin);
    const auto opened = book.open(options);
    ASSERT_FALSE(opened);
    EXPECT_NE(opened.error().what.npos, opened.error().what.find(c.said)) << opened.error().what;
  }
  EXPECT_EQ(0, count("AT+CPIN="));
}

}  // namespace
