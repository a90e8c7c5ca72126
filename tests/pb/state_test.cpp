// What the engine knows: the discovery on each platform, the settings, the index buffer.
#include <cstring>

#include "tests/pb/phonebook_modem.h"

namespace {

using test::information;
using test::Lines;

const std::string kSelect = "AT+CPBS=\"SM\"", kCounts = "AT+CPBS?", kStd = "AT+CPBR=?",
                  kVendor = "AT+JCPBR=?", kUsim = "AT+JUSIM=?", kCard = "AT^CARDMODE=?",
                  kQuery = "AT+CPBR=1";

class Discovery : public test::Phonebook {
 protected:
  // Used, total, lowest, highest; extend, JCPBM, USIM; lengths by field type.
  std::vector<int32_t> numbers() {
    const PbType& type = param.PbType;
    std::vector<int32_t> all = {param.EntriesUsed, param.MaxEntries,     param.MinIndex,
                                param.MaxIndex,    type.IsSupportExtend, type.IsSupportJCPBM,
                                type.IsSupportUSim};
    for (const PbFieldAbility& ability : param.FieldAbility) {
      EXPECT_EQ(ability.fieldType, &ability - param.FieldAbility);
      all.push_back(ability.maxLength);
    }
    return all;
  }
};

TEST_F(Discovery, CommandsAndValuesByPlatform) {
  const std::string none = test::kNotSupport, failed = test::kError;
  const std::string vendor = information({"+JCPBR: (1-300),40,60,41,42,128,61"});
  const std::string scpbr = information({"+CPBR: (1-200),40,16,0,64"});
  const std::string yes = information({"1"}), no = information({"0"});
  const Lines probed = {kSelect, kCounts, kSelect, kVendor, kUsim};
  const Lines queried = {kSelect, kCounts, kSelect, kStd, kCard, kStd, kQuery};
  const Lines plain = {kSelect, kCounts, kSelect};
  const std::string query1 = information({"+CPBR: 0,0,1"}), query2 = information({"+CPBR: 0,0,2"});
  const std::vector<int32_t> standard = {12, 250, 1, 250, 0, 0, 0, 40, 18, 0, 0, 0, 0};
  const struct {
    int platform;
    std::string vendor, usim, query;  // answers
    Lines sent;
    std::string last;
    std::vector<int32_t> numbers;
  } cases[] = {
      // clang-format off
      {99, none, no, "", probed, kStd, standard},
      {99, vendor, yes, "", probed, kVendor, {12, 250, 1, 300, 1, 0, 1, 40, 60, 41, 42, 61, 128}},
      {99, vendor, failed, "", probed, kStd, {12, 250, 1, 250, 1, 0, 0, 40, 18, 0, 0, 0, 0}},
      // Platforms 0 and 1 take the vendor's limits without a USIM.
      {0, vendor, no, "", probed, kVendor, {12, 250, 1, 300, 1, 0, 0, 40, 60, 41, 42, 61, 128}},
      {7, vendor, yes, "", plain, kStd, standard},
      {1, vendor, no, "", probed, kVendor, {12, 250, 1, 300, 1, 0, 0, 40, 60, 41, 42, 61, 128}},
      {8, vendor, yes, "", plain, kStd, standard},
      // On platform 4 the query tells which further numbers there are; a card that does not tell
      // its mode is a USIM.
      {4, scpbr, failed, failed, queried, "", {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 40, 0, 64}},
      {4, scpbr, yes, query1, queried, "", {12, 250, 1, 200, 1, 0, 0, 40, 16, 0, 40, 0, 64}},
      {4, scpbr, no, query2, queried, "", {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 0, 0, 64}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform) + ", vendor " + c.vendor);
    modem.on(kVendor, c.vendor);
    modem.on(kUsim, c.usim);
    modem.on(kCard, c.usim);
    modem.on(kQuery, c.query);
    modem.on(kStd, c.platform == 4 ? c.vendor : information({"+CPBR: (1-250),40,18,0,0,0,0"}));
    Lines expected = c.sent;
    if (!c.last.empty()) expected.push_back(c.last);
    EXPECT_EQ(discover(c.platform), expected);
    EXPECT_EQ(numbers(), c.numbers);
  }
}

TEST_F(Discovery, Platform5KeepsTheFlagsOfAnEarlierOne) {
  offer_vendor(true);
  discover(99);
  EXPECT_EQ(discover(5), (Lines{kSelect, kCounts, kVendor}));
  EXPECT_EQ(param.PbType.IsSupportUSim, 1);
  discover(7);
  EXPECT_EQ(discover(5), (Lines{kSelect, kCounts, kStd}));
}

