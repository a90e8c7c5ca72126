#include "tests/simulation/network.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>
#include <map>
#include <utility>
#include <vector>

#include "server/frame.h"

namespace qalt::simulation {
namespace {

constexpr int kFirstDescriptor = 1 << 20;

struct Socket {
  int client = -1;
  uint64_t connection = 0;  // to the AT server; 0 after its end
  std::string sent;         // of a request frame
  std::string inbox;
  bool ended = false;  // the other side has closed
  std::string name;    // bound to
  bool listening = false;
  int turn = -1;  // the listening socket in whose queue this one stands
};

World* g_world;
Service* g_service;
std::map<int, Socket> g_sockets;
std::map<std::string, int> g_names;
std::vector<World::Task*> g_waiting;  // in recv and poll
int g_last_descriptor = kFirstDescriptor - 1;
uint64_t g_last_connection = 0;

int failed(int error) {
  errno = error;
  return -1;
}

std::string name_of(const sockaddr* address, socklen_t size) {
  const auto* const name = reinterpret_cast<const sockaddr_un*>(address);
  if (name->sun_path[0] != '\0') return name->sun_path;
  return {name->sun_path, size_t(size) - offsetof(sockaddr_un, sun_path)};
}

void wake_waiting() {
  for (World::Task* task : std::exchange(g_waiting, {})) g_world->wake(task);
}

void wait_for_change(Time limit) {
  g_waiting.push_back(World::current());
  g_world->wait(limit);
  std::erase(g_waiting, World::current());
}

bool readable(int descriptor) {
  const auto found = g_sockets.find(descriptor);
  if (found == g_sockets.end()) return false;
  return found->second.ended ||
         std::any_of(g_sockets.begin(), g_sockets.end(),
                     [&](const auto& other) { return other.second.turn == descriptor; });
}

}  // namespace

void network::begin(World& world) {
  g_world = &world;
}

void network::serve(Service* service) {
  g_service = service;
  if (service != nullptr) return;
  for (auto& [descriptor, socket] : g_sockets) {
    socket.ended |= std::exchange(socket.connection, 0) != 0;
  }
  wake_waiting();
}

void network::answer(uint64_t connection, std::string_view text) {
  for (auto& [descriptor, socket] : g_sockets) {
    if (socket.connection != connection) continue;
    AtMsg frame;
    server::fill_frame(frame, text);
    socket.inbox.assign(reinterpret_cast<const char*>(&frame), sizeof frame);
    socket.connection = 0;
    socket.ended = true;
    return wake_waiting();
  }
}

}  // namespace qalt::simulation

using namespace qalt::simulation;

// Those that the program itself makes, too, are told from the clients' by descriptor and task.
extern "C" {

int socket(int, int, int) noexcept {
  g_sockets[++g_last_descriptor].client = World::current()->number;
  return g_last_descriptor;
}

int connect(int descriptor, const sockaddr* address, socklen_t size) {
  Socket& self = g_sockets.at(descriptor);
  const std::string name = name_of(address, size);
  if (name == QALT_AT_SERVER_PATH) {
    if (g_service == nullptr) return failed(ECONNREFUSED);
    self.connection = ++g_last_connection;
    return 0;
  }
  const auto found = g_names.find(name);
  if (found == g_names.end() || !g_sockets.at(found->second).listening) return failed(ECONNREFUSED);
  self.turn = found->second;
  return 0;
}

int getsockopt(int, int, int, void* value, socklen_t* size) noexcept {
  std::memset(value, 0, *size);  // root listens
  return 0;
}

int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept {
  const std::string name = name_of(address, size);
  if (!g_names.emplace(name, descriptor).second) return failed(EADDRINUSE);
  g_sockets.at(descriptor).name = name;
  return 0;
}

int listen(int descriptor, int) noexcept {
  g_sockets.at(descriptor).listening = true;
  return 0;
}

ssize_t send(int descriptor, const void* bytes, size_t size, int) {
  Socket& self = g_sockets.at(descriptor);
  if (self.connection == 0) return failed(EPIPE);
  self.sent.append(static_cast<const char*>(bytes), size);
  if (self.sent.size() >= sizeof(AtMsg)) {
    AtMsg frame;
    std::memcpy(static_cast<void*>(&frame), self.sent.data(), sizeof frame);
    g_service->requested(self.connection, self.client, frame);
  }
  return ssize_t(size);
}

// An answer comes whole, with the end of the connection.
ssize_t recv(int descriptor, void* bytes, size_t size, int) {
  Socket& self = g_sockets.at(descriptor);
  while (!self.ended) wait_for_change(Time::max());
  const size_t taken = self.inbox.copy(static_cast<char*>(bytes), size);
  self.inbox.erase(0, taken);
  return ssize_t(taken);
}

// Descriptors of the real machine are passed over: no user interrupts here.
int poll(pollfd* events, nfds_t count, int timeout) {
  const Time end = timeout < 0 ? Time::max() : g_world->now() + Time(timeout);
  for (;;) {
    int ready = 0;
    for (nfds_t k = 0; k < count; ++k) {
      events[k].revents = readable(events[k].fd) ? POLLIN : short(0);
      ready += events[k].revents != 0;
    }
    if (ready != 0 || g_world->now() >= end) return ready;
    wait_for_change(timeout < 0 ? Time::max() : end - g_world->now());
  }
}
int __poll_chk(pollfd* events, nfds_t count, int timeout, size_t) {
  return poll(events, count, timeout);
}

int close(int descriptor) {
  if (descriptor < kFirstDescriptor) return int(syscall(SYS_close, descriptor));
  const Socket self = std::move(g_sockets.extract(descriptor).mapped());
  g_names.erase(self.name);
  for (auto& [other, waiter] : g_sockets) waiter.ended |= waiter.turn == descriptor;
  if (self.connection != 0) g_service->left(self.connection);
  wake_waiting();
  return 0;
}

unsigned sleep(unsigned seconds) {
  g_world->wait(std::chrono::seconds(seconds));
  return 0;
}

int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (World::current() == nullptr) return int(syscall(SYS_clock_gettime, clock, time));
  const Time now = g_world->now();
  *time = {time_t(now.count() / 1000), long(now.count() % 1000 * 1000000)};
  return 0;
}

void syslog(int, const char*, ...) {}
void __syslog_chk(int, int, const char*, ...) {}

}  // extern "C"
