// The command line of qalt-pb: values that are empty, and numbers.
#include "cli/arguments.h"

#include <gtest/gtest.h>

namespace {

using namespace qalt::cli;

std::optional<Arguments> read(std::vector<std::string> texts, int& status) {
  texts.insert(texts.begin(), "qalt-pb");
  std::vector<char*> argv;
  for (std::string& text : texts) argv.push_back(text.data());
  return read_arguments(int(argv.size()), argv.data(), status);
}

// Behind each empty value stands --json, which is never taken for the value.
TEST(Arguments, AnEmptyValueIsAValueOrAnError) {
  int status = 0;
  for (const char* field : {"--name", "--number", "--number2", "--number3", "--email", "--extra"}) {
    const auto given = read({"set", "2", std::string(field) + "=", "--json"}, status);
    ASSERT_TRUE(given && given->json) << field;
    int empty = 0;
    for (const auto& value : given->fields.fields) empty += value == std::string();
    EXPECT_EQ(1, empty) << field;
  }
  EXPECT_EQ("--name=",
            read({"set", "2", "--name", "--name="}, status)->fields.fields[PB_FIELD_TEXT]);
  EXPECT_EQ("--name=", read({"find", "--", "--name="}, status)->text);
  const auto module = read({"reports", "--module=", "--json"}, status);
  EXPECT_TRUE(module && module->json && module->module.empty());
  const std::vector<std::string> errors[] = {
      {"info", "--platform="},    {"info", "--wait="},
      {"list", "--from="},        {"list", "--to="},
      {"add", "--index="},        {"export", "--format="},
      {"at", "AT", "--timeout="}, {"reports", "--count="},
      {"delete", "1", "--yes="},  {"delete", ""},
      {"set", "", "--name=A"},
  };
  for (std::vector<std::string> arguments : errors) {
    arguments.push_back("--json");
    status = 0;
    EXPECT_FALSE(read(arguments, status)) << arguments[1];
    EXPECT_EQ(2, status) << arguments[1];
  }
}

TEST(Arguments, WhatIsNotExpectedIsNamedInItsOrder) {
  int status = 0;
  testing::internal::CaptureStderr();
  EXPECT_FALSE(read({"info", "one", "--two", "three"}, status));
  EXPECT_EQ("qalt-pb: not expected: one --two three; see qalt-pb --help\n",
            testing::internal::GetCapturedStderr());
}

TEST(Arguments, NumbersAreDecimal) {
  int status = 0;
  EXPECT_EQ((std::vector<int>{10, 0, 8}), read({"get", "010", "00", "08"}, status)->indices);
  EXPECT_EQ(10, read({"set", "010", "--name=A"}, status)->index);
  EXPECT_EQ(9, read({"list", "--from", "09"}, status)->from);
  for (const char* number : {"0x10", "1.", "-1", "+1", " 1", "4294967297"}) {
    EXPECT_FALSE(read({"get", number}, status)) << number;
  }
}

}  // namespace
