// The syntax of command lines, on lines that are easily cut in the wrong place.
#include "sim/at_line.h"

#include <gtest/gtest.h>

namespace qalt::at {
namespace {

std::string described(std::string_view line) {
  const auto commands = split_line(line);
  if (!commands) return "none";
  std::string text;
  for (const Command& command : *commands) {
    text +=
        "[" + command.name + std::string(1, "xs?t"[int(command.form)]) + command.arguments + "]";
  }
  return text;
}

TEST(AtLine, SplitsIntoCommands) {
  const struct {
    const char* line;
    const char* commands;
  } rows[] = {
      {"AT", ""},
      {"at", ""},
      {"ATE0V1Q0", "[Ex0][Vx1][Qx0]"},
      {"AT&F&C1", "[&Fx][&Cx1]"},
      {"ATS0=3S7?", "[S0s3][S7?]"},
      {"ATE0;+CMEE=1;+CSQ", "[Ex0][+CMEEs1][+CSQx]"},
      {"ATE0+CSQ", "[Ex0][+CSQx]"},
      {"AT+cpbr=1,2;+CPBS?;+CPBS=?", "[+CPBRs1,2][+CPBS?][+CPBSt]"},
      {"AT+CPBW=1,\"5;6\",129,\"a;b\";+CSQ", "[+CPBWs1,\"5;6\",129,\"a;b\"][+CSQx]"},
      {"AT^SCPBR=1,2", "[^SCPBRs1,2]"},
      {"ATD+4930;", "[Dx+4930;]"},
      {"AT+CPBR=", "[+CPBRs]"},
      {"", "none"},
      {"A", "none"},
      {"BT+CSQ", "none"},
      {"AT+", "none"},
      {"AT+CSQ!", "none"},
      {"AT&", "none"},
      {"AT=", "none"},
      {"AT\"", "none"},
  };
  for (const auto& row : rows) EXPECT_EQ(described(row.line), row.commands) << row.line;
}

TEST(AtLine, SplitsParametersOutsideQuotes) {
  const auto joined = [](std::string_view text) {
    const auto list = split_arguments(text);
    if (!list) return std::string("none");
    std::string result;
    for (const Argument& one : *list) {
      result += one.quoted ? "<" + one.value + ">" : "(" + one.value + ")";
    }
    return result;
  };
  EXPECT_EQ(joined("5,\"+49\",145,\"a,b\""), "(5)<+49>(145)<a,b>");
  EXPECT_EQ(joined(",\"1\",,\"\""), "()<1>()<>");
  EXPECT_EQ(joined(""), "()");
  EXPECT_EQ(joined(" 1 , \"x y\" "), "(1)<x y>");
  for (const char* broken : {"\"", "1,\"a", "\"a\"b", "a\"b\"", "\"a\"\"b\""}) {
    EXPECT_EQ(joined(broken), "none") << broken;
  }
}

}  // namespace
}  // namespace qalt::at
