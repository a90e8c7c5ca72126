#include "link/frame_io.h"

#include <sys/socket.h>

#include <cstddef>
#include <cstring>

namespace qalt {

bool send_frame(int connection, const AtMsg& frame) {
  const char* bytes = reinterpret_cast<const char*>(&frame);
  size_t sent = 0;
  while (sent < sizeof frame) {
    const ssize_t count = send(connection, bytes + sent, sizeof frame - sent, MSG_NOSIGNAL);
    if (count <= 0) return false;
    sent += static_cast<size_t>(count);
  }
  return true;
}

bool receive_frame(int connection, AtMsg* frame) {
  char* bytes = reinterpret_cast<char*>(frame);
  size_t received = 0;
  // A signal makes even a waiting receive return early with what it has so far.
  while (received < sizeof *frame) {
    const ssize_t count = recv(connection, bytes + received, sizeof *frame - received, MSG_WAITALL);
    if (count == -1) return false;
    if (count == 0) break;
    received += static_cast<size_t>(count);
  }
  std::memset(bytes + received, 0, sizeof *frame - received);
  return true;
}

}  // namespace qalt
