// Rewriting a line for scanning and turning scanned fields back.
#include <gtest/gtest.h>

#include <cstdio>
#include <cstring>
#include <string>

#include "qalt_at/parameters.h"

namespace {

std::string rewritten(void (*function)(unsigned char*), const std::string& line) {
  char field[ATCODEC_PARA_LEN + 8] = {};
  std::memcpy(field, line.c_str(), line.size() + 1);
  std::memset(field + ATCODEC_PARA_LEN + 4, '#', 4);
  function(reinterpret_cast<unsigned char*>(field));
  EXPECT_EQ(std::string(field + ATCODEC_PARA_LEN + 4, 4), "####");
  return field;
}

std::string changed(void (*function)(char*), std::string field) {
  function(field.data());
  return field.c_str();
}

TEST(ParameterLine, IsRewrittenForTheScanner) {
  const std::string k1023(1023, 'x');
  const struct {
    std::string line, plain, special;  // special empty: as plain
  } cases[] = {
      {R"(5,"+49 89 123",145,"Mary Ann")",
       "5 +49\xFE"
       "89\xFE"
       "123 145 Mary\xFE"
       "Ann",
       ""},
      {R"(7,"",129,"")", "7 \xFD 129 \xFD", ""},
      {R"("SM",12,250)", "SM 12 250", ""},
      {"(1-250),40,18", "(1-250) 40 18", ""},
      {R"(1,,129,"A")", "1 \xFD 129 A", ""},
      {"1,,3", "1 \xFD 3", ""},
      {"4,", "4 \xFD", ""},
      {",5", " 5", ""},
      {",,", " \xFD \xFD", ""},
      {"\"", "", ""},
      {R"("""")", "\xFD\xFD\xFD", ""},
      {R"(1,"a,b")", "1 a,b", ""},
      {"1,\"a\tb\"\tc",
       "1 a\xFC"
       "b\tc",
       ""},
      {"\"a\r\nb\"\r\n", "a\r\nb\r\n",
       "a\xFA\xFB"
       "b\r\n"},
      {"", "", ""},
      {k1023, k1023, ""},
      // 1021 characters and an empty parameter fill the field; one more, and the line stays.
      {std::string(1021, 'x') + ",", std::string(1021, 'x') + " \xFD", ""},
      {std::string(1022, 'x') + ",", std::string(1022, 'x') + ",", ""},
      {std::string(1020, 'x') + ",,", std::string(1020, 'x') + ",,", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(rewritten(ATCodec_PreProc_Res_ParaLine, c.line), c.plain) << c.line;
    EXPECT_EQ(rewritten(ATCodec_PreProc_Res_ParaLine_Special, c.line),
              c.special.empty() ? c.plain : c.special)
        << c.line;
  }
  const std::string too_long = "a," + std::string(1022, 'x');
  EXPECT_EQ(rewritten(ATCodec_PreProc_Res_ParaLine, too_long), too_long);
}

TEST(ParameterLine, ScannedFieldsAreRestored) {
  const struct {
    std::string field, plain, special;
  } cases[] = {
      {"+49\xFE"
       "89\xFE"
       "123",
       "+49 89 123", "+49 89 123"},
      {"\xFD", "", ""},
      {"a\xFD", "a\xFD", "a\xFD"},
      {"\xFD\xFE", "\xFD ", "\xFD "},
      {"\xFE", " ", " "},
      {"a\xFC\xFA\xFB"
       "b",
       "a\t\xFA\xFB"
       "b",
       "a\t\r\nb"},
      {"", "", ""},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(changed(ATCodec_Restore_String_Para, c.field), c.plain);
    EXPECT_EQ(changed(ATCodec_Restore_String_Para_Special, c.field), c.special);
  }
}

TEST(ParameterLine, GroupsAreFlattenedAndTheRestCleared) {
  const struct {
    std::string line, flat;
  } cases[] = {
      {"(1-250),40,18", "1-250;40,18"},
      {"(0,1),(2,3)", "0,1;2,3"},
      {"1,2", "1,2"},
      {"()", ""},
      {"((a)),\"(b)\"", "a;\"b\""},
      {"", ""},
      {std::string(1022, 'x') + ")", std::string(1022, 'x')},
      {std::string(1023, 'x') + ")", std::string(1023, 'x') + ")"},
  };
  for (const auto& c : cases) {
    std::string line = c.line;
    ATCodec_ProcRes_ParaLineEx(line.data());
    const size_t kept = c.flat.size();
    EXPECT_EQ(line, c.flat + std::string(c.line.size() - kept, '\0')) << c.line;
  }
}

TEST(ParameterLine, FormatsACommand) {
  char command[64];
  EXPECT_EQ(ATCodec_TranslateToCmdPara(command, "=%d,\"%s\",%u", 7, "Mary", 4000000000u), 0);
  EXPECT_STREQ(command, "=7,\"Mary\",4000000000");
}

TEST(ParameterLine, NullsDoNothing) {
  for (const auto rewrite : {ATCodec_PreProc_Res_ParaLine, ATCodec_PreProc_Res_ParaLine_Special}) {
    rewrite(nullptr);
  }
  for (const auto change : {ATCodec_Restore_String_Para, ATCodec_Restore_String_Para_Special,
                            ATCodec_ProcRes_ParaLineEx}) {
    change(nullptr);
  }
  EXPECT_EQ(ATCodec_TranslateToCmdPara(nullptr, "%d", 1), 0);
}

}  // namespace
