// The built server, end to end: clients by hand, each modem kind, its beginning and its end.
#include <gtest/gtest.h>
#include <netinet/in.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <sys/wait.h>

#include <algorithm>
#include <fstream>
#include <memory>
#include <optional>
#include <thread>
#include <tuple>

#include "server/client_session.h"
#include "sim/modem.h"
#include "tests/support/program.h"

namespace {

using test::ask;
using test::contents;
using test::Ended;
using test::Program;

const std::string kOk = "\r\nOK\r\n";
const std::string kError = "\r\nERROR\r\n";
const std::string kAway = "\r\n+CME ERROR: 1\r\n";
const std::string kCsq = "\r\n+CSQ: 20,99\r\n" + kOk;

class Atd : public ::testing::Test {
 protected:
  std::unique_ptr<Program> start(std::vector<std::string> arguments = {}) const {
    arguments.insert(arguments.end(), {"--socket", socket});
    if (std::find(arguments.begin(), arguments.end(), "--modem") == arguments.end()) {
      arguments.insert(arguments.end(), {"--modem", "sim"});
    }
    auto atd = std::make_unique<Program>(ATD_PROGRAM, arguments);
    EXPECT_TRUE(atd->ready());
    return atd;
  }
  static Ended run(const std::vector<std::string>& arguments) {
    return Program(ATD_PROGRAM, arguments, false).end(0);
  }
  std::string ask_until_open(const std::string& command) const {
    for (;;) {
      const std::string answer = ask(socket, command);
      if (answer != kAway) return answer;
      std::this_thread::yield();
    }
  }
  // The permissions of a file; 0 where there is none.
  static unsigned mode_of(const std::string& path) {
    struct stat file {};
    return ::lstat(path.c_str(), &file) == 0 ? file.st_mode & 0777u : 0;
  }

