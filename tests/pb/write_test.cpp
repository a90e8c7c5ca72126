// Writing and deleting: index choice, record contents, character set, index buffer, refusals.
#include "tests/pb/phonebook_modem.h"

namespace {

using test::Contact;
using test::Lines;
using test::PhonebookModem;

const std::string kUcs2 = "AT+CSCS=\"UCS2\"", kIra = "AT+CSCS=\"IRA\"";
const Lines kCounted = {"AT+CPBS=\"SM\"", "AT+CPBS?"};

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

class Write : public testing::Test {
 protected:
  void standard() {
    modem.on("AT+CPBW=", test::kOk);
    modem.discover(99);
  }
  void vendor(int platform) {
    modem.on("AT+JCPBW=", test::kOk);
    modem.on("AT^SCPBW=", test::kOk);
    modem.offer_vendor(true);
    modem.discover(platform);
  }
  Lines run(Contact& contact, int result) {
    modem.forget();
    test::clear_records();
    EXPECT_EQ(result, QL_setPhonebookEntry(0, &contact.entry));
    return modem.lines();
  }
  PhonebookModem modem;
};

TEST_F(Write, StandardTakesTheLowestFreeIndexAndSwitchesTheSet) {
  standard();
  Contact first(1, {{1, "0041"}, {0, "+49"}});
  EXPECT_EQ(kCounted + Lines({kUcs2, "AT+CPBW=1,\"+49\",145,\"0041\"", kIra}), run(first, 0));
  Contact next(0, {{0, "123"}, {1, "0042"}, {7, "no such field"}, {5, "m"}});
  EXPECT_EQ(kCounted + Lines({kUcs2, "AT+CPBW=2,\"123\",129,\"0042\"", kIra}), run(next, 0));
  EXPECT_EQ(2, next.entry.storageIndex);
  PbItem item;
  EXPECT_EQ(1, PBB_ReadPB(2, &item));
  EXPECT_STREQ("0042", item.text);
  EXPECT_STREQ("m", item.email);
  // A refused write keeps the chosen index, leaves the set switched and the index free.
  modem.on("AT+CPBW=", test::kError);
  Contact refused(0, {{0, "1"}, {1, "0043"}});
  EXPECT_EQ(kCounted + Lines({kUcs2, "AT+CPBW=3,\"1\",129,\"0043\""}), run(refused, 1));
  EXPECT_EQ(3, refused.entry.storageIndex);
  EXPECT_EQ(1, _PBB_GetIndexIsEmpty(3));
}

TEST_F(Write, VendorRecords) {
  vendor(99);
  Contact contact(3, {{4, "x"}, {5, "m"}, {3, "+3"}, {2, "2"}, {1, "4142"}, {0, "+1"}});
  EXPECT_EQ(kCounted + Lines({R"(AT+JCPBW=3,"+1",129,"4142","2","+3","m","x")"}), run(contact, 0));
  modem.on("AT+JCPBW=", test::kError);
  run(contact, 31);
  modem.on("AT+CPBR=?", test::information({"+CPBR: (1-250),40,16,64"}));
  vendor(4);
  EXPECT_EQ(kCounted + Lines({R"(AT^SCPBW=3,"+1",145,"+3",145,"2",129,"2",129,"4142",1,"m")"}),
            run(contact, 0));
}

TEST_F(Write, WhatAVendorRecordCannotHoldWholeIsRefused) {
  vendor(99);
  for (const auto& [type, widest] : std::vector<std::pair<int32_t, size_t>>{
           {1, 63}, {4, 63}, {0, 99}, {2, 99}, {3, 99}, {5, 130}}) {
    SCOPED_TRACE(type);
    Contact fits(2, {{0, "1"}, {type, std::string(widest, '7')}});
    run(fits, 0);
    EXPECT_EQ(3u, modem.sent().size());
    if (type == 5) continue;  // the copy limit itself
    Contact wide(2, {{0, "1"}, {type, std::string(widest + 1, '7')}});
    EXPECT_EQ(kCounted, run(wide, 13));
    EXPECT_EQ(1u, test::logged("lib_pb", 3).size());
  }
}

TEST_F(Write, TextsAreCutAtTheCopyLimits) {
  standard();
  Contact contact(1, {{0, std::string(520, '1')}, {1, std::string(520, 'A')}});
  EXPECT_EQ("AT+CPBW=1,\"" + std::string(100, '1') + "\",129,\"" + std::string(128, 'A') + "\"",
            run(contact, 0)[3]);
  EXPECT_EQ(2u, test::logged("lib_pb", 3).size());
}

TEST_F(Write, Refusals) {
  standard();
  Contact contact(5, {{0, "1"}});
  EXPECT_EQ(13, QL_setPhonebookEntry(1, &contact.entry));
  EXPECT_EQ(13, QL_setPhonebookEntry(0, nullptr));
  PhonebookEntry no_list = {5, 1, nullptr, 0};
  EXPECT_EQ(13, QL_setPhonebookEntry(0, &no_list));
  EXPECT_TRUE(modem.sent().empty());
  EXPECT_EQ(Lines(3, "QL_setPhonebookEntry output para result is 13\n"), test::logged("lib_pb", 3));
  for (const int index : {-1, 251, 300}) {
    Contact outside(index, {{0, "1"}});
    EXPECT_EQ(kCounted, run(outside, 13));
  }
  // Exactly full: an overwrite goes out, a new entry finds no free index.
  modem.on("AT+CPBS?", test::information({"+CPBS: \"SM\",250,250"}));
  EXPECT_EQ(5u, run(contact, 0).size());
  for (int i = 1; i <= 250; ++i) _PBB_UseEmptyIndex(i);
  Contact any(0, {{0, "1"}});
  EXPECT_EQ(kCounted, run(any, 34));
  EXPECT_EQ(0, any.entry.storageIndex);
  EXPECT_TRUE(test::has_logged(7, "QL_setPhonebookEntry output para result is 34\n"));
  modem.on("AT+CPBS?", test::information({"+CPBS: \"SM\",251,250"}));
  EXPECT_EQ(kCounted, run(contact, 34));
  EXPECT_TRUE(test::has_logged(3, "QL_setPhonebookEntry output para result is 34\n"));
}

TEST_F(Write, AnEmptyContactDeletesItsIndexButCountsAsUsed) {
  standard();
  Contact empty(4, {});
  EXPECT_EQ(kCounted + Lines({kUcs2, "AT+CPBW=4", kIra}), run(empty, 0));
  EXPECT_EQ(0, _PBB_GetIndexIsEmpty(4));
}

TEST_F(Write, Deletes) {
  standard();
  _PBB_UseEmptyIndex(6);
  EXPECT_EQ(0, QL_deletePhonebookEntry(0, 6));
  EXPECT_EQ((Lines{kUcs2, "AT+CPBW=6", kIra}), modem.lines());
  EXPECT_EQ(1, _PBB_GetIndexIsEmpty(6));
  modem.on("AT+CPBW=", test::kError);
  modem.forget();
  _PBB_UseEmptyIndex(6);
  EXPECT_EQ(1, QL_deletePhonebookEntry(0, 6));
  EXPECT_EQ((Lines{kUcs2, "AT+CPBW=6", kIra}), modem.lines());
  EXPECT_EQ(0, _PBB_GetIndexIsEmpty(6));
  modem.forget();
  EXPECT_EQ(1, QL_deletePhonebookEntry(0, -1));  // nothing but the switches is sent
  EXPECT_EQ((Lines{kUcs2, kIra}), modem.lines());
  modem.forget();
  test::clear_records();
  EXPECT_EQ(13, QL_deletePhonebookEntry(0, 0));
  EXPECT_EQ(13, QL_deletePhonebookEntry(2, 6));
  EXPECT_TRUE(modem.sent().empty());
  EXPECT_EQ(Lines(2, "QL_deletePhonebookEntry output results  is 13\n"), test::logged("lib_pb", 3));
  vendor(99);
  EXPECT_EQ(0, QL_deletePhonebookEntry(0, 7));
  modem.on("AT+JCPBW=", test::kError);
  EXPECT_EQ(31, QL_deletePhonebookEntry(0, 8));
  EXPECT_EQ((Lines{"AT+JCPBW=7", "AT+JCPBW=8"}), modem.lines());
}

}  // namespace
