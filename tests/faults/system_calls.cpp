#include "tests/faults/system_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>
#include <atomic>

#include "tests/support/private_server.h"

namespace test {
namespace {

// Set while no other thread of the test is in the link.
Plan g_plan;
size_t g_piece = 1 << 20;
std::atomic<int> g_uses[9];

// Whether this use of the call is to fail; errno is set then.
bool fails(Call call) {
  const int use = g_uses[static_cast<size_t>(call)]++;
  if (g_plan.call != call) return false;
  const bool then = g_plan.then_error != 0 && use == g_plan.then_skip;
  if (!then && (use < g_plan.skip || use - g_plan.skip >= g_plan.times)) return false;
  errno = then ? g_plan.then_error : g_plan.error;
  return true;
}

// The call, unless it fails.
template <typename... Arguments>
long done(Call call, long number, Arguments... arguments) {
  return fails(call) ? -1 : syscall(number, arguments...);
}

}  // namespace

void set_plan(const Plan& plan, size_t piece) {
  g_plan = plan;
  g_piece = piece;
  for (auto& count : g_uses) count = 0;
}

int uses(Call call) {
  return g_uses[static_cast<size_t>(call)];
}

}  // namespace test

using test::Call;
using test::done;

extern "C" {

int socket(int domain, int type, int protocol) {
  return static_cast<int>(done(Call::kSocket, SYS_socket, domain, type, protocol));
}
int connect(int descriptor, const sockaddr* asked, socklen_t length) {
  EXPECT_EQ(length, 110u);
  EXPECT_STREQ(reinterpret_cast<const sockaddr_un*>(asked)->sun_path, QALT_AT_SERVER_PATH);
  const sockaddr_un address = test::address_of(test::g_server);
  return static_cast<int>(done(Call::kConnect, SYS_connect, descriptor, &address, sizeof address));
}
// Of a receive that waits for all, a piece: as when a signal comes in between.
// A closed peer is a failure, not a SIGPIPE.
ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  EXPECT_EQ(flags, MSG_NOSIGNAL);
  size = std::min(size, test::g_piece);
  return done(Call::kSend, SYS_sendto, descriptor, bytes, size, flags, nullptr, 0);
}
ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  size = std::min(size, test::g_piece);
  return done(Call::kRecv, SYS_recvfrom, descriptor, bytes, size, flags, nullptr, nullptr);
}
int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
  return static_cast<int>(done(Call::kBind, SYS_bind, descriptor, address, length));
}
int listen(int descriptor, int backlog) noexcept {
  test::g_listening = descriptor;
  return static_cast<int>(done(Call::kListen, SYS_listen, descriptor, backlog));
}
int accept(int descriptor, sockaddr*, socklen_t*) {
  return static_cast<int>(done(Call::kAccept, SYS_accept4, descriptor, nullptr, nullptr, 0));
}
// A close that reports an error has closed all the same, as on Linux.
int close(int descriptor) {
  syscall(SYS_close, descriptor);
  return test::fails(Call::kClose) ? -1 : 0;
}
int pthread_create(pthread_t* thread, const pthread_attr_t* attributes, void* (*body)(void*),
                   void* argument) noexcept {
  if (test::fails(Call::kThread)) return test::g_plan.error;
  static const auto kReal =
      reinterpret_cast<decltype(&pthread_create)>(dlsym(RTLD_NEXT, "pthread_create"));
  return kReal(thread, attributes, body, argument);
}

}  // extern "C"
