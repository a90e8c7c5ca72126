// Runs a command and prints "WALL_US CPU_US", its time and its processor time. What the command
// prints is thrown away.
// usage: phonebook_run [--with PID] COMMAND...   PID's processor time meanwhile is added
//        phonebook_run --memory COMMAND...       prints the resident memory in KB at its end
#include <fcntl.h>
#include <sys/ptrace.h>
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <csignal>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

long us_of(const timeval& time) {
  return time.tv_sec * 1'000'000L + time.tv_usec;
}

// Of all threads, as the scheduler counts it: /proc/PID/stat has ticks of 10 ms.
long cpu_us_of(const std::string& process) {
  long sum = 0;
  for (const auto& thread : std::filesystem::directory_iterator("/proc/" + process + "/task")) {
    long nanoseconds = 0;
    std::ifstream(thread.path() / "schedstat") >> nanoseconds;
    sum += nanoseconds / 1000;
  }
  return sum;
}

long rss_kb_of(pid_t process) {
  std::ifstream status("/proc/" + std::to_string(process) + "/status");
  for (std::string word; status >> word;) {
    long kilobytes = 0;
    if (word == "VmRSS:" && status >> kilobytes) return kilobytes;
  }
  return -1;
}

[[noreturn]] void become(char** command, bool traced) {
  const int nowhere = ::open("/dev/null", O_RDWR);
  for (const int descriptor : {STDIN_FILENO, STDOUT_FILENO}) ::dup2(nowhere, descriptor);
  if (traced) ::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr);
  ::execvp(command[0], command);
  std::perror(command[0]);
  ::_exit(127);
}

// The process stops when it begins and once more when it is about to end, with all that it holds.
int memory_of(char** command) {
  const pid_t process = ::fork();
  if (process == 0) become(command, true);
  int status = 0;
  ::waitpid(process, &status, 0);
  ::ptrace(PTRACE_SETOPTIONS, process, nullptr, PTRACE_O_TRACEEXIT);
  for (int signal = 0; WIFSTOPPED(status); signal = WSTOPSIG(status)) {
    if (status >> 8 == (SIGTRAP | PTRACE_EVENT_EXIT << 8)) {
      std::printf("%ld\n", rss_kb_of(process));
    }
    if (signal == SIGTRAP) signal = 0;
    ::ptrace(PTRACE_CONT, process, nullptr, signal);
    ::waitpid(process, &status, 0);
  }
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

int times_of(char** command, const std::string& other) {
  const long other_us = other.empty() ? 0 : cpu_us_of(other);
  const auto start = std::chrono::steady_clock::now();
  const pid_t process = ::fork();
  if (process == 0) become(command, false);
  int status = 0;
  rusage usage{};
  ::wait4(process, &status, 0, &usage);
  const std::chrono::duration<double, std::micro> wall = std::chrono::steady_clock::now() - start;
  long cpu_us = us_of(usage.ru_utime) + us_of(usage.ru_stime);
  if (!other.empty()) cpu_us += cpu_us_of(other) - other_us;
  std::printf("%.0f %ld\n", wall.count(), cpu_us);
  return WIFEXITED(status) ? WEXITSTATUS(status) : 1;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string option = argc > 2 ? argv[1] : "";
  if (option == "--memory") return memory_of(argv + 2);
  if (option == "--with" && argc > 3) return times_of(argv + 3, argv[2]);
  return argc > 1 ? times_of(argv + 1, "") : 2;
}
