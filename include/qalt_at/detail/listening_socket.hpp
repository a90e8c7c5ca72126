/*
 * listening_socket.hpp - a socket that listens at a path: taken only where nobody listens, and
 * removed only while it is this one.
 */
#ifndef QALT_AT_DETAIL_LISTENING_SOCKET_HPP
#define QALT_AT_DETAIL_LISTENING_SOCKET_HPP

#include <errno.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>
#include <system_error>
#include <utility>

#include "qalt_at/detail/result.hpp"

namespace qalt {
namespace detail {

class ListeningSocket {
 public:
  ListeningSocket() = default;
  ~ListeningSocket() { close(true); }
  ListeningSocket(const ListeningSocket&) = delete;
  ListeningSocket& operator=(const ListeningSocket&) = delete;

  /* Only a closed one. Its file has exactly this mode before anybody can connect. */
  Result<Done> open(const std::string& path, mode_t mode);
  /* The file goes while the descriptor is open: until then no other file has its number. */
  void close(bool remove);
  int descriptor() const { return descriptor_; }

 private:
  static Error refused(const std::string& what, const std::string& advice) {
    return {Cause::kUsage, what, advice};
  }
  static Error occupied(const std::string& path) {
    return refused("another program already answers on " + path, "end it, or choose another path");
  }
  static Error failed(const std::string& what, int cause) {
    return refused(what + ": " + std::generic_category().message(cause), "choose another path");
  }
  static int make() { return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0); }
  static bool is_same(const struct stat& a, const struct stat& b) {
    return a.st_dev == b.st_dev && a.st_ino == b.st_ino;
  }
  static bool remove_if(const std::string& path, const struct stat& file) {
    struct stat now = {};
    return lstat(path.c_str(), &now) == 0 && is_same(now, file) && unlink(path.c_str()) == 0;
  }

  Result<Done> clear_way(const std::string& path) const;
  bool bind_at(const std::string& path, mode_t mode);
  const sockaddr* name() const { return reinterpret_cast<const sockaddr*>(&address_); }

  sockaddr_un address_ = {};
  struct stat file_ = {};
  bool bound_ = false;
  pid_t process_ = 0; /* only here the file is removed: a child that was forked has it, too */
  int descriptor_ = -1;
};

inline Result<Done> ListeningSocket::open(const std::string& path, mode_t mode) {
  if (path.empty() || path.size() >= sizeof address_.sun_path || path.find('\0') != path.npos) {
    return refused(
        "a socket path of " + std::to_string(path.size()) + " characters",
        "it has 1 to " + std::to_string(sizeof address_.sun_path - 1) + ", none of them NUL");
  }
  address_ = {};
  address_.sun_family = AF_UNIX;
  path.copy(address_.sun_path, path.size());
  if (const Result<Done> clear = clear_way(path); !clear) return clear;
  descriptor_ = make();
  if (descriptor_ == -1) return failed("no socket", errno);
  if (bind_at(path, mode)) return Done{};
  const int cause = errno;
  close(true);
  if (cause == EADDRINUSE) return occupied(path);
  return failed("cannot listen on " + path, cause);
}

/* A file is in the way unless it is a socket that refuses connections: its owner was killed. */
inline Result<Done> ListeningSocket::clear_way(const std::string& path) const {
  struct stat file = {};
  if (lstat(path.c_str(), &file) != 0) return Done{};
  if (!S_ISSOCK(file.st_mode))
    return refused(path + " is there and is no socket", "choose another path");
  const int probe = make();
  if (probe == -1) return failed("no socket", errno);
  const int result = connect(probe, name(), sizeof address_);
  const int cause = errno;
  ::close(probe);
  if (result == 0 || cause == EAGAIN) return occupied(path); /* a full backlog is somebody's, too */
  if (cause == ENOENT) return Done{};
  if (cause != ECONNREFUSED) return failed(path, cause);
  if (!remove_if(path, file)) return failed("stale " + path + " cannot be removed", errno);
  return Done{};
}

/* False with errno set. Nobody can connect before listen(). The mode is first the socket's own,
 * which bind() gives the file as far as the umask lets it: chmod() alone would follow a symbolic
 * link, were one put in the file's place. */
inline bool ListeningSocket::bind_at(const std::string& path, mode_t mode) {
  fchmod(descriptor_, mode);
  if (bind(descriptor_, name(), sizeof address_) != 0) return false;
  process_ = getpid();
  bound_ = lstat(path.c_str(), &file_) == 0 && S_ISSOCK(file_.st_mode);
  if (!bound_) return false;
  if ((file_.st_mode & 07777) != mode && chmod(path.c_str(), mode) != 0) return false;
  constexpr int kBacklog = 500;
  return listen(descriptor_, kBacklog) == 0;
}

inline void ListeningSocket::close(bool remove) {
  if (remove && bound_ && process_ == getpid()) remove_if(address_.sun_path, file_);
  bound_ = false;
  if (descriptor_ != -1) ::close(std::exchange(descriptor_, -1));
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_LISTENING_SOCKET_HPP */
