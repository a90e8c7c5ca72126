// simulate - runs seeds, each in a process of its own, so that none leaves anything to another.
//
// A seed that fails prints itself and what must not be, and leaves a transcript that
// qalt-atd --modem replay: can play.
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iostream>
#include <string>

#include "tests/simulation/run.h"

namespace {

using qalt::simulation::RunReport;

// Of the real clock: no seed needs a tenth of it.
constexpr unsigned kLongestSeconds = 120;

constexpr int kWrong = 3;

struct Options {
  uint64_t first = 1;
  uint64_t count = 100;
  int seconds = 0;
  uint64_t commands = 0;
  std::string transcript = "simulation.transcript";
  bool verbose = false;
};

// The child's side: the result goes to the pipe, messages of the tool and of sanitizers to
// `messages`.
[[noreturn]] void run_alone(uint64_t seed, const Options& options, int pipe, FILE* messages) {
  alarm(kLongestSeconds);
  dup2(fileno(messages), STDERR_FILENO);
  const RunReport report = qalt::simulation::run_seed(seed, [&](const std::string& what,
                                                                const std::string& scenario,
                                                                const std::string& transcript) {
    std::ofstream(options.transcript, std::ios::binary) << transcript;
    const std::string text = "seed " + std::to_string(seed) + ": " + scenario +
                             "\n  WRONG: " + what + "\n  transcript: " + options.transcript + "\n";
    [[maybe_unused]] const ssize_t unused = write(pipe, text.data(), text.size());
    _exit(kWrong);
  });
  const std::string text = std::to_string(report.commands) + " " + std::to_string(report.seconds) +
                           " " + report.scenario + "\n";
  [[maybe_unused]] const ssize_t unused = write(pipe, text.data(), text.size());
  _exit(0);
}

std::string read_all(int descriptor) {
  std::string text;
  char buffer[4096];
  for (ssize_t count; (count = read(descriptor, buffer, sizeof buffer)) > 0;) {
    text.append(buffer, size_t(count));
  }
  return text;
}

// The last that was said; a sanitizer's report is that.
std::string last_of(FILE* file) {
  constexpr long kMost = 8000;
  std::fseek(file, 0, SEEK_END);
  std::fseek(file, std::max(std::ftell(file) - kMost, 0L), SEEK_SET);
  std::string text(kMost, '\0');
  text.resize(std::fread(text.data(), 1, text.size(), file));
  return text;
}

bool run_seed(uint64_t seed, const Options& options, RunReport& sum) {
  int ends[2];
  if (pipe(ends) != 0) return false;
  FILE* const messages = std::tmpfile();
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    run_alone(seed, options, ends[1], messages);
  }
  close(ends[1]);
  const std::string text = read_all(ends[0]);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  const bool wrong = WIFEXITED(status) && WEXITSTATUS(status) == kWrong;
  if (status != 0 && !wrong) {
    std::cout << "seed " << seed << ": it "
              << (WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM ? "does not come to an end"
                                                                     : "ends by itself")
              << "\n"
              << last_of(messages) << std::endl;
  }
  std::fclose(messages);
  if (status != 0) {
    std::cout << text << std::flush;
    return false;
  }
  unsigned long long commands = 0;
  long long seconds = 0;
  std::sscanf(text.c_str(), "%llu %lld", &commands, &seconds);
  sum.commands += commands;
  sum.seconds += seconds;
  if (options.verbose) std::cout << "seed " << seed << ": " << text << std::flush;
  return true;
}

}  // namespace

int main(int argc, char** argv) {
  Options options;
  CLI::App app(
      "Clients, the server and a modem in simulated time, everything by chance from a seed");
  app.add_option("--seed", options.first, "The first seed")->capture_default_str();
  app.add_option("--count", options.count, "How many seeds")->capture_default_str();
  app.add_option("--seconds", options.seconds, "Further seeds for so long, instead");
  app.add_option("--commands", options.commands,
                 "Further seeds up to so many AT commands, instead");
  app.add_option("--transcript", options.transcript, "Where that of a failed seed goes")
      ->capture_default_str();
  app.add_flag("--verbose", options.verbose, "A line for each seed");
  CLI11_PARSE(app, argc, argv);

  using Clock = std::chrono::steady_clock;
  const auto begun = Clock::now();
  RunReport sum;
  uint64_t done = 0;
  const auto go_on = [&] {
    if (options.commands != 0) return sum.commands < options.commands;
    if (options.seconds != 0) return Clock::now() - begun < std::chrono::seconds(options.seconds);
    return done < options.count;
  };
  for (; go_on(); ++done) {
    if (!run_seed(options.first + done, options, sum)) return 1;
  }
  const double took = std::chrono::duration<double>(Clock::now() - begun).count();
  std::printf("%llu seeds from %llu: %llu AT commands and %lld hours of simulated time in %.1f s\n",
              (unsigned long long)done, (unsigned long long)options.first,
              (unsigned long long)sum.commands, (long long)(sum.seconds / 3600), took);
  return 0;
}
