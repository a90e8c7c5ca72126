// One owner of contacts: reads, writes and deletes in an index range of its own through both ways,
// and holds what it finds against what it wrote.
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <clocale>
#include <fstream>
#include <iostream>
#include <random>
#include <sstream>

#include "qalt_at/qalt_at.h"
#include "tests/soak/process_state.h"
#include "tests/soak/ways.h"

extern "C" unsigned sleep(unsigned) {
  // The library's pauses would leave a minute no room for faults.
  ::usleep(1000);
  return 0;
}

namespace soak {
namespace {

using Clock = std::chrono::steady_clock;

constexpr long kToleranceKb = 512;
constexpr int kMostSettleReads = 500;
constexpr unsigned kMostNameLength = 18;  // of the simulated modem

struct Settings {
  int first = 1;
  int count = 10;
  unsigned seed = 1;
  unsigned seconds = 60;
  std::string reports;              // socket of the reports
  std::vector<std::string> expect;  // the reports that there are
  std::string result;               // file for what is stored at the end
  int ready_descriptor = -1;
};

std::vector<std::string> g_known_reports;
std::atomic<unsigned> g_reports;
std::atomic<bool> g_report_wrong;

int take_report(AtMsg* frame) {
  const std::string text = frame->aucDataBuf;
  ++g_reports;
  for (const std::string& known : g_known_reports) {
    // Part of one, or nothing, is what a server sends that is killed meanwhile.
    if (known.starts_with(text)) return 0;
  }
  // One line, so that those of several clients stay apart.
  if (!g_report_wrong.exchange(true)) {
    std::ostringstream line;
    line << "report that nobody sent: " << std::quoted(text) << "\n";
    std::cout << line.str() << std::flush;
  }
  return 0;
}

// Now and then the receiver has a connection open.
ProcessState state_at_rest() {
  ProcessState rest = state_of(::getpid());
  for (int sample = 0; sample < 20; ++sample) {
    ::usleep(5000);
    const ProcessState now = state_of(::getpid());
    if (now.descriptors < rest.descriptors) rest = now;
  }
  return rest;
}

class Owner {
 public:
  explicit Owner(const Settings& settings)
      : settings_(settings), ledger_(settings.first, settings.count), random_(settings.seed) {}

  bool run() {
    open();
    const auto start = Clock::now();
    const auto end = start + std::chrono::seconds(settings_.seconds);
    // By then every path has been taken and every buffer has its size.
    const auto warm = start + std::chrono::seconds(settings_.seconds) / 5;
    ProcessState before;
    while (Clock::now() < end && right_) {
      if (before.descriptors == 0 && Clock::now() > warm) before = state_at_rest();
      if (!step()) ::usleep(2000);
    }
    settle();
    right_ = right_ && !g_report_wrong;
    const std::string grown = growth(before, state_at_rest(), kToleranceKb);
    if (right_ && !grown.empty()) {
      std::cout << "client of index " << ledger_.first() << " has grown:" << grown << "\n";
      right_ = false;
    }
    std::ofstream result(settings_.result);
    result << done_ << " " << failed_ << " " << checked_ << " " << g_reports << "\n";
    for (int index = ledger_.first(); index <= ledger_.last(); ++index) {
      const Content& content = ledger_.allowed(index).front();
      if (!content.empty()) result << answer_line(index, content) << "\n";
    }
    return right_ && result.good();
  }

 private:
  unsigned below(unsigned bound) { return unsigned(random_() % bound); }
  int some_index() { return ledger_.first() + int(below(unsigned(settings_.count))); }

  void open() {
    while (!book_.open({})) ::usleep(2000);
  }

  // One job on one of the ways; whether it succeeded.
  bool step() {
    Way& way = below(2) == 0 ? static_cast<Way&>(c_) : header_;
    const unsigned what = below(100);
    bool succeeded = true;
    if (what < 50) {
      succeeded = write(way, some_index(), some_content());
    } else if (what < 65) {
      succeeded = write(way, some_index(), {});
    } else if (what < 85) {
      const int index = some_index();
      succeeded = read(way, index, index);
    } else if (what < 99) {
      succeeded = read(way, ledger_.first(), ledger_.last());
    } else {
      open();
    }
    ++(succeeded ? done_ : failed_);
    return succeeded;
  }

