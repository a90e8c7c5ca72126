// peer.h - the process at the other end of a connection, told from every other one.
#ifndef QALT_SERVER_PEER_H_
#define QALT_SERVER_PEER_H_

#include <sys/socket.h>
#include <sys/types.h>

#include <compare>
#include <cstdint>

namespace qalt::server {

// A client process. Its start time tells it from a later one with the same number. One outside the
// server's process namespace has the number 0, and an identity where the kernel gives one.
struct Peer {
  int64_t process = 0;
  uint64_t started = 0;
  uint64_t identity = 0;
  // Whether it can be told from others.
  bool known() const { return process > 0 || identity != 0; }
  auto operator<=>(const Peer&) const = default;
};

// When a process started, in clock ticks: field 22 of its stat file; 0 if that cannot be read.
uint64_t start_time(pid_t process);
// The process at the other end of a Unix-domain connection, with these credentials.
Peer peer_of(int descriptor, const ucred& credentials);
// The server itself, with both kinds of a beginning.
Peer this_process();
// Whether the server is no older than the client, as far as can be told.
bool began_before(const Peer& peer, const Peer& self);
// Whether it has not ended, as far as can be told.
bool still_runs(const Peer& peer);

}  // namespace qalt::server

#endif  // QALT_SERVER_PEER_H_
