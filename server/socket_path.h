// socket_path.h - the server's place in the file system: taken only when nobody lives there, given
// back at the end.
#ifndef QALT_SERVER_SOCKET_PATH_H_
#define QALT_SERVER_SOCKET_PATH_H_

#include <sys/stat.h>

#include <string>

namespace qalt::server {

// A listening Unix-domain stream socket at a path, and the file of it.
class SocketPath {
 public:
  struct Access {
    unsigned mode = 0660;
    std::string group;  // name or number; empty: the process's own
  };

  // Removes a stale socket file: one that refuses a connection. Throws std::runtime_error with a
  // message that says what to do: a live server, a file that is no socket, a path over 107
  // characters, a directory that cannot be written.
  SocketPath(std::string path, const Access& access);
  // Removes the file if it is still this socket's. The descriptor belongs to whoever took it.
  ~SocketPath();
  SocketPath(const SocketPath&) = delete;
  SocketPath& operator=(const SocketPath&) = delete;

  // The listening descriptor, non-blocking; closing it is the caller's.
  int descriptor() const { return descriptor_; }
  const std::string& path() const { return path_; }
  // A stale file was removed: a server before this one was killed.
  bool took_over() const { return took_over_; }

 private:
  void clear_way();
  void listen(const Access& access);

  std::string path_;
  int descriptor_ = -1;
  bool took_over_ = false;
  struct stat file_ {};
};

}  // namespace qalt::server

#endif  // QALT_SERVER_SOCKET_PATH_H_
