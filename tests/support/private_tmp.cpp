#include "tests/support/private_tmp.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/file.h>
#include <sys/mount.h>
#include <unistd.h>

#include <filesystem>
#include <fstream>

#include "tests/support/program.h"

namespace test {
namespace {

// Who is not root needs a user namespace around it, and keeps the same numbers there: a user
// without one owns no file.
bool new_namespace() {
  if (::unshare(CLONE_NEWNS) == 0) return true;
  const std::string user = std::to_string(::geteuid()), group = std::to_string(::getegid());
  if (::unshare(CLONE_NEWUSER | CLONE_NEWNS) != 0) return false;
  std::ofstream("/proc/self/setgroups") << "deny";
  return bool(std::ofstream("/proc/self/uid_map") << user << ' ' << user << " 1" << std::flush) &&
         bool(std::ofstream("/proc/self/gid_map") << group << ' ' << group << " 1" << std::flush);
}

// A build folder below /tmp is shown again in the new one.
bool mount_tmp(const std::string& build_folder) {
  if (!new_namespace()) return false;
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

bool wait_for_tmp() {
  // Held until the process ends.
  static const int turn = ::open("/tmp/qalt_tests.lock", O_RDWR | O_CREAT | O_CLOEXEC, 0666);
  if (turn < 0 || ::flock(turn, LOCK_EX) != 0) return false;
  const int other = connect_to("/tmp/AT_SERVER_MSG");
  if (other >= 0) {
    ::close(other);
    return false;
  }
  // A killed server left it there, and the next one would let its clients know.
  ::unlink("/tmp/AT_SERVER_MSG");
  return true;
}

}  // namespace test