  bool write(Way& way, int index, const Content& content) {
    const bool succeeded = way.write(index, content);
    ledger_.wrote(index, content, succeeded);
    if (!succeeded && &way == &header_ && header_.differs()) {
      std::cout << "index " << index << ": " << header_.error() << "\n";
      right_ = false;
    }
    return succeeded;
  }

  bool read(Way& way, int first, int last) {
    const auto found = way.read(first, last);
    if (!found) return false;
    for (const int index : ledger_.read(first, last, *found)) {
      const auto at = found->find(index);
      std::cout << "contact wrong, read through " << way.name() << ": "
                << answer_line(index, at == found->end() ? Content{} : at->second) << "\n";
      for (const Content& allowed : ledger_.allowed(index)) {
        std::cout << "  allowed: " << answer_line(index, allowed) << "\n";
      }
      right_ = false;
    }
    checked_ += unsigned(last - first + 1);
    return true;
  }

  // Reads until it is told what each contact is.
  void settle() {
    Way* ways[] = {&c_, &header_};
    for (Way* way : ways) {
      int reads = 0;
      while (right_ && !read(*way, ledger_.first(), ledger_.last())) {
        if (++reads == kMostSettleReads) {
          std::cout << "no read through " << way->name()
                    << " succeeds any more: " << header_.error() << "\n";
          right_ = false;
        }
        ::usleep(2000);
      }
    }
  }

  // Names as people write them, and such as an answer must not be mistaken for.
  Content some_content() {
    static const std::array<const wchar_t*, 8> kNames = {
        L"OK", L"ERROR", L"+CMTI: \"SM\",3", L"00410042", L"a\r\nOK\r\n", L"1;2,3", L"\"", L"> "};
    static const std::array<std::pair<wchar_t, unsigned>, 5> kAlphabets = {
        {{L' ', 95}, {L'À', 64}, {L'А', 64}, {L'一', 2000}, {L'가', 2000}}};
    Content content;
    if (below(4) == 0) {
      content.name = kNames[below(kNames.size())];
    } else {
      const auto [first, letters] = kAlphabets[below(kAlphabets.size())];
      for (unsigned length = below(kMostNameLength) + 1; length > 0; --length) {
        content.name += wchar_t(first + wchar_t(below(letters)));
      }
    }
    if (below(2) == 0) content.number = "+";
    for (unsigned length = below(20) + 1; length > 0; --length) {
      content.number += "0123456789*#"[below(12)];
    }
    return content;
  }

  const Settings& settings_;
  Ledger ledger_;
  std::mt19937 random_;
  qalt::Phonebook book_;
  CFunctions c_;
  CppHeader header_{book_};
  bool right_ = true;
  unsigned done_ = 0;
  unsigned failed_ = 0;
  unsigned checked_ = 0;
};

}  // namespace
}  // namespace soak

int main(int argc, char** argv) {
  soak::Settings settings;
  CLI::App app("soak_client - one owner of contacts; started by soak");
  app.add_option("--first", settings.first);
  app.add_option("--count", settings.count);
  app.add_option("--seed", settings.seed);
  app.add_option("--seconds", settings.seconds);
  app.add_option("--reports", settings.reports);
  app.add_option("--expect", settings.expect)->allow_extra_args(false)->take_all();
  app.add_option("--result", settings.result);
  app.add_option("--ready-fd", settings.ready_descriptor);
  CLI11_PARSE(app, argc, argv);
  std::setlocale(LC_CTYPE, "C.UTF-8");
  // Whatever hangs ends here, and the signal is the verdict.
  ::alarm(2 * settings.seconds + 60);

  for (const std::string& report : settings.expect) {
    soak::g_known_reports.push_back("\r\n" + report + "\r\n");
  }
  SetClientProcRecvCallback(soak::take_report);
  if (ClientInit(settings.reports.c_str()) != 0) return 1;
  if (::write(settings.ready_descriptor, "\n", 1) != 1) return 1;
  ::close(settings.ready_descriptor);
  return soak::Owner(settings).run() ? 0 : 1;
}