  test::PrivateDirectory folder;
  std::string socket = folder.file("at");
  std::string log = folder.file("log");
};

TEST_F(Atd, AnswersAndRefuses) {
  const auto atd = start({"--sim-profile", "vendor", "--sim-split"});
  EXPECT_EQ(ask(socket, "AT+JUSIM=?"), "\r\n+JUSIM: 0\r\n" + kOk);
  for (const std::string& command :
       {std::string("AT\rAT"), std::string("AT+NONE"), "AT" + std::string(10'237, 'E')}) {
    EXPECT_EQ(ask(socket, command), kError) << command;
  }
  // A client that names no time-out waits as long as is usual.
  EXPECT_EQ(ask(socket, "AT+CSQ", 0), kCsq);
  // Only the sending side is shut down: the client still waits.
  const int half = test::connect_to(socket);
  test::send_request(half, "AT+CSQ");
  ::shutdown(half, SHUT_WR);
  EXPECT_EQ(test::receive_text(half), kCsq);
}

TEST_F(Atd, BadClientsHoldNobodyUp) {
  const auto atd = start({"--sim-fault", "*:AT+CIMI:never", "--log", log});
  const auto begun = std::chrono::steady_clock::now();
  std::vector<int> stalled;
  for (int i = 0; i < 400; ++i) {
    stalled.push_back(test::connect_to(socket));
    if (i % 2) ::send(stalled.back(), "AT+CPBW=1", 9, 0);
    // Some leave before the whole frame.
    if (i % 3 == 0) ::shutdown(stalled.back(), SHUT_RDWR);
  }
  const int lost = test::connect_to(socket);
  test::send_request(lost, "AT+CIMI", 50);
  ::close(lost);
  EXPECT_EQ(ask(socket, "AT+CIMI", 50), "");
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  // Before any of them has had the time that a client has.
  EXPECT_LT(std::chrono::steady_clock::now() - begun, qalt::server::ClientSession::kFrameTime);
  for (int client : stalled) ::close(client);
  EXPECT_EQ(atd->end().status, 0);
  EXPECT_EQ(contents(log).find("CPBW"), std::string::npos);
}

// Of many processes with one connection each, those that are silent give way.
TEST_F(Atd, SilentOnesOfManyProcesses) {
  const auto atd = start({"--sim-fault", "*:AT+CIMI:never"});
  const auto connect_another = [this](int client) {
    sockaddr_un address{AF_UNIX, {}};
    socket.copy(address.sun_path, sizeof address.sun_path - 1);
    const pid_t other = ::fork();
    if (other == 0)
      ::_exit(::connect(client, reinterpret_cast<sockaddr*>(&address), sizeof address));
    ::waitpid(other, nullptr, 0);
  };
  std::vector<int> others;
  for (int i = 0; i < 260; ++i) others.push_back(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0));
  connect_another(others[0]);
  test::send_request(others[0], "AT+CIMI");
  const int waiting = test::connect_to(socket);
  test::send_request(waiting, "AT+CSQ");
  for (size_t i = 1; i < others.size(); ++i) connect_another(others[i]);
  EXPECT_EQ(test::receive_text(others[1]), "closed");
  ::close(others[0]);
  EXPECT_EQ(test::receive_text(waiting), kCsq);
  for (size_t i = 2; i < others.size(); ++i) ::close(others[i]);
}

// For a server in a container all processes outside have the number 0.
TEST_F(Atd, ClientsOutsideItsNamespace) {
  std::vector<std::string> arguments = {"--pid",   "--fork", "--kill-child", ATD_PROGRAM,
                                        "--modem", "sim",    "--socket",     socket};
  if (::geteuid() != 0) arguments.insert(arguments.begin(), "--user");
  Program atd("/usr/bin/unshare", arguments);
  if (!atd.ready()) GTEST_SKIP() << "no process namespaces here";
  const std::string selected = ask(socket, "AT+CSCS=\"UCS2\"");
  const pid_t other = ::fork();
  if (other == 0) {
    ask(socket, "AT+CSCS=\"GSM\"");
    ::_exit(0);
  }
  ::waitpid(other, nullptr, 0);
  // Where the kernel does not tell them apart, neither is one.
  const std::string read = ask(socket, "AT+CPBR=1");
  const std::string refusal = "\r\n+CME ERROR: 3\r\n";
  EXPECT_NE(read.find(selected == kOk ? "\"0041006E" : refusal), std::string::npos) << read;
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  atd.end(SIGKILL);
  // Only what began before a server that follows a killed one may have lost a selection with it.
  // The kernel ends it a moment behind the one that was killed; until then it has the place.
  std::optional<Program> second;
  bool ready = false;
  for (int tries = 0; tries < 1000 && !ready; ++tries) {
    second.emplace("/usr/bin/unshare", arguments);
    ready = second->ready();
  }
  ASSERT_TRUE(ready);
  const pid_t younger = ::fork();
  if (younger == 0) ::_exit(ask(socket, "AT+CPBR=1").empty() ? 1 : 0);
  int status = -1;
  ::waitpid(younger, &status, 0);
  EXPECT_EQ(status, 0);
  second->end(SIGKILL);
}

TEST_F(Atd, ReportsReachWhoeverListens) {
  const int receiver = test::listen_at(folder.file("receiver"), 50);
  const int stalled = test::listen_at(folder.file("stalled"), 0);
  const auto atd = start({"--report-to", folder.file("nobody"), "--report-to",
                          folder.file("stalled"), "--report-to", folder.file("receiver"),
                          "--sim-fault", "*:AT+CSQ:report-after=+CREG: 1", "--sim-report", "RING"});
  for (int i = 0; i < 40; ++i) EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  EXPECT_EQ(ask(socket, "AT+CPBW=9"), kOk);
  for (int i = 0; i < 41; ++i) {
    EXPECT_EQ(test::receive_text(::accept(receiver, nullptr, nullptr)),
              i < 40 ? "\r\n+CREG: 1\r\n" : "\r\nRING\r\n");
  }
  ::close(receiver);
  ::close(stalled);
  const Ended ended = atd->end();
  EXPECT_EQ(ended.status, 0);
  EXPECT_NE(ended.err.find("nobody misses reports"), std::string::npos);
}

TEST_F(Atd, TakesAPathOnlyWhereNobodyLives) {
  const auto first = start();
  EXPECT_EQ(mode_of(socket), 0660u);
  const Ended second = run({"--modem", "sim", "--socket", socket});
  EXPECT_EQ(second.status, 1);
  EXPECT_NE(second.err.find("already answers"), std::string::npos);
  EXPECT_EQ(ask(socket, "AT"), kOk);

  // Killed, it leaves its socket file behind; the next server takes the place.
  EXPECT_EQ(first->end(SIGKILL).status, 1000 + SIGKILL);
  const auto third = start({"--socket-mode", "600"});
  EXPECT_EQ(mode_of(socket), 0600u);
  // This process is older: what it had selected, if anything, is known to nobody.
  EXPECT_EQ(ask(socket, "AT+CPBR=1,1"), "");
  EXPECT_NE(ask(socket, "AT+CPBR=1,1"), "");
  EXPECT_EQ(third->end(SIGINT).status, 0);
  EXPECT_EQ(mode_of(socket), 0u);

  // Somebody else is about to live there.
  const int lock = ::open((socket + ".lock").c_str(), O_CREAT | O_RDWR | O_CLOEXEC, 0600);
  ::flock(lock, LOCK_EX);
  EXPECT_EQ(run({"--modem", "sim", "--socket", socket}).status, 1);
  ::close(lock);
  // What came to stand there in the meantime is not the server's.
  const auto fourth = start();
  ::unlink(socket.c_str());
  const int other = test::listen_at(socket, 1);
  EXPECT_EQ(fourth->end().status, 0);
  EXPECT_NE(mode_of(socket), 0u);
  EXPECT_EQ(mode_of(socket + ".lock"), 0u);
  EXPECT_EQ(run({"--modem", "sim", "--socket", socket}).status, 1);
  ::close(other);
  ::unlink(socket.c_str());

  std::ofstream(socket) << "kept";
  EXPECT_EQ(run({"--modem", "sim", "--socket", socket}).status, 1);
  EXPECT_EQ(contents(socket), "kept");
}

TEST_F(Atd, SaysWhyItDoesNotStart) {
  const std::string twice = folder.file("twice"), typo = folder.file("typo");
  std::ofstream(twice) << R"([{}, {"index": 1}])";
  std::ofstream(typo) << R"([{"nmae": "x"}])";
  const std::tuple<std::vector<std::string>, int, const char*> rows[] = {
      {{"--help"}, 0, "Examples:"},
      {{"--no-such-option"}, 2, "no-such-option"},
      {{"--socket", socket}, 2, "sim, the simulated one"},
      {{"--modem", "sim", "--sim-contacts", twice}, 2, "SM entry 2: index 1 stands twice"},
      {{"--modem", "sim", "--sim-contacts", typo}, 2, "SM entry 1: \"nmae\" is no key"},
      {{"--modem", "usb"}, 2, "'usb' is not sim"},
      // Not opened by the starter: the server's own would come to stand there.
      {{"--modem", "sim", "--socket", socket, "--ready-fd", "9"}, 2, "no descriptor 9 is open"},
      {{"--modem", "sim", "--socket", socket, "--ready-fd", "02"}, 2, "2 is a standard stream"},
      {{"--modem", "sim", "--socket", std::string(108, 's')}, 1, "108 characters"},
      {{"--modem", "sim", "--socket", socket + "/no"}, 1, "/no.lock: No such file"},
      {{"--modem", "sim", "--socket", socket, "--socket-group", "no such group"}, 1, "no group"},
      {{"--socket", socket, "--modem", "replay:" + log}, 1, "cannot be read"},
      {{"--socket", socket, "--modem", "replay:/tmp"}, 1, "nothing stands in it"},
  };
  for (const auto& [arguments, status, said] : rows) {
    const Ended ended = run(arguments);
    EXPECT_EQ(ended.status, status) << said;
    EXPECT_NE((ended.out + ended.err).find(said), std::string::npos) << ended.err;
  }
  EXPECT_EQ(mode_of(socket), 0u);
}

// Nothing of theirs stands where messages and output go.
TEST_F(Atd, StandsWithoutItsStreams) {
  for (const std::vector<std::string>& arguments :
       {std::vector<std::string>{ATD_PROGRAM, "--modem", "sim", "--socket", socket},
        {SIMMODEM_PROGRAM, "--pty", folder.file("tty")}}) {
    std::vector<std::string> started = {"-c", "exec \"$0\" \"$@\" <&- >&- 2>&-"};
    started.insert(started.end(), arguments.begin(), arguments.end());
    Program program("/bin/sh", started);
    ASSERT_TRUE(program.ready());
    const std::string descriptors = "/proc/" + std::to_string(program.process()) + "/fd/";
    for (const char* number : {"0", "1", "2"}) {
      char place[64] = {};
      EXPECT_GT(::readlink((descriptors + number).c_str(), place, sizeof place - 1), 0);
      EXPECT_EQ(std::string(place), "/dev/null");
    }
    EXPECT_EQ(program.end().status, 0);
  }
}

TEST_F(Atd, UnreadMessagesHoldNobodyUp) {
  int pipe[2];
  ASSERT_EQ(::pipe(pipe), 0);
  const std::string full(65'536, 'x');
  ::fcntl(pipe[1], F_SETPIPE_SZ, int(full.size()));
  ASSERT_EQ(::write(pipe[1], full.data(), full.size()), ssize_t(full.size()));
  Program atd("/bin/sh", {"-c", "exec \"$0\" \"$@\" 2>&" + std::to_string(pipe[1]), ATD_PROGRAM,
                          "--modem", "sim", "--socket", socket, "--verbose"});
  ASSERT_TRUE(atd.ready());
  for (int i = 0; i < 3; ++i) EXPECT_EQ(ask(socket, "no command"), kError);
  EXPECT_EQ(atd.end().status, 0);
  // Nor does a pipe as transcript, or what a link or another name leads to.
  const std::string fifo = folder.file("fifo"), link = folder.file("link");
  ::mkfifo(fifo.c_str(), 0600);
  std::ofstream(log) << "kept";
  ::symlink(log.c_str(), link.c_str());
  for (const auto& [path, said] : {std::pair(fifo, "fifo"), {link, "link"}}) {
    const Ended ended = run({"--modem", "sim", "--socket", socket, "--log", path});
    EXPECT_EQ(ended.status, 1);
    EXPECT_NE(ended.err.find(said), std::string::npos) << ended.err;
  }
  ::link(log.c_str(), folder.file("name").c_str());
  EXPECT_EQ(run({"--modem", "sim", "--socket", socket, "--log", log}).status, 1);
  EXPECT_EQ(contents(log), "kept");
  ::unlink(log.c_str());
  // What others could read is the owner's.
  ::chmod(folder.file("name").c_str(), 0644);
  EXPECT_EQ(start({"--log", folder.file("name")})->end().status, 0);
  EXPECT_EQ(mode_of(folder.file("name")), 0600u);
  // Nor a full pipe that is to be told of the beginning, and a transcript that may not grow.
  Program told("/bin/sh",
               {"-c", "ulimit -f 1; exec \"$0\" \"$@\"", ATD_PROGRAM, "--modem", "sim", "--socket",
                socket, "--log", folder.file("short"), "--ready-fd", std::to_string(pipe[1])},
               false);
  int client;
  while ((client = test::connect_to(socket)) < 0) std::this_thread::yield();
  ::close(client);
  EXPECT_NE(ask_until_open("AT+CPBR=1,250"), "closed");
  EXPECT_EQ(ask(socket, "AT+CSQ"), kCsq);
  EXPECT_EQ(told.end().status, 0);
  ::close(pipe[0]);
  ::close(pipe[1]);
}

TEST_F(Atd, FinishesTheCommandUnderWay) {
  const auto atd = start({"--sim-fault", "*:AT+CSQ:delay=100", "--log", log});
  const int under_way = test::connect_to(socket);
  const int waiting = test::connect_to(socket);
  test::send_request(under_way, "AT+CSQ");
  while (contents(log).find("AT+CSQ") == std::string::npos) std::this_thread::yield();
  test::send_request(waiting, "AT+CSQ");
  EXPECT_EQ(atd->end().status, 0);
  EXPECT_EQ(test::receive_text(under_way), kCsq);
  EXPECT_NE(test::receive_text(waiting), kCsq);
}

TEST_F(Atd, ATranscriptCanBeMovedAwayAndReplayed) {
  // Longer than the fraction of a second in front of each line.
  const std::string pin = "86428642";
  const std::string commands[] = {"AT+CPBR=1,20", "AT+CPIN2 =\"" + pin + "\"", "AT+CSQ", "AT+CSQ"};
  std::vector<std::string> answers;
  auto atd = start({"--sim-fault", "2:AT+CSQ:answer=\\r\\n+CME ERROR: 14\\r\\n", "--log", log,
                    "--sim-echo", "--sim-split"});
  for (const std::string& command : commands) answers.push_back(ask(socket, command));
  // A log that was moved away stays as it is; after the signal a new one begins.
  ::rename(log.c_str(), folder.file("old").c_str());
  const std::string before = contents(folder.file("old"));
  EXPECT_EQ(before.find(pin), std::string::npos);
  atd->signal(SIGHUP);
  while (::access(log.c_str(), F_OK) != 0) std::this_thread::yield();
  ask(socket, "AT+CPAS");
  EXPECT_NE(contents(log).find(" > AT+CPAS"), std::string::npos);
  EXPECT_EQ(contents(folder.file("old")), before);
  EXPECT_EQ(atd->end().status, 0);
  atd = start({"--modem", "replay:" + folder.file("old")});
  for (size_t i = 0; i < answers.size(); ++i) EXPECT_EQ(ask(socket, commands[i]), answers[i]);
  EXPECT_EQ(ask(socket, "AT+NEVER"), kError);
}

TEST_F(Atd, AModemOnATerminal) {
  const std::string tty = folder.file("tty");
  const auto atd = start({"--modem", "tty:" + tty + ",115200,rtscts", "--log", log});
  EXPECT_EQ(ask(socket, "AT+CSQ"), kAway);
  while (contents(log).find("modem lost") == std::string::npos) std::this_thread::yield();
  Program modem(SIMMODEM_PROGRAM,
                {"--pty", tty, "--sim-echo", "--sim-fault", "2:AT+CSQ:hang-up=5"});
  ASSERT_TRUE(modem.ready());
  EXPECT_EQ(ask_until_open("AT+CSQ"), kCsq);
  const std::string whole = ask(socket, "AT+CPBR=1,250");
  EXPECT_NE(whole.find("+CPBR: 32,"), std::string::npos);
  // The device goes away in the middle of an answer, and comes back.
  EXPECT_EQ(ask(socket, "AT+CSQ"), "");
  EXPECT_EQ(ask_until_open("AT+CPBR=1,250"), whole);
  EXPECT_EQ(atd->end().status, 0);
  EXPECT_EQ(modem.end().status, 0);
  EXPECT_EQ(mode_of(tty), 0u);
}

TEST_F(Atd, AModemBehindAnAddress) {
  const int listener = ::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0);
  sockaddr_in address{};
  socklen_t size = sizeof address;
  ASSERT_EQ(::listen(listener, 1), 0);
  ::getsockname(listener, reinterpret_cast<sockaddr*>(&address), &size);
  std::thread modem([listener] {
    const int line = ::accept(listener, nullptr, nullptr);
    qalt::sim::Modem simulated({});
    char bytes[256];
    for (ssize_t n; (n = ::recv(line, bytes, sizeof bytes, 0)) > 0;) {
      simulated.receive({bytes, size_t(n)});
      for (const auto& output : simulated.take()) {
        ::send(line, output.bytes.data(), output.bytes.size(), 0);
      }
    }
    ::close(line);
  });
  const auto atd = start({"--modem", "tcp:127.0.0.1:" + std::to_string(ntohs(address.sin_port))});
  EXPECT_EQ(ask_until_open("AT"), kOk);
  EXPECT_EQ(atd->end().status, 0);
  modem.join();
  ::close(listener);
}

}  // namespace
