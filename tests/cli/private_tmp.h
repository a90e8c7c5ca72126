// private_tmp.h - the library's socket path is fixed, so a test that runs real programs on it has a
// /tmp of its own, in a mount namespace of its own.
#ifndef QALT_TESTS_CLI_PRIVATE_TMP_H_
#define QALT_TESTS_CLI_PRIVATE_TMP_H_

#include <gtest/gtest.h>
#include <unistd.h>

#include <memory>
#include <string>
#include <vector>

#include "tests/server/program.h"

namespace test {

// Once for the process; false where the system does not allow it.
bool enter_private_tmp(const std::string& build_folder);

// How a run of the tool ended.
struct Ran {
  int status = 0;
  std::string out;
  std::string err;
};

// The tool, in front of a server with the given options.
class Tool : public testing::Test {
 protected:
  void SetUp() override {
    if (!enter_private_tmp(BUILD_FOLDER)) GTEST_SKIP() << "no mount namespaces here";
  }
  void start(std::vector<std::string> options = {}) {
    server.reset();
    ::unlink(log.c_str());
    options.insert(options.end(), {"--log", log});
    server = std::make_unique<Program>(ATD_PROGRAM, options);
    ASSERT_TRUE(server->ready()) << server->said();
  }
  // Runs the tool to its end, without a terminal.
  Ran run(const std::vector<std::string>& arguments) { return finish(begin(arguments)); }
  pid_t begin(const std::vector<std::string>& arguments);
  Ran finish(pid_t process);
  // Lines of the modem's transcript that the server sent with this beginning.
  int sent(const std::string& start) const;

  std::unique_ptr<Program> server;
  const std::string log = "/tmp/at.log";
};

}  // namespace test

#endif  // QALT_TESTS_CLI_PRIVATE_TMP_H_
