// tool.h - the built tool in front of the built server.
#ifndef QALT_TESTS_CLI_TOOL_H_
#define QALT_TESTS_CLI_TOOL_H_

#include <gtest/gtest.h>
#include <stdlib.h>

#include <filesystem>
#include <fstream>
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
  void SetUp() override {
    if (!enter_private_tmp(BUILD_FOLDER) && !wait_for_tmp()) {
      GTEST_SKIP() << "no mount namespaces here, and /tmp is in use by another AT server";
    }
    char name[] = "/tmp/qalt_tool_XXXXXX";
    folder = ::mkdtemp(name);
    std::filesystem::current_path(folder);
  }
  void TearDown() override {
    std::error_code ignored;
    // What a killed server leaves has the next one take its clients' selections for forgotten.
    if (server != nullptr) std::filesystem::remove("/tmp/AT_SERVER_MSG", ignored);
    server.reset();
    std::filesystem::remove_all(folder, ignored);
  }
  void start(std::vector<std::string> options = {}, const std::string& modem = "sim") {
    server.reset();
    std::filesystem::remove(log);
    options.insert(options.end(), {"--modem", modem, "--log", log});
    server = std::make_unique<Program>(ATD_PROGRAM, options);
    ASSERT_TRUE(server->ready());
  }
  static void write(const std::string& file, const std::string& text) {
    std::ofstream(file) << text;
  }
  // A file of so many contacts, whose names begin so.
  static void write_names(const std::string& file, const std::string& name, int count) {
    std::string text = "name\n";
    for (int i = 0; i != count; ++i) text += name + std::to_string(i) + "\n";
    write(file, text);
  }
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
  int sent(const std::string& start) const {
    const std::string text = contents(log), mark = " > " + start;
    int count = 0;
    for (size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) ++count;
    return count;
  }

  std::unique_ptr<Program> server;
  const std::string log = "at.log";
  std::string folder;
};

}  // namespace test

#endif  // QALT_TESTS_CLI_TOOL_H_
