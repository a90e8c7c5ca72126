// The report receiver under failing calls: an interruption is passed over, anything else ends it,
// with its log lines and with no connection left open.
#include <errno.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/faults/system_calls.h"
#include "tests/link/private_server.h"
#include "tests/support/recorder.h"

namespace {

using test::Call;
using Lines = std::vector<std::string>;

std::vector<std::string> g_reports;  // read when the receiver has ended

int keep_report(AtMsg* report) {
  g_reports.emplace_back(report->aucDataBuf);
  return 0;
}

class ReceiverFaults : public testing::Test {
 protected:
  void SetUp() override {
    g_reports.clear();
    SetClientProcRecvCallback(keep_report);
    test::redirect_server(path_);
  }
  void TearDown() override {
    SetClientProcRecvCallback(nullptr);
    test::no_faults();
  }

  // Sends a report on a connection of its own, unless the receiver has closed that already.
  static void push(int connection, const std::string& text) {
    const AtMsg report = test::frame_of(text);
    syscall(SYS_sendto, connection, &report, sizeof report, MSG_NOSIGNAL, nullptr, 0);
    syscall(SYS_close, connection);
  }

  // Runs the receiver over three reports, until a planned fault ends it. Returns
  // the descriptors that it left open, its listening socket among them.
  long run(const test::Plan& plan, size_t piece = 1 << 20) {
    const long before = test::open_descriptors();
    test::clear_records();
    test::set_plan(plan, piece);
    std::thread receiver([this] { receive_thread(path_.data()); });
    for (const char* text : {"one", "two", "three"}) {
      const int connection = int(syscall(SYS_socket, AF_UNIX, SOCK_STREAM, 0));
      // Until the receiver listens; when it has ended, its socket still takes connections.
      while (test::really_connect(connection, test::address_of(path_)) != 0) {
        std::this_thread::yield();
      }
      push(connection, text);
    }
    receiver.join();
    const long left = test::open_descriptors() - before;
    syscall(SYS_close, test::listening_descriptor());
    unlink(path_.c_str());
    return left;
  }

  test::PrivateDirectory directory_;
  std::string path_ = directory_.file("reports");
};

TEST_F(ReceiverFaults, EndIt) {
  const struct {
    Call call;
    std::vector<int> errors;
    std::string line;
  } rows[] = {
      {Call::kAccept,
       {EAGAIN, EBADF, ECONNABORTED, EFAULT, EINVAL, EMFILE, ENFILE, ENOBUFS, ENOMEM, ENOTSOCK,
        EOPNOTSUPP, EPERM, EPROTO},
       "can not accept libprefs client."},
      {Call::kRecv,
       {EAGAIN, EBADF, ECONNREFUSED, ECONNRESET, EFAULT, EINVAL, ENOMEM, ENOTCONN, ENOTSOCK},
       "receive client data error !\n"},
  };
  for (const auto& row : rows) {
    for (const int error : row.errors) {
      for (const int skip : {0, 1, 2}) {
        SCOPED_TRACE(row.line + " " + strerror(error));
        g_reports.clear();
        EXPECT_EQ(run({row.call, error, 1, skip}), 1);
        EXPECT_EQ(g_reports.size(), size_t(skip));
        EXPECT_EQ(test::logged("at_com", 7).back(), row.line);
        EXPECT_EQ(test::uses(Call::kClose), skip + (row.call == Call::kRecv));
      }
    }
  }
}

// Interruptions cost at most the connection whose receive they break; then a real error ends it.
TEST_F(ReceiverFaults, InterruptionsDoNot) {
  test::Plan plan{Call::kAccept, EINTR, 2, 0};
  // An end of the loop for the test: the accept behind the third report is refused.
  plan.then_error = EINVAL;
  plan.then_skip = 5;
  EXPECT_EQ(run(plan), 1);
  EXPECT_EQ(g_reports, (Lines{"one", "two", "three"}));

  g_reports.clear();
  plan = {Call::kRecv, EINTR, 1, 1};
  plan.then_error = ECONNRESET;
  plan.then_skip = 2;
  EXPECT_EQ(run(plan), 1);
  EXPECT_EQ(g_reports, Lines{"one"});
}

TEST_F(ReceiverFaults, ReportsInPieces) {
  for (const size_t piece : {100, 10247}) {
    g_reports.clear();
    test::Plan plan{Call::kAccept, EINVAL, 1, 3};
    EXPECT_EQ(run(plan, piece), 1);
    EXPECT_EQ(g_reports, (Lines{"one", "two", "three"}));
  }
}

// A thread that cannot be made: the next call tries again. Threads last as long as the process, so
// that the good end is left to the receiver's own test.
TEST_F(ReceiverFaults, ThreadsThatCannotBeMade) {
  for (const int error : {EAGAIN, EINVAL, EPERM}) {
    const long descriptors = test::open_descriptors();
    test::clear_records();
    test::set_plan({Call::kThread, error});
    EXPECT_EQ(ClientInit(path_.c_str()), 1);
    EXPECT_EQ(recv_thread_id, pthread_t{});
    EXPECT_EQ(test::logged("at_com", 7), Lines{"at_com: create receive thread error!"});
    EXPECT_EQ(test::uses(Call::kThread), 1);
    EXPECT_EQ(test::open_descriptors(), descriptors);
  }
}

}  // namespace
