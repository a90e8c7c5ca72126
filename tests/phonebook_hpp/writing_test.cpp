// Writing through phonebook.hpp: the line sent, the read-back, and the restored character set.
#include "tests/phonebook_hpp/book_modem.h"

namespace {

using qalt::Cause;
using qalt::Contact;
using qalt::Fate;
using test::Book;
using test::cme;
using test::contact;
using test::information;
using test::kError;
using test::kHangUp;
using test::kOk;
using test::kSilence;

constexpr char kIra[] = "AT+CSCS=\"IRA\"";

std::string at_five(const std::string& stored) {
  return information({"+CPBR: 5," + stored});
}

qalt::Changes change_of(int field, const std::string& text) {
  qalt::Changes changes;
  changes.fields[size_t(field)] = text;
  return changes;
}

// Every change is read back. Not sent or refused, sent and not answered, answered with OK and not
// seen are three different things.
TEST_F(Book, WhatBecameOfAChangeIsTold) {
  using enum Cause;
  using enum Fate;
  enum Kind { kPut, kErase };
  const std::string good = at_five("\"+49\",145,\"0416\""), old = at_five("\"7\",129,\"0041\"");
  const std::string sign = at_five("\"49\",145,\"0416\"");  // the "+" is in the type
  const std::string bare = at_five("\"49\",129,\"0416\""), torn = at_five("\"+49\",145,\"04\"");
  const std::string cms = "\r\n+CMS ERROR: 311\r\n";
  const struct {
    Kind kind;
    std::string answer, look;  // to the change, and to the read behind it
    std::optional<Cause> cause = {};
    Fate fate = kNotDone;
    const char* said = "";
  } cases[] = {
      // clang-format off
      {kPut, kOk, good},
      {kPut, kOk, sign},
      {kPut, kSilence, good},
      {kPut, kHangUp, good},
      {kPut, "\r\nO", good},
      {kPut, kOk, bare, kDiffers, kDone, "number written \"+49\", read back \"49\""},
      {kPut, kOk, torn, kDiffers, kDone, "cannot be read back"},
      {kPut, kOk, kSilence, kNoAnswer, kDone, "index 5 was written and cannot be read back"},
      {kPut, kOk, cme(1), kNoAnswer, kDone, "modem is away: +CME ERROR: 1 (no connection to phone)"},
      {kPut, kOk, kError, kDiffers, kDone, "read back: the read-back was answered ERROR"},
      {kPut, kSilence, kOk, kNoAnswer, kNotDone, "did not answer in time, and it is not stored"},
      {kPut, kSilence, bare, kNoAnswer, kUnknown, "index 5 may be written or not"},
      {kPut, kSilence, kSilence, kNoAnswer, kUnknown, "may be written or not: the modem did not"},
      {kPut, kSilence, kError, kNoAnswer, kUnknown},
      {kPut, kHangUp, kHangUp, kNoAnswer, kUnknown, "the AT server ended before it answered"},
      {kPut, kHangUp, old, kNoAnswer, kNotDone, "and it is not stored"},
      {kPut, cme(1), old, kNoAnswer, kNotDone, "could not write index 5, nothing was sent: the modem"},
      {kPut, cme(24), kOk, kRefused, kNotDone, "+CME ERROR: 24 (text string too long)"},
      {kPut, cme(20), kOk, kFull, kNotDone, "memory full"},
      {kPut, cms, old, kRefused, kNotDone, "+CMS ERROR: 311 (SIM PIN required)"},
      {kErase, kOk, kError},
      {kErase, kHangUp, kOk},
      {kErase, kOk, old, kDiffers, kDone, "still holds a contact"},
      {kErase, kOk, kSilence, kNoAnswer, kDone, "index 5 was deleted and cannot be read back"},
      {kErase, kOk, cme(1), kNoAnswer, kDone, "the modem is away"},
      {kErase, kSilence, kSilence, kNoAnswer, kUnknown, "may be deleted or not: the modem did not"},
      {kErase, kSilence, kError, kNoAnswer, kUnknown},
      {kErase, kHangUp, old, kNoAnswer, kNotDone, "and it is still there"},
      {kErase, cme(1), old, kNoAnswer, kNotDone, "could not delete index 5, nothing was sent"},
      {kErase, cms, old, kRefused, kNotDone, "+CMS ERROR: 311 (SIM PIN required)"},
      // clang-format on
  };
  open();
  for (const auto& c : cases) {
    SCOPED_TRACE(std::to_string(&c - cases));
    on("AT+CPBW=", c.answer);
    on("AT+CPBR=", c.look);
    const auto check = [&](const auto& result) {
      EXPECT_EQ(kIra, sent().back().line);
      ASSERT_EQ(!c.cause, bool(result));
      if (!c.cause) return;
      expect(*c.cause, c.said, result);
      EXPECT_EQ(c.fate, result.error().fate) << result.error().what;
    };
    if (c.kind == kPut) check(book.put(contact(5, "Ж", "+49")));
    if (c.kind == kErase) check(book.erase(5));
  }
}

// Without counts an index that is refused may hold a contact.
TEST_F(Book, WithoutCountsARefusalIsNoFreeIndex) {
  for (const char* const counts : {"\"SM\"", "\"SM\",-1,20", "\"SM\",,20"}) {
    on("AT+CPBS?", information({std::string("+CPBS: ") + counts}));
    open();
    on_reads([](int, int) { return kError; });
    EXPECT_FALSE(book.add(contact(-1, "A"))) << counts;
    EXPECT_EQ(0, count("AT+CPBW=")) << counts;
    on_reads([this](int first, int last) { return range(first, last); });
  }
  stored = {{1, "\"1\",129,\"0042\""}};
  open();
  EXPECT_EQ(2, book.add(contact(-1, "A"))->index);
}

// A write that waits for a busy card looks again before it is sent once more.
TEST_F(Book, ABusyCardLosesNoContact) {
  open();
  bool came = true;  // another client's contact, meanwhile
  int busy = 0;
  on("AT+CPBW=", [&](const std::string&) {
    stored[1] = came ? "\"1\",129,\"0042\"" : "\"\",129,\"0041\"";
    if (busy-- <= 0) return kOk;
    if (!came) stored.clear();
    return cme(14);
  });
  busy = 1;
  expect(Cause::kCollision, "another client has just taken index 1", book.add(contact(-1, "A")));
  EXPECT_EQ(1, count("AT+CPBW="));
  came = false;
  busy = 3;
  stored.clear();
  EXPECT_TRUE(book.add(contact(-1, "A")));
}

// A signal is no failure, whatever call it interrupts; a server that is gone is one.
TEST_F(Book, SignalsAndLostServers) {
  open();
  interrupts = 3;
  EXPECT_TRUE(book.put(contact(2, "B")));
  for (const bool stays : {true, false}) {
    on("AT+CPBW=", [this, stays](const std::string&) {
      stored[3] = "\"\",129,\"0042\"";
      interrupts = 1;
      listening = stays;
      return kOk;
    });
    const auto put = book.put(contact(3, "B"));
    EXPECT_EQ(stays, bool(put));
    if (stays) continue;
    expect(Cause::kNoAnswer, "no AT server listens", put);
    EXPECT_EQ(Fate::kDone, put.error().fate);
  }
  forget();
  EXPECT_EQ(Fate::kNotDone, book.put(contact(5, "B")).error().fate);
  EXPECT_TRUE(sent().empty());
}

// Another user's listener at the path is told nothing.
TEST_F(Book, AStrangersServerIsNotAsked) {
  open();
  forget();
  user = 12'345;
  const auto put = book.put(contact(2, "B"));
  EXPECT_TRUE(sent().empty());
  EXPECT_NE(put.error().what.find("neither root nor this user"), std::string::npos);
  EXPECT_EQ(Fate::kNotDone, put.error().fate);
  options.server_user = user;
  open();
  EXPECT_TRUE(book.put(contact(2, "B")));
}

// What is not named keeps the very digits that the modem gave, even those that no text has.
TEST_F(Book, ChangeKeepsTheOtherFields) {
  stored = {{1, "\"5\",129,\"D83D0041\""}};
  open();
  EXPECT_TRUE(book.change(1, change_of(PB_FIELD_NUMBER, "+7")));
  EXPECT_EQ("\"+7\",145,\"D83D0041\"", stored[1]);
  expect(Cause::kNotFound, "index 9", book.change(9, change_of(PB_FIELD_NUMBER, "+7")));
  for (const std::string number : {"\"7123\",0", "\"*21\",145", "\"+49\",129", "\"5\",161"}) {
    stored[1] = number + ",\"0041\"";
    EXPECT_TRUE(book.change(1, change_of(PB_FIELD_TEXT, "B")));
    EXPECT_EQ(number + ",\"0042\"", stored[1]);
  }
  stored[1] = "\"\",129,\"0041\"";
  expect(Cause::kUsage, "", book.change(1, change_of(PB_FIELD_TEXT, "")));  // would be a deletion
}

// What stands behind the name (3GPP TS 27.007, 8.14) comes back as the modem gave it, but for what
// says nothing at its end. A modem that drops it is found out.
TEST_F(Book, ChangeKeepsFurtherParameters) {
  const std::pair<std::string, std::string> cases[] = {
      {",0,\"\",\"\",\"129\",\"\",\"\"", ""},
      {", 1,\"00460072\" ,\"+49\",145,", ",1,\"00460072\",\"+49\",145"},
      {",0,\"a;b, \r\"", ""},  // no list that can be sent
      {",0,\"\",\"\",,\"\",\"\",\"\",\"tel:1;ext=2,3\"",
       ",,\"\",\"\",,\"\",\"\",\"\",\"tel:1;ext=2,3\""},
      {",\"0046\",\"5\",129", ",,\"0046\",\"5\",129"},
  };
  open();
  const qalt::Changes changes = change_of(PB_FIELD_NUMBER, "+7");
  for (const auto& [given, kept] : cases) {
    SCOPED_TRACE(given);
    const std::string old = stored[1] = "\"5\",129,\"0041\"" + given;
    forget();
    const bool sent_back = given.find('\r') == given.npos;
    const auto changed = book.change(1, changes);
    EXPECT_EQ(!sent_back, !changed && changed.error().cause == Cause::kUsage);
    EXPECT_EQ(sent_back ? "\"+7\",145,\"0041\"" + kept : old, stored[1]);
    EXPECT_EQ(kept, changed ? changed->further : kept);
    EXPECT_EQ(sent_back, count("AT+CPBW") == 1);
  }
  std::string answer = kOk, left = "\"+7\",145,\"0041\",0,\"00460072\",\"\",129";
  on("AT+CPBW=", [&](const std::string&) {
    stored[1] = left;
    return answer;
  });
  const std::string old = stored[1] = "\"5\",129,\"0041\",0,\"00460072\"";
  EXPECT_TRUE(book.change(1, changes));
  stored[1] = old;
  left = "\"+7\",145,\"0041\"";
  expect(Cause::kDiffers, "further written \",0,\"00460072\"\", read back empty",
         book.change(1, changes));
  stored[1] = left = old;
  answer = kError;
  const auto refused = book.change(1, changes);
  expect(Cause::kRefused, "answered ERROR", refused);
  EXPECT_NE(std::string::npos, refused.error().advice.find("further"));
}

// A report that nobody knows is no parameter of the contact in front of it.
TEST_F(Book, AnUnnamedLineIsNoFurtherParameter) {
  stored = {{1, "\"5\",129,\"0041\",0,\"a\r\nb\"\r\nPB DONE\r\n"}, {2, "\"6\",129,\"0042\""}};
  open();
  EXPECT_EQ(",0,\"a\r\nb\"", book.read_all()->contacts.at(0).further);
  stored[2] += "\r\nPB DONE";
  EXPECT_EQ("B", book.get(2)->name + book.get(2)->further);
}

// A contact that stood in a phonebook once is the modem's to judge.
TEST_F(Book, WhatWasStoredIsTriedAsItIs) {
  open();
  Contact was = contact(1, "Ω 😀 of nineteen or more", "12AB(3)");
  was.name += '\0';
  was.further = ",0,\"Friends\"";
  EXPECT_EQ(Cause::kUsage, book.put(was).error().cause);
  ASSERT_TRUE(book.put(was, qalt::Limits::kSendable));
  EXPECT_EQ(was.name, book.get(1)->name);
  EXPECT_EQ(0u, stored[1].find("\"12AB(3)\",129,\"03A90020D83DDE000020")) << stored[1];
  forget();
  const std::string never[][3] = {
      // clang-format off
      {"A", "1\"2", ""}, {"A", "1\r", ""}, {"A", "\xC3\xA9", ""}, {"\xFF", "1", ""},
      {"A", "1", "0,\"x\""}, {"A", "1", ",\"x"}, {"A", "1", ",\"x\"y"}, {"A", "1", ",x\"y\""},
      {"A", "1", ",0;+CPBW=1"}, {"A", "1", ",\"\x1A\""}, {"", "", ",1"},
      {std::string(240, 'A'), std::string(40, '1'), ""},
      // clang-format on
  };
  for (const auto& [name, number, further] : never) {
    Contact wrong = contact(1, name, number);
    wrong.further = further;
    EXPECT_EQ(Cause::kUsage, book.put(wrong, qalt::Limits::kSendable).error().cause)
        << name << number << further;
  }
  EXPECT_EQ(0, count("AT+CPBW"));
}

// A modem that stays where it was, silently or not, gets no name that it would store as hex.
TEST_F(Book, WithoutUcs2NothingIsWritten) {
  stored = {{1, "\"5\",129,\"Ann\""}};
  for (const bool silent : {true, false}) {
    on("AT+CSCS?", information({silent ? "+CSCS: \"IRA\"" : "+CSCS: \"UCS2\""}));
    on("AT+CSCS=\"UCS2\"", silent ? kOk : kError);
    open();
    EXPECT_EQ("Ann", book.get(1)->name);
    expect(Cause::kRefused, "UCS2", book.put(contact(2, "B")));
    EXPECT_EQ(0, count("AT+CPBW"));
    EXPECT_TRUE(book.info().plain);
  }
  on("AT+CSCS=\"UCS2\"", kOk);
  on("AT+CSCS?", information({"+CSCS: \"0055004300530032\""}));
  EXPECT_TRUE(book.put(contact(2, "B")));
}

// A server that was started anew in the middle of a job knows nothing of its selection.
TEST_F(Book, AfterSilenceTheSelectionIsMadeAgain) {
  open();
  on("AT+CPBW=", kSilence);
  const qalt::Phonebook::Job job(book);
  forget();
  expect(Cause::kNoAnswer, "", book.put(contact(2, "B")));
  const std::vector<std::string> expected = {"AT+CPBW=2,\"\",129,\"0042\"", "AT+CPBS=\"SM\"",
                                             "AT+CSCS=\"UCS2\"", "AT+CPBR=2,2"};
  EXPECT_EQ(expected, lines());
  // So it is after a read-back without an answer; without it nothing is written or read.
  on("AT+CPBW=", kOk);
  on("AT+CPBR=", kSilence);
  expect(Cause::kNoAnswer, "", book.put(contact(2, "B")));
  on("AT+CSCS=\"UCS2\"", kError);
  expect(Cause::kRefused, "write index 2, nothing was sent", book.put(contact(2, "B")));
  EXPECT_EQ("AT+CSCS=\"UCS2\"", sent().back().line);
}

// A vendor's line: places of the fields, types of numbers, and the coding that fits.
TEST_F(Book, VendorLines) {
  on("AT+JCPBR=?", information({"+JCPBR: (1-250),40,30,40,40,64,30"}));
  on("AT+JUSIM=?", information({"1"}));
  const Contact full = {2, "Привет, привет, привет, при", "+1", "2", "+3", "a@b", "", 0};
  const std::string name =
      "811B089FC0B8B2B5C22C20BFC0B8B2B5C22C20BFC0B8B2B5C22C20BFC0B8";  // 0x80 needs 110 digits
  open();
  EXPECT_EQ("AT+JCPBW=2,\"+1\",145,\"" + name + "\",\"2\",\"+3\",\"a@b\",\"\"",
            book.write_line(full));
  on("AT+JCPBR=2,2",
     information({"+JCPBR: 2,\"+1\",\"" + name + "\",\"2\",\"+3\",\"a@b\",\"820204109FC0\""}));
  EXPECT_EQ(full.name, book.get(2)->name);
  EXPECT_EQ("\u042F\u0450", book.get(2)->extra);
  EXPECT_EQ(0, count("AT+CSCS")) << "vendor texts do not depend on it";
}

}  // namespace
