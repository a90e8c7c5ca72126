// Every system call of a command exchange, failing in every way that its manual page names: the
// documented result and log lines, no descriptor left open, no hang, and the next command works.
#include <errno.h>
#include <gtest/gtest.h>

#include <thread>

#include "tests/faults/system_calls.h"
#include "tests/link/private_server.h"
#include "tests/support/recorder.h"

namespace {

using test::Call;
using test::kForever;
using Lines = std::vector<std::string>;

const std::string kNoConnection = "can not connect to:/tmp/AT_SERVER_MSG\n";

std::string not_created(int error) {
  return "create connect socket failed,errno is " + std::to_string(error) + "\n";
}

// A server that answers every whole request with OK, until the test ends.
class Server {
 public:
  explicit Server(const std::string& path) {
    EXPECT_EQ(qalt_at_create_server_socket(path.c_str(), &listener_), 1);
    test::redirect_server(path);
    thread_ = std::thread([this] { serve(); });
  }
  ~Server() {
    shutdown(listener_, SHUT_RDWR);
    thread_.join();
    close(listener_);
  }

 private:
  // By the raw calls: the plans are for the library.
  void serve() {
    for (;;) {
      const int connection = int(syscall(SYS_accept4, listener_, nullptr, nullptr, 0));
      if (connection == -1) return;
      AtMsg request;
      if (move_all(SYS_recvfrom, connection, &request)) {
        AtMsg answer = test::frame_of("\r\nOK\r\n");
        move_all(SYS_sendto, connection, &answer);
      }
      syscall(SYS_close, connection);
    }
  }
  static bool move_all(long call, int connection, AtMsg* frame) {
    char* bytes = reinterpret_cast<char*>(frame);
    for (size_t moved = 0; moved < sizeof *frame;) {
      const long count = syscall(call, connection, bytes + moved, sizeof *frame - moved,
                                 MSG_NOSIGNAL, nullptr, nullptr);
      if (count <= 0) return false;
      moved += size_t(count);
    }
    return true;
  }

  int listener_ = -1;
  std::thread thread_;
};

class LinkFaults : public testing::Test {
 protected:
  LinkFaults() { test::no_faults(); }
  ~LinkFaults() override { test::no_faults(); }

  void expect_command_works() {
    AtMsg answer;
    EXPECT_EQ(ClientSendCmd("AT", &answer, 1), 0);
    EXPECT_STREQ(answer.aucDataBuf, "\r\nOK\r\n");
  }

