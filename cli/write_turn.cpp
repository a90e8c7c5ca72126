#include "cli/write_turn.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <string>

#include "cli/interrupts.h"
#include "qalt_at/link.h"

namespace qalt::cli {
namespace {

using Clock = std::chrono::steady_clock;

constexpr int kWaiters = 64;
constexpr int kStepMs = 5;
constexpr int kMostHolders = 10;

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

int ms_until(Clock::time_point end) {
  const auto left = std::chrono::ceil<std::chrono::milliseconds>(end - Clock::now());
  return int(std::max<Clock::rep>(left.count(), 0));
}

enum class Waited { kEnded, kInVain, kInterrupted };

// Waits until the holder of the turn closes it. One who takes no connection, or closes each at
// once, has the next try a step later, not at once.
Waited wait_for_end(const sockaddr* name, socklen_t size, Clock::time_point end) {
  const auto next_try = Clock::now() + std::chrono::milliseconds(kStepMs);
  pollfd events[] = {{interrupt_descriptor(), POLLIN, 0}, {open_socket(), POLLIN, 0}};
  const bool queued = connect(events[1].fd, name, size) == 0;
  if (queued) poll(events, 2, ms_until(end));
  close(events[1].fd);
  if (poll(events, 1, ms_until(std::min(next_try, end))) != 0) return Waited::kInterrupted;
  return queued && ms_until(end) != 0 ? Waited::kEnded : Waited::kInVain;
}

}  // namespace

WriteTurn::WriteTurn() : socket_(open_socket()) {
  const Address address = address_of_turn();
  const auto* const name = reinterpret_cast<const sockaddr*>(&address.name);
  const auto patience = std::chrono::milliseconds(patience_ms);
  const auto last = Clock::now() + kMostHolders * patience;
  auto end = Clock::now() + patience;
  while (bind(socket_, name, address.size) != 0) {
    if (errno != EADDRINUSE) return;
    if (ms_until(end) == 0) patience_ms = 0;
    if (patience_ms == 0) return;
    const Waited waited = wait_for_end(name, address.size, end);
    if (waited == Waited::kInterrupted) return;
    // Another may be faster, and is waited for anew.
    if (waited == Waited::kEnded) end = std::min(Clock::now() + patience, last);
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
