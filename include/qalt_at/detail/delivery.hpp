/*
 * delivery.hpp - one request frame to the AT server and the answer frame back, with the knowledge
 * whether the request went out: a command that did may have been carried out, answered or not.
 *
 * ClientSendCmd does not tell that, waits five minutes for a server and without end for its answer,
 * and fails when a signal interrupts it.
 */
#ifndef QALT_AT_DETAIL_DELIVERY_HPP
#define QALT_AT_DETAIL_DELIVERY_HPP

#include <errno.h>
#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <functional>
#include <string>
#include <string_view>

#include "qalt_at/link.h"

namespace qalt {
namespace detail {

enum class Delivery {
  kNotSent,  /* no server, or not the whole request: errno has the cause */
  kLost,     /* the request went out and was not answered: errno is 0 when the server ended the
                connection, ETIMEDOUT at the end of the time, ECANCELED when the client stopped */
  kAnswered, /* an answer, or a part of one */
};

/* In errno where another user listens, so that nothing was sent; no call here gives it. */
constexpr int kStrangersServer = EREMOTE;

/* What a client may do while an answer is awaited: ask for an early end; none: nothing. */
using Stop = std::function<bool()>;

/* On what terms a client deals with a server. */
struct Terms {
  Stop stop;
  uid_t server_user = 0; /* who may listen, beside root and the client's own user */
};

/* Whether one of these listens at the other end: anybody may create the path in /tmp, and would be
 * told PINs and contacts. */
inline bool is_trusted(int descriptor, uid_t server_user) {
  ucred peer = {};
  socklen_t size = sizeof peer;
  if (getsockopt(descriptor, SOL_SOCKET, SO_PEERCRED, &peer, &size) != 0) return false;
  return peer.uid == 0 || peer.uid == geteuid() || peer.uid == server_user;
}

/* The server answers within the command's time-out and this, once it is the command's turn... */
constexpr int64_t kServerBoundMs = 300000;
/* ...and other clients' commands are waited for as long as this. */
constexpr int64_t kTurnBoundMs = 120000;

inline int64_t now_ms() {
  timespec now = {};
  clock_gettime(CLOCK_MONOTONIC, &now);
  return int64_t{now.tv_sec} * 1000 + now.tv_nsec / 1000000;
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

/* Waits for bytes, or for the end of the connection. False with errno set: see kLost. */
inline bool await_answer(int descriptor, int64_t end, const Stop& stop) {
  constexpr int64_t kSliceMs = 500; /* so soon a client's wish to stop is heard */
  for (;;) {
    const int64_t left = end - now_ms();
    errno = left <= 0 ? ETIMEDOUT : ECANCELED;
    if (left <= 0 || (stop && stop())) return false;
    pollfd wait = {descriptor, POLLIN, 0};
    const auto slice = static_cast<int>(std::min(left, stop ? kSliceMs : left));
    if (poll(&wait, 1, slice) > 0) return true;
  }
}

/* Receives a frame, or the part of it that comes before the server ends the connection. */
inline Delivery receive(int descriptor, AtMsg& frame, int64_t end, const Stop& stop) {
  char* const bytes = reinterpret_cast<char*>(&frame);
  size_t received = 0;
  while (received < sizeof frame) {
    if (!await_answer(descriptor, end, stop)) return Delivery::kLost;
    const ssize_t count = uninterrupted(
        [&] { return recv(descriptor, bytes + received, sizeof frame - received, 0); });
    if (count == -1 && errno == EAGAIN) continue;
    /* The server was gone before it had read the whole request: a part of it stayed unread. */
    if (count == -1 && errno == ECONNRESET && received == 0) return Delivery::kNotSent;
    if (count <= 0) break;
    received += static_cast<size_t>(count);
  }
  errno = 0;
  if (received == 0) return Delivery::kLost;
  std::memset(bytes + received, 0, sizeof frame - received);
  frame.aucDataBuf[sizeof frame.aucDataBuf - 1] = '\0';
  return Delivery::kAnswered;
}

/* The descriptor does not block: a server that is stopped takes connections up to its backlog. */
inline Delivery deliver_over(int descriptor, AtMsg& frame, const Terms& terms) {
  if (!connect_to_server(descriptor)) return Delivery::kNotSent;
  if (!is_trusted(descriptor, terms.server_user)) {
    errno = kStrangersServer;
    return Delivery::kNotSent;
  }
  const char* const bytes = reinterpret_cast<const char*>(&frame);
  for (size_t sent = 0; sent < sizeof frame;) {
    const ssize_t count = uninterrupted(
        [&] { return send(descriptor, bytes + sent, sizeof frame - sent, MSG_NOSIGNAL); });
    if (count <= 0) return Delivery::kNotSent; /* a server acts on whole requests only */
    sent += static_cast<size_t>(count);
  }
  const int64_t end = now_ms() + frame.ulTimeout + kServerBoundMs + kTurnBoundMs;
  return receive(descriptor, frame, end, terms.stop);
}

/* Sends `line` and puts the raw answer into `frame`. */
inline Delivery deliver(const std::string& line, uint32_t timeout_ms, AtMsg& frame,
                        const Terms& terms = {}) {
  frame = {};
  errno = EMSGSIZE;
  if (line.size() >= sizeof frame.aucDataBuf) return Delivery::kNotSent;
  frame.usParaLen = static_cast<uint16_t>(line.size());
  frame.ulTimeout = timeout_ms;
  line.copy(frame.aucDataBuf, line.size());
  const int descriptor = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
  if (descriptor == -1) return Delivery::kNotSent;
  const Delivery delivery = deliver_over(descriptor, frame, terms);
  const int cause = errno;
  close(descriptor);
  errno = cause;
  return delivery;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_DELIVERY_HPP */
