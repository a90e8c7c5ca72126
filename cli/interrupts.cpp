#include "cli/interrupts.h"

#include <poll.h>
#include <pthread.h>
#include <signal.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <chrono>
#include <cstdint>
#include <cstdlib>
#include <string_view>
#include <thread>

#include "qalt_at/detail/result.hpp"

namespace qalt::cli {
namespace {

std::atomic<bool> g_interrupted = false;
int g_descriptor = -1;

void watch(sigset_t signals) {
  using Clock = std::chrono::steady_clock;
  Clock::time_point first;
  for (int signal = 0;;) {
    if (sigwait(&signals, &signal) != 0) continue;
    if (g_interrupted.exchange(true)) {
      // timeout(1) and a terminal that closes send their signal twice, or two of them.
      const bool meant = signal == SIGINT && Clock::now() - first >= std::chrono::seconds(1);
      if (meant) _exit(int(Cause::kInterrupted));
      continue;
    }
    first = Clock::now();
    const uint64_t one = 1;
    [[maybe_unused]] ssize_t unused = write(g_descriptor, &one, sizeof one);
    constexpr std::string_view kText = "\nqalt-pb: ending after the command under way\n";
    if (isatty(STDERR_FILENO)) unused = write(STDERR_FILENO, kText.data(), kText.size());
  }
}

}  // namespace

void start_interrupts() {
  // A reader of the output that goes away is an error of the output, not the end of a job.
  signal(SIGPIPE, SIG_IGN);
  g_descriptor = eventfd(0, EFD_CLOEXEC);
  sigset_t signals;
  sigemptyset(&signals);
  for (const int number : {SIGINT, SIGTERM}) sigaddset(&signals, number);
  // nohup(1) has it ignored, and so it stays.
  struct sigaction hangup = {};
  if (sigaction(SIGHUP, nullptr, &hangup) == 0 && hangup.sa_handler != SIG_IGN) {
    sigaddset(&signals, SIGHUP);
  }
  pthread_sigmask(SIG_BLOCK, &signals, nullptr);
  std::thread(watch, signals).detach();
}

bool interrupted() {
  return g_interrupted;
}

int interrupt_descriptor() {
  return g_descriptor;
}

void pause_second() {
  pollfd wait = {g_descriptor, POLLIN, 0};
  poll(&wait, 1, 1000);
}

bool wait_readable(int descriptor) {
  pollfd wait[] = {{g_descriptor, POLLIN, 0}, {descriptor, POLLIN, 0}};
  while (poll(wait, 2, -1) == -1 && errno == EINTR) {
  }
  return wait[0].revents == 0;
}

}  // namespace qalt::cli
