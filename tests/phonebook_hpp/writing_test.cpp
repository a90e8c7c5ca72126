// Writing through phonebook.hpp: the line sent, the read-back, and the restored character set.
#include "tests/phonebook_hpp/book_modem.h"

namespace {

using qalt::Cause;
using qalt::Contact;
using qalt::Fate;
using test::Book;
using test::cme;
using test::information;
using test::kError;
using test::kOk;
using test::kSilence;

constexpr char kIra[] = "AT+CSCS=\"IRA\"";

Contact contact(int index, const std::string& name, const std::string& number = "") {
  return {index, name, number, "", "", "", "", 0};
}

TEST_F(Book, AddTakesTheLowestFreeIndex) {
  lines = {{1, "\"1\",129,\"0041\""}, {3, "\"1\",129,\"0041\""}};
  open();
  EXPECT_EQ(2, book.add(contact(qalt::kNoIndex, "Ж", "+49"))->index);
  EXPECT_EQ("\"+49\",145,\"0416\"", lines[2]);
  EXPECT_EQ(kIra, sent().back().line);
  EXPECT_EQ(Cause::kUsage, book.add(contact(3, "B")).error().cause);
  hidden = 247;
  EXPECT_EQ(Cause::kFull, book.add(contact(qalt::kNoIndex, "B")).error().cause);
  // Between the read and the write another client may be faster.
  hidden = 0;
  on("AT+CPBR=4,4", information({"+CPBR: 4,\"1\",129,\"0041\""}));
  EXPECT_EQ(Cause::kCollision, book.add(contact(qalt::kNoIndex, "B")).error().cause);
  EXPECT_EQ(1, count("AT+CPBW"));
}

TEST_F(Book, EveryWriteIsReadBack) {
  const std::string good = "\"+49\",145,\"0416\"";
  const struct {
    std::string answer, left;  // to the write; what stands there afterwards
    std::optional<Cause> cause;
    const char* said;
  } cases[] = {
      {kOk, good, std::nullopt, ""},
      {kOk, "\"49\",145,\"0416\"", std::nullopt, ""},  // the "+" is in the type
      {kSilence, good, std::nullopt, ""},
      {kOk, "\"49\",129,\"0416\"", Cause::kDiffers, "number written \"+49\", read back \"49\""},
      {kOk, "\"+49\",145,\"04\"", Cause::kDiffers, "cannot be read back"},
      {kSilence, "", Cause::kNoAnswer, "did not answer in time"},
      {cme(24), "", Cause::kRefused, "+CME ERROR: 24 (text string too long)"},
      {cme(20), "", Cause::kFull, "memory full"},
  };
  open();
  for (const auto& c : cases) {
    SCOPED_TRACE(c.answer + c.left);
    on("AT+CPBW=", [&](const std::string&) {
      lines.clear();
      if (!c.left.empty()) lines[5] = c.left;
      return c.answer;
    });
    const auto put = book.put(contact(5, "Ж", "+49"));
    EXPECT_EQ(!c.cause, bool(put));
    if (!put) {
      EXPECT_EQ(c.cause, put.error().cause);
      EXPECT_NE(put.error().what.npos, put.error().what.find(c.said)) << put.error().what;
    }
    EXPECT_EQ(kIra, sent().back().line);
  }
}

// Not sent or refused, sent and not answered, answered with OK and not seen: three different
// things.
TEST_F(Book, WhatBecameOfAChangeIsTold) {
  const std::string old = information({"+CPBR: 5,\"7\",129,\"0041\""});
  const std::string gone = test::kHangUp;
  struct Told {
    std::optional<Cause> cause;
    Fate fate = Fate::kNotDone;
    const char* said = "";
  };
  const struct {
    std::string answer, look;  // to the change, and to the read behind it
    Told put, erased;
  } cases[] = {
      {kOk,
       kSilence,
       {Cause::kNoAnswer, Fate::kDone, "index 5 was written and cannot be read back"},
       {Cause::kNoAnswer, Fate::kDone, "index 5 was deleted and cannot be read back"}},
      {kOk,
       cme(1),
       {Cause::kNoAnswer, Fate::kDone, "the modem is away: +CME ERROR: 1 (no connection to phone)"},
       {Cause::kNoAnswer, Fate::kDone, "the modem is away"}},
      {kOk,
       kError,
       {Cause::kDiffers, Fate::kDone, "cannot be read back: the read-back was answered ERROR"},
       {std::nullopt}},
      {kSilence,
       kSilence,
       {Cause::kNoAnswer, Fate::kUnknown, "index 5 may be written or not: the modem did not"},
       {Cause::kNoAnswer, Fate::kUnknown, "index 5 may be deleted or not: the modem did not"}},
      {kSilence, kError, {Cause::kNoAnswer, Fate::kUnknown}, {Cause::kNoAnswer, Fate::kUnknown}},
      {gone,
       gone,
       {Cause::kNoAnswer, Fate::kUnknown, "the AT server ended before it answered"},
       {Cause::kNoAnswer, Fate::kUnknown, "the AT server ended before it answered"}},
      {gone, kOk, {Cause::kNoAnswer, Fate::kNotDone, "and it is not stored"}, {std::nullopt}},
      {gone,
       old,
       {Cause::kNoAnswer, Fate::kNotDone, "and it is not stored"},
       {Cause::kNoAnswer, Fate::kNotDone, "and it is still there"}},
      {cme(1),
       old,
       {Cause::kNoAnswer, Fate::kNotDone,
        "could not write index 5, nothing was sent: the modem is"},
       {Cause::kNoAnswer, Fate::kNotDone, "could not delete index 5, nothing was sent"}},
      {"\r\n+CMS ERROR: 311\r\n",
       old,
       {Cause::kRefused, Fate::kNotDone, "+CMS ERROR: 311 (SIM PIN required)"},
       {Cause::kRefused, Fate::kNotDone, "+CMS ERROR: 311 (SIM PIN required)"}},
  };
  open();
  for (const auto& c : cases) {
    const auto check = [&](const Told& told, const auto& result) {
      ASSERT_EQ(!told.cause, bool(result));
      if (result) return;
      EXPECT_EQ(told.cause, result.error().cause) << result.error().what;
      EXPECT_EQ(told.fate, result.error().fate) << result.error().what;
      EXPECT_NE(result.error().what.npos, result.error().what.find(told.said))
          << result.error().what;
    };
    SCOPED_TRACE(c.answer + c.look);
    on("AT+CPBW=", c.answer);
    on("AT+CPBR=", c.look);
    check(c.put, book.put(contact(5, "B")));
    check(c.erased, book.erase(5));
  }
}

// A signal is no failure, whatever call it interrupts; a server that is gone is one.
TEST_F(Book, SignalsAndLostServers) {
  open();
  interrupts = 3;
  EXPECT_TRUE(book.put(contact(2, "B")));
  on("AT+CPBW=", [this](const std::string&) {
    lines[3] = "\"\",129,\"0042\"";
    interrupts = 1;
    return kOk;
  });
  EXPECT_TRUE(book.put(contact(3, "B")));
  on("AT+CPBW=", test::kHangUp);
  EXPECT_TRUE(book.put(contact(3, "B"))) << "what is read back decides";
  EXPECT_EQ(kIra, sent().back().line);
  on("AT+CPBW=", [this](const std::string&) {
    listening = false;
    return kOk;
  });
  const auto put = book.put(contact(4, "B"));
  ASSERT_FALSE(put);
  EXPECT_EQ(Cause::kNoAnswer, put.error().cause);
  EXPECT_EQ(Fate::kDone, put.error().fate);
  EXPECT_NE(put.error().what.npos, put.error().what.find("no AT server listens"));
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
  ::setenv("QALT_AT_SERVER_USER", "12345", 1);
  EXPECT_TRUE(book.put(contact(2, "B")));
  ::unsetenv("QALT_AT_SERVER_USER");
}

// What is not named keeps the very digits that the modem gave, even those that no text has.
TEST_F(Book, ChangeKeepsTheOtherFields) {
  lines = {{1, "\"5\",129,\"D83D0041\""}};
  open();
  qalt::Changes changes;
  changes.fields[PB_FIELD_NUMBER] = "+7";
  EXPECT_TRUE(book.change(1, changes));
  EXPECT_EQ("\"+7\",145,\"D83D0041\"", lines[1]);
  EXPECT_EQ(Cause::kNotFound, book.change(9, changes).error().cause);
  qalt::Changes renamed;
  renamed.fields[PB_FIELD_TEXT] = "B";
  for (const std::string number : {"\"7123\",0", "\"*21\",145", "\"+49\",129", "\"5\",161"}) {
    lines[2] = number + ",\"0041\"";
    EXPECT_TRUE(book.change(2, renamed));
    EXPECT_EQ(number + ",\"0042\"", lines[2]);
  }
  changes.fields[PB_FIELD_NUMBER] = "";
  changes.fields[PB_FIELD_TEXT] = "";
  EXPECT_EQ(Cause::kUsage, book.change(1, changes).error().cause) << "would be a deletion";
}

// What stands behind the name (3GPP TS 27.007, 8.14) comes back as the modem gave it, but for what
// says nothing at its end.
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
  qalt::Changes changes;
  changes.fields[PB_FIELD_NUMBER] = "+7";
  for (const auto& [given, kept] : cases) {
    SCOPED_TRACE(given);
    const std::string old = lines[1] = "\"5\",129,\"0041\"" + given;
    forget();
    const bool sent_back = given.find('\r') == given.npos;
    const auto changed = book.change(1, changes);
    EXPECT_EQ(!sent_back, !changed && changed.error().cause == Cause::kUsage);
    EXPECT_EQ(sent_back ? "\"+7\",145,\"0041\"" + kept : old, lines[1]);
    EXPECT_EQ(kept, changed ? changed->further : kept);
    EXPECT_EQ(sent_back, count("AT+CPBW") == 1);
  }
}

