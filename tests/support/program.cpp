#include "tests/support/program.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>

#include <fstream>
#include <sstream>
#include <utility>

namespace test {

namespace {

int scratch_file() {
  char name[] = "/tmp/qalt_program_XXXXXX";
  const int file = ::mkostemp(name, O_CLOEXEC);
  ::unlink(name);
  return file;
}

std::string text_of(int file) {
  std::string text(1 << 20, '\0');
  const ssize_t length = ::pread(file, text.data(), text.size(), 0);
  text.resize(length > 0 ? size_t(length) : 0);
  return text;
}

}  // namespace

Program::Program(const std::string& program, std::vector<std::string> arguments, bool tells_ready)
    : output_(scratch_file()), errors_(scratch_file()) {
  int ready[2];
  if (::pipe2(ready, tells_ready ? 0 : O_CLOEXEC) != 0) std::abort();
  arguments.insert(arguments.begin(), program);
  if (tells_ready) arguments.insert(arguments.end(), {"--ready-fd", std::to_string(ready[1])});
  std::vector<char*> argv;
  for (std::string& argument : arguments) argv.push_back(argument.data());
  argv.push_back(nullptr);

  process_ = ::fork();
  if (process_ == 0) {
    ::close(ready[0]);
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // a test that is broken off leaves nothing behind
    ::dup2(::open("/dev/null", O_RDONLY), STDIN_FILENO);
    ::dup2(output_, STDOUT_FILENO);
    ::dup2(errors_, STDERR_FILENO);
    ::execv(argv[0], argv.data());
    ::_exit(127);
  }
  ::close(ready[1]);
  char byte;
  ready_ = ::read(ready[0], &byte, 1) == 1;
  ::close(ready[0]);
}

Program::~Program() {
  if (process_ > 0) end(SIGKILL);
  ::close(output_);
  ::close(errors_);
}

Ended Program::end(int signal) {
  int status = 0;
  const pid_t process = std::exchange(process_, -1);
  if (signal != 0) ::kill(process, signal);
  ::waitpid(process, &status, 0);
  status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
  return {status, text_of(output_), text_of(errors_)};
}

int connect_to(const std::string& path) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  if (really_connect(socket, address_of(path)) == 0) return socket;
  ::close(socket);
  return -1;
}

int listen_at(const std::string& path, int backlog) {
  const int socket = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  const sockaddr_un address = address_of(path);
  const bool bound =
      ::bind(socket, reinterpret_cast<const sockaddr*>(&address), sizeof address) == 0;
  return bound && ::listen(socket, backlog) == 0 ? socket : -1;
}

void send_request(int socket, const std::string& command, uint32_t timeout_ms) {
  AtMsg frame;
  std::memset(&frame, 'J', sizeof frame);
  frame.ulTimeout = timeout_ms;
  std::memcpy(frame.aucDataBuf, command.c_str(), command.size() + 1);
  ::send(socket, &frame, sizeof frame, MSG_NOSIGNAL);
}

std::string receive_text(int socket) {
  AtMsg frame{};
  const ssize_t size = ::recv(socket, &frame, sizeof frame, MSG_WAITALL);
  ::close(socket);
  if (size != ssize_t(sizeof frame)) return "closed";
  const std::string text(frame.aucDataBuf);
  return frame.usParaLen == text.size() ? text : "length " + std::to_string(frame.usParaLen);
}

std::string ask(const std::string& path, const std::string& command, uint32_t timeout_ms) {
  const int socket = connect_to(path);
  send_request(socket, command, timeout_ms);
  return receive_text(socket);
}

std::string contents(const std::string& path) {
  std::ostringstream text;
  text << std::ifstream(path).rdbuf();
  return text.str();
}

}  // namespace test
