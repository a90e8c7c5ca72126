// The report receiver: started once in a process, it hands every frame to the callback.
#include <errno.h>
#include <gtest/gtest.h>
#include <pthread.h>

#include <atomic>
#include <condition_variable>
#include <cstdint>
#include <deque>
#include <fstream>
#include <mutex>
#include <thread>
#include <vector>

#include "tests/link/private_server.h"
#include "tests/support/recorder.h"

namespace {

// What arrives on the receiver thread, in order; taking one waits until it is there.
template <typename Item>
class Mailbox {
 public:
  void put(Item item) {
    const std::lock_guard lock(mutex_);
    items_.push_back(std::move(item));
    arrived_.notify_one();
  }
  Item take() {
    std::unique_lock lock(mutex_);
    arrived_.wait(lock, [&] { return !items_.empty(); });
    Item item = std::move(items_.front());
    items_.pop_front();
    return item;
  }
  size_t size() {
    const std::lock_guard lock(mutex_);
    return items_.size();
  }

 private:
  std::mutex mutex_;
  std::condition_variable arrived_;
  std::deque<Item> items_;
};

Mailbox<std::string> g_listening;              // the path of each socket that began to listen
Mailbox<std::string> g_frames;                 // the bytes of each frame that reached the callback
Mailbox<int> g_accepting;                      // one for each accept that is about to begin
std::atomic<int> g_interruptions = 0;          // accepts that fail with EINTR
std::atomic<int> g_receive_interruptions = 0;  // receives that do

bool interrupted(std::atomic<int>& left) {
  if (left == 0) return false;
  --left;
  errno = EINTR;
  return true;
}

}  // namespace

extern "C" int listen(int descriptor, int backlog) {
  EXPECT_EQ(backlog, 500);
  sockaddr_un address{};
  socklen_t length = sizeof address;
  getsockname(descriptor, reinterpret_cast<sockaddr*>(&address), &length);
  const int result = static_cast<int>(syscall(SYS_listen, descriptor, backlog));
  g_listening.put(address.sun_path);
  return result;
}

extern "C" int accept(int descriptor, sockaddr*, socklen_t* length) {
  EXPECT_EQ(*length, 0u);
  if (interrupted(g_interruptions)) return -1;
  g_accepting.put(descriptor);
  return static_cast<int>(syscall(SYS_accept4, descriptor, nullptr, nullptr, 0));
}

extern "C" ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  if (interrupted(g_receive_interruptions)) return -1;
  return syscall(SYS_recvfrom, descriptor, bytes, size, flags, nullptr, nullptr);
}

namespace {

int keep_frame(AtMsg* frame) {
  g_frames.put(test::bytes_of(*frame));
  return 1;
}

class Receiver : public testing::Test {
 protected:
  // Failing first calls, then the one that starts the thread, from several threads at once.
  static void SetUpTestSuite() {
    directory_ = new test::PrivateDirectory;
    const std::string path = directory_->file("reports");
    std::ofstream(path) << "a stale file";
    EXPECT_EQ(ClientInit(nullptr), 1);
    EXPECT_EQ(ClientInit(std::string(108, 'p').c_str()), 1);
    EXPECT_STREQ(g_ModuleID, "");
    EXPECT_EQ(test::logged("at_com", 3).size(), 2u);
    refuse_threads([&] { EXPECT_EQ(ClientInit(path.c_str()), 1); });
    EXPECT_EQ(recv_thread_id, pthread_t{});
    EXPECT_EQ(test::logged("at_com", 7),
              std::vector<std::string>{"at_com: create receive thread error!"});
    SetClientProcRecvCallback(keep_frame);
    std::vector<std::thread> threads;
    for (int i = 0; i < 4; ++i) {
      threads.emplace_back([&] { EXPECT_EQ(ClientInit(path.c_str()), 0); });
    }
    for (std::thread& thread : threads) thread.join();
    // A later identifier changes nothing for the receiver, not even before it has begun to listen.
    const std::string other = directory_->file("other");
    EXPECT_EQ(ClientInit(other.c_str()), 0);
    EXPECT_EQ(ClientInit(nullptr), 0);
    EXPECT_EQ(g_ModuleID, other);
    EXPECT_EQ(g_listening.take(), path);
    g_accepting.take();
    EXPECT_NE(recv_thread_id, pthread_t{});
  }
  static void TearDownTestSuite() { delete directory_; }

