// The phonebook engine: the discovery on each platform, the index buffer, and the commands, retries
// and refusals around reading, writing and deleting contacts.
#include "qalt_at/phonebook.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>
#include <tuple>
#include <vector>

#include "tests/support/recorder.h"
#include "tests/support/scripted_modem.h"

namespace {

using test::information;
using test::kError;
using test::kNotSupport;
using test::kOk;
using Lines = std::vector<std::string>;

const std::string kUcs2 = "AT+CSCS=\"UCS2\"", kIra = "AT+CSCS=\"IRA\"", kGsm = "AT+CSCS=\"GSM\"";
const std::string kVendorTest = information({"+JCPBR: (1-300),40,60,41,42,128,61"});

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

class Phonebook : public testing::Test {
 protected:
  Phonebook() {
    for (const char* start : {"AT+CPBS=", "AT+CSCS=", "AT+CPBW=", "AT+JCPBW=", "AT^SCPBW="}) {
      modem.on(start, kOk);
    }
    modem.on("AT+CPBS?", information({"+CPBS: \"SM\",12,250"}));
    modem.on("AT+CPBR=?", information({"+CPBR: (1-250),40,18,0,0,0,0"}));
    modem.on("AT+JCPBR=?", kNotSupport);
  }
  void offer_vendor(bool usim) {
    modem.on("AT+JCPBR=?", kVendorTest);
    modem.on("AT+JUSIM=?", information({usim ? "1" : "0"}));
  }
  // Discovers on `platform`, for the engine's state lives as long as the process; returns the
  // commands of it, which are forgotten.
  Lines discover(int platform) {
    test::clear_records();
    modem.forget();
    QL_setCurrentPlatform(platform);
    EXPECT_EQ(QL_getPhonebookInfo(0, &param), 0);
    return sent();
  }
  // The lines since the last call.
  Lines sent() {
    const Lines lines = modem.lines();
    modem.forget();
    return lines;
  }
  // The lines of a write behind the selection of the storage and the reading of the counts.
  Lines written(Contact& contact, int result) {
    test::clear_records();
    EXPECT_EQ(QL_setPhonebookEntry(0, &contact.entry), result);
    const Lines lines = sent();
    EXPECT_GE(lines.size(), 2u);
    EXPECT_EQ(lines[0] + lines[1], "AT+CPBS=\"SM\"AT+CPBS?");
    return Lines(lines.begin() + 2, lines.end());
  }
  // Used, total, lowest, highest; extend, JCPBM, USIM; lengths by field type.
  std::vector<int32_t> numbers() const {
    const PbType& type = param.PbType;
    std::vector<int32_t> all = {param.EntriesUsed, param.MaxEntries,     param.MinIndex,
                                param.MaxIndex,    type.IsSupportExtend, type.IsSupportJCPBM,
                                type.IsSupportUSim};
    for (const PbFieldAbility& ability : param.FieldAbility) all.push_back(ability.maxLength);
    return all;
  }

