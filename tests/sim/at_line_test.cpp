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
    text += "[" + command.name + "xs?t"[int(command.form)] + command.arguments + "]";
  }
  return text;
}

TEST(AtLine, SplitsIntoCommands) {
  const std::pair<const char*, const char*> rows[] = {
      {"at", ""},
      {"ATS0=3S7?", "[S0s3][S7?]"},
      {"AT&F&C1", "[&Fx][&Cx1]"},
      {"ATE0;+CMEE=;^CSQ", "[Ex0][+CMEEs][^CSQx]"},
      {"ATE0V1+CSQ", "[Ex0][Vx1][+CSQx]"},
      {"AT+cpbr=1,2;+CPBS?;+CPBS=?", "[+CPBRs1,2][+CPBS?][+CPBSt]"},
      {"AT+CPBW=1,\"5;6\",129,\"a;b\";+CSQ", "[+CPBWs1,\"5;6\",129,\"a;b\"][+CSQx]"},
      {"ATD+4930;", "[Dx+4930;]"},
      {"", "none"},
      {"BT+CSQ", "none"},
      {"AT+", "none"},
      {"AT+CSQ!", "none"},
      {"AT\"", "none"},
  };
  for (const auto& [line, commands] : rows) EXPECT_EQ(described(line), commands) << line;
}

TEST(AtLine, SplitsParametersOutsideQuotes) {
  const std::pair<const char*, const char*> rows[] = {
      {"5,\"+49\",145,\"a,b\"", "(5)<+49>(145)<a,b>"},
      {",\"1\",,\"\"", "()<1>()<>"},
      {"", "()"},
      {" 1 , \"x y\" ", "(1)<x y>"},
      {"1,\"a", "none"},
      {"\"a\"b", "none"},
      {"a\"b\"", "none"},
      {"\"a\"\"b\"", "none"},
  };
  for (const auto& [text, expected] : rows) {
    const auto list = split_arguments(text);
    std::string result = list ? "" : "none";
    for (const Argument& one : list.value_or(std::vector<Argument>())) {
      result += one.quoted ? "<" + one.value + ">" : "(" + one.value + ")";
    }
    EXPECT_EQ(result, expected);
  }
}

}  // namespace
}  // namespace qalt::at
