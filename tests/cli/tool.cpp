#include "tests/cli/tool.h"

#include <stdlib.h>

#include <filesystem>

#include "tests/support/private_tmp.h"

namespace test {

void Tool::SetUp() {
  if (!enter_private_tmp(BUILD_FOLDER) && !wait_for_tmp()) {
    GTEST_SKIP() << "no mount namespaces here, and /tmp is in use by another AT server";
  }
  char name[] = "/tmp/qalt_tool_XXXXXX";
  folder = ::mkdtemp(name);
  std::filesystem::current_path(folder);
}

void Tool::TearDown() {
  server.reset();
  std::error_code ignored;
  std::filesystem::remove_all(folder, ignored);
}

void Tool::start(std::vector<std::string> options, const std::string& modem) {
  server.reset();
  ::unlink(log.c_str());
  options.insert(options.end(), {"--modem", modem, "--log", log});
  server = std::make_unique<Program>(ATD_PROGRAM, options);
  ASSERT_TRUE(server->ready());
}

int Tool::sent(const std::string& start) const {
  const std::string text = contents(log);
  int count = 0;
  const std::string mark = " > " + start;
  for (size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) ++count;
  return count;
}

}  // namespace test
