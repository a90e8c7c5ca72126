// socket_place.h - a path at which one process at a time listens: taken only when nobody lives
// there, given back at the end, and nobody else's ever removed.
//
// A lock on a file beside it ("PATH.lock") keeps others out who go by it, from before the first
// look to after the last removal; the kernel gives it back when its holder is killed. Programs that
// know nothing of it are found by a connection.
#ifndef QALT_SOCKETS_SOCKET_PLACE_H_
#define QALT_SOCKETS_SOCKET_PLACE_H_

#include <sys/stat.h>
#include <sys/un.h>

#include <string>

namespace qalt {

class SocketPlace {
 public:
  // Takes the place. A stale file is removed: a socket that refuses a connection. Throws
  // std::runtime_error with a message that says what is wrong and names `option`, with which
  // another path is chosen: a path over 107 characters, somebody who listens there, a file that is
  // no socket, a directory or a lock file that may not be used.
  SocketPlace(std::string path, std::string option);
  // Removes the socket file if it is still the one of occupied().
  ~SocketPlace();
  SocketPlace(const SocketPlace&) = delete;
  SocketPlace& operator=(const SocketPlace&) = delete;

  // This process has bound a socket at the path.
  void occupied();

  const std::string& path() const { return path_; }
  sockaddr_un address() const;
  // A stale file was removed: whoever lived here before was killed.
  bool took_over() const { return took_over_; }

 private:
  void lock();
  bool try_lock();
  void release();
  void clear_way();
  [[noreturn]] void fail(const std::string& what, const std::string& advice = "") const;

  std::string path_;
  std::string lock_path_;
  std::string option_;
  int lock_ = -1;
  bool took_over_ = false;
  bool occupied_ = false;
  struct stat file_ {};
};

}  // namespace qalt

#endif  // QALT_SOCKETS_SOCKET_PLACE_H_
