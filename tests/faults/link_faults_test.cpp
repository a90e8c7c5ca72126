// One command exchanged for one answer: byte by byte, and with every system call of it failing with
// every error that there is: the documented result, no descriptor left open, no hang, and the next
// command works.
#include <errno.h>
#include <gtest/gtest.h>

#include <atomic>
#include <thread>

#include "tests/faults/system_calls.h"
#include "tests/support/private_server.h"
#include "tests/support/recorder.h"

namespace {

using test::Call;
using test::kForever;
using test::kLastError;

// With a server that answers every whole request, with OK where nothing else is said. It uses the
// raw calls: the plans are for the library.
class LinkFaults : public testing::Test {
 protected:
  LinkFaults() {
    test::g_server = directory_.file("server");
    EXPECT_EQ(qalt_at_create_server_socket(test::g_server.c_str(), &listener_), 1);
    test::clear_records();
    thread_ = std::thread([this] { serve(); });
  }
  ~LinkFaults() override {
    test::set_plan();
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }

  void expect_command_works() {
    AtMsg answer;
    EXPECT_EQ(ClientSendCmd("AT", &answer, 1), 0);
    EXPECT_STREQ(answer.aucDataBuf, "\r\nOK\r\n");
  }

  test::PrivateDirectory directory_;
  std::string answer_ = test::bytes_of(test::frame_of("\r\nOK\r\n"));
  std::string request_;  // of connection number `served_`, up to its end
  std::atomic<int> served_ = 0;

 private:
  void serve() {
    char bytes[sizeof(AtMsg) + 1];
    for (long connection; (connection = syscall(SYS_accept4, listener_, nullptr, nullptr, 0)) != -1;
         syscall(SYS_close, connection)) {
      const auto receive = [&](char* to, size_t size) {
        return syscall(SYS_recvfrom, connection, to, size, MSG_WAITALL, nullptr, nullptr);
      };
      if (receive(bytes, sizeof(AtMsg)) != sizeof(AtMsg)) continue;
      syscall(SYS_sendto, connection, answer_.data(), answer_.size(), MSG_NOSIGNAL, nullptr, 0);
      syscall(SYS_shutdown, connection, SHUT_WR);
      request_.assign(bytes, receive(bytes + sizeof(AtMsg), 1) == 1 ? sizeof bytes : sizeof(AtMsg));
      ++served_;
    }
  }

