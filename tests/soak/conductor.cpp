// soak: owners of contacts against one AT server and one modem for some minutes, while the modem
// misbehaves and the server is killed. Nothing may be lost, and nothing may grow.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <filesystem>
#include <fstream>
#include <iostream>
#include <memory>
#include <random>
#include <thread>
#include <vector>

#include "qalt_at/link.h"
#include "tests/soak/soak.h"
#include "tests/support/private_tmp.h"
#include "tests/support/program.h"

namespace soak {
namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

constexpr int kOwners = 8;
constexpr long kToleranceKb = 1024;
const std::string kModem = "/tmp/modem";

// Each on one line in so many, so that a minute has some of each and most commands succeed. No
// refused character set: the C functions take that for a modem that has no other.
std::vector<std::string> fault_rules() {
  std::vector<std::string> rules = {
      "1/1500:AT+CPBR:never",
      "1/1500:AT+CPBW:never",
      "1/3000:AT+CSCS:never",
      "1/1500:AT+CPB:delay=250",
      "1/3000:AT+CSCS:delay=210",
      "1/100:AT+CPB:delay=15",
      "1/1500:AT+CPBR:cut=40",
      "1/3000:AT+CPBW:cut=3",
      "1/3000:AT+CSCS:cut=0",
      "1/3000:AT+CPBR:hang-up=40",
      "1/3000:AT+CPBW:hang-up=0",
      "1/3000:AT+CSCS:hang-up=4",
      "1/200:AT+CPB:answer=\\r\\nERROR\\r\\n",
      "1/200:AT+CPB:answer=\\r\\n+CME ERROR: 14\\r\\n",
  };
  const char* const places[] = {"before", "inside", "after"};
  for (const std::string& report : kReports) {
    for (const char* place : places) {
      rules.push_back("1/150:AT+CPB:report-" + std::string(place) + "=" + report);
    }
  }
  return rules;
}

// What a process holds of the system.
struct ProcessState {
  long resident_kb = 0;  // VmRSS
  long descriptors = 0;
};

ProcessState state_of(const test::Program& program) {
  ProcessState state;
  const std::string folder = "/proc/" + std::to_string(program.process());
  std::ifstream status(folder + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) state.resident_kb = std::stol(line.substr(6));
  }
  std::error_code gone;
  const std::filesystem::directory_iterator open(folder + "/fd", gone);
  state.descriptors = std::distance(begin(open), end(open));
  return state;
}

class Soak {
 public:
  Soak(unsigned seed, unsigned seconds) : random_(seed), seconds_(seconds) {}

  bool run() {
    start_modem();
    start_server();
    if (!right_) return false;
    while (test::ask(QALT_AT_SERVER_PATH, "AT") != "\r\nOK\r\n") {
      std::this_thread::sleep_for(milliseconds(100));
    }
    std::this_thread::sleep_for(milliseconds(500));
    const long modem_descriptors = state_of(*modem_).descriptors;
    const long server_descriptors = state_of(*server_).descriptors;
    start_owners();

    const auto start = Clock::now();
    kill_servers_until(start + milliseconds(600) * seconds_);
    // The last server is left alone, to see what it gathers.
    std::this_thread::sleep_until(start + milliseconds(700) * seconds_);
    const long modem_memory = state_of(*modem_).resident_kb;
    const long server_memory = state_of(*server_).resident_kb;
    end_owners();
    std::this_thread::sleep_for(milliseconds(1000));
    // Descriptors as they were before anybody connected, memory as it was in full work.
    compare("modem", {modem_memory, modem_descriptors}, state_of(*modem_));
    compare("server", {server_memory, server_descriptors}, state_of(*server_));
    server_.reset();
    const test::Ended modem = modem_->end(SIGTERM);
    std::cout << "server killed " << kills_
              << " times; faults of the modem, on one line in so many:\n"
              << modem.out << modem.err;
    return right_;
  }

 private:
  unsigned below(unsigned bound) { return unsigned(random_() % bound); }

