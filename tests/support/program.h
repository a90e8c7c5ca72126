// program.h - a built program run by a test, and a client that speaks frames by hand.
#ifndef QALT_TESTS_SUPPORT_PROGRAM_H_
#define QALT_TESTS_SUPPORT_PROGRAM_H_

#include <csignal>
#include <string>
#include <vector>

#include "tests/support/private_server.h"

namespace test {

// How a program ended: its exit status, or 1000 and the signal, and what it wrote.
struct Ended {
  int status;
  std::string out;
  std::string err;
};

class Program {
 public:
  // Starts a program; one that tells when it is ready, by "--ready-fd", has said so or ended then.
  Program(const std::string& program, std::vector<std::string> arguments, bool tells_ready = true);
  // Kills it if it still runs.
  ~Program();
  Program(const Program&) = delete;
  Program& operator=(const Program&) = delete;

  bool ready() const { return ready_; }
  pid_t process() const { return process_; }
  void signal(int number) const { ::kill(process_, number); }
  // Sends the signal, if any, and waits for the end.
  Ended end(int signal = SIGTERM);

 private:
  pid_t process_ = -1;
  bool ready_ = false;
  int output_;
  int errors_;
};

// A connection to a Unix-domain socket; -1 if nobody listens.
int connect_to(const std::string& path);
int listen_at(const std::string& path, int backlog);
// Sends a request frame whose text is followed by junk and whose length field lies.
void send_request(int socket, const std::string& command, uint32_t timeout_ms = 5000);
// Receives a frame and closes; its text, or "closed" when the peer closed before a whole one.
std::string receive_text(int socket);
// A command and its answer.
std::string ask(const std::string& path, const std::string& command, uint32_t timeout_ms = 5000);

std::string contents(const std::string& path);

}  // namespace test

#endif  // QALT_TESTS_SUPPORT_PROGRAM_H_