  int listener_ = -1;
  std::thread thread_;
};

TEST_F(LinkFaults, CarriesFramesToTheByte) {
  AtMsg full = test::frame_of(std::string(10240, 'f'), 7);
  AtMsg terminated = full;
  terminated.aucDataBuf[10239] = '\0';
  const std::string ok = test::bytes_of(test::frame_of("\r\nOK\r\n", 3));
  const struct {
    std::string command;
    uint32_t timeout;
    std::string answer, received;
  } cases[] = {
      {"AT+CPBS?", 5000, ok, ok},
      {"", 0xFFFFFFFF, ok, ok},
      {std::string(10239, 'c'), 10000, test::bytes_of(full), test::bytes_of(terminated)},
      {"AT", 1, "\1", "\1" + std::string(10247, '\0')},
      {"AT", 1, "", std::string(10248, '\0')},
  };
  for (const auto& c : cases) {
    AtMsg answer;
    std::memset(&answer, '#', sizeof answer);
    answer_ = c.answer;
    const int before = served_;
    EXPECT_EQ(ClientSendCmd(c.command.c_str(), &answer, c.timeout), 0);
    while (served_ == before) std::this_thread::yield();
    EXPECT_EQ(request_, test::bytes_of(test::frame_of(c.command, c.timeout)));
    EXPECT_EQ(test::bytes_of(answer), c.received);
  }
  EXPECT_EQ(test::logged("at_com", 7).size(), 0u);
}

TEST_F(LinkFaults, RefusesWhatItCannotSend) {
  AtMsg answer = test::frame_of("as it was");
  const std::string before = test::bytes_of(answer);
  EXPECT_EQ(ClientSendCmd(nullptr, &answer, 1), 1);
  EXPECT_EQ(send_message(nullptr, &answer, 1), -1);
  EXPECT_EQ(test::bytes_of(answer), before);
  EXPECT_EQ(ClientSendCmd("AT", nullptr, 1), 1);
  EXPECT_TRUE(test::logs().empty());
  EXPECT_EQ(send_message(std::string(10240, 'c').c_str(), &answer, 1), -1);
  EXPECT_EQ(test::logged("at_com", 3).size(), 1u);
  EXPECT_EQ(test::bytes_of(answer), test::bytes_of(AtMsg{}));
  EXPECT_TRUE(test::sleeps().empty());
}

TEST_F(LinkFaults, SocketFunctionsReportFailures) {
  const std::string long_path = directory_.file(std::string(107, 'p'));
  int descriptor = -7;
  for (const char* path : {long_path.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(qalt_at_create_client_socket(path, &descriptor), -1);
    EXPECT_EQ(qalt_at_create_server_socket(path, &descriptor), -1);
  }
  EXPECT_EQ(test::logged("libqalt_at", 3).size(), 2u);
  EXPECT_TRUE(test::sleeps().empty());
  EXPECT_EQ(qalt_at_accept_client_request(-1, &descriptor), -1);
  EXPECT_EQ(qalt_at_close_client_socket(-1), -1);
  EXPECT_EQ(qalt_at_socket_connect_rety(0, nullptr, 110), -1);
  EXPECT_EQ(descriptor, -7);
}

TEST_F(LinkFaults, OfACommand) {
  const struct {
    Call call;
    int times;
    int result;
    size_t lines;  // logged
  } rows[] = {
      {Call::kSocket, 1, 1, 1},
      {Call::kConnect, kForever, 1, 1},
      // A server that comes up late, the last attempt included.
      {Call::kConnect, 3, 0, 0},
      {Call::kConnect, 299, 0, 0},
      {Call::kSend, 1, 1, 1},
      {Call::kRecv, 1, 1, 1},
      // The answer is there: whether its connection closes well is of no account.
      {Call::kClose, 1, 0, 0},
  };
  const long descriptors = test::open_descriptors();
  for (const auto& row : rows) {
    for (int error = 1; error <= kLastError; ++error) {
      SCOPED_TRACE("call " + std::to_string(int(row.call)) + ": " + strerror(error));
      AtMsg answer;
      std::memset(&answer, '#', sizeof answer);
      test::clear_records();
      test::set_plan({row.call, error, row.times});
      EXPECT_EQ(ClientSendCmd("AT", &answer, 1), row.result);
      EXPECT_EQ(test::logged("at_com", 7).size(), row.lines);
      const int sleeps = row.call == Call::kConnect ? std::min(row.times, 300) : 0;
      EXPECT_EQ(test::sleeps(), std::vector<unsigned>(size_t(sleeps), 1));
      EXPECT_EQ(test::bytes_of(answer),
                test::bytes_of(test::frame_of(row.result == 0 ? "\r\nOK\r\n" : "")));
      test::set_plan();
      expect_command_works();
    }
  }
  // The server may still be busy with the last connection: all of this process's own are closed.
  EXPECT_LE(test::open_descriptors(), descriptors + 1);
}

// The first pieces arrive, then the call fails: nothing of a half answer is handed out.
TEST_F(LinkFaults, InTheMiddleOfAFrame) {
  for (const Call call : {Call::kSend, Call::kRecv}) {
    for (const int error : {EINTR, ECONNRESET, EPIPE}) {
      for (const int skip : {1, 2, 10}) {
        AtMsg answer;
        test::set_plan({call, error, 1, skip}, 1000);
        EXPECT_EQ(ClientSendCmd("AT", &answer, 1), 1);
        EXPECT_EQ(test::bytes_of(answer), test::bytes_of(AtMsg{}));
        test::set_plan();
        expect_command_works();
      }
    }
  }
}

// Frames whole, in whatever pieces they move.
TEST_F(LinkFaults, ShortSendsAndReceives) {
  for (const size_t piece : {1, 7, 1000, 10247}) {
    test::set_plan({}, piece);
    expect_command_works();
    const int pieces = int((sizeof(AtMsg) + piece - 1) / piece);
    EXPECT_EQ(test::uses(Call::kSend), pieces);
    EXPECT_GE(test::uses(Call::kRecv), pieces);
    EXPECT_EQ(test::uses(Call::kClose), 1);
  }
}

// The set-up of a report socket; the receiver's body ends with it.
TEST_F(LinkFaults, OfAServerSocket) {
  std::string path = directory_.file("reports");
  const long descriptors = test::open_descriptors();
  for (const Call call : {Call::kSocket, Call::kBind, Call::kListen}) {
    for (int error = 1; error <= kLastError; ++error) {
      SCOPED_TRACE("call " + std::to_string(int(call)) + ": " + strerror(error));
      int descriptor = -7;
      test::set_plan({call, error, 1});
      EXPECT_EQ(qalt_at_create_server_socket(path.c_str(), &descriptor), -1);
      EXPECT_EQ(descriptor, -7);
      test::set_plan({call, error, 1});
      EXPECT_EQ(receive_thread(path.data()), nullptr);
      EXPECT_EQ(test::open_descriptors(), descriptors);
    }
  }
}

}  // namespace
