// One command exchanged for one answer, byte by byte, and every way in which that fails.
#include <errno.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <thread>
#include <vector>

#include "tests/link/private_server.h"
#include "tests/support/recorder.h"

namespace {

using Lines = std::vector<std::string>;

std::string g_server_path;    // where a connection to the fixed path really goes
int g_connects = 0;           // connection attempts
bool g_peer_closed = false;   // the next connection's other end is closed already
int g_receive_error = 0;      // errno that the next recv fails with
size_t g_send_limit = 10248;  // bytes that one send moves at most
int g_send_flags = 0;

}  // namespace

extern "C" int connect(int descriptor, const sockaddr* address, socklen_t length) {
  ++g_connects;
  if (g_peer_closed) {
    int pair[2];
    if (socketpair(AF_UNIX, SOCK_STREAM, 0, pair) != 0) return -1;
    dup2(pair[0], descriptor);
    close(pair[0]);
    close(pair[1]);
    return 0;
  }
  const auto* path = reinterpret_cast<const sockaddr_un*>(address)->sun_path;
  EXPECT_EQ(length, 110u);
  EXPECT_STREQ(path, QALT_AT_SERVER_PATH);
  return test::really_connect(descriptor, test::address_of(g_server_path));
}

extern "C" ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  g_send_flags = flags;
  return syscall(SYS_sendto, descriptor, bytes, std::min(size, g_send_limit), flags, nullptr, 0);
}

extern "C" ssize_t recv(int descriptor, void* bytes, size_t size, int flags) {
  EXPECT_EQ(flags, MSG_WAITALL);
  if (g_receive_error != 0) {
    errno = std::exchange(g_receive_error, 0);
    return -1;
  }
  return syscall(SYS_recvfrom, descriptor, bytes, size, flags, nullptr, nullptr);
}

namespace {

class Exchange : public testing::Test {
 protected:
  void SetUp() override {
    g_server_path = directory_.file("server");
    g_connects = 0;
    g_send_limit = 10248;
    test::clear_records();
    descriptors_ = test::open_descriptors();
    std::memset(&answer_, '#', sizeof answer_);
  }
  void TearDown() override {
    g_peer_closed = false;
    EXPECT_EQ(test::open_descriptors(), descriptors_);
  }

  // Sends the command to a server that answers with these bytes; returns what the server read,
  // which is everything up to the end of the connection.
  std::string exchange(const std::string& command, const std::string& answer, uint32_t timeout) {
    int listener = -1;
    EXPECT_EQ(qalt_at_create_server_socket(g_server_path.c_str(), &listener), 1);
    std::string request;
    std::thread server([&] {
      int connection = -1;
      EXPECT_EQ(qalt_at_accept_client_request(listener, &connection), 1);
      request = read_up_to(connection, sizeof(AtMsg));
      EXPECT_EQ(write(connection, answer.data(), answer.size()), ssize_t(answer.size()));
      shutdown(connection, SHUT_WR);
      request += read_up_to(connection, 1);
      close(connection);
    });
    result_ = ClientSendCmd(command.c_str(), &answer_, timeout);
    server.join();
    close(listener);
    return request;
  }

  static std::string read_up_to(int connection, size_t size) {
    std::string bytes(size, '\0');
    size_t got = 0;
    for (ssize_t count; got < size && (count = read(connection, &bytes[got], size - got)) > 0;) {
      got += static_cast<size_t>(count);
    }
    return bytes.substr(0, got);
  }

  void expect_failure(const Lines& at_com, const Lines& sockets) {
    EXPECT_EQ(ClientSendCmd("AT", &answer_, 1), 1);
    EXPECT_EQ(test::logged("at_com", 7), at_com);
    EXPECT_EQ(test::logged("libqalt_at", 7), sockets);
    EXPECT_EQ(test::bytes_of(answer_), test::bytes_of(AtMsg{}));
  }