TEST_F(Discovery, ABusyModemIsAskedTenTimesOneSecondApart) {
  int failures = 3;
  discover(99);
  const auto before = numbers();
  modem.on("AT+CPBS=", [&](auto&) { return failures-- > 0 ? test::kError : test::kOk; });
  discover(99);
  EXPECT_EQ(numbers(), before);
  EXPECT_EQ(test::sleeps(), std::vector<unsigned>(3, 1));
  EXPECT_EQ(g_cpbs_pb_busy_count, 3);
  EXPECT_TRUE(test::has_logged(7, "CPBS_Set error===g_cpbs_pb_busy_count=2\n"));

  // Ten failures, one more for the flags: everything stays, 0 is returned.
  failures = 100;
  modem.on(kCounts, information({"+CPBS: \"SM\",1,2"}));
  Lines first = discover(99);
  EXPECT_EQ(numbers(), before);
  first.resize(11);
  EXPECT_EQ(first, Lines(11, kSelect));
  EXPECT_EQ(test::sleeps(), std::vector<unsigned>(10, 1));

  failures = 0;
  modem.on(kStd, test::kError);
  discover(99);
  EXPECT_EQ(param.MaxIndex, 250);
  EXPECT_EQ(test::sleeps().size(), 10u);
  EXPECT_TRUE(test::has_logged(7, "CPBR_test error,g_cpbr_pb_busy_count=9\n"));
}

TEST_F(Discovery, RefusesBadArgumentsAndForgetsTheIndexBuffer) {
  test::clear_records();
  EXPECT_EQ(QL_getPhonebookInfo(1, &param), 13);
  EXPECT_EQ(QL_getPhonebookInfo(0, nullptr), 13);
  EXPECT_TRUE(sent().empty());
  EXPECT_TRUE(test::logs().empty());
  _PBB_UseEmptyIndex(1);
  discover(99);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 1);
  EXPECT_TRUE(test::has_logged(7, "QL_getPhonebookInfo output pPbParam.MaxIndex is 250\n "));
}

TEST(Settings, FieldLengthsStorageNamesAndFlags) {
  PbFieldAbility table[] = {{5, 0}, {4, 0}, {3, 0}, {2, 0}, {1, 0}, {0, 0}, {6, 77}, {-1, 77}};
  _CpbrTestToFieldability(1, 2, 10, 11, 12, 13, 14, 15, 8, table);
  const int32_t expected[] = {14, 15, 13, 12, 11, 10, 0, 0};
  for (int k = 0; k != 8; ++k) EXPECT_EQ(table[k].maxLength, expected[k]);
  char name[10] = {};
  _GetStorageParam(-3, name);
  EXPECT_STREQ(name, "ME");
  gPbType.IsSupportUSim = 1;
  EXPECT_EQ(_IsOldPhonebook(), 1);
  gPbType.IsSupportJCPBM = 1;
  EXPECT_EQ(_IsOldPhonebook(), 0);
  gPbType = {};
  EXPECT_EQ(QL_setCurrentPlatform(-1) + QL_setPBType(7), 0);
  EXPECT_EQ(g_phone_book_currentPlatform, -1);
}

int write_at(int32_t index, char first = 'x') {
  PbItem item;
  std::memset(&item, first, sizeof item);
  item.storageIndex = index;
  return PBB_WritePB(&item);
}

TEST(IndexBuffer, LowestFreeIndexFollowsWritesAndDeletes) {
  PBB_InitPbBuffer(1, 250, 250);
  EXPECT_EQ(write_at(1) + write_at(2), 2);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 3);
  EXPECT_EQ(PBB_DeletePB(1), 1);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 1);
  _PBB_UseEmptyIndex(1);
  EXPECT_EQ(_PBB_GetIndexIsEmpty(1), 0);
  _PBB_SetEmptyIndex(2);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 2);
  for (int i = 1; i <= 250; ++i) write_at(i);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), -1);
  // Ranges that leave the buffer.
  const struct {
    int min, max, first;
  } cases[] = {{5, 4, -1},         {0, 0, 0},        {-7, 3, 0},
               {1023, 5000, 1023}, {1024, 5000, -1}, {-9, -1, -1}};
  for (const auto& c : cases) {
    PBB_InitPbBuffer(c.min, c.max, 0);
    EXPECT_EQ(PBB_GetFirstEmptyIndex(), c.first) << c.min << ".." << c.max;
  }
}

TEST(IndexBuffer, KeepsTheLastEntryWholeAndRefusesIndicesItDoesNotHave) {
  PBB_InitPbBuffer(0, 1023, 1024);
  PbItem read = {};
  EXPECT_EQ(PBB_ReadPB(7, &read), 0);
  EXPECT_EQ(read.text[0], 0);
  write_at(7, 'a');
  write_at(7, 'b');
  EXPECT_EQ(PBB_ReadPB(7, &read), 1);
  EXPECT_EQ(read.storageIndex, 7);
  EXPECT_EQ(std::string(read.number, sizeof read - 4), std::string(sizeof read - 4, 'b'));
  EXPECT_EQ(PBB_DeletePB(7) + PBB_ReadPB(7, &read), 1);
  for (const int index : {-1, 1024, INT32_MIN, INT32_MAX}) {
    EXPECT_EQ(write_at(index) + PBB_ReadPB(index, &read) + PBB_DeletePB(index), 0);
    EXPECT_EQ(_PBB_GetIndexIsEmpty(index), 0);
    _PBB_UseEmptyIndex(index);
    _PBB_SetEmptyIndex(index);
  }
  EXPECT_EQ(PBB_WritePB(nullptr) + PBB_ReadPB(1, nullptr), 0);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 0);
}

}  // namespace