// A report that nobody knows is no parameter of the contact in front of it.
TEST_F(Book, AnUnnamedLineIsNoFurtherParameter) {
  lines = {{1, "\"5\",129,\"0041\",0,\"a\r\nb\"\r\nPB DONE\r\n"}, {2, "\"6\",129,\"0042\""}};
  open();
  EXPECT_EQ(",0,\"a\r\nb\"", book.read_all()->contacts.at(0).further);
  EXPECT_EQ("", book.get(2)->further);
  lines[2] += "\r\nPB DONE";
  EXPECT_EQ("", book.get(2)->further);
  EXPECT_EQ("B", book.get(2)->name);
}

TEST_F(Book, FurtherParametersThatAreNotTaken) {
  const std::string old = "\"5\",129,\"0041\",0,\"00460072\"";
  const struct {
    std::string answer, left;  // to the write; what stands there afterwards
    std::optional<Cause> cause;
    const char* said;
  } cases[] = {
      {kOk, "\"+7\",145,\"0041\",0,\"00460072\",\"\",129", std::nullopt, ""},
      {kOk, "\"+7\",145,\"0041\"", Cause::kDiffers,
       "further written \",0,\"00460072\"\", read back empty"},
      {kError, old, Cause::kRefused, "answered ERROR"},
  };
  open();
  qalt::Changes changes;
  changes.fields[PB_FIELD_NUMBER] = "+7";
  for (const auto& c : cases) {
    SCOPED_TRACE(c.left);
    lines[1] = old;
    on("AT+CPBW=", [&](const std::string&) {
      lines[1] = c.left;
      return c.answer;
    });
    const auto changed = book.change(1, changes);
    EXPECT_EQ(!c.cause, bool(changed));
    if (changed) continue;
    EXPECT_EQ(c.cause, changed.error().cause);
    EXPECT_NE(changed.error().what.npos, changed.error().what.find(c.said)) << changed.error().what;
    EXPECT_EQ(c.answer == kError, changed.error().advice.find("further") != std::string::npos);
  }
}

