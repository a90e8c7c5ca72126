// qalt::ReportReceiver: what it takes at a path, whom it hears, and what it leaves behind.
#include "qalt_at/report_receiver.hpp"

#include <fcntl.h>
#include <gtest/gtest.h>
#include <sys/resource.h>
#include <sys/wait.h>

#include <fstream>
#include <thread>

#include "tests/support/private_server.h"

namespace {

using qalt::Report;

std::atomic<int> g_untold{-1};  // where the first accept4 without a free descriptor is told

struct ReportReceiver : testing::Test {
  ReportReceiver() { EXPECT_EQ(socketpair(AF_UNIX, SOCK_SEQPACKET, 0, ends), 0); }
  ~ReportReceiver() override { close(ends[0]), close(ends[1]); }

  void put(const std::string& event) const {
    EXPECT_EQ(write(ends[0], event.data(), event.size()), ssize_t(event.size()));
  }
  std::string take() const {  // waits for it
    std::string event(2 * sizeof(AtMsg), '\0');
    event.resize(size_t(read(ends[1], event.data(), event.size())));
    return event;
  }
  int connected(int descriptor = socket(AF_UNIX, SOCK_STREAM, 0)) const {
    EXPECT_EQ(test::really_connect(descriptor, test::address_of(path)), 0);
    return descriptor;
  }
  void push(const std::string& text, int descriptor, size_t bytes = sizeof(AtMsg)) const {
    send(descriptor, test::bytes_of(test::frame_of(text)).data(), bytes, MSG_NOSIGNAL);
    close(descriptor);
  }
  mode_t file() const {
    struct stat status = {};
    return lstat(path.c_str(), &status) == 0 ? status.st_mode : 0;
  }
  int listening() const {
    const int descriptor = socket(AF_UNIX, SOCK_STREAM, 0);
    const sockaddr_un address = test::address_of(path);
    EXPECT_EQ(bind(descriptor, reinterpret_cast<const sockaddr*>(&address), sizeof address), 0);
    EXPECT_EQ(listen(descriptor, 0), 0);
    return descriptor;
  }

  const test::PrivateDirectory directory;
  const std::string path = directory.file("reports");
  int ends[2];
  const qalt::ReportReceiver::Callback keep = [this](const Report& report) {
    put(report.name + "|" + report.text);
  };
  qalt::ReportReceiver receiver;
};

TEST_F(ReportReceiver, TakesAPathFromNobody) {
  for (const auto& wrong :
       {std::string(), std::string("a\0b", 3), std::string(108, 'p'), path + "/a/b"}) {
    EXPECT_FALSE(receiver.start(wrong, keep));
  }
  EXPECT_FALSE(receiver.start(path, nullptr));
  std::ofstream(path) << "precious";
  EXPECT_NE(receiver.start(path, keep).error().what.find("no socket"), std::string::npos);
  EXPECT_TRUE(S_ISREG(file()));
  unlink(path.c_str());
  const int living = listening();
  const int waiting = connected();  // its backlog is full, and then it is not
  for (int i = 0; i < 2; ++i) {
    EXPECT_NE(receiver.start(path, keep).error().what.find("already answers"), std::string::npos);
    close(accept(living, nullptr, nullptr));
  }
  close(waiting), close(living);
  ASSERT_TRUE(receiver.start(path, keep)) << "nobody's now";
  unlink(path.c_str());
  close(listening());
  receiver.stop();
  EXPECT_TRUE(S_ISSOCK(file())) << "another's by now";
}

TEST_F(ReportReceiver, NamesReportsBesideSilentSenders) {
  ASSERT_TRUE(receiver.start(path, keep));
  std::vector<int> silent;
  for (int i = 0; i < 63; ++i) silent.push_back(connected());
  send(silent.front(), "half", 4, MSG_NOSIGNAL);
  const std::pair<std::string, std::string> cases[] = {
      {"\r\n+CMTI: \"SM\",3\r\n", "+CMTI"},
      {"\r\n+STKPCI: 0,\"D0\"\r\n", "+STKPCI"},
      {"\r\n+CREG: 5\r\n", "+CREG"},
      {"echo\r\n+CMTI: \"SM\",3\r\n", "+CMTI"},
      {"\r\nRING\r\n", "RING"},
      {"+LONG:" + std::string(QALT_AT_TEXT_SIZE - 6, 'x'), "+LONG"},
  };
  for (const auto& [text, name] : cases) {
    push("", connected());
    push(text, connected());
    EXPECT_EQ(take(), name + "|" + text);
  }
  push("cut", connected(), 10);
  EXPECT_EQ(take(), "cu|cu") << "what came before the end of the connection";
  for (const int descriptor : silent) close(descriptor);
}

TEST_F(ReportReceiver, GoesOnWhenADescriptorIsFreeAgain) {
  ASSERT_TRUE(receiver.start(path, keep));
  const int last = socket(AF_UNIX, SOCK_STREAM, 0);  // the lowest one: those below are in use
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit low = {rlim_t(last) + 1, before.rlim_max};
  g_untold = ends[0];
  setrlimit(RLIMIT_NOFILE, &low);
  connected(last);
  EXPECT_EQ(take(), "none free");
  setrlimit(RLIMIT_NOFILE, &before);
  push("later", last);
  EXPECT_EQ(take(), "later|later");
}

TEST_F(ReportReceiver, StopsAndStartsAgain) {
  const auto closed_by_exec = [] {
    long count = 0;
    for (int i = 0; i < 1000; ++i) count += fcntl(i, F_GETFD) == FD_CLOEXEC;
    return count;
  };
  const long open = test::open_descriptors();
  const long closed = closed_by_exec();
  const mode_t old_mask = umask(0);
  for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{0, 0600}, {0177, 0660}, {0, 0}}) {
    umask(mask);
    ASSERT_TRUE(receiver.start(path, keep, mode));
    EXPECT_EQ(file(), S_IFSOCK | mode);
    EXPECT_EQ(closed_by_exec() - closed, test::open_descriptors() - open);
    EXPECT_FALSE(receiver.start(directory.file("other"), keep)) << "it listens already";
    std::thread other([&] { receiver.stop(); });
    receiver.stop();
    other.join();
    EXPECT_EQ(file(), 0u);
    EXPECT_EQ(test::open_descriptors(), open);
  }
  umask(old_mask);

  sigset_t mine, blocked;
  ASSERT_TRUE(receiver.start(path, [&](const Report&) {
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_FALSE(receiver.start(path, keep)) << "not by its own callback";
    receiver.stop();
    put("ended");
  }));
  pthread_sigmask(SIG_BLOCK, nullptr, &mine);
  push("x", connected());
  EXPECT_EQ(take(), "ended");
  EXPECT_TRUE(sigismember(&blocked, SIGTERM) && !sigismember(&mine, SIGTERM));
  ASSERT_TRUE(receiver.start(path, keep)) << "the old thread may still be on its way out";
  const pid_t child = fork();
  if (child == 0) {
    receiver.stop();
    _exit(0);
  }
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
  push("alive", connected());
  EXPECT_EQ(take(), "alive|alive") << "what a child stops is its own";
}

}  // namespace

extern "C" int accept4(int descriptor, sockaddr*, socklen_t*, int flags) {
  const long result = syscall(SYS_accept4, descriptor, nullptr, nullptr, flags);
  const int to = result == -1 && errno == EMFILE ? g_untold.exchange(-1) : -1;
  if (to == -1) return static_cast<int>(result);
  EXPECT_EQ(write(to, "none free", 9), 9);
  errno = EMFILE;
  return -1;
}
