// Discovery: which commands each platform's modem sees, and what each outcome sets.
#include "tests/pb/phonebook_modem.h"

namespace {

using test::information;
using test::Lines;
using test::PhonebookModem;

const std::string kSelect = "AT+CPBS=\"SM\"", kCounts = "AT+CPBS?", kStd = "AT+CPBR=?",
                  kVendor = "AT+JCPBR=?", kUsim = "AT+JUSIM=?", kCard = "AT^CARDMODE=?",
                  kQuery = "AT+CPBR=1";

// Used, total, lowest, highest; extend, JCPBM, USIM; lengths by field type.
std::vector<int32_t> numbers(const PbParam& p) {
  std::vector<int32_t> all = {p.EntriesUsed,
                              p.MaxEntries,
                              p.MinIndex,
                              p.MaxIndex,
                              p.PbType.IsSupportExtend,
                              p.PbType.IsSupportJCPBM,
                              p.PbType.IsSupportUSim};
  for (int32_t k = 0; k != PB_FIELD_TYPES; ++k) {
    EXPECT_EQ(k, p.FieldAbility[k].fieldType);
    all.push_back(p.FieldAbility[k].maxLength);
  }
  return all;
}

struct Discovery {
  int platform;
  std::string vendor, usim, query;  // answers; "" leaves ERROR
  Lines sent;
  std::vector<int32_t> numbers;
};

class Discover : public testing::Test {
 protected:
  PhonebookModem modem;
  PbParam param = {};

