// The system calls that the clients make lead into the network and the time of their world. Those
// that the program itself makes, too, are told from them by the task or the descriptor.
#include <sys/syscall.h>
#include <syslog.h>
#include <time.h>
#include <unistd.h>

#include "tests/simulation/network.h"

using qalt::simulation::Network;
using qalt::simulation::Time;
using qalt::simulation::World;

extern "C" {

int socket(int, int, int) noexcept {
  return Network::g_network->open();
}
int connect(int descriptor, const sockaddr* address, socklen_t size) {
  return Network::g_network->connect(descriptor, address, size);
}
int bind(int descriptor, const sockaddr* address, socklen_t size) noexcept {
  return Network::g_network->bind(descriptor, address, size);
}
int listen(int descriptor, int) noexcept {
  return Network::g_network->listen(descriptor);
}
ssize_t send(int descriptor, const void* bytes, size_t size, int) {
  return Network::g_network->send(descriptor, bytes, size);
}
ssize_t recv(int descriptor, void* bytes, size_t size, int) {
  return Network::g_network->receive(descriptor, bytes, size);
}
int poll(pollfd* events, nfds_t count, int timeout) {
  return Network::g_network->poll(events, count, timeout);
}
int __poll_chk(pollfd* events, nfds_t count, int timeout, size_t) {
  return poll(events, count, timeout);
}
int close(int descriptor) {
  if (Network::owns(descriptor)) return Network::g_network->close(descriptor);
  return int(syscall(SYS_close, descriptor));
}
unsigned sleep(unsigned seconds) {
  Network::g_network->world().wait(std::chrono::seconds(seconds));
  return 0;
}
int clock_gettime(clockid_t clock, timespec* time) noexcept {
  if (World::current() == nullptr) return int(syscall(SYS_clock_gettime, clock, time));
  const Time now = Network::g_network->world().now();
  *time = {time_t(now.count() / 1000), long(now.count() % 1000 * 1000000)};
  return 0;
}
void syslog(int, const char*, ...) {}
void __syslog_chk(int, int, const char*, ...) {}

}  // extern "C"
