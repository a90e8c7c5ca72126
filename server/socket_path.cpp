#include "server/socket_path.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <stdexcept>
#include <system_error>

namespace qalt::server {
namespace {

constexpr int kBacklog = 128;

[[noreturn]] void fail(const std::string& what) {
  throw std::runtime_error(what);
}
std::string reason() {
  return std::generic_category().message(errno);
}

gid_t group_id(const std::string& name) {
  if (name.find_first_not_of("0123456789") == name.npos) return gid_t(std::stoul(name));
  const group* entry = ::getgrnam(name.c_str());  // NOLINT: at the start there is one thread
  if (entry == nullptr) fail("there is no group '" + name + "'");
  return entry->gr_gid;
}

}  // namespace

SocketPath::SocketPath(std::string path, const Access& access)
    : place_(std::move(path), "--socket") {
  try {
    listen(access);
  } catch (...) {
    if (descriptor_ >= 0) ::close(descriptor_);
    throw;
  }
}

void SocketPath::listen(const Access& access) {
  const sockaddr_un address = place_.address();
  descriptor_ = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor_ < 0) fail("no socket: " + reason());
  // The file is created with its mode: no moment in which anybody else could connect.
  const mode_t old_mask = ::umask(mode_t(~access.mode & 0777));
  const int bound =
      ::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const std::string why = reason();
  ::umask(old_mask);
  if (bound != 0) fail("cannot listen on " + path() + ": " + why);
  place_.occupied();
  if (!access.group.empty() && ::chown(path().c_str(), uid_t(-1), group_id(access.group)) != 0) {
    fail("cannot give " + path() + " to group " + access.group + ": " + reason());
  }
  if (::listen(descriptor_, kBacklog) != 0) {
    fail("cannot listen on " + path() + ": " + reason());
  }
}

}  // namespace qalt::server
