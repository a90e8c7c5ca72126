// One command exchanged for one answer, and the report receiver: byte by byte, and with every
// system call failing with every error that there is: the documented result, no descriptor left
// open, no hang, and the next command works.
#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/faults/system_calls.h"
#include "tests/support/private_server.h"
#include "tests/support/recorder.h"

namespace {

using test::Call;
using test::kForever;
using test::kLastError;
using test::Plan;
using Lines = std::vector<std::string>;

const std::string kOk = test::bytes_of(test::frame_of("\r\nOK\r\n", 3));
const std::string kNothing(sizeof(AtMsg), '\0');
Lines g_received;  // by the report callback

class Faults : public testing::Test {
 protected:
  Faults() {
    test::g_answer = kOk;
    test::clear_records();
  }
  ~Faults() override {
    SetClientProcRecvCallback(nullptr);
    test::set_plan();
  }

  // Sends "AT" over a plan; the result and what the caller's record holds then.
  static int send(const Plan& plan, std::string& received) {
    AtMsg answer;
    std::memset(&answer, '#', sizeof answer);
    test::set_plan(plan);
    const int result = ClientSendCmd("AT", &answer, 1);
    received = test::bytes_of(answer);
    return result;
  }

  // Runs the receiver over three reports, until a planned fault or the end of them ends it: its
  // listening socket alone stays open.
  void receive(const Plan& plan) {
    g_received.clear();
    SetClientProcRecvCallback([](AtMsg* report) {
      g_received.emplace_back(report->aucDataBuf);
      return 0;
    });
    test::g_reports.clear();
    for (const char* text : {"one", "two", "three"}) {
      test::g_reports.push_back(test::bytes_of(test::frame_of(text)));
    }
    test::set_plan(plan);
    const long before = test::open_descriptors();
    EXPECT_EQ(receive_thread(path_.data()), nullptr);
    uses_of_close_ = test::uses(Call::kClose);
    test::set_plan();
    EXPECT_EQ(test::open_descriptors() - before, 1);
    syscall(SYS_close, test::g_listening);
    EXPECT_EQ(unlink(path_.c_str()), 0);
  }

