#include "tests/cli/tool.h"

#include "tests/server/private_tmp.h"

namespace test {

void Tool::SetUp() {
  if (!enter_private_tmp(BUILD_FOLDER)) GTEST_SKIP() << "no mount namespaces here";
}

void Tool::start(std::vector<std::string> options) {
  server.reset();
  ::unlink(log.c_str());
  options.insert(options.end(), {"--log", log});
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
