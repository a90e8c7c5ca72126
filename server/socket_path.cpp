#include "server/socket_path.h"

#include <grp.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
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

sockaddr_un address_of(const std::string& path) {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path.empty() || path.size() >= sizeof address.sun_path) {
    fail("socket path of " + std::to_string(path.size()) + " characters: it has 1 to " +
         std::to_string(sizeof address.sun_path - 1));
  }
  std::memcpy(address.sun_path, path.data(), path.size());
  return address;
}

int new_socket() {
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor < 0) fail("no socket: " + reason());
  return descriptor;
}

gid_t group_id(const std::string& name) {
  if (name.find_first_not_of("0123456789") == name.npos) return gid_t(std::stoul(name));
  const group* entry = ::getgrnam(name.c_str());  // NOLINT: at the start there is one thread
  if (entry == nullptr) fail("there is no group '" + name + "'");
  return entry->gr_gid;
}

}  // namespace

SocketPath::SocketPath(std::string path, const Access& access) : path_(std::move(path)) {
  clear_way();
  listen(access);
}

SocketPath::~SocketPath() {
  struct stat now {};
  const bool ours =
      ::lstat(path_.c_str(), &now) == 0 && now.st_dev == file_.st_dev && now.st_ino == file_.st_ino;
  if (ours) ::unlink(path_.c_str());
}

void SocketPath::clear_way() {
  const sockaddr_un address = address_of(path_);
  struct stat file {};
  if (::lstat(path_.c_str(), &file) != 0) return;
  if (!S_ISSOCK(file.st_mode)) fail(path_ + " is there and is no socket; choose another --socket");
  const int probe = new_socket();
  const int result = ::connect(probe, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const int error = errno;
  ::close(probe);
  if (result == 0 || error == EAGAIN) {
    fail("an AT server already answers on " + path_ + "; stop it or choose another --socket");
  }
  if (error == ENOENT) return;
  if (error != ECONNREFUSED) fail(path_ + ": " + std::generic_category().message(error));
  if (::unlink(path_.c_str()) != 0) fail("stale " + path_ + " cannot be removed: " + reason());
  took_over_ = true;
}

void SocketPath::listen(const Access& access) {
  const sockaddr_un address = address_of(path_);
  descriptor_ = new_socket();
  // The file is created with its mode: no moment in which anybody else could connect.
  const mode_t old_mask = ::umask(mode_t(~access.mode & 0777));
  const int bound =
      ::bind(descriptor_, reinterpret_cast<const sockaddr*>(&address), sizeof address);
  const std::string why = reason();
  ::umask(old_mask);
  if (bound != 0) {
    ::close(descriptor_);
    fail("cannot listen on " + path_ + ": " + why);
  }
  ::lstat(path_.c_str(), &file_);
  try {
    if (!access.group.empty() && ::chown(path_.c_str(), uid_t(-1), group_id(access.group)) != 0) {
      fail("cannot give " + path_ + " to group " + access.group + ": " + reason());
    }
    if (::listen(descriptor_, kBacklog) != 0) fail("cannot listen on " + path_ + ": " + reason());
  } catch (...) {
    ::unlink(path_.c_str());
    ::close(descriptor_);
    throw;
  }
}

}  // namespace qalt::server
