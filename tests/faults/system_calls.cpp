#include "tests/faults/system_calls.h"

#include <dlfcn.h>
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <algorithm>

#include "tests/support/private_server.h"

namespace test {
namespace {

Plan g_plan;
int g_uses[9];
int g_peer = -1;

// Whether this use of the call is to fail; errno is set then.
bool fails(Call call) {
  const int use = g_uses[static_cast<size_t>(call)]++;
  if (g_plan.call != call) return false;
  if (use < g_plan.skip || use - g_plan.skip >= g_plan.times) return false;
  errno = g_plan.error;
  return true;
}

// The call, unless it fails.
template <typename... Arguments>
int done(Call call, long number, Arguments... arguments) {
  return fails(call) ? -1 : static_cast<int>(syscall(number, arguments...));
}

// A connection whose peer has sent all that it has to say.
int connection_with(const std::string& bytes) {
  int ends[2];
  EXPECT_EQ(socketpair(AF_UNIX, SOCK_STREAM, 0, ends), 0);
  EXPECT_EQ(write(ends[1], bytes.data(), bytes.size()), ssize_t(bytes.size()));
  shutdown(ends[1], SHUT_WR);
  g_request.clear();
  syscall(SYS_close, g_peer);
  g_peer = ends[1];
  return ends[0];
}

}  // namespace

void set_plan(const Plan& plan) {
  g_plan = plan;
  for (int& count : g_uses) count = 0;
  syscall(SYS_close, g_peer);
  g_peer = -1;
}

int uses(Call call) {
  return g_uses[static_cast<size_t>(call)];
}

}  // namespace test

using test::Call;
using test::done;

extern "C" {

int socket(int domain, int type, int protocol) {
  return done(Call::kSocket, SYS_socket, domain, type, protocol);
}
int connect(int descriptor, const sockaddr* asked, socklen_t length) {
  EXPECT_EQ(length, 110u);
  EXPECT_STREQ(reinterpret_cast<const sockaddr_un*>(asked)->sun_path, QALT_AT_SERVER_PATH);
  if (test::fails(Call::kConnect)) return -1;
  const int connection = test::connection_with(test::g_answer);
  const int joined = dup2(connection, descriptor);
  syscall(SYS_close, connection);
  return joined == -1 ? -1 : 0;
}
// Of a receive that waits for all, a piece: as when a signal comes in between.
// A closed peer is a failure, not a SIGPIPE.
ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  EXPECT_EQ(flags, MSG_NOSIGNAL);
  size = std::min(size, test::g_plan.piece);
  const int sent = done(Call::kSend, SYS_sendto, descriptor, bytes, size, flags, nullptr, 0);
  char arrived[2 * sizeof(AtMsg)];
  const auto count =
      syscall(SYS_recvfrom, test::g_peer, arrived, sizeof arrived, MSG_DONTWAIT, nullptr, nullptr);
  if (count > 0) test::g_request.append(arrived, size_t(count));
  return sent;
}
ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  size = std::min(size, test::g_plan.piece);
  return done(Call::kRecv, SYS_recvfrom, descriptor, bytes, size, flags, nullptr, nullptr);
}
int bind(int descriptor, const sockaddr* address, socklen_t length) noexcept {
  return done(Call::kBind, SYS_bind, descriptor, address, length);
}
int listen(int descriptor, int backlog) noexcept {
  test::g_listening = descriptor;
  return done(Call::kListen, SYS_listen, descriptor, backlog);
}
int accept(int descriptor, sockaddr*, socklen_t*) {
  EXPECT_EQ(descriptor, test::g_listening);
  if (test::fails(Call::kAccept)) return -1;
  if (test::g_reports.empty()) {
    errno = EINVAL;
    return -1;
  }
  const int connection = test::connection_with(test::g_reports.front());
  test::g_reports.erase(test::g_reports.begin());
  return connection;
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