  test::PrivateDirectory directory_;
  std::string path_ = directory_.file("reports");
  int uses_of_close_ = 0;  // by the last receiver
};

TEST_F(Faults, CarriesFramesToTheByte) {
  AtMsg full = test::frame_of(std::string(10240, 'f'), 7);
  AtMsg terminated = full;
  terminated.aucDataBuf[10239] = '\0';
  const struct {
    std::string command;
    uint32_t timeout;
    std::string answer, received;
  } cases[] = {
      {"AT+CPBS?", 5000, kOk, kOk},
      {"", 0xFFFFFFFF, kOk, kOk},
      {std::string(10239, 'c'), 10000, test::bytes_of(full), test::bytes_of(terminated)},
      {"AT", 1, "\1", "\1" + kNothing.substr(1)},
      {"AT", 1, "", kNothing},
  };
  for (const auto& c : cases) {
    AtMsg answer;
    std::memset(&answer, '#', sizeof answer);
    test::g_answer = c.answer;
    EXPECT_EQ(ClientSendCmd(c.command.c_str(), &answer, c.timeout), 0);
    EXPECT_EQ(test::g_request, test::bytes_of(test::frame_of(c.command, c.timeout)));
    EXPECT_EQ(test::bytes_of(answer), c.received);
  }
  EXPECT_EQ(test::logged("at_com", 7).size(), 0u);
}

TEST_F(Faults, WhatCannotBeSentOrReachedIsRefused) {
  AtMsg answer = test::frame_of("as it was");
  const std::string before = test::bytes_of(answer);
  EXPECT_EQ(ClientSendCmd(nullptr, &answer, 1), 1);
  EXPECT_EQ(send_message(nullptr, &answer, 1), -1);
  EXPECT_EQ(test::bytes_of(answer), before);
  EXPECT_EQ(ClientSendCmd("AT", nullptr, 1), 1);
  EXPECT_TRUE(test::logs().empty());
  EXPECT_EQ(send_message(std::string(10240, 'c').c_str(), &answer, 1), -1);
  EXPECT_EQ(test::logged("at_com", 3).size(), 1u);
  EXPECT_EQ(test::bytes_of(answer), kNothing);

  const std::string long_path = directory_.file(std::string(107, 'p'));
  int descriptor = -7;
  for (const char* path : {long_path.c_str(), static_cast<const char*>(nullptr)}) {
    EXPECT_EQ(qalt_at_create_client_socket(path, &descriptor), -1);
    EXPECT_EQ(qalt_at_create_server_socket(path, &descriptor), -1);
  }
  EXPECT_EQ(test::logged("libqalt_at", 3).size(), 2u);
  EXPECT_EQ(qalt_at_accept_client_request(-1, &descriptor), -1);
  EXPECT_EQ(qalt_at_close_client_socket(-1), -1);
  EXPECT_EQ(qalt_at_socket_connect_rety(0, nullptr, 110), -1);
  EXPECT_EQ(descriptor, -7);
  EXPECT_TRUE(test::sleeps().empty());
}

TEST_F(Faults, OfACommand) {
  const struct {
    Call call;
    int times;
    int result;
    size_t lines;  // logged
    int skip = 0;
    size_t piece = 1 << 20;
  } rows[] = {
      {Call::kSocket, 1, 1, 1},
      {Call::kConnect, kForever, 1, 1},
      // A server that comes up late, the last attempt included.
      {Call::kConnect, 3, 0, 0},
      {Call::kConnect, 299, 0, 0},
      {Call::kSend, 1, 1, 1},
      {Call::kRecv, 1, 1, 1},
      // The first pieces arrive: nothing of a half answer is handed out.
      {Call::kSend, 1, 1, 1, 2, 1000},
      {Call::kRecv, 1, 1, 1, 1, 1000},
      {Call::kRecv, 1, 1, 1, 10, 1000},
      // The answer is there: whether its connection closes well is of no account.
      {Call::kClose, 1, 0, 0},
  };
  const long descriptors = test::open_descriptors();
  for (const auto& row : rows) {
    for (int error = 1; error <= kLastError; ++error) {
      SCOPED_TRACE("call " + std::to_string(int(row.call)) + ": " + strerror(error));
      std::string received;
      test::clear_records();
      EXPECT_EQ(send({row.call, error, row.times, row.skip, row.piece}, received), row.result);
      EXPECT_EQ(test::logged("at_com", 7).size(), row.lines);
      const int sleeps = row.call == Call::kConnect ? std::min(row.times, 300) : 0;
      EXPECT_EQ(test::sleeps(), std::vector<unsigned>(size_t(sleeps), 1));
      EXPECT_EQ(received, row.result == 0 ? kOk : kNothing);
      EXPECT_EQ(send({}, received), 0);
      EXPECT_EQ(received, kOk);
    }
  }
  test::set_plan();
  EXPECT_EQ(test::open_descriptors(), descriptors);
}

// Frames whole, in whatever pieces they move.
TEST_F(Faults, ShortSendsAndReceives) {
  for (const size_t piece : {1, 7, 1000, 10247}) {
    Plan plan;
    plan.piece = piece;
    std::string received;
    EXPECT_EQ(send(plan, received), 0);
    EXPECT_EQ(received, kOk);
    EXPECT_EQ(test::g_request, test::bytes_of(test::frame_of("AT", 1)));
    const int pieces = int((sizeof(AtMsg) + piece - 1) / piece);
    EXPECT_EQ(test::uses(Call::kSend), pieces);
    EXPECT_EQ(test::uses(Call::kRecv), pieces);
    EXPECT_EQ(test::uses(Call::kClose), 1);
  }
}

// The set-up of a report socket; the receiver's body ends with it.
TEST_F(Faults, OfAServerSocket) {
  const long descriptors = test::open_descriptors();
  for (const Call call : {Call::kSocket, Call::kBind, Call::kListen}) {
    for (int error = 1; error <= kLastError; ++error) {
      SCOPED_TRACE("call " + std::to_string(int(call)) + ": " + strerror(error));
      int descriptor = -7;
      test::set_plan({call, error, 1});
      EXPECT_EQ(qalt_at_create_server_socket(path_.c_str(), &descriptor), -1);
      EXPECT_EQ(descriptor, -7);
      test::set_plan({call, error, 1});
      EXPECT_EQ(receive_thread(path_.data()), nullptr);
      EXPECT_EQ(test::open_descriptors(), descriptors);
    }
  }
}

TEST_F(Faults, ThatEndTheReceiver) {
  for (const Call call : {Call::kAccept, Call::kRecv}) {
    for (int error = 1; error <= kLastError; ++error) {
      if (error == EINTR) continue;
      SCOPED_TRACE("call " + std::to_string(int(call)) + ": " + strerror(error));
      const int skip = error % 3;
      receive({call, error, 1, skip});
      EXPECT_EQ(g_received.size(), size_t(skip));
      EXPECT_EQ(uses_of_close_, skip + (call == Call::kRecv));
    }
  }
}

// Interruptions cost at most the connection whose receive they break.
TEST_F(Faults, ThatTheReceiverPassesOver) {
  const Lines all = {"one", "two", "three"};
  for (const auto& [plan, reports] :
       std::vector<std::pair<Plan, Lines>>{{{Call::kAccept, EINTR, 2}, all},
                                           {{Call::kRecv, EINTR, 1, 1}, {"one", "three"}},
                                           {{Call::kAccept, 0, 0, 0, 100}, all},
                                           {{Call::kAccept, 0, 0, 0, 10247}, all}}) {
    receive(plan);
    EXPECT_EQ(g_received, reports);
  }
}

// The next call tries again. Threads last as long as the process, so that the good end is left to
// the receiver's own test.
TEST_F(Faults, AThreadThatCannotBeMade) {
  for (int attempt = 0; attempt < 2; ++attempt) {
    test::set_plan({Call::kThread, EAGAIN, 1});
    EXPECT_EQ(ClientInit(path_.c_str()), 1);
    EXPECT_EQ(recv_thread_id, pthread_t{});
    EXPECT_EQ(test::uses(Call::kThread), 1);
  }
}

}  // namespace
