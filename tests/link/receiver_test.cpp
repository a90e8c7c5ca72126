// The report receiver: started once in a process, it hands every frame to the callback. The calls
// that fail under it are in tests/faults/.
#include <fcntl.h>
#include <gtest/gtest.h>
#include <pthread.h>
#include <signal.h>

#include <fstream>
#include <thread>
#include <vector>

#include "tests/support/private_server.h"
#include "tests/support/recorder.h"

namespace {

test::Events
    g_events;  // "listen at" a path, "accept", the bytes of a frame that reached the callback

}  // namespace

extern "C" int listen(int descriptor, int backlog) {
  EXPECT_EQ(backlog, 500);
  EXPECT_EQ(fcntl(descriptor, F_GETFD), FD_CLOEXEC);
  sockaddr_un address{};
  socklen_t length = sizeof address;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
  g_events.put(std::string("listen at ") + address.sun_path);
  return static_cast<int>(syscall(SYS_listen, descriptor, backlog));
}

extern "C" int accept(int descriptor, sockaddr*, socklen_t* length) {
  EXPECT_EQ(*length, 0u);
  g_events.put("accept");
  return static_cast<int>(syscall(SYS_accept4, descriptor, nullptr, nullptr, 0));
}

namespace {

sigset_t own_signals() {
  sigset_t signals;
  pthread_sigmask(SIG_SETMASK, nullptr, &signals);
  return signals;
}

int keep_frame(AtMsg* frame) {
  const sigset_t signals = own_signals();
  EXPECT_TRUE(sigismember(&signals, SIGTERM) && sigismember(&signals, SIGALRM)) << "all blocked";
  g_events.put(test::bytes_of(*frame));
  return 1;
}

// The thread lasts as long as the process, so that there is one test.
TEST(Receiver, StartsOnceAndHandsOnFramesAsReceived) {
  const test::PrivateDirectory directory;
  const std::string path = directory.file("reports");
  std::ofstream(path) << "a stale file";
  EXPECT_EQ(ClientInit(nullptr), 1);
  EXPECT_EQ(ClientInit(""), 1);
  EXPECT_EQ(ClientInit(std::string(108, 'p').c_str()), 1);
  EXPECT_STREQ(g_ModuleID, "");
  EXPECT_EQ(test::logged("at_com", 3).size(), 3u);
  SetClientProcRecvCallback(keep_frame);
  std::vector<std::thread> threads;
  for (int i = 0; i < 4; ++i) {
    threads.emplace_back([&] {
      EXPECT_EQ(ClientInit(path.c_str()), 0);
      const sigset_t signals = own_signals();
      EXPECT_FALSE(sigismember(&signals, SIGTERM)) << "the starter's are as before";
    });
  }
  for (std::thread& thread : threads) thread.join();
  // A later identifier changes nothing for the receiver, not even before it has begun to listen.
  const std::string other = directory.file("other");
  EXPECT_EQ(ClientInit(other.c_str()), 0);
  EXPECT_EQ(ClientInit(nullptr), 0);
  EXPECT_EQ(g_ModuleID, other);
  EXPECT_EQ(g_events.take(), "listen at " + path);
  EXPECT_EQ(g_events.take(), "accept");

  const std::string full = test::bytes_of(test::frame_of(std::string(10240, 'f')));
  const std::string dropped = test::bytes_of(test::frame_of("dropped"));
  for (const std::string& bytes : {full, full.substr(0, 14), std::string(), dropped, full}) {
    SetClientProcRecvCallback(bytes == dropped ? nullptr : keep_frame);
    const int sender = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(test::really_connect(sender, test::address_of(path)), 0);
    send(sender, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    close(sender);
    if (bytes != dropped) {
      EXPECT_EQ(g_events.take(), bytes + std::string(10248 - bytes.size(), '\0'));
    }
    EXPECT_EQ(g_events.take(), "accept");
  }
}

}  // namespace
