// A contact's texts: the forms, the choice between them, the bounds of every buffer, the log.
#include <gtest/gtest.h>
#include <syslog.h>

#include <string>

#include "qalt_at/text.h"
#include "tests/support/recorder.h"

namespace {

class Items : public testing::Test {
 protected:
  void SetUp() override {
    QL_808182CodeSupportSet(0);
    test::clear_records();
  }
  void TearDown() override { QL_808182CodeSupportSet(0); }
};

struct Encoding {
  std::wstring text;
  int flag;
  int extended;
  std::string hex;
};

std::wstring wide(size_t count, wchar_t c) {
  return std::wstring(count, c);
}

std::string digits(size_t count, const std::string& each) {
  std::string all;
  for (size_t i = 0; i < count; ++i) all += each;
  return all;
}

const Encoding kEncodings[] = {
    // clang-format off
    {L"ab{", 0, 1, "61621B28"}, {L"ab{", 0, 2, "61621B28"}, {L"Aé", 0, 1, "4105"},
    {L"中", 0, 1, "804E2D"}, {L"ò", 0, 1, "8000F2"}, {L"", 0, 1, ""}, {L"", 0, 0, ""},
    {L"", 1, 0, ""}, {L"AB", 0, 0, "00410042"}, {L"AB", 1, 0, "00410042"},
    {L"a{", 0, 0, "0061007B"}, {L"Пр", 0, 0, "041F0440"}, {L"Пр", 1, 0, "8102089FC0"},
    {L"Пр", 1, 1, "80041F0440"}, {L"Пa", 1, 0, "8102089F61"}, {L"П^", 1, 0, "8102089F1B14"},
    {L"^П", 1, 0, "8102081B149F"}, {L"éā", 1, 0, "00E90101"}, {L"é中", 1, 0, "00E94E2D"},
    {L"a^", 1, 0, "0061005E"}, {L"a`", 1, 0, "8102006120"}, {L"`a", 1, 0, "8102002061"},
    {L"`a}", 1, 0, "00600061007D"}, {L"\x80\xFF", 1, 0, "81020180FF"},
    {L"\x7FFF", 1, 0, "8101FFFF"}, {L"\x8000", 1, 0, "8000"},
    {L"Город", 1, 0, "81050893BEC0BEB4"},  // 17 bytes, yet the estimate asks for 22
    // up to the limits of each form
    {wide(160, L'a'), 0, 1, digits(160, "61")}, {wide(80, L'{'), 0, 1, digits(80, "1B28")},
    {wide(39, L'中'), 0, 1, "80" + digits(39, "4E2D")},
    {wide(79, L'П'), 1, 0, "814F08" + digits(79, "9F")},
    {L"П" + wide(39, L'{'), 1, 0, "8128089F" + digits(39, "1B28")},
    {wide(260, L'é') + L"中", 0, 0, digits(260, "00E9") + "4E2D"},
    // clang-format on
};

TEST_F(Items, EncodeIntoEveryBufferSize) {
  for (const Encoding& c : kEncodings) {
    SCOPED_TRACE(c.hex);
    QL_808182CodeSupportSet(c.flag);
    uint32_t estimate = 0;
    CODE_PreEncodeGsmUcs(c.text.c_str(), &estimate);
    const size_t needed = std::max<size_t>(estimate, c.hex.size() + 1);
    const int expected_pure = estimate == 2 * c.text.size();
    for (size_t size = 0; size <= needed + 1; ++size) {
      std::string buffer(size + 8, '#');
      int pure = 7;
      const int result =
          QL_encodePBItem(c.text.c_str(), buffer.data(), static_cast<int>(size), &pure, c.extended);
      ASSERT_EQ(result, size < needed) << size;
      EXPECT_EQ(pure, expected_pure);
      const std::string written = result == 0 ? c.hex + '\0' : "";
      ASSERT_EQ(buffer, written + std::string(buffer.size() - written.size(), '#'));
    }
    test::clear_records();
    std::string unbounded(4 * c.text.size() + 8, '#');
    EXPECT_EQ(PB_EncodeItem(c.text.c_str(), unbounded.data(), c.extended), 1);
    EXPECT_STREQ(unbounded.c_str(), c.hex.c_str());
  }
}

TEST_F(Items, WhatExceedsAFormIsRefused) {
  const Encoding cases[] = {
      // clang-format off
      {wide(161, L'a'), 0, 1, ""}, {wide(80, L'{') + L"a", 0, 1, ""}, {wide(40, L'中'), 0, 1, ""},
      {wide(80, L'П'), 1, 0, ""}, {L"П" + wide(40, L'{'), 1, 0, ""}, {wide(261, L'中'), 1, 0, ""},
      {L"\x1F600", 0, 0, ""}, {L"\x1F600", 1, 0, ""}, {L"a\x1F600", 0, 1, ""},
      {wide(1, static_cast<wchar_t>(0xFFFFFFFF)), 0, 0, ""},
      // clang-format on
  };
  for (const Encoding& c : cases) {
    SCOPED_TRACE(testing::PrintToString(c.text));
    QL_808182CodeSupportSet(c.flag);
    test::clear_records();
    std::string buffer(5000, '#');
    int pure = 0;
    EXPECT_EQ(QL_encodePBItem(c.text.c_str(), buffer.data(), 4000, &pure, c.extended), 1);
    EXPECT_EQ(test::logged("lib_pb", LOG_ERR).size(), 1u);
    EXPECT_EQ(PB_EncodeItem(c.text.c_str(), buffer.data(), c.extended), 0);
    EXPECT_EQ(c.flag == 1 && PB808182EncodeItem(c.text.c_str(), buffer.data()), 0);
    EXPECT_EQ(buffer, std::string(5000, '#'));
  }
}

TEST_F(Items, ChoiceOfTheCoding) {
  const struct {
    std::wstring text;
    int32_t coding;
    uint32_t base;  // 99: not stored
  } cases[] = {
      // clang-format off
      {L"", 0, 99}, {L"abc", 0, 99}, {L"ab|", 1, 99}, {L"`", 2, 0}, {L"`{", 1, 99},
      {L"\x7F", 0, 99}, {L"\x80", 2, 1}, {L"é中", 1, 99}, {L"ПaЯ`", 2, 8}, {L"éā", 3, 99},
      {L"\xFF\x17F", 1, 99}, {L"\xFF\x17E", 3, 99}, {L"\x400\x47F", 2, 8},
      {L"\x7F80\x7FFF", 2, 255}, {L"\x8000\x8001", 3, 99}, {L"abП{", 2, 8},
      {wide(260, L'П'), 2, 8}, {wide(261, L'П'), 1, 99},
      // clang-format on
  };
  for (const auto& c : cases) {
    uint32_t base = 99;
    EXPECT_EQ(ChoosePhoneBookTextCodecType(c.text.c_str(), &base), c.coding)
        << testing::PrintToString(c.text);
    EXPECT_EQ(base, c.base) << testing::PrintToString(c.text);
  }
  uint16_t max = L'm';
  uint16_t min = L'm';
  EXPECT_EQ(GetMaxMinCharFromString(L"max中", &max, &min), 4);
  EXPECT_EQ(max, L'中');
  EXPECT_EQ(min, L'a');
  EXPECT_EQ(GetMaxMinCharFromString(L"", &max, &min), 0);
  EXPECT_EQ(GetMaxMinCharFromString(nullptr, &max, &min), 0);
  EXPECT_EQ(max, L'中');
}

struct Decoding {
  std::string hex;
  int extended;
  std::wstring text;
  size_t count;  // as CODE_PreDecodeGsmUcs has it
};

TEST_F(Items, DecodeIntoEveryBufferSize) {
  const Decoding cases[] = {
      // clang-format off
      {"00410042", 0, L"AB", 4}, {"", 0, L"", 0}, {"80", 1, L"", 0}, {"611B28", 1, L"a{", 3},
      {"804E2D", 1, L"中", 1}, {"8102089FC0", 1, L"Пр", 2}, {"820204108081", 1, L"АБ", 2},
      {"00410042", 2, L"AB", 4},  // only 1 is a vendor contact to the decoder
      // sized by the tag that they seem to have
      {"80014E2D", 0, L"\x8001中", 1}, {"81024E2D", 0, L"\x8102中", 1},
      {"82014E2D4E2D", 0, L"\x8201中中", 2},
      {digits(127, "41") + "4", 1, wide(127, L'A'), 127},
      {digits(63, "4E2D") + "4", 0, wide(63, L'中'), 126},
      // clang-format on
  };
  for (const Decoding& c : cases) {
    SCOPED_TRACE(c.hex);
    const size_t needed = std::max(c.count, c.text.size() + 1);
    for (size_t size = 0; size <= needed + 1; ++size) {
      std::wstring buffer(size + 4, L'#');
      const int result =
          QL_decodePBItem(c.hex.c_str(), buffer.data(), static_cast<int>(size), c.extended);
      ASSERT_EQ(result, size < needed) << size;
      const std::wstring written = result == 0 ? c.text + L'\0' : L"";
      ASSERT_EQ(buffer, written + wide(buffer.size() - written.size(), L'#'));
    }
    std::wstring unbounded(130, L'#');
    EXPECT_EQ(PB_DecodeItem(c.hex.c_str(), unbounded.data(), c.extended), 1);
    EXPECT_STREQ(unbounded.c_str(), c.text.c_str());
  }
  // clang-format off
  for (const Decoding& c : {Decoding{"", 1, L"", 0}, {"4", 1, L"", 0},
                            {digits(128, "41"), 1, L"", 0}, {digits(127, "00"), 0, L"", 0}}) {
    // clang-format on
    wchar_t buffer[400] = L"#";
    test::clear_records();
    EXPECT_EQ(QL_decodePBItem(c.hex.c_str(), buffer, 400, c.extended), 1) << c.hex;
    EXPECT_EQ(test::logged("lib_pb", LOG_ERR).size(), 1u);
    EXPECT_EQ(PB_DecodeItem(c.hex.c_str(), buffer, c.extended), 0);
    EXPECT_STREQ(buffer, L"#");
  }
  wchar_t buffer[4];
  EXPECT_EQ(QL_decodePBItem("81", buffer, -3, 1), 1) << "a count below 0 is no room";
}

TEST_F(Items, Sizes) {
  int size = 0;
  for (const auto& [text, wanted] : {std::pair{L"abc{", 4}, {L"ab中", 12}, {L"", 0}}) {
    EXPECT_EQ(PB_PreEncodeItem(text, &size), 0);
    EXPECT_EQ(size, wanted);
  }
  for (const auto& [hex, wanted] : {std::pair{"00410042", 5}, {"804E2D", 2}, {"", 1}, {"81", -1}}) {
    EXPECT_EQ(PB_PreDecodeItem(hex, &size), 0);
    EXPECT_EQ(size, wanted);
  }
}

// The debug lines since the last call, in one text without the name that each begins with.
std::string log_of(const std::string& function) {
  std::string all;
  for (const std::string& line : test::logged("lib_pb", LOG_DEBUG)) {
    EXPECT_EQ(line.substr(0, function.size() + 1), function + " ");
    all += line.substr(function.size() + 1);
  }
  test::clear_records();
  return all;
}

TEST_F(Items, Log) {
  char hex[20];
  wchar_t text[20];
  int value = 0;
  test::clear_records();
  QL_encodePBItem(L"A", hex, 20, &value, 1);
  EXPECT_EQ(log_of("QL_encodePBItem"),
            "input para pSrcPbItem is A\ninput para DstBufSize is 20\n"
            "input para bIsQaltExtendContact is 1\noutput para *pbPureGsm7 is 1\n"
            "output para pDstEncodeItem is 41\noutput para result is 0\n");
  QL_encodePBItem(L"A", hex, 1, &value, 0);
  EXPECT_EQ(log_of("QL_encodePBItem"),
            "input para pSrcPbItem is A\ninput para DstBufSize is 1\n"
            "input para bIsQaltExtendContact is 0\noutput para result is 1\n");
  QL_decodePBItem("41", text, 20, 1);
  EXPECT_EQ(log_of("QL_decodePBItem"),
            "input para pSrEncodeItem is 41\ninput para DstBufSize is 20\n"
            "input para bIsQaltExtendContact is 1\noutput para pDstPbItem is A\n");
  QL_decodePBItem("", text, 20, 1);
  EXPECT_EQ(log_of("QL_decodePBItem"),
            "input para pSrEncodeItem is \ninput para DstBufSize is 20\n"
            "input para bIsQaltExtendContact is 1\noutput para result is 1\n");
  QL_preEncodePBItem(L"A", &value);
  EXPECT_EQ(log_of("QL_preEncodePBItem"),
            "input para pSrcPbItem is A\noutput para pEncodeBufSize is 1\n"
            "output para result is 0\n");
  QL_preDecodePBItem("41", &value);
  QL_preDecodePBItem(nullptr, &value);
  EXPECT_EQ(log_of("QL_preDecodePBItem"),
            "input para pSrEncodeItem is 41\noutput para pDecodeBufSize is 2\n"
            "input para pSrEncodeItem is (null)\noutput para result is 1\n");
  QL_808182CodeSupportSet(1);
  QL_808182CodeSupportSet(2);
  EXPECT_EQ(is808182CodeSupport, 1);
  EXPECT_EQ(log_of("QL_808182CodeSupportSet"),
            "input para value is 1\ninput para value is 2\ninput para  is out of range\n");
}

TEST_F(Items, NullPointers) {
  char hex[20];
  wchar_t text[20];
  int pure = 0;
  uint32_t base = 0;
  for (int result :
       {QL_encodePBItem(nullptr, hex, 20, &pure, 0), QL_encodePBItem(L"a", nullptr, 20, &pure, 0),
        QL_encodePBItem(L"a", hex, 20, nullptr, 0), QL_decodePBItem(nullptr, text, 20, 0),
        QL_decodePBItem("41", nullptr, 20, 0), QL_preEncodePBItem(nullptr, &pure),
        QL_preEncodePBItem(L"a", nullptr), QL_preDecodePBItem("41", nullptr)}) {
    EXPECT_EQ(result, 1);
  }
  for (int result : {PB_EncodeItem(nullptr, hex, 0), PB808182EncodeItem(L"a", nullptr),
                     PB_DecodeItem(nullptr, text, 0), ChoosePhoneBookTextCodecType(nullptr, &base),
                     ChoosePhoneBookTextCodecType(L"П", nullptr)}) {
    EXPECT_EQ(result, 0);
  }
}

}  // namespace
