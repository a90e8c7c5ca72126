// Reading, writing and deleting contacts: the commands around each, retries, refusals, and the
// translation between the caller's records, the modem's and the index buffer's.
#include <cstring>
#include <tuple>

#include "tests/pb/phonebook_modem.h"

namespace {

using test::information;
using test::Lines;

const std::string kUcs2 = "AT+CSCS=\"UCS2\"", kIra = "AT+CSCS=\"IRA\"", kGsm = "AT+CSCS=\"GSM\"";

// A contact for a write, or room for one of a read.
struct Contact {
  explicit Contact(int32_t index = 0,
                   const std::vector<std::pair<int32_t, std::string>>& texts = {}) {
    entry.storageIndex = index;
    entry.FieldCount = static_cast<int32_t>(texts.size());
    for (size_t k = 0; k != texts.size(); ++k) {
      fields[k].fieldType = texts[k].first;
      texts[k].second.copy(fields[k].pField, sizeof fields[k].pField);
    }
  }

  PbField fields[PB_FIELD_TYPES] = {};
  PhonebookEntry entry = {0, 0, fields, 0};
};

class Entries : public test::Phonebook {
 protected:
  // The lines of a write behind the selection of the storage and the reading of the counts.
  Lines written(Contact& contact, int result) {
    test::clear_records();
    EXPECT_EQ(QL_setPhonebookEntry(0, &contact.entry), result);
    const Lines lines = sent();
    EXPECT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0] + lines[1], "AT+CPBS=\"SM\"AT+CPBS?");
    return Lines(lines.begin() + 2, lines.end());
  }

  Contact contacts[3];
  PhonebookEntry entries[3] = {contacts[0].entry, contacts[1].entry, contacts[2].entry};
};

