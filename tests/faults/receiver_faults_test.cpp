// The report receiver under failing calls: an interruption is passed over, anything else ends it,
// with no connection left open.
#include <errno.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/faults/system_calls.h"
#include "tests/support/private_server.h"
#include "tests/support/recorder.h"

namespace {

using test::Call;
using Lines = std::vector<std::string>;

Lines g_reports;  // read when the receiver has ended

class ReceiverFaults : public testing::Test {
 protected:
  ~ReceiverFaults() override {
    SetClientProcRecvCallback(nullptr);
    test::set_plan();
  }

  // Runs the receiver over three reports, until a planned fault ends it: its listening socket alone
  // stays open.
  void run(const test::Plan& plan, size_t piece = 1 << 20) {
    g_reports.clear();
    SetClientProcRecvCallback([](AtMsg* report) {
      g_reports.emplace_back(report->aucDataBuf);
      return 0;
    });
    const long before = test::open_descriptors();
    test::set_plan(plan, piece);
    std::thread receiver([this] { receive_thread(path_.data()); });
    // Each on a connection of its own, as soon as the receiver listens; when it has ended, its
    // socket still takes connections.
    for (const char* text : {"one", "two", "three"}) {
      const AtMsg report = test::frame_of(text);
      const long connection = syscall(SYS_socket, AF_UNIX, SOCK_STREAM, 0);
      while (test::really_connect(int(connection), test::address_of(path_)) != 0) {
        std::this_thread::yield();
      }
      syscall(SYS_sendto, connection, &report, sizeof report, MSG_NOSIGNAL, nullptr, 0);
      syscall(SYS_close, connection);
    }
    receiver.join();
    EXPECT_EQ(test::open_descriptors() - before, 1);
    syscall(SYS_close, test::g_listening);
    unlink(path_.c_str());
  }

  test::PrivateDirectory directory_;
  std::string path_ = directory_.file("reports");
};

TEST_F(ReceiverFaults, EndIt) {
  for (const Call call : {Call::kAccept, Call::kRecv}) {
    for (int error = 1; error <= test::kLastError; ++error) {
      if (error == EINTR) continue;
      SCOPED_TRACE("call " + std::to_string(int(call)) + ": " + strerror(error));
      const int skip = error % 3;
      run({call, error, 1, skip});
      EXPECT_EQ(g_reports.size(), size_t(skip));
      EXPECT_EQ(test::uses(Call::kClose), skip + (call == Call::kRecv));
    }
  }
}

// Interruptions cost at most the connection whose receive they break. Then a real error ends it:
// the accept behind the third report is refused.
TEST_F(ReceiverFaults, InterruptionsAndPiecesDoNot) {
  const Lines all = {"one", "two", "three"};
  const struct {
    test::Plan plan;
    size_t piece;
    Lines reports;
  } rows[] = {
      {{Call::kAccept, EINTR, 2, 0, EINVAL, 5}, 1 << 20, all},
      {{Call::kRecv, EINTR, 1, 1, ECONNRESET, 2}, 1 << 20, {"one"}},
      {{Call::kAccept, EINVAL, 1, 3}, 100, all},
      {{Call::kAccept, EINVAL, 1, 3}, 10247, all},
  };
  for (const auto& row : rows) {
    run(row.plan, row.piece);
    EXPECT_EQ(g_reports, row.reports);
  }
}

// The next call tries again. Threads last as long as the process, so that the good end is left to
// the receiver's own test.
TEST_F(ReceiverFaults, AThreadThatCannotBeMade) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    test::set_plan({Call::kThread, EAGAIN, 1});
    EXPECT_EQ(ClientInit(path_.c_str()), 1);
    EXPECT_EQ(recv_thread_id, pthread_t{});
    EXPECT_EQ(test::uses(Call::kThread), 1);
  }
}

}  // namespace