  void fail(const std::string& what) {
    std::cout << "FAILED: " << what << std::endl;
    right_ = false;
  }

  void start_modem() {
    std::ofstream("/tmp/contacts.json") << "[]";
    std::vector<std::string> options = {"--pty",          kModem,
                                        "--sim-contacts", "/tmp/contacts.json",
                                        "--sim-seed",     std::to_string(below(1 << 30))};
    for (const std::string& rule : fault_rules()) {
      options.push_back("--sim-fault=" + rule);
    }
    modem_ = std::make_unique<test::Program>(SIMMODEM_PROGRAM, options);
    if (!modem_->ready()) fail("the modem did not start: " + modem_->end(0).err);
  }

  static std::string report_socket(int owner) { return "/tmp/reports." + std::to_string(owner); }

  void start_server() {
    // Ms: a late answer comes later.
    std::vector<std::string> options = {"--modem", "tty:" + kModem, "--longest-wait", "200"};
    for (int owner = 0; owner < kOwners; ++owner) {
      options.push_back("--report-to=" + report_socket(owner));
    }
    server_ = std::make_unique<test::Program>(ATD_PROGRAM, options);
    if (!server_->ready()) fail("the server did not start: " + server_->end(0).err);
  }

  void start_owners() {
    for (int owner = 0; owner < kOwners; ++owner) {
      const std::vector<std::string> options = {
          "--first",   std::to_string(1 + owner * kContactsEach),
          "--seed",    std::to_string(below(1 << 30)),
          "--seconds", std::to_string(seconds_),
          "--reports", report_socket(owner)};
      owners_.push_back(std::make_unique<test::Program>(CLIENT_PROGRAM, options));
    }
  }

  void kill_servers_until(Clock::time_point end) {
    for (;;) {
      std::this_thread::sleep_for(milliseconds(300 + below(3000)));
      if (Clock::now() > end || !right_) return;
      server_->end(SIGKILL);
      ++kills_;
      std::this_thread::sleep_for(milliseconds(below(200)));
      start_server();
    }
  }

  void end_owners() {
    for (int owner = 0; owner < kOwners; ++owner) {
      const auto [status, out, err] = owners_[size_t(owner)]->end(0);
      std::cout << "owner " << owner << ": " << out;
      if (status > 1000) fail("it ended by signal " + std::to_string(status - 1000));
      if (status != 0) fail("owner " + std::to_string(owner) + " " + err);
    }
  }

  void compare(const std::string& who, const ProcessState& start, const ProcessState& end) {
    std::cout << who << ": " << start.resident_kb << " kB -> " << end.resident_kb << " kB, "
              << start.descriptors << " -> " << end.descriptors << " descriptors\n";
    if (end.descriptors != start.descriptors ||
        end.resident_kb > start.resident_kb + kToleranceKb) {
      fail("the " + who + " has grown");
    }
  }

  std::mt19937 random_;
  unsigned seconds_;
  std::unique_ptr<test::Program> modem_;
  std::unique_ptr<test::Program> server_;
  std::vector<std::unique_ptr<test::Program>> owners_;
  unsigned kills_ = 0;
  bool right_ = true;
};

}  // namespace
}  // namespace soak

int main(int argc, char** argv) {
  unsigned seed = std::random_device{}() % 1000000;
  double minutes = 1;
  CLI::App app("soak - clients, server and modem under faults; SEED and MINUTES of make soak");
  app.add_option("--seed", seed);
  app.add_option("--minutes", minutes)->check(CLI::PositiveNumber);
  CLI11_PARSE(app, argc, argv);
  if (!test::enter_private_tmp(BUILD_FOLDER)) {
    std::cerr << "soak: no mount namespace for a private /tmp; run it as root\n";
    return 1;
  }
  std::cout << "SEED=" << seed << std::endl;
  const bool right = soak::Soak(seed, unsigned(60 * minutes)).run();
  std::cout << (right ? "all contacts are as they were written" : "FAILED") << ", SEED=" << seed
            << "\n";
  return right ? 0 : 1;
}
