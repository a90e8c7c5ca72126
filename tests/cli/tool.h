// tool.h - the built tool in front of the built server.
#ifndef QALT_TESTS_CLI_TOOL_H_
#define QALT_TESTS_CLI_TOOL_H_

#include <gtest/gtest.h>

#include <memory>
#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "tests/support/private_tmp.h"
#include "tests/support/program.h"

namespace test {

// The tool, in front of a server with the given options. Each test has an empty working folder.
class Tool : public testing::Test {
 protected:
  void SetUp() override;
  void TearDown() override;
  void start(std::vector<std::string> options = {}, const std::string& modem = "sim");
  // Runs the tool to its end, without a terminal.
  static Ended run(const std::vector<std::string>& arguments) {
    return Program(PB_PROGRAM, arguments, false).end(0);
  }
  // A line of the shell, in which $pb is the tool.
  static Ended shell(const std::string& line) {
    return Program("/bin/sh", {"-c", "pb='" PB_PROGRAM "'; " + line}, false).end(0);
  }
  static nlohmann::json json_of(std::vector<std::string> arguments) {
    arguments.insert(arguments.begin(), "--json");
    return nlohmann::json::parse(run(arguments).out);
  }
  static void expect(int status, const std::string& said, const Ended& ended) {
    EXPECT_EQ(status, ended.status) << said;
    EXPECT_NE(ended.err.npos, ended.err.find(said)) << ended.err;
  }
  // Lines of the modem's transcript that the server sent with this beginning.
  int sent(const std::string& start) const;

  std::unique_ptr<Program> server;
  const std::string log = "at.log";
  std::string folder;
};

}  // namespace test

#endif  // QALT_TESTS_CLI_TOOL_H_
