// What the engine knows: the discovery on each platform, and the index buffer.
#include <cstring>
#include <tuple>

#include "tests/pb/phonebook_modem.h"

namespace {

using test::information;
using test::Lines;

const std::string kSelect = "AT+CPBS=\"SM\"", kCounts = "AT+CPBS?", kStd = "AT+CPBR=?",
                  kVendor = "AT+JCPBR=?", kUsim = "AT+JUSIM=?", kCard = "AT^CARDMODE=?",
                  kQuery = "AT+CPBR=1";

using Discovery = test::Phonebook;

// Used, total, lowest, highest; extend, JCPBM, USIM; lengths by field type.
std::vector<int32_t> numbers(const PbParam& p) {
  const PbType& type = p.PbType;
  std::vector<int32_t> all = {p.EntriesUsed,     p.MaxEntries,         p.MinIndex,
                              p.MaxIndex,        type.IsSupportExtend, type.IsSupportJCPBM,
                              type.IsSupportUSim};
  for (const PbFieldAbility& ability : p.FieldAbility) all.push_back(ability.maxLength);
  return all;
}

TEST_F(Discovery, CommandsAndValuesByPlatform) {
  const std::string none = test::kNotSupport, failed = test::kError;
  const std::string vendor = information({"+JCPBR: (1-300),40,60,41,42,128,61"});
  const std::string scpbr = information({"+CPBR: (1-200),40,16,0,64"});
  const std::string yes = information({"1"}), no = information({"0"});
  const std::string query1 = information({"+CPBR: 0,0,1"}), query2 = information({"+CPBR: 0,0,2"});
  const std::string counted = kSelect + kCounts, plain = counted + kSelect;
  const std::string probed = plain + kVendor + kUsim;
  const std::string queried = plain + kStd + kCard + kStd + kQuery;
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
      {99, none, no, "", probed + kStd, standard},
      {99, vendor, failed, "", probed + kStd, {12, 250, 1, 250, 1, 0, 0, 40, 18, 0, 0, 0, 0}},
      {99, vendor, yes, "", probed + kVendor, usim},
      // Platform 5 keeps the flags of an earlier discovery.
      {5, vendor, yes, "", counted + kVendor, usim},
      {7, vendor, yes, "", plain + kStd, standard},
      // Platforms 0 and 1 take the vendor's limits without a USIM.
      {0, vendor, no, "", probed + kVendor, sim},
      {8, vendor, yes, "", plain + kStd, standard},
      {1, vendor, no, "", probed + kVendor, sim},
      // On platform 4 the query tells which further numbers there are; a card that does not tell
      // its mode is a USIM.
      {4, scpbr, failed, failed, queried, {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 40, 0, 64}},
      {4, scpbr, yes, query1, queried, {12, 250, 1, 200, 1, 0, 0, 40, 16, 0, 40, 0, 64}},
      {4, scpbr, no, query2, queried, {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 0, 0, 64}},
      // clang-format on
  };
  for (const auto& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform) + ", vendor " + c.vendor);
    modem.on(kVendor, c.vendor);
    modem.on(kUsim, c.usim);
    modem.on(kCard, c.usim);
    modem.on(kQuery, c.query);
    modem.on(kStd, c.platform == 4 ? c.vendor : information({"+CPBR: (1-250),40,18,0,0,0,0"}));
    std::string lines;
    for (const std::string& line : discover(c.platform)) lines += line;
    EXPECT_EQ(lines, c.sent);
    EXPECT_EQ(numbers(param), c.numbers);
  }
}

TEST_F(Discovery, ABusyModemIsAskedTenTimesOneSecondApart) {
  discover(99);
  const auto before = numbers(param);
  // With ten failures everything stays, and 0 is returned.
  for (const int failures : {3, 100}) {
    modem.on("AT+CPBS=",
             [left = failures](auto&) mutable { return left-- > 0 ? test::kError : test::kOk; });
    if (failures > 10) modem.on(kCounts, information({"+CPBS: \"SM\",1,2"}));
    discover(99);
    EXPECT_EQ(numbers(param), before);
    EXPECT_EQ(test::sleeps(), std::vector<unsigned>(std::min(failures, 10), 1));
  }
}

int write_at(int32_t index, char first = 'x') {
  PbItem item;
  std::memset(&item, first, sizeof item);
  item.storageIndex = index;
  return PBB_WritePB(&item);
}

TEST_F(Discovery, RefusesBadArgumentsAndForgetsTheIndexBuffer) {
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
  for (int i = 1; i <= 249; ++i) write_at(i);
  EXPECT_EQ(PBB_GetFirstEmptyIndex(), 250);
  write_at(250);
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

}  // namespace