  test::PrivateDirectory directory_;
};

TEST_F(LinkFaults, OfACommand) {
  const Server server(directory_.file("server"));
  const struct {
    std::vector<int> errors;
    Call call;
    int times, skip;
    int result;
    Lines at_com;  // none: what not_created says of the error
    bool connects;
    size_t sleeps;
  } rows[] = {
      {{EACCES, EAFNOSUPPORT, EINVAL, EMFILE, ENFILE, ENOBUFS, ENOMEM, EPROTONOSUPPORT},
       Call::kSocket,
       1,
       0,
       1,
       {},
       false,
       0},
      {{EACCES, EPERM, EADDRINUSE, EADDRNOTAVAIL, EAFNOSUPPORT, EAGAIN, EALREADY, EBADF,
        ECONNREFUSED, EFAULT, EINPROGRESS, EINTR, EISCONN, ENETUNREACH, ENOENT, ENOTSOCK,
        EPROTOTYPE, ETIMEDOUT},
       Call::kConnect,
       kForever,
       0,
       1,
       {},
       false,
       300},
      // A server that comes up late, the last attempt included.
      {{ECONNREFUSED, ENOENT, EAGAIN, EINTR}, Call::kConnect, 3, 0, 0, {"-"}, true, 3},
      {{ECONNREFUSED}, Call::kConnect, 299, 0, 0, {"-"}, true, 299},
      {{EACCES, EAGAIN, EALREADY, EBADF, ECONNRESET, EDESTADDRREQ, EFAULT, EINTR, EINVAL, EISCONN,
        EMSGSIZE, ENOBUFS, ENOMEM, ENOTCONN, ENOTSOCK, EOPNOTSUPP, EPIPE},
       Call::kSend,
       1,
       0,
       1,
       {"send item_id failed\n"},
       true,
       0},
      {{EAGAIN, EBADF, ECONNREFUSED, ECONNRESET, EFAULT, EINTR, EINVAL, ENOMEM, ENOTCONN, ENOTSOCK},
       Call::kRecv,
       1,
       0,
       1,
       {"receive client data error !\n"},
       true,
       0},
      // The answer is there: whether its connection closes well is of no account.
      {{EBADF, EINTR, EIO, ENOSPC, EDQUOT}, Call::kClose, 1, 0, 0, {"-"}, true, 0},
  };
  const long descriptors = test::open_descriptors();
  for (const auto& row : rows) {
    for (const int error : row.errors) {
      SCOPED_TRACE("call " + std::to_string(int(row.call)) + ": " + strerror(error));
      AtMsg answer;
      std::memset(&answer, '#', sizeof answer);
      test::clear_records();
      test::set_plan({row.call, error, row.times, row.skip});
      EXPECT_EQ(ClientSendCmd("AT", &answer, 1), row.result);
      Lines expected = row.at_com.empty() ? Lines{not_created(error)} : row.at_com;
      if (expected == Lines{"-"}) expected.clear();
      EXPECT_EQ(test::logged("at_com", 7), expected);
      EXPECT_EQ(test::logged("libqalt_at", 7), row.connects ? Lines{} : Lines{kNoConnection});
      EXPECT_EQ(test::sleeps(), std::vector<unsigned>(row.sleeps, 1));
      EXPECT_EQ(test::bytes_of(answer),
                test::bytes_of(test::frame_of(row.result == 0 ? "\r\nOK\r\n" : "")));
      test::no_faults();
      expect_command_works();
    }
  }
  // The server may still be busy with the last connection: all of this process's own are closed.
  EXPECT_LE(test::open_descriptors(), descriptors + 1);
}

// The first pieces arrive, then the call fails: nothing of a half answer is handed out.
TEST_F(LinkFaults, InTheMiddleOfAFrame) {
  const Server server(directory_.file("server"));
  for (const Call call : {Call::kSend, Call::kRecv}) {
    for (const int error : {EINTR, ECONNRESET, EPIPE}) {
      for (const int skip : {1, 2, 10}) {
        AtMsg answer;
        test::set_plan({call, error, 1, skip}, 1000);
        EXPECT_EQ(ClientSendCmd("AT", &answer, 1), 1);
        EXPECT_EQ(test::bytes_of(answer), test::bytes_of(AtMsg{}));
        test::no_faults();
        expect_command_works();
      }
    }
  }
}

// Frames whole, in whatever pieces they move.
TEST_F(LinkFaults, ShortSendsAndReceives) {
  const Server server(directory_.file("server"));
  for (const size_t piece : {1, 7, 1000, 10247}) {
    test::set_plan({Call::kSocket, 0, 0}, piece);
    expect_command_works();
    const int pieces = int((sizeof(AtMsg) + piece - 1) / piece);
    EXPECT_EQ(test::uses(Call::kSend), pieces);
    EXPECT_GE(test::uses(Call::kRecv), pieces);
    EXPECT_EQ(test::uses(Call::kClose), 1);
  }
}

// The set-up of a report socket.
TEST_F(LinkFaults, OfAServerSocket) {
  const std::string path = directory_.file("reports");
  const struct {
    Call call;
    std::vector<int> errors;
    std::string line;
  } rows[] = {
      {Call::kSocket,
       {EACCES, EMFILE, ENFILE, ENOBUFS, ENOMEM},
       "can not create socket :" + path + "!"},
      {Call::kBind,
       {EACCES, EADDRINUSE, EBADF, EINVAL, ENOTSOCK, EADDRNOTAVAIL, EFAULT, ELOOP, ENAMETOOLONG,
        ENOENT, ENOMEM, ENOTDIR, EROFS},
       "can not bind socket :" + path + " !"},
      {Call::kListen,
       {EADDRINUSE, EBADF, ENOTSOCK, EOPNOTSUPP},
       "can not liscen socket :" + path + " !"},
  };
  for (const auto& row : rows) {
    for (const int error : row.errors) {
      SCOPED_TRACE(row.line + " " + strerror(error));
      const long descriptors = test::open_descriptors();
      int descriptor = -7;
      test::clear_records();
      test::set_plan({row.call, error});
      EXPECT_EQ(qalt_at_create_server_socket(path.c_str(), &descriptor), -1);
      EXPECT_EQ(test::logged("libqalt_at", 7).back(), row.line);
      // The receiver's body, too, ends and says so.
      test::set_plan({row.call, error});
      EXPECT_EQ(receive_thread(const_cast<char*>(path.c_str())), nullptr);
      EXPECT_EQ(test::logged("at_com", 7), Lines{"can not create at server socket."});
      EXPECT_EQ(test::open_descriptors(), descriptors);
      EXPECT_EQ(descriptor, -7);
      test::no_faults();
      EXPECT_EQ(qalt_at_create_server_socket(path.c_str(), &descriptor), 1);
      close(descriptor);
    }
  }
}

}  // namespace