  test::PrivateDirectory directory_;
  AtMsg answer_;
  int result_ = -1;
  long descriptors_ = 0;
};

TEST_F(Exchange, CarriesFramesToTheByte) {
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
      {"AT", 1, ok.substr(0, 11), ok.substr(0, 11) + std::string(10237, '\0')},
      {"AT", 1, "\1", "\1" + std::string(10247, '\0')},
      {"AT", 1, "", std::string(10248, '\0')},
  };
  for (const size_t limit : {size_t{10248}, size_t{1000}}) {
    g_send_limit = limit;
    for (const auto& c : cases) {
      EXPECT_EQ(exchange(c.command, c.answer, c.timeout),
                test::bytes_of(test::frame_of(c.command, c.timeout)));
      EXPECT_EQ(result_, 0);
      EXPECT_EQ(test::bytes_of(answer_), c.received);
      EXPECT_EQ(g_send_flags, MSG_NOSIGNAL);
    }
  }
  EXPECT_EQ(test::logged("at_com", 7), Lines{});
  EXPECT_EQ(test::sleeps().size(), 0u);
}

TEST_F(Exchange, RefusesWhatItCannotSend) {
  const std::string before = test::bytes_of(answer_);
  EXPECT_EQ(ClientSendCmd(nullptr, &answer_, 1), 1);
  EXPECT_EQ(send_message(nullptr, &answer_, 1), -1);
  EXPECT_EQ(test::bytes_of(answer_), before);
  EXPECT_EQ(ClientSendCmd("AT", nullptr, 1), 1);
  EXPECT_TRUE(test::logs().empty());
  EXPECT_EQ(send_message(std::string(10240, 'c').c_str(), &answer_, 1), -1);
  EXPECT_EQ(test::logged("at_com", 3).size(), 1u);
  EXPECT_EQ(test::bytes_of(answer_), test::bytes_of(AtMsg{}));
  EXPECT_EQ(g_connects, 0);
}

TEST_F(Exchange, GivesUpWhereNobodyListens) {
  expect_failure({"create connect socket failed,errno is " + std::to_string(ENOENT) + "\n"},
                 {"can not connect to:/tmp/AT_SERVER_MSG\n"});
  EXPECT_EQ(g_connects, 300);
  EXPECT_EQ(test::sleeps(), std::vector<unsigned>(300, 1));
}

// A closed peer is a failure, not a SIGPIPE.
TEST_F(Exchange, FailsWhenThePeerHasClosed) {
  g_peer_closed = true;
  expect_failure({"send item_id failed\n"}, {});
}

TEST_F(Exchange, FailsWhenReceivingFails) {
  int listener = -1;
  ASSERT_EQ(qalt_at_create_server_socket(g_server_path.c_str(), &listener), 1);
  test::clear_records();
  g_receive_error = EINTR;
  expect_failure({"receive client data error !\n"}, {});
  close(listener);
}

TEST_F(Exchange, SocketFunctionsReportFailures) {
  const std::string long_path = directory_.file(std::string(107, 'p'));
  const std::string no_folder = directory_.file("none/socket");
  int descriptor = -7;
  EXPECT_EQ(qalt_at_create_client_socket(long_path.c_str(), &descriptor), -1);
  EXPECT_EQ(qalt_at_create_client_socket(nullptr, &descriptor), -1);
  EXPECT_EQ(qalt_at_create_server_socket(long_path.c_str(), &descriptor), -1);
  EXPECT_EQ(test::logged("libqalt_at", 3).size(), 2u);
  EXPECT_EQ(g_connects, 0);
  test::clear_records();
  EXPECT_EQ(qalt_at_create_server_socket(nullptr, &descriptor), -1);
  EXPECT_EQ(qalt_at_create_server_socket(no_folder.c_str(), &descriptor), -1);
  EXPECT_EQ(qalt_at_accept_client_request(-1, &descriptor), -1);
  EXPECT_EQ(qalt_at_accept_client_request(1000000, &descriptor), -1);
  EXPECT_EQ(qalt_at_close_client_socket(-1), -1);
  EXPECT_EQ(qalt_at_socket_connect_rety(0, nullptr, 110), -1);
  EXPECT_EQ(descriptor, -7);
  EXPECT_EQ(test::logged("libqalt_at", 7),
            (Lines{"qalt_server_path_id is:(null)", "qalt_server_path_id is null",
                   "qalt_server_path_id is:" + no_folder, "qalt_server_addr.sun_path:" + no_folder,
                   "can not bind socket :" + no_folder + " !", "server_addr error",
                   "can not accept client !", "client_socketfd  error!"}));
}

}  // namespace
