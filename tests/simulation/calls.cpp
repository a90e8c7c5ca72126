// The system calls that the clients make: those of a simulated client lead into the network and the
// time of its world, all others are the real ones.
#include <errno.h>
#include <fcntl.h>
#include <poll.h>
#include <stdarg.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/time.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include <cstring>

#include "tests/simulation/network.h"

using qalt::simulation::Network;
using qalt::simulation::Time;
using qalt::simulation::World;

namespace {

bool simulated() {
  return World::current() != nullptr;
}

bool simulated(int descriptor) {
  return simulated() && Network::g_network->owns(descriptor);
}

Network& network() {
  return *Network::g_network;
}

}  // namespace

extern "C" {

int socket(int domain, int type, int protocol) noexcept {
  if (simulated()) return network().open();
  return int(syscall(SYS_socket, domain, type, protocol));
}
int connect(int descriptor, const sockaddr* address, socklen_t size) {
  if (simulated(descriptor)) return network().connect(descriptor, address, size);
  return int(syscall(SYS_connect, descriptor, address, size));
}
int getsockopt(int descriptor, int level, int name, void* value, socklen_t* size) noexcept {
  if (simulated(descriptor)) {
    std::memset(value, 0, *size);  // root listens
    return 0;
  }
  return int(syscall(SYS_getsockopt, descriptor, level, name, value, size));
}
int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept {
  if (simulated(descriptor)) return network().bind(descriptor, address, size);
  return int(syscall(SYS_bind, descriptor, address, size));
}
int listen(int descriptor, int backlog) noexcept {
  if (simulated(descriptor)) return network().listen(descriptor);
  return int(syscall(SYS_listen, descriptor, backlog));
}
ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  if (simulated(descriptor)) return network().send(descriptor, bytes, size);
  return syscall(SYS_sendto, descriptor, bytes, size, flags, nullptr, 0);
}
ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  if (simulated(descriptor)) {
    return network().receive(descriptor, bytes, size, (flags & MSG_WAITALL) != 0);
  }
  return syscall(SYS_recvfrom, descriptor, bytes, size, flags, nullptr, nullptr);
}
int poll(pollfd* events, nfds_t count, int timeout) {
  if (simulated()) return network().poll(events, count, timeout);
  const timespec limit = {timeout / 1000, timeout % 1000 * 1000000L};
  return int(syscall(SYS_ppoll, events, count, timeout < 0 ? nullptr : &limit, nullptr, 0));
}
int __poll_chk(pollfd* events, nfds_t count, int timeout, size_t) {
  return poll(events, count, timeout);
}
int close(int descriptor) {
  if (simulated(descriptor)) return network().close(descriptor);
  return int(syscall(SYS_close, descriptor));
}
unsigned sleep(unsigned seconds) {
  if (simulated()) {
    network().pass(std::chrono::seconds(seconds));
    return 0;
  }
  timespec rest = {time_t(seconds), 0};
  while (syscall(SYS_nanosleep, &rest, &rest) != 0 && errno == EINTR) continue;
  return 0;
}
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (!simulated()) return int(syscall(SYS_clock_gettime, clock, time));
  const Time now = network().now();
  *time = {time_t(now.count() / 1000), long(now.count() % 1000 * 1000000)};
  return 0;
}
void syslog(int, const char*, ...) {}
void __syslog_chk(int, int, const char*, ...) {}

}  // extern "C"
