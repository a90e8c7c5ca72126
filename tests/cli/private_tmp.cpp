#include "tests/cli/private_tmp.h"

#include <fcntl.h>
#include <sched.h>
#include <sys/mount.h>
#include <sys/wait.h>
#include <unistd.h>

#include <filesystem>

namespace test {
namespace {

const std::string kOut = "/tmp/out";
const std::string kErr = "/tmp/err";

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

pid_t Tool::begin(const std::vector<std::string>& arguments) {
  std::vector<std::string> all = {PB_PROGRAM};
  all.insert(all.end(), arguments.begin(), arguments.end());
  std::vector<char*> argv;
  for (std::string& argument : all) argv.push_back(argument.data());
  argv.push_back(nullptr);
  const pid_t process = ::fork();
  if (process != 0) return process;
  const int flags = O_WRONLY | O_CREAT | O_TRUNC;
  ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
  ::dup2(::open(kOut.c_str(), flags, 0600), STDOUT_FILENO);
  ::dup2(::open(kErr.c_str(), flags, 0600), STDERR_FILENO);
  ::execv(argv[0], argv.data());
  ::_exit(127);
}

Ran Tool::finish(pid_t process) {
  int status = 0;
  ::waitpid(process, &status, 0);
  return {WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status), contents(kOut),
          contents(kErr)};
}

int Tool::sent(const std::string& start) const {
  const std::string text = contents(log);
  int count = 0;
  const std::string mark = " > " + start;
  for (size_t at = text.find(mark); at != text.npos; at = text.find(mark, at + 1)) ++count;
  return count;
}

}  // namespace test