  test::ScriptedModem modem;
  PbParam param = {};
  Contact contacts[3];
  PhonebookEntry entries[3] = {contacts[0].entry, contacts[1].entry, contacts[2].entry};
};

TEST_F(Phonebook, DiscoveryByPlatform) {
  const std::string none = kNotSupport, failed = kError;
  const std::string scpbr = information({"+CPBR: (1-200),40,16,0,64"});
  const std::string yes = information({"1"}), no = information({"0"});
  const std::string query1 = information({"+CPBR: 0,0,1"}), query2 = information({"+CPBR: 0,0,2"});
  const std::string counted = "AT+CPBS=\"SM\"AT+CPBS?", plain = counted + "AT+CPBS=\"SM\"";
  const std::string probed = plain + "AT+JCPBR=?AT+JUSIM=?";
  const std::string queried = plain + "AT+CPBR=?AT^CARDMODE=?AT+CPBR=?AT+CPBR=1";
  const std::vector<int32_t> standard = {12, 250, 1, 250, 0, 0, 0, 40, 18, 0, 0, 0, 0};
  const std::vector<int32_t> usim = {12, 250, 1, 300, 1, 0, 1, 40, 60, 41, 42, 61, 128};
  const std::vector<int32_t> sim = {12, 250, 1, 300, 1, 0, 0, 40, 60, 41, 42, 61, 128};
  const struct {
    int platform;
    std::string vendor, usim, query;  // answers
    std::string sent;
    std::vector<int32_t> numbers;
  } cases[] = {
      // clang-format off
      {99, none, no, "", probed + "AT+CPBR=?", standard},
      {99, kVendorTest, failed, "", probed + "AT+CPBR=?", {12, 250, 1, 250, 1, 0, 0, 40, 18, 0, 0, 0, 0}},
      {99, kVendorTest, yes, "", probed + "AT+JCPBR=?", usim},
      // Platform 5 keeps the flags of an earlier discovery.
      {5, kVendorTest, yes, "", counted + "AT+JCPBR=?", usim},
      {7, kVendorTest, yes, "", plain + "AT+CPBR=?", standard},
      // Platforms 0 and 1 take the vendor's limits without a USIM.
      {0, kVendorTest, no, "", probed + "AT+JCPBR=?", sim},
      {8, kVendorTest, yes, "", plain + "AT+CPBR=?", standard},
      {1, kVendorTest, no, "", probed + "AT+JCPBR=?", sim},
      // On platform 4 the query tells which further numbers there are; a card that does not tell
      // its mode is a USIM.
      {4, scpbr, failed, failed, queried, {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 40, 0, 64}},
      {4, scpbr, yes, query1, queried, {12, 250, 1, 200, 1, 0, 0, 40, 16, 0, 40, 0, 64}},
      {4, scpbr, no, query2, queried, {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 0, 0, 64}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform) + ", vendor " + c.vendor);
    modem.on("AT+JCPBR=?", c.vendor);
    modem.on("AT+JUSIM=?", c.usim);
    modem.on("AT^CARDMODE=?", c.usim);
    modem.on("AT+CPBR=1", c.query);
    modem.on("AT+CPBR=?",
             c.platform == 4 ? c.vendor : information({"+CPBR: (1-250),40,18,0,0,0,0"}));
    std::string lines;
    for (const std::string& line : discover(c.platform)) lines += line;
    EXPECT_EQ(lines, c.sent);
    EXPECT_EQ(numbers(), c.numbers);
  }
}

TEST_F(Phonebook, ABusyModemIsAskedTenTimesOneSecondApart) {
  discover(99);
  const auto before = numbers();
  // With ten failures everything stays, and 0 is returned.
  for (const int failures : {3, 100}) {
    modem.on("AT+CPBS=", [left = failures](auto&) mutable { return left-- > 0 ? kError : kOk; });
    if (failures > 10) modem.on("AT+CPBS?", information({"+CPBS: \"SM\",1,2"}));
    discover(99);
    EXPECT_EQ(numbers(), before);
    EXPECT_EQ(test::sleeps(), std::vector<unsigned>(std::min(failures, 10), 1));
  }
}

int write_at(int32_t index, char first = 'x') {
  PbItem item;
  std::memset(&item, first, sizeof item);
  item.storageIndex = index;
  return PBB_WritePB(&item);
}

TEST_F(Phonebook, ADiscoveryForgetsTheIndexBuffer) {
  EXPECT_EQ(QL_getPhonebookInfo(1, &param), 13);
  EXPECT_EQ(QL_getPhonebookInfo(0, nullptr), 13);
  EXPECT_TRUE(sent().empty());
  write_at(7);
  discover(99);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 1);
  // Nothing is left of an entry, not even where its index is marked used again.
  _PBB_UseEmptyIndex(7);
  PbItem read = {};
  EXPECT_EQ(PBB_ReadPB(7, &read), 1);
  const PbItem nothing = {};
  EXPECT_EQ(std::memcmp(&nothing, &read, sizeof read), 0);
}

