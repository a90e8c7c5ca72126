#include "sockets/socket_place.h"

#include <fcntl.h>
#include <sys/file.h>
#include <sys/socket.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace qalt {
namespace {

std::string reason(int error = errno) {
  return std::generic_category().message(error);
}

bool is_same(const struct stat& a, const struct stat& b) {
  return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
}

// Removes what stands at the path if it is still that file.
bool remove_if(const std::string& path, const struct stat& file) {
  struct stat now {};
  return ::lstat(path.c_str(), &now) == 0 && is_same(now, file) && ::unlink(path.c_str()) == 0;
}

}  // namespace

SocketPlace::SocketPlace(std::string path, std::string option)
    : path_(std::move(path)), lock_path_(path_ + ".lock"), option_(std::move(option)) {
  address();
  lock();
  try {
    clear_way();
  } catch (...) {
    release();
    throw;
  }
}

SocketPlace::~SocketPlace() {
  if (occupied_) remove_if(path_, file_);
  release();
}

void SocketPlace::fail(const std::string& what, const std::string& advice) const {
  throw std::runtime_error(what + "; " + advice + "choose another " + option_);
}

sockaddr_un SocketPlace::address() const {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  if (path_.empty() || path_.size() >= sizeof address.sun_path) {
    fail("a socket path of " + std::to_string(path_.size()) + " characters: it has 1 to " +
         std::to_string(sizeof address.sun_path - 1));
  }
  std::memcpy(address.sun_path, path_.data(), path_.size());
  return address;
}

void SocketPlace::occupied() {
  occupied_ = ::lstat(path_.c_str(), &file_) == 0;
}

void SocketPlace::lock() {
  while (!try_lock()) {
  }
}

// False when its holder removed the file at the same moment.
bool SocketPlace::try_lock() {
  // Not created where it is: a directory for everybody lets nobody create what another's file is.
  constexpr int kFlags = O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC;
  lock_ = ::open(lock_path_.c_str(), kFlags);
  if (lock_ < 0 && errno == ENOENT) {
    lock_ = ::open(lock_path_.c_str(), kFlags | O_CREAT | O_EXCL, 0600);
    if (lock_ < 0 && errno == EEXIST) return false;
    if (lock_ < 0) fail("cannot create " + lock_path_ + ": " + reason());
  }
  if (lock_ < 0) {
    fail("cannot open " + lock_path_ + ": " + reason(),
         "remove it if nobody listens on " + path_ + ", or ");
  }
  struct stat file {};
  struct stat now {};
  ::fstat(lock_, &file);
  if (!S_ISREG(file.st_mode)) {
    release();
    fail(lock_path_ + " is there and is no file");
  }
  if (::flock(lock_, LOCK_EX | LOCK_NB) != 0) {
    const int error = errno;
    ::close(std::exchange(lock_, -1));
    if (error != EWOULDBLOCK) fail("cannot lock " + lock_path_ + ": " + reason(error));
    fail("another program already answers on " + path_, "end it, or ");
  }
  if (::lstat(lock_path_.c_str(), &now) == 0 && is_same(now, file)) return true;
  ::close(std::exchange(lock_, -1));
  return false;
}

void SocketPlace::release() {
  if (lock_ < 0) return;
  struct stat file {};
  if (::fstat(lock_, &file) == 0 && S_ISREG(file.st_mode)) remove_if(lock_path_, file);
  ::close(std::exchange(lock_, -1));
}

void SocketPlace::clear_way() {
  struct stat file {};
  if (::lstat(path_.c_str(), &file) != 0) return;
  if (!S_ISSOCK(file.st_mode)) fail(path_ + " is there and is no socket");
  const int probe = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (probe < 0) fail("no socket: " + reason());
  const sockaddr_un where = address();
  const int result = ::connect(probe, reinterpret_cast<const sockaddr*>(&where), sizeof where);
  const int error = errno;
  ::close(probe);
  // One that takes no more connections lives, too.
  if (result == 0 || error == EAGAIN) {
    fail("another program already answers on " + path_, "end it, or ");
  }
  if (error == ENOENT) return;
  if (error != ECONNREFUSED) fail(path_ + ": " + reason(error));
  if (!remove_if(path_, file)) fail("stale " + path_ + " cannot be removed: " + reason());
  took_over_ = true;
}

}  // namespace qalt
