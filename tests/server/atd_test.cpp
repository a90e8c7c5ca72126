// The built server, end to end: clients by hand, each modem kind, its beginning and its end.
#include <arpa/inet.h>
#include <gtest/gtest.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <thread>

#include "qalt_at/link.h"
#include "sim/modem.h"
#include "tests/server/program.h"

namespace {

using test::ask;
using test::contents;
using test::Folder;
using test::Program;

const std::string kOk = "\r\nOK\r\n";
const std::string kError = "\r\nERROR\r\n";
const std::string kCsq = "\r\n+CSQ: 20,99\r\n" + kOk;

class Atd : public ::testing::Test {
 protected:
  // The server on the test's own socket.
  std::vector<std::string> with(std::vector<std::string> arguments) const {
    arguments.insert(arguments.end(), {"--socket", socket});
    return arguments;
  }

  Folder folder;
  std::string socket = folder / "at";
  std::string log = folder / "log";
};

TEST_F(Atd, AnswersAndRefuses) {
  Program atd(ATD_PROGRAM, with({"--sim-profile", "vendor"}));
  ASSERT_TRUE(atd.ready());
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  EXPECT_EQ(ask(socket, "AT+JUSIM=?"), "\r\n+JUSIM: 0\r\n" + kOk);
  for (const std::string command : {"", "+CSQ", "AT\rAT", "AT\x1A", "AT+NONE"}) {
    EXPECT_EQ(ask(socket, command), kError) << command;
  }
  EXPECT_EQ(ask(socket, "AT" + std::string(10'237, 'E')), kError);
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  // Only the sending side is shut down: the client still waits.
  const int half = test::connect_to(socket);
  test::send_request(half, "AT+CSQ");
  ::shutdown(half, SHUT_WR);
  EXPECT_EQ(test::receive_text(half), kCsq);
}

TEST_F(Atd, BadClientsHoldNobodyUp) {
  Program atd(ATD_PROGRAM, with({"--sim-fault", "*:AT+CPAS:never", "--log", log}));
  ASSERT_TRUE(atd.ready());
  std::vector<int> sockets;
  for (int i = 0; i < 30; ++i) {
    const int stalled = test::connect_to(socket);
    if (i % 2) ::send(stalled, "AT+CPBW=1", 9, 0);
    sockets.push_back(stalled);
  }
  // These leave: before the whole frame, and before the answer.
  for (int i = 0; i < 100; ++i) {
    const int gone = test::connect_to(socket);
    if (i % 2) {
      test::send_request(gone, "AT+CSQ");
    } else {
      ::send(gone, "xxxx", 4, 0);
    }
    ::close(gone);
  }
  const int lost = test::connect_to(socket);
  test::send_request(lost, "AT+CPAS", 50);
  ::close(lost);
  EXPECT_EQ(ask(socket, "AT+CPAS", 50), "");
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  for (int one : sockets) ::close(one);
  EXPECT_EQ(atd.end(), 0);
  EXPECT_EQ(contents(log).find("CPBW"), std::string::npos);
}

TEST_F(Atd, EveryClientGetsItsOwnAnswer) {
  Program atd(ATD_PROGRAM, with({"--sim-split"}));
  ASSERT_TRUE(atd.ready());
  std::vector<std::thread> clients;
  for (int client = 0; client < 16; ++client) {
    clients.emplace_back([&, client] {
      for (int i = 0; i < 25; ++i) {
        const std::string index = std::to_string(100 + client);
        const std::string number = std::to_string(client * 1000 + i);
        ASSERT_EQ(ask(socket, "AT+CPBW=" + index + ",\"" + number + "\",129,\"x\""), kOk);
        ASSERT_EQ(ask(socket, "AT+CPBR=" + index),
                  "\r\n+CPBR: " + index + ",\"" + number + "\",129,\"x\"\r\n" + kOk);
      }
    });
  }
  for (std::thread& client : clients) client.join();
}

TEST_F(Atd, ReportsReachWhoeverListens) {
  const int receiver = test::listen_at(folder / "receiver", 50);
  const int stalled = test::listen_at(folder / "stalled", 0);
  Program atd(ATD_PROGRAM,
              with({"--report-to", folder / "nobody", "--report-to", folder / "stalled",
                    "--report-to", folder / "receiver", "--sim-fault",
                    "*:AT+CSQ:report-after=+CMTI: \"SM\",1", "--sim-report", "RING"}));
  ASSERT_TRUE(atd.ready());
  for (int i = 0; i < 40; ++i) EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  EXPECT_EQ(ask(socket, "AT+CPBW=9"), kOk);
  for (int i = 0; i < 41; ++i) {
    EXPECT_EQ(test::receive_text(::accept(receiver, nullptr, nullptr)),
              i < 40 ? "\r\n+CMTI: \"SM\",1\r\n" : "\r\nRING\r\n");
  }
  ::close(receiver);
  ::close(stalled);
  EXPECT_EQ(atd.end(), 0);
  EXPECT_NE(atd.said().find("nobody misses reports"), std::string::npos);
}

TEST_F(Atd, TakesAPathOnlyWhereNobodyLives) {
  Program first(ATD_PROGRAM, with({}));
  ASSERT_TRUE(first.ready());
  struct stat file {};
  ::lstat(socket.c_str(), &file);
  EXPECT_EQ(file.st_mode & 0777, 0660u);
  Program second(ATD_PROGRAM, with({}));
  EXPECT_FALSE(second.ready());
  EXPECT_EQ(second.end(0), 1);
  EXPECT_NE(second.said().find("already answers"), std::string::npos);
  EXPECT_EQ(ask(socket, "AT"), kOk);

  // Killed, it leaves its socket file behind; the next server takes the place.
  EXPECT_EQ(first.end(SIGKILL), 1000 + SIGKILL);
  Program third(ATD_PROGRAM, with({"--socket-mode", "600"}));
  ASSERT_TRUE(third.ready());
  ::lstat(socket.c_str(), &file);
  EXPECT_EQ(file.st_mode & 0777, 0600u);
  EXPECT_EQ(ask(socket, "AT"), kOk);
  EXPECT_EQ(third.end(SIGINT), 0);
  EXPECT_NE(::lstat(socket.c_str(), &file), 0);

  std::ofstream(socket) << "kept";
  Program fourth(ATD_PROGRAM, with({}));
  EXPECT_EQ(fourth.end(0), 1);
  EXPECT_EQ(contents(socket), "kept");
}

TEST_F(Atd, ExitStatus) {
  const struct {
    std::vector<std::string> arguments;
    int status;
    const char* said;
  } rows[] = {
      {{"--help"}, 0, "Examples:"},
      {{"--version"}, 0, "qalt-atd 1"},
      {{"--no-such-option"}, 2, "no-such-option"},
      {{"--modem", "usb"}, 2, "'usb' is not sim"},
      {{"--sim-fault", "x"}, 2, "WHICH:PREFIX:ACTION"},
      {{"--sim-contacts", folder / "none"}, 2, "cannot be read"},
      {{"--socket-mode", "9"}, 2, "octal"},
      {{"--socket", std::string(108, 's')}, 1, "108 characters"},
      {{"--socket", folder / "a/b"}, 1, "cannot listen"},
      {{"--socket", socket, "--socket-group", "no such group"}, 1, "no group"},
      {{"--socket", socket, "--log", folder / "a/b"}, 1, "a/b"},
      {{"--socket", socket, "--report-to", std::string(108, 's')}, 1, "report socket"},
      {{"--socket", socket, "--modem", "replay:" + (folder / "none")}, 1, "cannot be read"},
  };
  for (const auto& row : rows) {
    Program atd(ATD_PROGRAM, row.arguments);
    EXPECT_EQ(atd.end(0), row.status) << row.said;
    EXPECT_NE(atd.said().find(row.said), std::string::npos) << atd.said();
  }
  struct stat file {};
  EXPECT_NE(::lstat(socket.c_str(), &file), 0);
}

TEST_F(Atd, FinishesTheCommandUnderWay) {
  Program atd(ATD_PROGRAM, with({"--sim-fault", "*:AT+CSQ:delay=100", "--log", log}));
  ASSERT_TRUE(atd.ready());
  const int under_way = test::connect_to(socket);
  const int waiting = test::connect_to(socket);
  test::send_request(under_way, "AT+CSQ");
  while (contents(log).find("AT+CSQ") == std::string::npos) std::this_thread::yield();
  test::send_request(waiting, "AT+CSQ");
  EXPECT_EQ(atd.end(), 0);
  EXPECT_EQ(test::receive_text(under_way), kCsq);
  EXPECT_NE(test::receive_text(waiting), kCsq);
}

TEST_F(Atd, ATranscriptCanBeReplayed) {
  const std::vector<std::string> commands = {"AT+CSCS=\"UCS2\"", "AT+CPBR=1,20", "AT+CPIN=\"8642\"",
                                             "AT+CSQ", "AT+CSQ"};
  std::vector<std::string> answers;
  {
    Program atd(ATD_PROGRAM,
                with({"--sim-fault", "2:AT+CSQ:answer=\\r\\n+CME ERROR: 14\\r\\n", "--log", log}));
    ASSERT_TRUE(atd.ready());
    for (const std::string& command : commands) answers.push_back(ask(socket, command));
    ::rename(log.c_str(), (folder / "old").c_str());
    EXPECT_EQ(atd.end(SIGTERM), 0);
  }
  EXPECT_EQ(contents(folder / "old").find("8642"), std::string::npos);
  Program atd(ATD_PROGRAM, with({"--modem", "replay:" + (folder / "old")}));
  ASSERT_TRUE(atd.ready());
  for (size_t i = 0; i < commands.size(); ++i) EXPECT_EQ(ask(socket, commands[i]), answers[i]);
  EXPECT_EQ(ask(socket, "AT+NEVER"), kError);
}

TEST_F(Atd, AModemOnATerminal) {
  const std::string tty = folder / "tty";
  Program modem(SIMMODEM_PROGRAM,
                {"--pty", tty, "--sim-echo", "--sim-fault", "2:AT+CSQ:hang-up=5"});
  ASSERT_TRUE(modem.ready());
  Program atd(ATD_PROGRAM, with({"--modem", "tty:" + tty + ",115200,rtscts", "--verbose"}));
  ASSERT_TRUE(atd.ready());
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  const std::string whole = ask(socket, "AT+CPBR=1,250");
  EXPECT_NE(whole.find("+CPBR: 32,"), std::string::npos);
  // The device goes away in the middle of an answer, and comes back.
  EXPECT_EQ(ask(socket, "AT+CSQ"), "");
  std::string again;
  while ((again = ask(socket, "AT+CPBR=1,250")).empty()) std::this_thread::yield();
  EXPECT_EQ(again, whole);
  // Another program cannot take it meanwhile.
  Program other(ATD_PROGRAM, {"--socket", folder / "at2", "--modem", "tty:" + tty});
  ASSERT_TRUE(other.ready());
  EXPECT_EQ(ask(folder / "at2", "AT"), "");
  EXPECT_EQ(other.end(), 0);
  EXPECT_EQ(atd.end(), 0);
  EXPECT_EQ(modem.end(), 0);
  struct stat file {};
  EXPECT_NE(::lstat(tty.c_str(), &file), 0);
}

TEST_F(Atd, AModemBehindAnAddress) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  address.sin_family = AF_INET;
  address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
  socklen_t size = sizeof address;
  ASSERT_EQ(::bind(listener, reinterpret_cast<sockaddr*>(&address), size), 0);
  ASSERT_EQ(::listen(listener, 1), 0);
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  std::thread modem_thread([listener] {
    qalt::sim::Modem modem{qalt::sim::Config()};
    const int line = ::accept(listener, nullptr, nullptr);
    char bytes[256];
    for (ssize_t n; (n = ::recv(line, bytes, sizeof bytes, 0)) > 0;) {
      modem.receive(std::string_view(bytes, size_t(n)));
      for (const auto& output : modem.take()) {
        ::send(line, output.bytes.data(), output.bytes.size(), MSG_NOSIGNAL);
      }
    }
    ::close(line);
  });
  Program atd(ATD_PROGRAM,
              with({"--modem", "tcp:127.0.0.1:" + std::to_string(ntohs(address.sin_port))}));
  ASSERT_TRUE(atd.ready());
  std::string answer;
  while ((answer = ask(socket, "AT+CSQ")).empty()) std::this_thread::yield();
  EXPECT_EQ(answer, kCsq);
  EXPECT_EQ(atd.end(), 0);
  modem_thread.join();
  ::close(listener);
}

}  // namespace
