// Contact files as other programs write them, and texts on a terminal.
#include <gtest/gtest.h>

#include "cli/contact_file.h"
#include "cli/output.h"
#include "cli/terminal.h"

namespace {

using namespace qalt;
using namespace qalt::cli;

const char* const kAddressBook =
    "BEGIN:VCARD\r\nVERSION:3.0\r\nPRODID:-//Some//Book//EN\r\nN:Papadaki;Eleni;;Dr.;\r\n"
    "FN:Dr. Eleni\r\n  Papadaki\\, \\\"MD\\\"\r\nTEL;TYPE=CELL:+30 (210) 555-0123\r\n"
    "item1.TEL;TYPE=\"work;voice:x\";TYPE=pref:tel:+30-210-1\r\nitem1.X-ABLabel:Office\r\n"
    "TEL:3\r\nTEL:4\r\nEMAIL;TYPE=INTERNET:e@example.org\r\nNOTE:one\\ntwo\\;three\r\n"
    "ADR:;;Street;;;;\r\nEND:VCARD\r\n"
    "begin:vcard\nversion:4.0\nN:Schmidt;Jörg\nTEL;PREF=1:12\nend:vcard\n";

TEST(Vcard, AsAddressBooksWriteIt) {
  const FileContents read = read_contacts(Format::kVcard, kAddressBook);
  EXPECT_TRUE(read.problems.empty()) << read.problems[0].what;
  ASSERT_EQ(2u, read.records.size());
  const Contact& first = read.records[0].contact;
  EXPECT_EQ("Dr. Eleni Papadaki, \"MD\"", first.name);
  EXPECT_EQ("+302101", first.number);
  EXPECT_EQ("+302105550123", first.number2);
  EXPECT_EQ("3", first.number3);
  EXPECT_EQ("e@example.org", first.email);
  EXPECT_EQ("one\ntwo;three", first.extra);
  EXPECT_EQ(std::vector<std::string>{"a further number 4"}, read.records[0].surplus);
  EXPECT_EQ((std::vector<std::string>{"X-ABLABEL", "ADR"}), read.ignored);
  EXPECT_EQ(kNoIndex, first.index);
  EXPECT_EQ(16, read.records[1].line);
  EXPECT_EQ("Jörg Schmidt", read.records[1].contact.name);
}

TEST(Vcard, PreferredNumbersComeFirst) {
  const std::pair<const char*, std::string> cases[] = {
      {"TEL;PREF=1:1\nTEL;PREF=2:2", "1 2 "},
      {"TEL:1\nTEL;TYPE=cell;PREF=20:2\nTEL;PREF=3;TYPE=\"work,voice\":3", "3 2 1"},
      {"TEL;TYPE=x-nopref:1\nTEL;TYPE=home,pref:2", "2 1 "},
      {"TEL;TYPE=\"home,pref\":1\nTEL;type=CELL;type=pref:2\nTEL;PREF=1:3", "1 2 3"},
  };
  for (const auto& [lines, numbers] : cases) {
    const std::string card = std::string("BEGIN:VCARD\nFN:A\n") + lines + "\nEND:VCARD\n";
    const FileContents read = read_contacts(Format::kVcard, card);
    ASSERT_EQ(1u, read.records.size()) << lines;
    const Contact& contact = read.records[0].contact;
    EXPECT_EQ(numbers, contact.number + " " + contact.number2 + " " + contact.number3) << lines;
  }
}

TEST(Vcard, IsWrittenForReadersOfEitherName) {
  const std::vector<Contact> contacts = {{1, "A;B\r\x01\n", "", "", "", "", "", 0}};
  EXPECT_EQ("BEGIN:VCARD\r\nVERSION:4.0\r\nFN:A\\;B\\n\r\nN:A\\;B\\n;;;;\r\nEND:VCARD\r\n",
            write_contacts(Format::kVcard, contacts));
  EXPECT_NE(std::string::npos, loss_of(Format::kVcard, contacts).find("control characters"));
}

TEST(Files, WhatListPrintsIsRead) {
  const std::vector<Contact> contacts = {{1, "{[\\\"", "2", "", "", "", "", 0},
                                         {7, "B", "", "", "", "", "", 3}};
  const FileContents read = read_contacts(Format::kJsonLines, array_of(contacts));
  ASSERT_EQ(2u, read.records.size());
  EXPECT_EQ(contacts[0].name, read.records[0].contact.name);
  EXPECT_EQ(7, read.records[1].contact.index);
  EXPECT_EQ(3, read.records[1].line);
}

TEST(Files, SayWhichLineIsWrong) {
  const struct {
    Format format;
    const char* text;
    int line;
  } cases[] = {
      {Format::kVcard, "BEGIN:VCARD\nVERSION:2.1\nEND:VCARD", 2},
      {Format::kVcard, "BEGIN:VCARD\nFN;ENCODING=QUOTED-PRINTABLE:=41\nEND:VCARD", 2},
      {Format::kVcard, "\nFN:A", 2},
      {Format::kVcard, "BEGIN:VCARD\nBEGIN:VCARD\nEND:VCARD", 2},
      {Format::kCsv, "name;number\nA;1", 1},
      {Format::kCsv, "name,number\n\"A\nB\",1\nC", 4},
      {Format::kCsv, "name\n\"A\nB", 2},
      {Format::kJsonLines, "{}\n[1]", 2},
      {Format::kJsonLines, "{\"index\":1e99}", 1},
      {Format::kJsonLines, "{}\n{\"name\":\"A\",\"name\":\"A\"}", 2},
      {Format::kJsonLines, "[{\"name\":\"A\"},\n{\"nam\":\"B\"}]", 2},
      {Format::kJsonLines, "[{\"name\":\"A\"}, 1]", 1},
      {Format::kJsonLines, "[{\"name\":\"A\"}", 1},
      {Format::kJsonLines, "{\"name\":\"\xFF\"}", 1},
  };
  for (const auto& c : cases) {
    const FileContents read = read_contacts(c.format, c.text);
    ASSERT_FALSE(read.problems.empty()) << c.text;
    EXPECT_EQ(c.line, read.problems[0].line) << c.text << ": " << read.problems[0].what;
  }
}

TEST(Terminal, ColumnsOfWideAndCombiningCharacters) {
  const std::pair<const char*, int> cases[] = {
      {"Ann", 3}, {"é", 1},    {"e\u0301", 1}, {"李小龙", 6}, {"한글", 4},     {"ﾊﾝ", 2},
      {"Ａ", 2},  {"محمد", 4}, {"עִבְרִית", 5},   {"😀", 2},      {"\xFF\xC3", 2}, {"", 0}};
  for (const auto& [text, width] : cases) EXPECT_EQ(width, display_width(text)) << text;
  EXPECT_EQ((std::vector<std::string>{"李小", "龙e\u0301x", "y"}), wrapped("李小龙e\u0301xy", 4));
  EXPECT_EQ("a\uFFFD[31m\uFFFDb\uFFFD\uFFFD", printable("a\x1B[31m\u202E"
                                                        "b\xE2\x82"));
  EXPECT_EQ(
      "Index  Name    Number\n"
      "    5  李小龙  1\n"
      "   12  Al      22\n"
      "         number2 3  email a@b\n",
      table_of({{5, "李小龙", "1", "", "", "", "", 0}, {12, "Al", "22", "3", "", "a@b", "", 0}},
               80));
}

}  // namespace