TEST_F(Entries, FamilyAndCharacterSetByPlatformAndFlags) {
  const struct {
    int platform;
    bool vendor, usim;
    Lines sent;
    int32_t field_count;
  } cases[] = {
      // clang-format off
      {99, false, false, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
      {99, true, false, {"AT+CPBR=1,3"}, 2},
      {99, true, true, {"AT+JCPBR=1,3"}, 6},
      {1, true, false, {"AT+JCPBR=1,3"}, 2},
      {1, false, true, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
      {4, false, true, {kUcs2, "AT^SCPBR=1,3", kGsm}, 2},
      {4, true, true, {"AT^SCPBR=1,3"}, 6},
      {7, true, true, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
      // clang-format on
  };
  modem.on("AT+CPBR=1,", information({"+CPBR: 2,\"22\",129,\"B\""}));
  modem.on("AT+JCPBR=1,", information({R"(+JCPBR: 2,"22","B","33","44","m","x")"}));
  modem.on("AT^SCPBR=1,",
           information({R"(^SCPBR: 2,"22",129,"44",129,"33",129,"",129,"B",1,"m")"}));
  for (const auto& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform));
    modem.on("AT+CPBR=?",
             c.platform == 4 && !c.vendor ? test::kError : information({"+CPBR: (1-250),40,18"}));
    offer_vendor(c.usim);
    if (!c.vendor) modem.on("AT+JCPBR=?", test::kNotSupport);
    discover(c.platform);
    EXPECT_EQ(QL_getPhonebookEntry(0, 1, 3, entries), 0);
    EXPECT_EQ(sent(), c.sent);
    EXPECT_EQ(entries[0].storageIndex, 2);
    ASSERT_EQ(entries[0].FieldCount, c.field_count);
    const char* texts[] = {"22", "B", "33", "44", c.platform == 4 ? "" : "x", "m"};
    for (int32_t k = 0; k != c.field_count; ++k) {
      EXPECT_EQ(entries[0].pFieldList[k].fieldType, k);
      EXPECT_STREQ(entries[0].pFieldList[k].pField, texts[k]);
    }
  }
}

TEST_F(Entries, ReadIntoTheCallersRecordsAndTheIndexBuffer) {
  modem.on("AT+CPBR=5,", information({"+CPBR: 5,\"1\",129,\"\"", "+CPBR: 7,\"+2\",145,\"C D\""}));
  discover(99);
  std::memset(contacts[0].fields, 'z', sizeof contacts[0].fields);
  EXPECT_EQ(QL_getPhonebookEntry(0, 5, 7, entries), 0);
  const std::string empty(contacts[0].fields[1].pField, PB_FIELD_SIZE);
  EXPECT_EQ(empty, std::string(PB_FIELD_SIZE, '\0'));
  EXPECT_EQ(contacts[0].fields[2].pField[0], 'z');
  EXPECT_STREQ(contacts[1].fields[1].pField, "C D");
  PbItem item;
  EXPECT_EQ(PBB_ReadPB(7, &item), 1);
  EXPECT_EQ(item.numberType, 145);
  EXPECT_EQ(_PBB_GetIndexIsEmpty(6), 1);
}

TEST_F(Entries, ARefusedReadIsRepeatedThreeTimes) {
  discover(99);
  for (const auto& [refusals, reads, result] : {std::tuple{3, 4u, 0}, {4, 4u, 9}, {1, 2u, 0}}) {
    modem.on("AT+CPBR=1,", [left = refusals](auto&) mutable {
      return left-- > 0 ? test::kError : information({"+CPBR: 1,\"1\",129,\"A\""});
    });
    test::clear_records();
    EXPECT_EQ(QL_getPhonebookEntry(0, 1, 1, entries), result);
    const Lines lines = sent();
    EXPECT_EQ(lines.size(), reads + 2);
    EXPECT_EQ(lines.back(), kIra);
    EXPECT_EQ(test::sleeps(), std::vector<unsigned>(reads - 1, 1));
  }
}

TEST_F(Entries, ReadsThatFail) {
  discover(99);
  EXPECT_EQ(QL_getPhonebookEntry(1, 1, 1, entries), 13);
  EXPECT_TRUE(sent().empty());
  modem.on("AT+CPBR=1,", std::string("\r\n+CME ERROR: 14\r\n"));
  modem.on("AT+CSCS=", test::kError);  // a failed switch does not stop the read
  EXPECT_EQ(QL_getPhonebookEntry(0, 1, 1, entries), 1);
  EXPECT_EQ(sent().size(), 3u);
  // A record without room for its fields is told, not written past.
  modem.on("AT+CPBR=1,", information({"+CPBR: 3000,\"1\",129,\"A\""}));
  entries[0].pFieldList = nullptr;
  EXPECT_EQ(QL_getPhonebookEntry(0, 1, 1, entries), 13);
  EXPECT_EQ(entries[0].storageIndex, 3000);
}

// The caller has room for what it asked for; a modem that sends more must not write past it.
TEST_F(Entries, BeyondTheRangeAreDropped) {
  discover(99);
  modem.on("AT+CPBR=", information({"+CPBR: 1,\"1\",129,\"A\"", "+CPBR: 2,\"2\",129,\"B\"",
                                    "+CPBR: 3,\"3\",129,\"C\""}));
  for (const auto& [begin, end, room] : {std::tuple{1, 2, 2}, {2, 1, 1}, {-2147483647, 1, 3}}) {
    test::clear_records();
    for (PhonebookEntry& entry : entries) entry.storageIndex = -1;
    EXPECT_EQ(QL_getPhonebookEntry(0, begin, end, entries), 0);
    for (int i = 0; i != 3; ++i) EXPECT_EQ(entries[i].storageIndex, i < room ? i + 1 : -1);
    EXPECT_EQ(test::logged("lib_pb", 3).empty(), room == 3);
    EXPECT_EQ(_PBB_GetIndexIsEmpty(3), 0);  // the index buffer knows them all the same
  }
}

TEST_F(Entries, StandardWriteTakesTheLowestFreeIndexAndSwitchesTheSet) {
  discover(99);
  Contact first(1, {{1, "0041"}, {0, "+49"}});
  EXPECT_EQ(written(first, 0), (Lines{kUcs2, "AT+CPBW=1,\"+49\",145,\"0041\"", kIra}));
  Contact next(0, {{0, "123"}, {1, "0042"}, {7, "no such field"}, {5, "m"}});
  EXPECT_EQ(written(next, 0), (Lines{kUcs2, "AT+CPBW=2,\"123\",129,\"0042\"", kIra}));
  EXPECT_EQ(next.entry.storageIndex, 2);
  Contact wide(250, {{0, std::string(520, '1')}, {1, std::string(520, 'A')}});
  EXPECT_EQ(written(wide, 0)[1],
            "AT+CPBW=250,\"" + std::string(100, '1') + "\",129,\"" + std::string(128, 'A') + "\"");
  EXPECT_EQ(test::logged("lib_pb", 3).size(), 2u);
  // A refused write keeps the chosen index, leaves the set switched and the index free.
  modem.on("AT+CPBW=", test::kError);
  Contact refused(0, {{0, "1"}, {1, "0043"}});
  EXPECT_EQ(written(refused, 1), (Lines{kUcs2, "AT+CPBW=3,\"1\",129,\"0043\""}));
  EXPECT_EQ(refused.entry.storageIndex, 3);
  EXPECT_EQ(_PBB_GetIndexIsEmpty(3), 1);
}

TEST_F(Entries, VendorWriteIsWholeOrRefused) {
  offer_vendor(true);
  discover(99);
  Contact contact(3, {{4, "x"}, {5, "m"}, {3, "+3"}, {2, "2"}, {1, "4142"}, {0, "+1"}});
  EXPECT_EQ(written(contact, 0), Lines{R"(AT+JCPBW=3,"+1",129,"4142","2","+3","m","x")"});
  const size_t widest[] = {99, 63, 99, 99, 63, 130};  // of an e-mail, the copy limit itself
  for (int32_t type = 0; type != PB_FIELD_TYPES; ++type) {
    SCOPED_TRACE(type);
    Contact fits(2, {{0, "1"}, {type, std::string(widest[type], '7')}});
    EXPECT_EQ(written(fits, 0).size(), 1u);
    Contact wide(2, {{0, "1"}, {type, std::string(widest[type] + 1, '7')}});
    EXPECT_EQ(written(wide, type == 5 ? 0 : 13).size(), type == 5 ? 1u : 0u);
    EXPECT_EQ(test::logged("lib_pb", 3).size(), 1u);
  }
  modem.on("AT+JCPBW=", test::kError);
  written(contact, 31);
  modem.on("AT+CPBR=?", information({"+CPBR: (1-250),40,16,64"}));
  discover(4);
  EXPECT_EQ(written(contact, 0),
            Lines{R"(AT^SCPBW=3,"+1",145,"+3",145,"2",129,"2",129,"4142",1,"m")"});
}

TEST_F(Entries, WritesThatAreRefused) {
  discover(99);
  Contact contact(5, {{0, "1"}});
  PhonebookEntry no_list = {5, 1, nullptr, 0};
  EXPECT_EQ(QL_setPhonebookEntry(1, &contact.entry), 13);
  EXPECT_EQ(QL_setPhonebookEntry(0, &no_list), 13);
  EXPECT_TRUE(sent().empty());
  for (const int index : {-1, 251}) {
    Contact outside(index, {{0, "1"}});
    EXPECT_TRUE(written(outside, 13).empty());
  }
  // Exactly full: an overwrite goes out, a new entry finds no free index.
  modem.on("AT+CPBS?", information({"+CPBS: \"SM\",250,250"}));
  EXPECT_EQ(written(contact, 0).size(), 3u);
  for (int i = 1; i <= 250; ++i) _PBB_UseEmptyIndex(i);
  Contact any(0, {{0, "1"}});
  EXPECT_TRUE(written(any, 34).empty());
  EXPECT_EQ(any.entry.storageIndex, 0);
  modem.on("AT+CPBS?", information({"+CPBS: \"SM\",251,250"}));
  EXPECT_TRUE(written(contact, 34).empty());
}

TEST_F(Entries, Deletes) {
  discover(99);
  for (const int result : {0, 1}) {
    modem.on("AT+CPBW=", result == 0 ? test::kOk : test::kError);
    _PBB_UseEmptyIndex(6);
    EXPECT_EQ(QL_deletePhonebookEntry(0, 6), result);
    EXPECT_EQ(sent(), (Lines{kUcs2, "AT+CPBW=6", kIra}));
    EXPECT_EQ(_PBB_GetIndexIsEmpty(6), 1 - result);
  }
  for (const int index : {0, -1}) EXPECT_NE(QL_deletePhonebookEntry(0, index), 0);
  EXPECT_EQ(sent(), (Lines{kUcs2, kIra})) << "nothing but the switches";
  offer_vendor(true);
  discover(99);
  modem.on("AT+JCPBW=", test::kError);
  EXPECT_EQ(QL_deletePhonebookEntry(0, 8), 31);
  EXPECT_EQ(sent(), Lines{"AT+JCPBW=8"});
}

}  // namespace
