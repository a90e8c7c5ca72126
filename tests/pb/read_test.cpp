// Reading: the commands around a read, the retries, and the translation into the caller's records.
#include <pthread.h>

#include <memory>

#include "tests/pb/phonebook_modem.h"

namespace {

using test::Contact;
using test::information;
using test::Lines;
using test::PhonebookModem;

const std::string kUcs2 = "AT+CSCS=\"UCS2\"", kIra = "AT+CSCS=\"IRA\"", kGsm = "AT+CSCS=\"GSM\"";

class Read : public testing::Test {
 protected:
  PhonebookModem modem;
  Contact contacts[3];
  PhonebookEntry entries[3] = {contacts[0].entry, contacts[1].entry, contacts[2].entry};
};

TEST_F(Read, FamilyAndCharacterSetByPlatformAndFlags) {
  const struct {
    int platform;
    bool vendor, usim;
    Lines sent;
    int32_t field_count;
  } cases[] = {
      {99, false, false, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
      {99, true, false, {"AT+CPBR=1,3"}, 2},
      {99, true, true, {"AT+JCPBR=1,3"}, 6},
      {0, true, false, {"AT+CPBR=1,3"}, 2},
      {1, true, false, {"AT+JCPBR=1,3"}, 2},
      {1, false, true, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
      {4, false, true, {kUcs2, "AT^SCPBR=1,3", kGsm}, 2},
      {4, true, true, {"AT^SCPBR=1,3"}, 6},
      {7, true, true, {kUcs2, "AT+CPBR=1,3", kIra}, 2},
  };
  modem.on("AT+CPBR=1,", information({"+CPBR: 2,\"22\",129,\"B\""}));
  modem.on("AT+JCPBR=1,", information({R"(+JCPBR: 2,"22","B","33","44","m","x")"}));
  modem.on("AT^SCPBR=1,",
           information({R"(^SCPBR: 2,"22",129,"44",129,"33",129,"",129,"B",1,"m")"}));
  for (const auto& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform));
    modem.on("AT+JCPBR=?", test::kNotSupport);
    modem.on("AT+JUSIM=?", test::kError);
    modem.on("AT+CPBR=?",
             c.platform == 4 && !c.vendor ? test::kError : information({"+CPBR: (1-250),40,18"}));
    if (c.vendor) modem.offer_vendor(c.usim);
    modem.discover(c.platform);
    entries[0].FieldCount = 0;
    EXPECT_EQ(0, QL_getPhonebookEntry(0, 1, 3, entries));
    EXPECT_EQ(c.sent, modem.lines());
    EXPECT_EQ(2, entries[0].storageIndex);
    ASSERT_EQ(c.field_count, entries[0].FieldCount);
    const char* texts[] = {"22", "B", "33", "44", c.platform == 4 ? "" : "x", "m"};
    for (int32_t k = 0; k != c.field_count; ++k) {
      EXPECT_EQ(k, entries[0].pFieldList[k].fieldType);
      EXPECT_STREQ(texts[k], entries[0].pFieldList[k].pField);
    }
  }
}

TEST_F(Read, EntriesReachTheCallerAndTheIndexBuffer) {
  modem.on("AT+CPBR=5,", information({"+CPBR: 5,\"1\",129,\"\"", "+CPBR: 7,\"+2\",145,\"C D\""}));
  modem.discover(99);
  std::memset(contacts[0].fields, 'z', sizeof contacts[0].fields);
  entries[2].storageIndex = -1;
  EXPECT_EQ(0, QL_getPhonebookEntry(0, 5, 7, entries));
  EXPECT_EQ(5, entries[0].storageIndex);
  EXPECT_EQ(std::string(PB_FIELD_SIZE, '\0'),
            std::string(contacts[0].fields[1].pField, PB_FIELD_SIZE));
  EXPECT_EQ('z', contacts[0].fields[2].pField[0]);
  EXPECT_STREQ("C D", contacts[1].fields[1].pField);
  EXPECT_EQ(-1, entries[2].storageIndex);
  PbItem item;
  EXPECT_EQ(1, PBB_ReadPB(7, &item));
  EXPECT_EQ(145, item.numberType);
  EXPECT_EQ(1, _PBB_GetIndexIsEmpty(6));
  EXPECT_TRUE(test::has_logged(7, "QL_getPhonebookEntry count is 2\n"));
  EXPECT_TRUE(test::has_logged(7, "pPbItem pPhonebookArray[1].pFieldList[0].pField is +2\n"));
}

TEST_F(Read, ARefusedReadIsRepeatedThreeTimes) {
  modem.discover(99);
  for (const auto& [refusals, reads, result] :
       std::vector<std::tuple<int, size_t, int>>{{3, 4, 0}, {4, 4, 9}, {99, 4, 9}, {1, 2, 0}}) {
    int left = refusals;
    modem.on("AT+CPBR=1,", [&left](const std::string&) {
      return left-- > 0 ? test::kError : information({"+CPBR: 1,\"1\",129,\"A\""});
    });
    modem.forget();
    test::clear_records();
    EXPECT_EQ(result, QL_getPhonebookEntry(0, 1, 1, entries));
    EXPECT_EQ(reads + 2, modem.sent().size());
    EXPECT_EQ(kIra, modem.lines().back());
    EXPECT_EQ(std::vector<unsigned>(reads - 1, 1), test::sleeps());
  }
}

TEST_F(Read, Failures) {
  modem.discover(99);
  EXPECT_EQ(13, QL_getPhonebookEntry(1, 1, 1, entries));
  EXPECT_EQ(13, QL_getPhonebookEntry(0, 1, 1, nullptr));
  EXPECT_TRUE(modem.sent().empty());
  modem.on("AT+CPBR=1,", std::string("\r\n+CME ERROR: 14\r\n"));
  modem.on("AT+CSCS=", test::kError);  // a failed switch does not stop the read
  EXPECT_EQ(1, QL_getPhonebookEntry(0, 1, 1, entries));
  EXPECT_EQ(3u, modem.sent().size());
  modem.on("AT+CPBR=1,", test::kOk);
  EXPECT_EQ(0, QL_getPhonebookEntry(0, 1, 1, entries));
  EXPECT_EQ(0, entries[0].storageIndex);
  // A record without room for its fields is told, not written past.
  modem.on("AT+CPBR=1,", information({"+CPBR: 3000,\"1\",129,\"A\""}));
  entries[0].pFieldList = nullptr;
  EXPECT_EQ(13, QL_getPhonebookEntry(0, 1, 1, entries));
  EXPECT_EQ(3000, entries[0].storageIndex);
  EXPECT_EQ(0, entries[0].FieldCount);
}

// The caller has room for what it asked for; a modem that sends more must not write past it.
TEST_F(Read, EntriesBeyondTheRangeAreDropped) {
  modem.discover(99);
  modem.on("AT+CPBR=", information({"+CPBR: 1,\"1\",129,\"A\"", "+CPBR: 2,\"2\",129,\"B\"",
                                    "+CPBR: 3,\"3\",129,\"C\""}));
  for (const auto& [begin, end, room] : std::vector<std::tuple<int, int, int>>{
           {1, 1, 1}, {1, 2, 2}, {2, 1, 1}, {-2147483647, 1, 3}}) {
    test::clear_records();
    for (PhonebookEntry& entry : entries) entry.storageIndex = -1;
    EXPECT_EQ(0, QL_getPhonebookEntry(0, begin, end, entries));
    for (int i = 0; i != 3; ++i) EXPECT_EQ(i < room ? i + 1 : -1, entries[i].storageIndex);
    EXPECT_EQ(room == 3, test::logged("lib_pb", 3).empty());
    EXPECT_EQ(0, _PBB_GetIndexIsEmpty(3));  // the index buffer knows them all the same
  }
}

TEST_F(Read, RunsOnTheStackThatTheHeaderNames) {
  modem.discover(99);
  std::vector<std::string> lines;
  for (int i = 1; i <= 100; ++i)
    lines.push_back("+CPBR: " + std::to_string(i) + ",\"1\",129,\"N\"");
  modem.on("AT+CPBR=1,", information(lines));
  static PbField fields[100][PB_FIELD_TYPES];
  static PhonebookEntry all[100];
  for (int i = 0; i != 100; ++i) all[i].pFieldList = fields[i];
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
#ifdef __SANITIZE_ADDRESS__
  pthread_attr_setstacksize(&attributes, 4 << 20);
#else
  pthread_attr_setstacksize(&attributes, 512 << 10);
#endif
  pthread_t thread;
  ASSERT_EQ(0, pthread_create(
                   &thread, &attributes,
                   [](void*) -> void* {
                     const intptr_t result = QL_getPhonebookEntry(0, 1, 100, all);
                     return reinterpret_cast<void*>(result);
                   },
                   nullptr));
  void* result;
  pthread_join(thread, &result);
  pthread_attr_destroy(&attributes);
  EXPECT_EQ(nullptr, result);
  EXPECT_EQ(100, all[99].storageIndex);
}

TEST(Translation, MembersFilledToTheirLastByteAreNotReadPast) {
  PbItem item;
  std::memset(&item, 'q', sizeof item);
  for (const auto& [type, width] : std::vector<std::pair<int32_t, size_t>>{
           {0, 100}, {1, 128}, {2, 100}, {3, 100}, {4, 128}, {5, 130}}) {
    PbField field = {type, "old"};
    _TranslatePbItemToField(&item, &field);
    EXPECT_EQ(std::string(width, 'q'), field.pField);
  }
  PbField unknown = {6, "old"};
  _TranslatePbItemToField(&item, &unknown);
  EXPECT_STREQ("old", unknown.pField);
}

}  // namespace
