#include "tests/server/private_tmp.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>

#include <filesystem>

namespace test {
namespace {

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

}  // namespace

bool enter_private_tmp(const std::string& build_folder) {
  static const bool entered = mount_tmp(build_folder);
  return entered;
}

}  // namespace test
