// simulate - runs seeds, each in a process of its own, so that none leaves anything to another.
//
// A seed that fails prints itself and what must not be, and leaves a transcript that
// qalt-atd --modem replay: can play.
#include <dlfcn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <algorithm>
#include <array>
#include <chrono>
#include <csignal>
#include <cstdio>
#include <fstream>
#include <iomanip>
#include <iostream>
#include <sstream>
#include <string>

#include "tests/simulation/clients.h"
#include "tests/simulation/network.h"

namespace qalt::simulation {
namespace {

// Of the real clock: no seed needs a tenth of it.
constexpr unsigned kLongestSeconds = 120;

// The copy of the library and the tool that the client of this number works with.
Client& load_client(size_t number) {
  const std::string path = CLIENT_MODULE + std::to_string(number) + ".so";
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  using Make = Client* (*)();
  return *reinterpret_cast<Make>(dlsym(module, "simulation_client"))();
}

// The server is killed, and is there again after a while.
void live(Surroundings& around, Chance chance, int lives) {
  if (lives == 0) return;
  around.world.after(Time(chance.between(1, 20000)), [&around, chance, lives]() mutable {
    around.server.kill();
    around.world.after(Time(chance.between(10, 5000)), [&around, chance, lives] {
      around.server.start();
      live(around, chance, lives - 1);
    });
  });
}

// Somebody changes contacts at the phone itself.
void change_by_itself(Surroundings& around, Chance chance) {
  if (around.scenario.own_changes == 0) return;
  const Time pause(chance.between(1, 2000 * around.scenario.own_changes));
  around.world.after(pause, [&around, chance]() mutable {
    Machine& machine = *around.scenario.machine;
    if (machine.contacts().empty()) return;
    auto some = machine.contacts().begin();
    std::advance(some, chance.below(int(machine.contacts().size())));
    const int index = some->first;
    Content content;
    if (chance.one_in(2)) content = new_contact(chance, 900000 + chance.below(99999), 0);
    machine.change_by_itself(index, content);
    around.oracle.changed(index, nullptr);
    change_by_itself(around, chance);
  });
}

struct Options {
  uint64_t first = 1;
  uint64_t count = 100;
  int seconds = 0;
  uint64_t commands = 0;
  std::string transcript = "simulation.transcript";
  bool verbose = false;
};

// A seed's world, from its beginning to its end. What it came to goes to the pipe, messages of the
// tool and of sanitizers to `messages`.
[[noreturn]] void run_alone(uint64_t seed, const std::string& transcript, int pipe,
                            FILE* messages) {
  alarm(kLongestSeconds);
  dup2(fileno(messages), STDERR_FILENO);
  const auto end = [pipe](int status, const std::string& text) {
    const ssize_t written = write(pipe, text.data(), text.size());
    _exit(written == ssize_t(text.size()) ? status : 2);
  };
  const Scenario scenario = make_scenario(seed);
  World world;
  world.when_wrong = [&](const std::string& what) {
    std::ofstream(transcript, std::ios::binary) << world.transcript();
    end(1, scenario.text + "\n  WRONG: " + what + "\n  transcript: " + transcript + "\n");
  };
  network::begin(world);
  Chance chance(~seed);
  Machine& machine = *scenario.machine;
  Oracle oracle(world, machine);
  const auto line = new_line(world, machine, chance.branch(), scenario.line);
  const auto server = new_server(world, *line, machine, oracle);
  server->start();
  Surroundings around{world, *server, oracle, scenario};
  live(around, chance.branch(), scenario.lives);
  change_by_itself(around, chance.branch());
  for (size_t k = 0; k < scenario.clients.size(); ++k) {
    world.spawn([&around, k, &client = load_client(k), own = chance.branch()] {
      run_client(around, int(k), client, own);
    });
  }
  world.run();
  end(0, std::to_string(server->commands()) + " " + std::to_string(world.now().count() / 1000) +
             " " + scenario.text + "\n");
  std::abort();
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
  constexpr off_t kMost = 8000;
  const off_t size = lseek(fileno(file), 0, SEEK_END);
  lseek(fileno(file), std::max<off_t>(size - kMost, 0), SEEK_SET);
  return read_all(fileno(file));
}

// Adds to `sums`: AT commands, and seconds of simulated time.
bool run_seed(uint64_t seed, const Options& options, std::array<uint64_t, 2>& sums) {
  int ends[2];
  if (pipe(ends) != 0) return false;
  FILE* const messages = std::tmpfile();
  const pid_t child = fork();
  if (child == 0) {
    close(ends[0]);
    run_alone(seed, options.transcript, ends[1], messages);
  }
  close(ends[1]);
  const std::string text = read_all(ends[0]);
  close(ends[0]);
  int status = 0;
  waitpid(child, &status, 0);
  if (status != 0 || options.verbose) std::cout << "seed " << seed << ": " << text << std::flush;
  if (status != 0 && text.empty()) {
    const bool endless = WIFSIGNALED(status) && WTERMSIG(status) == SIGALRM;
    std::cout << (endless ? "it does not come to an end" : "it ends by itself") << "\n"
              << last_of(messages) << std::endl;
  }
  std::fclose(messages);
  std::istringstream figures(text);
  for (uint64_t& sum : sums) {
    uint64_t figure = 0;
    if (figures >> figure) sum += figure;
  }
  return status == 0;
}

int run_seeds(const Options& options) {
  using Clock = std::chrono::steady_clock;
  const auto begun = Clock::now();
  std::array<uint64_t, 2> sums{};
  uint64_t done = 0;
  const auto go_on = [&] {
    if (options.commands != 0) return sums[0] < options.commands;
    if (options.seconds != 0) return Clock::now() - begun < std::chrono::seconds(options.seconds);
    return done < options.count;
  };
  for (; go_on(); ++done) {
    if (!run_seed(options.first + done, options, sums)) return 1;
  }
  const double took = std::chrono::duration<double>(Clock::now() - begun).count();
  std::cout << done << " seeds from " << options.first << ": " << sums[0] << " AT commands and "
            << sums[1] / 3600 << " hours of simulated time in " << std::fixed
            << std::setprecision(1) << took << " s\n";
  return 0;
}

}  // namespace
}  // namespace qalt::simulation

int main(int argc, char** argv) {
  qalt::simulation::Options options;
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
  return run_seeds(options);
}