// A contact that stood in a phonebook once is the modem's to judge.
TEST_F(Book, WhatWasStoredIsTriedAsItIs) {
  open();
  Contact stored = contact(1, "Ω 😀 of nineteen or more", "12AB(3)");
  stored.name += '\0';
  stored.further = ",0,\"Friends\"";
  EXPECT_EQ(Cause::kUsage, book.put(stored).error().cause);
  ASSERT_TRUE(book.put(stored, qalt::Limits::kSendable));
  EXPECT_EQ(stored.name, book.get(1)->name);
  EXPECT_EQ(0u, lines[1].find("\"12AB(3)\",129,\"03A90020D83DDE000020")) << lines[1];
  forget();
  const std::string never[][3] = {{"A", "1\"2", ""},
                                  {"A", "1\r", ""},
                                  {"A", "\xC3\xA9", ""},
                                  {"\xFF", "1", ""},
                                  {"A", "1", "0,\"x\""},
                                  {"A", "1", ",\"x"},
                                  {"A", "1", ",\"x\"y"},
                                  {"A", "1", ",x\"y\""},
                                  {"A", "1", ",0;+CPBW=1"},
                                  {"A", "1", ",\"\x1A\""},
                                  {std::string(240, 'A'), std::string(40, '1'), ""},
                                  {"", "", ",1"}};
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
  lines = {{1, "\"5\",129,\"Ann\""}};
  for (const bool silent : {true, false}) {
    on("AT+CSCS?", information({silent ? "+CSCS: \"IRA\"" : "+CSCS: \"UCS2\""}));
    on("AT+CSCS=\"UCS2\"", silent ? kOk : kError);
    open();
    EXPECT_EQ("Ann", book.get(1)->name);
    EXPECT_EQ(Cause::kRefused, book.put(contact(2, "B")).error().cause);
    EXPECT_EQ(0, count("AT+CPBW"));
    EXPECT_TRUE(book.info().plain);
  }
  on("AT+CSCS=\"UCS2\"", kOk);
  on("AT+CSCS?", information({"+CSCS: \"0055004300530032\""}));
  EXPECT_TRUE(book.put(contact(2, "B")));
}

