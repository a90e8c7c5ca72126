// One owner of contacts: reads, writes and deletes in an index range of its own by the C functions
// and by phonebook.hpp, and holds what it finds against what it wrote.
#include "tests/simulation/client.h"

#include <unistd.h>

#include <CLI/CLI.hpp>
#include <array>
#include <atomic>
#include <iostream>
#include <random>

#include "at/escape.h"
#include "qalt_at/qalt_at.h"
#include "tests/soak/soak.h"

extern "C" unsigned sleep(unsigned) {
  // The library's pauses would leave a minute no room for faults.
  ::usleep(1000);
  return 0;
}

namespace soak {
namespace {

using qalt::Contact;
using qalt::simulation::Outcome;
using Clock = std::chrono::steady_clock;

constexpr int kMostSettleReads = 500;
constexpr unsigned kMostNameLength = 18;  // of the simulated modem

struct Settings {
  int first = 1;
  unsigned seed = 1;
  unsigned seconds = 60;
  std::string reports;  // socket of the reports
  int ready_descriptor = -1;
};

std::atomic<unsigned> g_reports;
std::atomic<bool> g_report_wrong;

int take_report(AtMsg* frame) {
  const std::string text = frame->aucDataBuf;
  ++g_reports;
  // Part of one, or nothing, is what a server sends that is killed meanwhile.
  const bool known = std::any_of(kReports.begin(), kReports.end(), [&](const std::string& report) {
    return ("\r\n" + *qalt::at::unescaped(report) + "\r\n").starts_with(text);
  });
  if (!known && !g_report_wrong.exchange(true)) {
    std::cout << "report that nobody sent: " + qalt::at::escaped(text) + "\n" << std::flush;
  }
  return 0;
}

std::string shown(const Contact& contact) {
  return std::to_string(contact.index) + ": \"" + contact.name + "\" " + contact.number;
}

class Owner {
 public:
  explicit Owner(const Settings& settings) : settings_(settings), random_(settings.seed) {
    for (int index = settings.first; index <= last_; ++index) allowed_[index] = {at(index)};
  }

  bool run() {
    open();
    const auto end = Clock::now() + std::chrono::seconds(settings_.seconds);
    while (Clock::now() < end && right_) {
      const bool succeeded = step();
      ++(succeeded ? done_ : failed_);
      if (!succeeded) ::usleep(2000);
    }
    settle(true);
    settle(false);
    right_ = right_ && !g_report_wrong;
    std::cout << "calls that succeeded " << done_ << ", that failed " << failed_
              << ", contacts checked " << checked_ << ", reports received " << g_reports << "\n";
    return right_;
  }

 private:
  unsigned below(unsigned bound) { return unsigned(random_() % bound); }

  void fail(const std::string& what) {
    std::cout << what << "\n";
    right_ = false;
  }

  static Contact at(int index) {
    Contact contact;
    contact.index = index;
    return contact;
  }

  void open() {
    while (!client_.open().done()) ::usleep(2000);
  }

  // One job in one of the ways; whether it succeeded.
  bool step() {
    const bool c = below(2) == 0;
    const unsigned what = below(100);
    const int index = settings_.first + int(below(kContactsEach));
    if (what < 50) return write(c, some_contact(index));
    if (what < 65) return write(c, at(index));
    if (what < 85) return read(c, index, index);
    if (what < 99) return read(c, settings_.first, last_);
    open();
    return true;
  }

  // After a write or delete that succeeded, that and nothing else is at the index. One that failed
  // may have been carried out or not, so both it and what was before are allowed until a read
  // tells.
  bool write(bool c, const Contact& contact) {
    const int index = contact.index;
    Outcome told;
    if (contact.number.empty()) {
      told = c ? client_.c_erase(index) : client_.erase(index);
    } else {
      told = c ? client_.c_write(contact) : client_.put(contact);
    }
    if (told.done()) allowed_[index].clear();
    allowed_[index].push_back(contact);
    const bool differs = !c && told.cause == int(qalt::Cause::kDiffers) &&
                         told.what.find("cannot be read back") == told.what.npos;
    if (differs) fail("index " + std::to_string(index) + ": " + told.what);
    return told.done();
  }

  bool read(bool c, int first, int last) {
    const Outcome told = c ? client_.c_read(first, last) : client_.read(first, last);
    if (!told.done() || !told.unreadable.empty()) return false;
    std::map<int, Contact> found;
    for (int index = first; index <= last; ++index) found[index] = at(index);
    for (const Contact& contact : told.contacts) found[contact.index] = contact;
    for (const auto& [index, contact] : found) {
      auto& allowed = allowed_[index];
      const auto is = [&there = contact](const Contact& may) { return same_fields(may, there); };
      if (std::none_of(allowed.begin(), allowed.end(), is)) {
        fail("contact wrong, read by " + std::string(c ? "C" : "C++") + ": " + shown(contact));
        for (const Contact& may : allowed) fail("  allowed: " + shown(may));
      }
      allowed = {contact};
    }
    checked_ += unsigned(last - first + 1);
    return true;
  }

  // Reads until it is told what each contact is.
  void settle(bool c) {
    for (int reads = 0; right_ && !read(c, settings_.first, last_); ++reads) {
      if (reads == kMostSettleReads) fail("no read succeeds any more");
      ::usleep(2000);
    }
  }

  // Names as people write them, and such as an answer must not be mistaken for.
  Contact some_contact(int index) {
    constexpr std::array<const char*, 8> kNames = {
        "OK", "ERROR", "+CMTI: \"SM\",3", "00410042", "a\r\nOK\r\n", "1;2,3", "\"", "> "};
    constexpr std::array<std::pair<wchar_t, unsigned>, 5> kAlphabets = {
        {{L' ', 95}, {L'À', 64}, {L'А', 64}, {L'一', 2000}, {L'가', 2000}}};
    Contact contact = at(index);
    if (below(4) == 0) {
      contact.name = kNames[below(kNames.size())];
    } else {
      const auto [first, letters] = kAlphabets[below(kAlphabets.size())];
      std::wstring name(below(kMostNameLength) + 1, first);
      for (wchar_t& letter : name) letter += wchar_t(below(letters));
      contact.name = qalt::detail::utf8_of(name);
    }
    if (below(2) == 0) contact.number = "+";
    for (unsigned length = below(20) + 1; length > 0; --length) {
      contact.number += "0123456789*#"[below(12)];
    }
    return contact;
  }

  const Settings& settings_;
  const int last_ = settings_.first + kContactsEach - 1;
  std::map<int, std::vector<Contact>> allowed_;
  std::mt19937 random_;
  qalt::simulation::Client& client_ = *simulation_client();
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
  app.add_option("--seed", settings.seed);
  app.add_option("--seconds", settings.seconds);
  app.add_option("--reports", settings.reports);
  app.add_option("--ready-fd", settings.ready_descriptor);
  CLI11_PARSE(app, argc, argv);
  // Whatever hangs ends here, and the signal is the verdict.
  ::alarm(2 * settings.seconds + 60);

  SetClientProcRecvCallback(soak::take_report);
  if (ClientInit(settings.reports.c_str()) != 0) return 1;
  if (::write(settings.ready_descriptor, "\n", 1) != 1) return 1;
  ::close(settings.ready_descriptor);
  return soak::Owner(settings).run() ? 0 : 1;
}
