#include "tests/cli/private_tmp.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>

namespace test {

// A build folder below /tmp is shown again in the new one.
bool mount_tmp(const std::string& build_folder) {
  if (::unshare(CLONE_NEWNS) != 0 && ::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  const int folder = ::open(build_folder.c_str(), O_PATH | O_CLOEXEC);
  if (::mount("none", "/", nullptr, MS_REC | MS_PRIVATE, nullptr) != 0 ||
      ::mount("none", "/tmp", "tmpfs", 0, nullptr) != 0) {
    return false;
  }
  if (build_folder.rfind("/tmp/", 0) != 0) return true;
  std::filesystem::create_directories(build_folder);
  const std::string source = "/proc/self/fd/" + std::to_string(folder);
  return ::mount(source.c_str(), build_folder.c_str(), nullptr, MS_BIND, nullptr) == 0;
}

void Tool::SetUp() {
  static const bool mounted = mount_tmp(BUILD_FOLDER);
  if (!mounted) GTEST_SKIP() << "no mount namespaces here";
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
