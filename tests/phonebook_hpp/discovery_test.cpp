// What open() learns of a phonebook, and that it ends, whatever becomes of the server meanwhile.
#include <poll.h>
#include <time.h>

#include "tests/phonebook_hpp/book_modem.h"

namespace {

using namespace test;
using qalt::Cause;

// The program's own time: a millisecond passes with every look at the clock.
int64_t g_now_ms = 0;
bool g_stuck = false;  // the server takes commands and never answers

TEST_F(Book, WhatAModemTellsOfItsPhonebook) {
  const struct {
    int platform;
    std::vector<std::pair<const char*, std::string>> answers;
    int first, last;
    std::array<int, PB_FIELD_TYPES> lengths;  // number, name, two numbers, extra, email
    qalt::Family family;
    bool usim;
  } cases[] = {
      {0, {{"AT+CPBR=?", "(0-9),40"}}, 0, 9, {40}, qalt::Family::kStandard, false},
      {0, {{"AT+CPBR=?", "(5-104,200-250),40,,0,0,64"}}, 5, 250, {40, 0, 0, 0, 0, 64}, {}, false},
      {0, {{"AT+CPBR=?", "1-250,40,18"}}, 1, 250, {40, 18}, qalt::Family::kStandard, false},
      {0, {{"AT+CPBR=?", "(1-3),99999999999999999999"}}, 1, 3, {INT32_MAX}, {}, false},
      {0,
       {{"AT+JCPBR=?", "(1-500),40,60,41,42,128,50"}, {"AT+JUSIM=?", "1"}},
       1,
       500,
       {40, 60, 41, 42, 50, 128},
       qalt::Family::kJcpbr,
       true},
      {0, {{"AT+JCPBR=?", "(1-500),40,60"}, {"AT+JUSIM=?", "0"}}, 1, 250, {40, 18}, {}, false},
      {1, {{"AT+JCPBR=?", "(1-500),40,60"}}, 1, 500, {40, 60}, qalt::Family::kJcpbr, false},
      {7, {{"AT+JCPBR=?", "(1-500),40,60"}, {"AT+JUSIM=?", "1"}}, 1, 250, {40, 18}, {}, false},
      {4,
       {{"AT+CPBR=1", "1,2,2"}, {"AT+CPBR=?", "(1-300),40,16,0,64"}, {"AT^CARDMODE=?", "1"}},
       1,
       300,
       {40, 16, 40, 0, 0, 64},
       qalt::Family::kScpbr,
       false},
      {4,
       {{"AT+CPBR=1", "1,\"12\",129,\"A\""}, {"AT+CPBR=?", "(1-300),40,16,64"}},
       1,
       300,
       {40, 16, 40, 40, 0, 64},
       qalt::Family::kScpbr,
       true},
  };
  for (const auto& c : cases) {
    on("AT^CARDMODE=?", kError), on("AT+JUSIM=?", kError), on("AT+JCPBR=?", kNotSupport),
        on("AT+CPBR=?", kRange);
    for (const auto& [command, answer] : c.answers) {
      const std::string line = command;
      on(line, information({line.substr(2, line.find('=') - 2) + ": " + answer}));
    }
    options.platform = c.platform;
    const auto info = book.open(options);
    const std::string told = c.answers[0].second;
    ASSERT_TRUE(info) << told << info.error().what;
    EXPECT_EQ(c.first, info->first) << told;
    EXPECT_EQ(c.last, info->last) << told;
    EXPECT_EQ(c.lengths, info->lengths) << told;
    EXPECT_EQ(c.family, info->family) << told;
    EXPECT_EQ(c.usim, info->usim) << told;
  }
}

// The server is gone, or stuck, from any command of the opening on: no pauses, one error.
TEST_F(Book, OpeningEndsWithoutAServer) {
  size_t answered = 0;
  bool stuck = false;
  on("AT", [&](const std::string& line) {
    const bool lost = sent().size() > answered;
    g_stuck = lost && stuck;
    return lost ? kHangUp : line == "AT+CPBR=?" ? kRange : kOk;
  });
  for (const bool is_stuck : {false, true}) {
    stuck = is_stuck;
    for (answered = 0; answered != 5; ++answered) {
      forget();
      const int64_t began = g_now_ms;
      const auto opened = book.open(options);
      ASSERT_FALSE(opened) << answered;
      EXPECT_EQ(Cause::kNoAnswer, opened.error().cause);
      EXPECT_LT(g_now_ms - began, 2 * 440'000) << "asked twice, as it changes nothing";
    }
  }
  g_stuck = false;
  forget();
  EXPECT_TRUE(book.open(options));
  EXPECT_EQ(answered, sent().size()) << "so many commands it takes";
  EXPECT_TRUE(sleeps().empty());
  EXPECT_EQ(0, pauses);
}

TEST_F(Book, AWaitForAnAnswerCanBeStopped) {
  open();
  on("AT+CPBR=", [&](const std::string&) {
    g_stuck = true;
    return kHangUp;
  });
  int asked = 0;
  options.stop = [&] { return ++asked > 20; };
  on("AT+CPBR=?", kRange);
  ASSERT_TRUE(book.open(options));
  const int64_t began = g_now_ms;
  EXPECT_EQ(Cause::kInterrupted, book.read_all().error().cause);
  g_stuck = false;
  EXPECT_LT(g_now_ms - began, 40'000) << "the set is put back, if the server is quick";
}

}  // namespace

extern "C" {

int poll(pollfd*, nfds_t, int timeout) {
  if (g_stuck) g_now_ms += timeout;
  return g_stuck ? 0 : 1;
}

int clock_gettime(clockid_t, timespec* now) {
  ++g_now_ms;
  now->tv_sec = static_cast<time_t>(g_now_ms / 1000);
  now->tv_nsec = static_cast<long>(g_now_ms % 1000 * 1000000);
  return 0;
}

}  // extern "C"
