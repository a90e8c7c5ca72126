// One command exchanged for one answer, byte by byte; tests/faults/ has the calls that fail.
#include <gtest/gtest.h>

#include <thread>

#include "tests/link/private_server.h"
#include "tests/support/recorder.h"

namespace {

std::string g_server_path;  // where a connection to the fixed path really goes

}  // namespace

extern "C" int connect(int descriptor, const sockaddr* address, socklen_t length) {
  EXPECT_EQ(length, 110u);
  EXPECT_STREQ(reinterpret_cast<const sockaddr_un*>(address)->sun_path, QALT_AT_SERVER_PATH);
  return test::really_connect(descriptor, test::address_of(g_server_path));
}

// A closed peer is a failure, not a SIGPIPE.
extern "C" ssize_t send(int descriptor, const void* bytes, size_t size, int flags) {
  EXPECT_EQ(flags, MSG_NOSIGNAL);
  return syscall(SYS_sendto, descriptor, bytes, size, flags, nullptr, 0);
}

namespace {

class Exchange : public testing::Test {
 protected:
  Exchange() {
    g_server_path = directory_.file("server");
    test::clear_records();
    std::memset(&answer_, '#', sizeof answer_);
  }

  // Sends the command to a server that answers with these bytes; returns what the server read,
  // which is everything up to the end of the connection.
  std::string exchange(const std::string& command, const std::string& answer, uint32_t timeout) {
    int listener = -1;
    EXPECT_EQ(qalt_at_create_server_socket(g_server_path.c_str(), &listener), 1);
    std::string request(sizeof(AtMsg) + 1, '\0');
    std::thread server([&] {
      int connection = -1;
      EXPECT_EQ(qalt_at_accept_client_request(listener, &connection), 1);
      ssize_t size = recv(connection, request.data(), sizeof(AtMsg), MSG_WAITALL);
      EXPECT_EQ(write(connection, answer.data(), answer.size()), ssize_t(answer.size()));
      shutdown(connection, SHUT_WR);
      size += recv(connection, &request[size_t(size)], 1, MSG_WAITALL);
      request.resize(size_t(size));
      close(connection);
    });
    EXPECT_EQ(ClientSendCmd(command.c_str(), &answer_, timeout), 0);
    server.join();
    close(listener);
    return request;
  }

  test::PrivateDirectory directory_;
  AtMsg answer_;
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
      {"AT", 1, "\1", "\1" + std::string(10247, '\0')},
      {"AT", 1, "", std::string(10248, '\0')},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(exchange(c.command, c.answer, c.timeout),
              test::bytes_of(test::frame_of(c.command, c.timeout)));
    EXPECT_EQ(test::bytes_of(answer_), c.received);
  }
  EXPECT_EQ(test::logged("at_com", 7).size(), 0u);
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
  EXPECT_TRUE(test::sleeps().empty());
}

TEST_F(Exchange, SocketFunctionsReportFailures) {
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

}  // namespace
