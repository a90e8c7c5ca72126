/*
 * delivery.hpp - one request frame to the AT server and the answer frame back, with the knowledge
 * whether the request went out: a command that did may have been carried out, answered or not.
 *
 * ClientSendCmd does not tell that, waits five minutes for a server, and fails when a signal
 * interrupts it.
 */
#ifndef QALT_AT_DETAIL_DELIVERY_HPP
#define QALT_AT_DETAIL_DELIVERY_HPP

#include <errno.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>

#include "qalt_at/link.h"

namespace qalt {
namespace detail {

enum class Delivery {
  kNotSent,  /* no server, or not the whole request: errno has the cause */
  kLost,     /* the request went out; the server ended the connection before it answered */
  kAnswered, /* an answer, or a part of one */
};

/* In errno where another user listens, so that nothing was sent; no call here gives it. */
constexpr int kStrangersServer = EREMOTE;

/* Whether root listens at the other end, this process's user, or the one whose number stands in
   QALT_AT_SERVER_USER: anybody may create the path in /tmp, and would be told PINs and contacts. */
inline bool is_trusted(int descriptor) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
  if (peer.uid == 0 || peer.uid == geteuid()) return true;
  const char* const named = std::getenv("QALT_AT_SERVER_USER");
  if (named == nullptr || getuid() != geteuid()) return false;
  return named == std::to_string(peer.uid);
}

/* Repeats a system call that a signal interrupted: an answer may still come. */
template <typename Call>
ssize_t uninterrupted(Call call) {
  ssize_t result = call();
  while (result == -1 && errno == EINTR) result = call();
  return result;
}

inline bool connect_to_server(int descriptor) {
  sockaddr_un address = {};
  address.sun_family = AF_UNIX;
  constexpr std::string_view kPath = QALT_AT_SERVER_PATH;
  std::copy(kPath.begin(), kPath.end(), address.sun_path);
  const auto* const name = reinterpret_cast<const sockaddr*>(&address);
  return uninterrupted([&] { return connect(descriptor, name, sizeof address); }) == 0;
}

inline Delivery deliver_over(int descriptor, AtMsg& frame) {
  if (!connect_to_server(descriptor)) return Delivery::kNotSent;
  if (!is_trusted(descriptor)) {
    errno = kStrangersServer;
    return Delivery::kNotSent;
  }
  char* const bytes = reinterpret_cast<char*>(&frame);
  for (size_t sent = 0; sent < sizeof frame;) {
    const ssize_t count = uninterrupted(
        [&] { return send(descriptor, bytes + sent, sizeof frame - sent, MSG_NOSIGNAL); });
    if (count <= 0) return Delivery::kNotSent; /* a server acts on whole requests only */
    sent += static_cast<size_t>(count);
  }
  size_t received = 0;
  while (received < sizeof frame) {
    const ssize_t count = uninterrupted(
        [&] { return recv(descriptor, bytes + received, sizeof frame - received, MSG_WAITALL); });
    /* The server was gone before it had read the whole request: a part of it stayed unread. */
    if (count == -1 && errno == ECONNRESET && received == 0) return Delivery::kNotSent;
    if (count <= 0) break;
    received += static_cast<size_t>(count);
  }
  if (received == 0) return Delivery::kLost;
  std::memset(bytes + received, 0, sizeof frame - received);
  frame.aucDataBuf[sizeof frame.aucDataBuf - 1] = '\0';
  return Delivery::kAnswered;
}

/* Sends `line` and puts the raw answer into `frame`. */
inline Delivery deliver(const std::string& line, uint32_t timeout_ms, AtMsg& frame) {
  frame = {};
  errno = EMSGSIZE;
  if (line.size() >= sizeof frame.aucDataBuf) return Delivery::kNotSent;
  frame.usParaLen = static_cast<uint16_t>(line.size());
  frame.ulTimeout = timeout_ms;
  line.copy(frame.aucDataBuf, line.size());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (descriptor == -1) return Delivery::kNotSent;
  const Delivery delivery = deliver_over(descriptor, frame);
  const int cause = errno;
  close(descriptor);
  errno = cause;
  return delivery;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_DELIVERY_HPP */
