// socket_path.h - where the server listens.
#ifndef QALT_SERVER_SOCKET_PATH_H_
#define QALT_SERVER_SOCKET_PATH_H_

#include <string>

#include "sockets/socket_place.h"

namespace qalt::server {

// A listening Unix-domain stream socket at a place of its own.
class SocketPath {
 public:
  struct Access {
    unsigned mode = 0660;
    std::string group;  // name or number; empty: the process's own
  };

  // Throws std::runtime_error with a message that says what to do.
  SocketPath(std::string path, const Access& access);

  // The listening descriptor, non-blocking; closing it is the caller's.
  int descriptor() const { return descriptor_; }
  const std::string& path() const { return place_.path(); }
  // A server before this one was killed.
  bool took_over() const { return place_.took_over(); }

 private:
  void listen(const Access& access);

  SocketPlace place_;
  int descriptor_ = -1;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_SOCKET_PATH_H_