  template <typename Action>
  static void refuse_threads(Action action) {
    pthread_attr_t usual, huge;
    pthread_getattr_default_np(&usual);
    pthread_attr_init(&huge);
    pthread_attr_setstacksize(&huge, SIZE_MAX / 8 * 7 & ~size_t{0xFFFF});
    pthread_setattr_default_np(&huge);
    action();
    pthread_setattr_default_np(&usual);
    pthread_attr_destroy(&huge);
    pthread_attr_destroy(&usual);
  }

  // Sends the bytes on a connection of their own and waits until the receiver is through with them.
  static void push(const std::string& bytes) {
    const int sender = socket(AF_UNIX, SOCK_STREAM, 0);
    ASSERT_EQ(test::really_connect(sender, test::address_of(directory_->file("reports"))), 0);
    send(sender, bytes.data(), bytes.size(), MSG_NOSIGNAL);
    close(sender);
    g_accepting.take();
  }

  static inline test::PrivateDirectory* directory_ = nullptr;
};

TEST_F(Receiver, HandsOnFramesAsReceived) {
  const std::string report = test::bytes_of(test::frame_of("\r\n+CMTI: \"SM\",3\r\n", 9));
  const std::string full = test::bytes_of(test::frame_of(std::string(10240, 'f')));
  const struct {
    std::string sent, received;
  } cases[] = {
      {report, report},
      {full, full},
      {report.substr(0, 14), report.substr(0, 14) + std::string(10234, '\0')},
      {"", std::string(10248, '\0')},
  };
  for (const auto& c : cases) {
    push(c.sent);
    EXPECT_EQ(g_frames.take(), c.received);
  }
  EXPECT_TRUE(test::has_logged(7, "received data from client is:" + std::string(10240, 'f')));
  EXPECT_TRUE(test::has_logged(7, "usParaLen 10240,aucDataBuf " + std::string(10240, 'f') + " \n"));
  EXPECT_EQ(g_listening.size(), 0u);
}

TEST_F(Receiver, DropsFramesWithoutACallbackAndGoesOn) {
  SetClientProcRecvCallback(nullptr);
  push(test::bytes_of(test::frame_of("dropped")));
  SetClientProcRecvCallback(keep_frame);
  EXPECT_EQ(g_frames.size(), 0u);
  EXPECT_TRUE(test::has_logged(7, "usParaLen 7,aucDataBuf dropped \n"));
  const std::string report = test::bytes_of(test::frame_of("kept"));
  push(report);
  EXPECT_EQ(g_frames.take(), report);
}

TEST_F(Receiver, SurvivesInterruptions) {
  const std::string report = test::bytes_of(test::frame_of("report"));
  g_interruptions = 2;
  push(report);
  EXPECT_EQ(g_interruptions, 0);
  push(report);
  EXPECT_EQ(g_frames.take(), report);
  EXPECT_EQ(g_frames.take(), report);
  g_receive_interruptions = 1;
  push(report);
  EXPECT_EQ(g_frames.size(), 0u);  // lost with its connection
  push(report);
  EXPECT_EQ(g_frames.take(), report);
}

TEST_F(Receiver, BodyEndsWhereItCannotListen) {
  std::string path = directory_->file("none/reports");
  EXPECT_EQ(receive_thread(path.data()), nullptr);
  EXPECT_TRUE(test::has_logged(7, "can not create at server socket."));
  parse_msg(nullptr);
  EXPECT_EQ(g_frames.size(), 0u);
}

}  // namespace