  std::vector<int32_t> run(int platform) {
    modem.forget();
    test::clear_records();
    QL_setCurrentPlatform(platform);
    EXPECT_EQ(0, QL_getPhonebookInfo(0, &param));
    return numbers(param);
  }
};

TEST_F(Discover, CommandsAndValuesByPlatform) {
  const std::string vendor = information({"+JCPBR: (1-300),40,60,41,42,128,61"});
  const std::string scpbr = information({"+CPBR: (1-200),40,16,0,64"});
  const std::string yes = information({"1"}), no = information({"0"});
  const std::string standard = information({"+CPBR: (1-250),40,18,0,0,0,0"});
  const std::vector<int32_t> std_numbers = {12, 250, 1, 250, 0, 0, 0, 40, 18, 0, 0, 0, 0};
  const Discovery cases[] = {
      {99,
       test::kNotSupport,
       no,
       "",
       {kSelect, kCounts, kSelect, kVendor, kUsim, kStd},
       std_numbers},
      {99,
       vendor,
       yes,
       "",
       {kSelect, kCounts, kSelect, kVendor, kUsim, kVendor},
       {12, 250, 1, 300, 1, 0, 1, 40, 60, 41, 42, 61, 128}},
      {99,
       vendor,
       "",
       "",
       {kSelect, kCounts, kSelect, kVendor, kUsim, kStd},
       {12, 250, 1, 250, 1, 0, 0, 40, 18, 0, 0, 0, 0}},
      // Platforms 0 and 1 take the vendor's limits without a USIM.
      {0,
       vendor,
       no,
       "",
       {kSelect, kCounts, kSelect, kVendor, kUsim, kVendor},
       {12, 250, 1, 300, 1, 0, 0, 40, 60, 41, 42, 61, 128}},
      {1,
       vendor,
       no,
       "",
       {kSelect, kCounts, kSelect, kVendor, kUsim, kVendor},
       {12, 250, 1, 300, 1, 0, 0, 40, 60, 41, 42, 61, 128}},
      {7, vendor, yes, "", {kSelect, kCounts, kSelect, kStd}, std_numbers},
      {8, vendor, yes, "", {kSelect, kCounts, kSelect, kStd}, std_numbers},
      // On platform 4 the query tells which further numbers there are; a card that does not tell
      // its mode is a USIM.
      {4,
       scpbr,
       "",
       "",
       {kSelect, kCounts, kSelect, kStd, kCard, kStd, kQuery},
       {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 40, 0, 64}},
      {4,
       scpbr,
       yes,
       information({"+CPBR: 0,0,1"}),
       {kSelect, kCounts, kSelect, kStd, kCard, kStd, kQuery},
       {12, 250, 1, 200, 1, 0, 0, 40, 16, 0, 40, 0, 64}},
      {4,
       scpbr,
       no,
       information({"+CPBR: 0,0,2"}),
       {kSelect, kCounts, kSelect, kStd, kCard, kStd, kQuery},
       {12, 250, 1, 200, 1, 0, 1, 40, 16, 40, 0, 0, 64}},
  };
  for (const Discovery& c : cases) {
    SCOPED_TRACE("platform " + std::to_string(c.platform) + ", vendor " + c.vendor);
    modem.on(kStd, c.platform == 4 ? c.vendor : standard);
    modem.on(kVendor, c.vendor);
    modem.on(kUsim, c.usim.empty() ? test::kError : c.usim);
    modem.on(kCard, c.usim.empty() ? test::kError : c.usim);
    modem.on(kQuery, c.query.empty() ? test::kError : c.query);
    modem.on(kStd, c.platform == 4 ? c.vendor : standard);
    EXPECT_EQ(c.numbers, run(c.platform));
    EXPECT_EQ(c.sent, modem.lines());
  }
}

TEST_F(Discover, Platform5KeepsTheFlagsOfAnEarlierDiscovery) {
  modem.offer_vendor(true);
  run(99);
  EXPECT_EQ(1, param.PbType.IsSupportUSim);
  run(5);
  EXPECT_EQ((Lines{kSelect, kCounts, kVendor}), modem.lines());
  EXPECT_EQ(1, param.PbType.IsSupportUSim);
  run(7);
  run(5);
  EXPECT_EQ((Lines{kSelect, kCounts, kStd}), modem.lines());
}

TEST_F(Discover, ABusyModemIsAskedTenTimesOneSecondApart) {
  const auto before = run(99);
  int failures = 0;
  modem.on("AT+CPBS=",
           [&](const std::string&) { return failures-- > 0 ? test::kError : test::kOk; });

  failures = 3;
  EXPECT_EQ(before, run(99));
  EXPECT_EQ(std::vector<unsigned>(3, 1), test::sleeps());
  EXPECT_EQ(3, g_cpbs_pb_busy_count);
  EXPECT_TRUE(test::has_logged(7, "CPBS_Set error===g_cpbs_pb_busy_count=2\n"));

  // Ten failures, one more for the flags: everything stays, 0 is returned.
  failures = 100;
  modem.on(kCounts, information({"+CPBS: \"SM\",1,2"}));
  EXPECT_EQ(before, run(99));
  Lines first = modem.lines();
  first.resize(11);
  EXPECT_EQ(Lines(11, kSelect), first);
  EXPECT_EQ(std::vector<unsigned>(10, 1), test::sleeps());

  failures = 0;
  modem.on(kStd, test::kError);
  run(99);
  EXPECT_EQ(250, param.MaxIndex);
  EXPECT_EQ(10u, test::sleeps().size());
  for (int n = 0; n != 10; ++n) {
    EXPECT_TRUE(
        test::has_logged(7, "CPBR_test error,g_cpbr_pb_busy_count=" + std::to_string(n) + "\n"));
  }
}

TEST_F(Discover, RefusesBadArgumentsAndForgetsTheIndexBuffer) {
  test::clear_records();
  EXPECT_EQ(13, QL_getPhonebookInfo(1, &param));
  EXPECT_EQ(13, QL_getPhonebookInfo(0, nullptr));
  EXPECT_TRUE(modem.sent().empty());
  EXPECT_TRUE(test::logs().empty());

  PbItem item = {};
  item.storageIndex = 1;
  PBB_WritePB(&item);
  run(99);
  EXPECT_EQ(1, PBB_GetFirstEmptyIndex());
  EXPECT_TRUE(test::has_logged(7, "QL_getPhonebookInfo output pPbParam.MaxIndex is 250\n "));
}

TEST(Settings, FieldLengthsStorageNamesAndFlags) {
  PbFieldAbility table[7] = {{5, 0}, {4, 0}, {3, 0}, {2, 0}, {1, 0}, {0, 0}, {9, 77}};
  _CpbrTestToFieldability(1, 2, 10, 11, 12, 13, 14, 15, 7, table);
  const int32_t expected[7] = {14, 15, 13, 12, 11, 10, 0};
  for (int k = 0; k != 7; ++k) EXPECT_EQ(expected[k], table[k].maxLength);
  char name[10] = {};
  _GetStorageParam(0, name);
  EXPECT_STREQ("SM", name);
  _GetStorageParam(-3, name);
  EXPECT_STREQ("ME", name);

  EXPECT_EQ(1, _IsOldPhonebook());
  gPbType.IsSupportUSim = 1;
  EXPECT_EQ(1, _IsOldPhonebook());
  gPbType.IsSupportJCPBM = 1;
  EXPECT_EQ(0, _IsOldPhonebook());
  gPbType = {};
  for (const int platform : {99, -1, 0}) {
    EXPECT_EQ(0, QL_setCurrentPlatform(platform));
    EXPECT_EQ(platform, g_phone_book_currentPlatform);
  }
  EXPECT_EQ(0, QL_setPBType(7));
}

}  // namespace