// Silence says nothing about the modem's sets.
TEST_F(Book, WithoutTheSelectionNothingIsSent) {
  open();
  for (const char* line : {"AT+CSCS=\"UCS2\"", "AT+CSCS?"}) {
    on(line, kSilence);
    EXPECT_EQ(Cause::kNoAnswer, book.get(1).error().cause) << line;
    EXPECT_EQ(Cause::kNoAnswer, book.put(contact(2, "B")).error().cause) << line;
    EXPECT_FALSE(book.info().plain);
    const qalt::Phonebook::Job job(book);
    EXPECT_EQ(Cause::kNoAnswer, book.put(contact(2, "B")).error().cause) << "in a failed job";
    on(line, information({"+CSCS: \"UCS2\""}));
  }
  EXPECT_EQ(0, count("AT+CPB") - count("AT+CPBS"));
}

// A server that was started anew in the middle of a job knows nothing of its selection.
TEST_F(Book, AfterSilenceTheSelectionIsMadeAgain) {
  open();
  on("AT+CPBW=", kSilence);
  const qalt::Phonebook::Job job(book);
  forget();
  EXPECT_EQ(Cause::kNoAnswer, book.put(contact(2, "B")).error().cause);
  const std::vector<std::string> expected = {"AT+CPBW=2,\"\",129,\"0042\"", "AT+CPBS=\"SM\"",
                                             "AT+CSCS=\"UCS2\"", "AT+CPBR=2,2"};
  EXPECT_EQ(expected, test::ScriptedModem::lines());
  // So it is after a read-back without an answer; without it nothing is written or read.
  on("AT+CPBW=", kOk);
  on("AT+CPBR=", kSilence);
  EXPECT_EQ(Cause::kNoAnswer, book.put(contact(2, "B")).error().cause);
  on("AT+CSCS=\"UCS2\"", kError);
  const qalt::Error error = book.put(contact(2, "B")).error();
  EXPECT_EQ(Cause::kRefused, error.cause);
  EXPECT_NE(error.what.npos, error.what.find("write index 2, nothing was sent")) << error.what;
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
