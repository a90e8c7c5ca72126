#include "tests/faults/system_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <pthread.h>

#include <algorithm>
#include <array>
#include <atomic>

#include "tests/link/private_server.h"

namespace test {
namespace {

// Set while no other thread of the test is in the link.
Plan g_plan{Call::kSocket, 0, 0};
size_t g_piece = 1 << 20;
std::array<std::atomic<int>, kCalls> g_uses{};
std::atomic<int> g_listening = -1;
std::string g_server;

// Whether this use of the call is to fail; errno is set then.
bool fails(Call call) {
  const int use = g_uses[static_cast<size_t>(call)]++;
  if (g_plan.call != call) return false;
  const bool then = g_plan.then_error != 0 && use == g_plan.then_skip;
  if (!then && (use < g_plan.skip || use - g_plan.skip >= g_plan.times)) return false;
  errno = then ? g_plan.then_error : g_plan.error;
  return true;
}

// Of a receive that waits for all, a piece: as when a signal comes in between.
size_t piece_of(size_t size) {
  return std::min(size, g_piece);
}

}  // namespace

void set_plan(const Plan& plan, size_t piece) {
  g_plan = plan;
  g_piece = piece;
  for (auto& count : g_uses) count = 0;
}

void no_faults() {
  set_plan({Call::kSocket, 0, 0});
}

int uses(Call call) {
  return g_uses[static_cast<size_t>(call)];
}

void redirect_server(const std::string& path) {
  g_server = path;
}

int listening_descriptor() {
  return g_listening;
}

}  // namespace test

using test::Call;
using test::fails;

extern "C" {

int socket(int domain, int type, int protocol) {
  return fails(Call::kSocket) ? -1 : static_cast<int>(syscall(SYS_socket, domain, type, protocol));
}

int connect(int descriptor, const sockaddr*, socklen_t) {
  if (fails(Call::kConnect)) return -1;
  return test::really_connect(descriptor, test::address_of(test::g_server));
}

ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  if (fails(Call::kSend)) return -1;
  return syscall(SYS_sendto, descriptor, bytes, test::piece_of(size), flags, nullptr, 0);
}

ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  if (fails(Call::kRecv)) return -1;
  return syscall(SYS_recvfrom, descriptor, bytes, test::piece_of(size), flags, nullptr, nullptr);
}

int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
  if (fails(Call::kBind)) return -1;
  return static_cast<int>(syscall(SYS_bind, descriptor, address, length));
}

int listen(int descriptor, int backlog) noexcept {
  if (fails(Call::kListen)) return -1;
  test::g_listening = descriptor;
  return static_cast<int>(syscall(SYS_listen, descriptor, backlog));
}

int accept(int descriptor, sockaddr*, socklen_t*) {
  if (fails(Call::kAccept)) return -1;
  return static_cast<int>(syscall(SYS_accept4, descriptor, nullptr, nullptr, 0));
}

// A close that reports an error has closed all the same, as on Linux.
int close(int descriptor) {
  const long result = syscall(SYS_close, descriptor);
  return fails(Call::kClose) ? -1 : static_cast<int>(result);
}

int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
  using Create = int (*)(pthread_t*, const pthread_attr_t*, void* (*)(void*), void*);
  if (fails(Call::kThread)) return test::g_plan.error;
  static const auto kReal = reinterpret_cast<Create>(dlsym(RTLD_NEXT, "pthread_create"));
  return kReal(thread, attributes, body, argument);
}

}  // extern "C"
