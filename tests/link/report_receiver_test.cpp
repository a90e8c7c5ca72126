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

std::atomic<const test::Events*> g_untold{};  // gets the first accept4 without a free descriptor

struct ReportReceiver : testing::Test {
  int connected(int descriptor = socket(AF_UNIX, SOCK_STREAM, 0)) const {
    EXPECT_EQ(test::really_connect(descriptor, test::address_of(path)), 0);
    return descriptor;
  }
  void push(const std::string& text, int descriptor, size_t bytes = sizeof(AtMsg)) const {
    send(descriptor, test::bytes_of(test::frame_of(text)).data(), bytes, MSG_NOSIGNAL);
    close(descriptor);
  }

  const test::PrivateDirectory directory;
  const std::string path = directory.file("reports");
  const std::filesystem::path place = path;
  const test::Events events;
  const qalt::ReportReceiver::Callback keep = [this](const qalt::Report& report) {
    events.put(report.name + "|" + report.text);
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
  EXPECT_TRUE(is_regular_file(place));
  unlink(path.c_str());
  int living = -1;
  qalt_at_create_server_socket(path.c_str(), &living);
  for (const int backlog : {500, 0}) {
    listen(living, backlog);  // by the second look it is full
    EXPECT_NE(receiver.start(path, keep).error().what.find("already answers"), std::string::npos);
  }
  close(living);
  ASSERT_TRUE(receiver.start(path, keep)) << "nobody's now";
  qalt_at_create_server_socket(path.c_str(), &living);
  close(living);
  receiver.stop();
  EXPECT_TRUE(is_socket(place)) << "another's by now";
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
    EXPECT_EQ(events.take(), name + "|" + text);
  }
  push("cut", connected(), 10);
  EXPECT_EQ(events.take(), "cu|cu") << "what came before the end";
  for (const int descriptor : silent) close(descriptor);
}

TEST_F(ReportReceiver, GoesOnWhenADescriptorIsFreeAgain) {
  ASSERT_TRUE(receiver.start(path, keep));
  const int last = socket(AF_UNIX, SOCK_STREAM, 0);  // the lowest one: those below are in use
  rlimit before{};
  getrlimit(RLIMIT_NOFILE, &before);
  const rlimit low = {rlim_t(last) + 1, before.rlim_max};
  g_untold = &events;
  // Meanwhile no call of a member here: a sanitizer looks at its object with descriptors.
  const sockaddr_un address = test::address_of(path);
  const test::Events& told = events;
  setrlimit(RLIMIT_NOFILE, &low);
  test::really_connect(last, address);
  const std::string first = told.take();
  setrlimit(RLIMIT_NOFILE, &before);
  EXPECT_EQ(first, "none free");
  push("later", last);
  EXPECT_EQ(events.take(), "later|later");
}

TEST_F(ReportReceiver, StopsAndStartsAgain) {
  const auto inherited = [] {  // what a program would have that exec starts
    int count = 0;
    for (int i = 0; i < 1000; ++i) count += fcntl(i, F_GETFD) == 0;
    return count;
  };
  const int others = inherited();
  const long open = test::open_descriptors();
  const mode_t old_mask = umask(0);
  for (const auto& [mask, mode] : {std::pair<mode_t, mode_t>{0, 0600}, {0177, 0660}, {0, 0}}) {
    umask(mask);
    ASSERT_TRUE(receiver.start(path, keep, mode));
    EXPECT_EQ(status(place).permissions(), std::filesystem::perms(mode));
    EXPECT_EQ(inherited(), others);
    EXPECT_FALSE(receiver.start(directory.file("other"), keep)) << "it listens already";
    std::thread other([&] { receiver.stop(); });
    receiver.stop();
    other.join();
    EXPECT_FALSE(exists(place));
    EXPECT_EQ(test::open_descriptors(), open);
  }
  umask(old_mask);

  sigset_t mine, blocked;
  ASSERT_TRUE(receiver.start(path, [&](const qalt::Report&) {
    pthread_sigmask(SIG_BLOCK, nullptr, &blocked);
    EXPECT_FALSE(receiver.start(path, keep)) << "not by its own callback";
    receiver.stop();
    events.put("ended");
  }));
  pthread_sigmask(SIG_BLOCK, nullptr, &mine);
  push("x", connected());
  EXPECT_EQ(events.take(), "ended");
  EXPECT_TRUE(sigismember(&blocked, SIGTERM) && !sigismember(&mine, SIGTERM));
  ASSERT_TRUE(receiver.start(path, keep)) << "the old thread may still be on its way out";
  const pid_t child = fork();
  if (child == 0) receiver.stop(), _exit(0);
  EXPECT_EQ(waitpid(child, nullptr, 0), child);
  push("alive", connected());
  EXPECT_EQ(events.take(), "alive|alive") << "what a child stops is its own";
}

}  // namespace

extern "C" int accept4(int descriptor, sockaddr*, socklen_t*, int flags) {
  const long result = syscall(SYS_accept4, descriptor, nullptr, nullptr, flags);
  if (result == -1 && errno == EMFILE) {
    if (const auto* const to = g_untold.exchange(nullptr)) to->put("none free");
    errno = EMFILE;
  }
  return static_cast<int>(result);
}