TEST(IndexBuffer, LowestFreeIndexFollowsWritesAndDeletes) {
  PBB_InitPbBuffer(1, 250, 250);
  for (int i = 1; i <= 250; ++i) {
    EXPECT_EQ(PBB_GetFirstEmptyIndex(), i);
    write_at(i);
  }
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), -1);
  _PBB_SetEmptyIndex(9);
  EXPECT_EQ(PBB_DeletePB(3), 1);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 3);
  _PBB_UseEmptyIndex(3);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 9);
  // Ranges that leave the buffer.
  for (const auto& [min, max, first] :
       {std::tuple{5, 4, -1}, {-7, 3, 0}, {1023, 5000, 1023}, {1024, 5000, -1}}) {
    PBB_InitPbBuffer(min, max, 0);
    EXPECT_EQ(PBB_GetFirstEmptyIndex(), first) << min << ".." << max;
  }
}

TEST(IndexBuffer, KeepsTheLastEntryWholeAndRefusesIndicesItDoesNotHave) {
  PBB_InitPbBuffer(0, 1023, 1024);
  PbItem read = {};
  EXPECT_EQ(PBB_ReadPB(7, &read) + read.text[0], 0);
  EXPECT_EQ(write_at(7, 'a') + write_at(7, 'b') + PBB_ReadPB(7, &read), 3);
  EXPECT_EQ(read.storageIndex, 7);
  EXPECT_EQ(std::string(read.number, sizeof read - 4), std::string(sizeof read - 4, 'b'));
  for (const int index : {-1, 1024, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(write_at(index) + PBB_ReadPB(index, &read) + PBB_DeletePB(index), 0);
    EXPECT_EQ(_PBB_GetIndexIsEmpty(index), 0);
    _PBB_UseEmptyIndex(index);
    _PBB_SetEmptyIndex(index);
  }
}

TEST_F(Phonebook, FamilyAndCharacterSetByPlatformAndFlags) {
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
             c.platform == 4 && !c.vendor ? kError : information({"+CPBR: (1-250),40,18"}));
    offer_vendor(c.usim);
    if (!c.vendor) modem.on("AT+JCPBR=?", kNotSupport);
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

// A read that is refused is repeated three times, a second apart.
TEST_F(Phonebook, Reads) {
  discover(99);
  for (const auto& [refusals, reads, result] : {std::tuple{3, 4u, 0}, {4, 4u, 9}, {1, 2u, 0}}) {
    modem.on("AT+CPBR=5,", [left = refusals](auto&) mutable {
      const auto both = {"+CPBR: 5,\"1\",129,\"\"", "+CPBR: 7,\"+2\",145,\"C D\""};
      return left-- > 0 ? kError : information({both.begin(), both.end()});
    });
    test::clear_records();
    std::memset(contacts[0].fields, 'z', sizeof contacts[0].fields);
    EXPECT_EQ(QL_getPhonebookEntry(0, 5, 7, entries), result);
    const Lines lines = sent();
    EXPECT_EQ(lines.size(), reads + 2);
    EXPECT_EQ(lines.back(), kIra);
    EXPECT_EQ(test::sleeps(), std::vector<unsigned>(reads - 1, 1));
  }
  const std::string empty(contacts[0].fields[1].pField, PB_FIELD_SIZE);
  EXPECT_EQ(empty, std::string(PB_FIELD_SIZE, '\0'));
  EXPECT_EQ(contacts[0].fields[2].pField[0], 'z');
  EXPECT_STREQ(contacts[1].fields[1].pField, "C D");
  PbItem item;
  EXPECT_EQ(PBB_ReadPB(7, &item), 1);
  EXPECT_EQ(item.numberType, 145);
  EXPECT_EQ(_PBB_GetIndexIsEmpty(6), 1);

  EXPECT_EQ(QL_getPhonebookEntry(1, 1, 1, entries), 13);
  EXPECT_TRUE(sent().empty());
  modem.on("AT+CPBR=1,", std::string("\r\n+CME ERROR: 14\r\n"));
  modem.on("AT+CSCS=", kError);  // a failed switch does not stop the read
  EXPECT_EQ(QL_getPhonebookEntry(0, 1, 1, entries), 1);
  EXPECT_EQ(sent().size(), 3u);
  // A record without room for its fields is told, not written past.
  modem.on("AT+CPBR=1,", information({"+CPBR: 3000,\"1\",129,\"A\""}));
  entries[0].pFieldList = nullptr;
  EXPECT_EQ(QL_getPhonebookEntry(0, 1, 1, entries), 13);
  EXPECT_EQ(entries[0].storageIndex, 3000);
}

// The caller has room for what it asked for; a modem that sends more must not write past it.
TEST_F(Phonebook, BeyondTheRangeAreDropped) {
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

TEST_F(Phonebook, StandardWriteTakesTheLowestFreeIndexAndSwitchesTheSet) {
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
  modem.on("AT+CPBW=", kError);
  Contact refused(0, {{0, "1"}, {1, "0043"}});
  EXPECT_EQ(written(refused, 1), (Lines{kUcs2, "AT+CPBW=3,\"1\",129,\"0043\""}));
  EXPECT_EQ(refused.entry.storageIndex, 3);
  EXPECT_EQ(_PBB_GetIndexIsEmpty(3), 1);
}

TEST_F(Phonebook, VendorWriteIsWholeOrRefused) {
  offer_vendor(true);
  discover(99);
  Contact contact(3, {{4, "x"}, {5, "m"}, {3, "+3"}, {2, "2"}, {1, "4142"}, {0, "+1"}});
  EXPECT_EQ(written(contact, 0), Lines{R"(AT+JCPBW=3,"+1",129,"4142","2","+3","m","x")"});
  const size_t widest[] = {99, 63, 99, 99, 63, 130};  // of an e-mail, the copy limit itself
  for (int32_t type = 0; type != PB_FIELD_TYPES; ++type) {
    for (const size_t more : {0U, 1U}) {
      const bool sendable = more == 0 || type == PB_FIELD_EMAIL;
      Contact wide(2, {{0, "1"}, {type, std::string(widest[type] + more, '7')}});
      EXPECT_EQ(written(wide, sendable ? 0 : 13).size(), sendable ? 1u : 0u) << type;
      EXPECT_EQ(test::logged("lib_pb", 3).size(), more);
    }
  }
  modem.on("AT+JCPBW=", kError);
  written(contact, 31);
  EXPECT_EQ(QL_deletePhonebookEntry(0, 8), 31);
  EXPECT_EQ(sent(), Lines{"AT+JCPBW=8"});
  modem.on("AT+CPBR=?", information({"+CPBR: (1-250),40,16,64"}));
  discover(4);
  EXPECT_EQ(written(contact, 0),
            Lines{R"(AT^SCPBW=3,"+1",145,"+3",145,"2",129,"2",129,"4142",1,"m")"});
}

TEST_F(Phonebook, WritesThatAreRefused) {
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

TEST_F(Phonebook, Deletes) {
  discover(99);
  for (const int result : {0, 1}) {
    modem.on("AT+CPBW=", result == 0 ? kOk : kError);
    _PBB_UseEmptyIndex(6);
    EXPECT_EQ(QL_deletePhonebookEntry(0, 6), result);
    EXPECT_EQ(sent(), (Lines{kUcs2, "AT+CPBW=6", kIra}));
    EXPECT_EQ(_PBB_GetIndexIsEmpty(6), 1 - result);
  }
  for (const int index : {0, -1}) EXPECT_NE(QL_deletePhonebookEntry(0, index), 0);
  EXPECT_EQ(sent(), (Lines{kUcs2, kIra})) << "nothing but the switches";
}

}  // namespace
