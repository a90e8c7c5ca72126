// How long a client of qalt-atd waits at most beside others that behave badly, on a simulated modem
// with 5 ms for a command: rows for scripts/bench.sh.
// usage: server_waits QALT_ATD [SECONDS]
#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <functional>
#include <string>
#include <thread>
#include <vector>

#include "qalt_at/link.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::string g_path;

int connected() {
  sockaddr_un address{};
  address.sun_family = AF_UNIX;
  std::memcpy(address.sun_path, g_path.c_str(), g_path.size());
  const int descriptor = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
  while (::connect(descriptor, reinterpret_cast<sockaddr*>(&address), sizeof address) != 0)
    continue;
  return descriptor;
}

void send_command(int descriptor, const char* command, uint32_t timeout, size_t size) {
  AtMsg frame{};
  frame.ulTimeout = timeout;
  std::strcpy(frame.aucDataBuf, command);
  [[maybe_unused]] const ssize_t sent = ::send(descriptor, &frame, size, MSG_NOSIGNAL);
}

bool ask(const char* command, uint32_t timeout) {
  const int descriptor = connected();
  send_command(descriptor, command, timeout, sizeof(AtMsg));
  AtMsg frame{};
  const ssize_t size = ::recv(descriptor, &frame, sizeof frame, MSG_WAITALL);
  ::close(descriptor);
  return size == sizeof frame && std::strstr(frame.aucDataBuf, "+CSQ: ") != nullptr;
}

// Keeps so many connections, with so much of a frame each; one that was closed is made anew.
void hold(size_t connections, size_t bytes) {
  std::vector<pollfd> all(connections, pollfd{-1, 0, 0});
  for (;;) {
    for (pollfd& one : all) {
      if (one.fd >= 0 && one.revents == 0) continue;
      ::close(one.fd);
      one.fd = connected();
      if (bytes > 0) send_command(one.fd, "AT+CSQ", 1000, bytes);
    }
    ::poll(all.data(), all.size(), -1);
  }
}

void in_threads(int count) {
  for (int k = 1; k < count; ++k) {
    std::thread([] {
      for (;;) ask("AT+CSQ", 5000);
    }).detach();
  }
  for (;;) ask("AT+CSQ", 5000);
}

void time_out() {
  for (;;) ask("AT+CIMI", 1);
}

void leave() {
  for (;;) {
    const int descriptor = connected();
    send_command(descriptor, "AT+CIMI", 600'000, sizeof(AtMsg));
    std::this_thread::sleep_for(milliseconds(20));
    ::close(descriptor);
  }
}

pid_t start(const std::function<void()>& program) {
  const pid_t process = ::fork();
  if (process != 0) return process;
  ::prctl(PR_SET_PDEATHSIG, SIGKILL);  // one that is broken off leaves nothing behind
  program();
  ::_exit(1);
}

void kill_all(const std::vector<pid_t>& processes) {
  for (const pid_t process : processes) ::kill(process, SIGKILL);
  for (const pid_t process : processes) ::waitpid(process, nullptr, 0);
}

pid_t start_server(char* program) {
  int ready[2];
  if (::pipe(ready) != 0) std::abort();
  std::string descriptor = std::to_string(ready[1]);
  const pid_t server = start([&] {
    ::close(STDERR_FILENO);
    ::open("/dev/null", O_WRONLY);
    ::execl(program, program, "--modem", "sim", "--sim-delay", "5", "--sim-fault",
            "*:AT+CIMI:never", "--socket", g_path.c_str(), "--ready-fd", descriptor.c_str(),
            nullptr);
  });
  ::close(ready[1]);
  char byte;
  if (::read(ready[0], &byte, 1) != 1) std::exit(1);
  ::close(ready[0]);
  return server;
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2) return 2;
  char folder[] = "/tmp/server_waits_XXXXXX";
  if (::mkdtemp(folder) == nullptr) return 1;
  g_path = std::string(folder) + "/at";
  const std::chrono::seconds duration(argc > 2 ? std::atoi(argv[2]) : 5);
  const struct {
    const char* work;
    int processes;
    std::function<void()> program;
  } rows[] = {
      {"400 silent connections", 1, [] { hold(400, 0); }},
      {"400 half frames", 1, [] { hold(400, sizeof(AtMsg) / 2); }},
      {"200 threads of one process", 1, [] { in_threads(200); }},
      {"50 loops of time-outs of 1 ms", 50, time_out},
      {"64 clients that leave", 64, leave},
  };
  for (const auto& row : rows) {
    const pid_t server = start_server(argv[1]);
    std::vector<pid_t> others;
    for (int k = 0; k < row.processes; ++k) others.push_back(start(row.program));
    std::this_thread::sleep_for(milliseconds(500));
    Clock::duration longest{};
    unsigned wrong = 0;
    for (const auto last = Clock::now() + duration; Clock::now() < last;) {
      const auto begun = Clock::now();
      if (!ask("AT+CSQ", 5000)) ++wrong;
      longest = std::max(longest, Clock::now() - begun);
      std::this_thread::sleep_for(milliseconds(20));
    }
    kill_all(others);
    kill_all({server});
    ::unlink((g_path + ".lock").c_str());
    ::unlink(g_path.c_str());
    std::printf("longest wait for a command beside %s, ms\t%.0f\t-\t-\t-\tours<=%s\n", row.work,
                std::chrono::duration<double, std::milli>(longest).count(),
                wrong == 0 ? "1005" : "0");
  }
  ::rmdir(folder);
  return 0;
}
