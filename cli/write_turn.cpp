#include "cli/write_turn.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <cerrno>
#include <cstddef>
#include <string>

#include "cli/interrupts.h"
#include "qalt_at/link.h"

namespace qalt::cli {
namespace {

constexpr int kWaiters = 64;
constexpr int kStepMs = 5;

// Whoever holds a turn for that long may hold it for good: there is no second waiting.
int g_patience_ms = 30000;

struct Address {
  sockaddr_un name = {};
  socklen_t size = 0;
};

Address address_of_turn() {
  struct stat server = {};
  stat(QALT_AT_SERVER_PATH, &server);
  const std::string text =
      "qalt-pb " + std::to_string(server.st_dev) + " " + std::to_string(server.st_ino);
  Address address;
  address.name.sun_family = AF_UNIX;
  text.copy(address.name.sun_path + 1, text.size());  // the NUL in front makes it abstract
  address.size = socklen_t(offsetof(sockaddr_un, sun_path) + 1 + text.size());
  return address;
}

int open_socket() {
  return socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
}

// Waits until the holder of the turn closes it; false after too long, or when the user interrupts.
bool wait_for_end(const sockaddr* name, socklen_t size) {
  const int waiting = open_socket();
  const bool queued = connect(waiting, name, size) == 0;
  pollfd events[] = {{interrupt_descriptor(), POLLIN, 0}, {waiting, POLLIN, 0}};
  // Where the queue is full, or the turn has ended, the next try tells more.
  const int told = poll(events, queued ? 2 : 1, queued ? g_patience_ms : kStepMs);
  close(waiting);
  if (queued && told == 0) g_patience_ms = 0;
  return events[0].revents == 0 && (told != 0 || !queued);
}

}  // namespace

WriteTurn::WriteTurn() : socket_(open_socket()) {
  const Address address = address_of_turn();
  const auto* const name = reinterpret_cast<const sockaddr*>(&address.name);
  while (bind(socket_, name, address.size) != 0) {
    if (errno != EADDRINUSE || !wait_for_end(name, address.size)) return;
  }
  listen(socket_, kWaiters);
}

WriteTurn::~WriteTurn() {
  pollfd waiters = {socket_, POLLIN, 0};
  const bool waited_for = poll(&waiters, 1, 0) == 1 && (waiters.revents & POLLIN) != 0;
  close(socket_);
  if (waited_for) poll(nullptr, 0, kStepMs);  // they come first, before a turn of ours
}

}  // namespace qalt::cli
