#include "tests/simulation/line.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>

#include "at/at_line.h"

namespace qalt::simulation {
namespace {

constexpr Time kLatency{1};

// Some that a server may know, some that it cannot: 3GPP TS 27.007, 27.005, and makers' own. The
// number that takes the place of "#" tells them apart.
constexpr std::array<std::string_view, 10> kReports = {
    "+CMTI: \"SM\",#",         "RING",       "+CLIP: \"#\",129",
    "+CREG: 1,\"00C3\",\"#\"", "+CIEV: 2,#", "+CUSATP: \"D0#\"",
    "*TTZ: 2,\"26/11/23,#\"",  "^RSSI:#",    "%NWSTATE: #,\"26201\"",
    "+CGEV: ME PDN ACT #"};

constexpr std::array<int, 8> kDelays = {20, 150, 400, 900, 2500, 6000, 12000, 40000};

constexpr std::array<std::string_view, 6> kFreeTexts = {"+CMGR", "+CMGL", "I",
                                                        "+CGMI", "+CGMM", "+CGMR"};

class ModemLine : public Line {
 public:
  ModemLine(World& world, Machine& machine, Chance chance, const LineFaults& faults)
      : world_(world), machine_(machine), chance_(chance), faults_(faults) {
    if (faults_.silence != 0) report_at_rest();
  }

  bool open() override {
    if (world_.now() < away_until_) return false;
    open_ = true;
    ++opening_;
    return true;
  }

  void close() override {
    open_ = false;
    ++opening_;
  }

  void connect(Terminal& terminal) override { terminal_ = &terminal; }

  std::shared_ptr<Exchange> write(std::string_view bytes) override {
    world_.record('>', bytes);
    const auto exchange = std::make_shared<Exchange>();
    const std::string_view line = bytes.substr(0, bytes.find('\r'));
    const bool command = bytes.ends_with('\r');
    Time when = world_.now() + kLatency;
    if (command && chance_.one_in(faults_.hang_up) && chance_.one_in(2)) {
      exchange->touched = true;
      hang_up(when);
      return exchange;
    }
    const bool restart = command && chance_.one_in(faults_.restart);
    if (restart && chance_.one_in(2)) begin_anew(chance_.one_in(2));
    if (world_.now() <= deaf_until_) {
      exchange->touched = true;
      return exchange;
    }
    machine_.receive(bytes);
    std::string& answer = exchange->answer;
    for (Said& said : machine_.take()) {
      when += said.delay;
      answer += said.bytes;
    }
    if (command && answer.starts_with(bytes)) {
      answer.erase(0, bytes.size());
      deliver(std::string(bytes), {}, world_.now() + kLatency);
    }
    if (answer.empty()) return exchange;
    const std::string& stubborn = faults_.stubborn;
    if (command && chance_.one_in(faults_.dead)) {
      dead_until_ = world_.now() + Time(chance_.between(1000, 120000));
    }
    const bool never = command && (chance_.one_in(faults_.never) || world_.now() < dead_until_ ||
                                   (!stubborn.empty() && line.starts_with(stubborn)));
    const bool cut = command && !never && chance_.one_in(faults_.cut);
    const bool late = command && !never && chance_.one_in(faults_.late);
    const bool hang = command && chance_.one_in(faults_.hang_up);
    exchange->touched = never || cut || late || hang;
    if (late) when += Time(chance_.of(kDelays));
    std::string heard = answer;
    if (cut || hang) {
      heard.resize(size_t(chance_.below(int(heard.size()))));
      // "+CME ERROR: 2" of 22 is another answer, which nobody can tell.
      const size_t code = heard.rfind("\r\n+CM");
      if (code != heard.npos) heard.resize(code);
    }
    if (!never && !heard.empty()) say(heard, cut || hang || has_free_text(line), when);
    if (hang) hang_up(when + Time(50));
    if (restart) world_.at(std::max(last_, when), [this] { begin_anew(true); });
    return exchange;
  }

 private:
  void deliver(const std::string& bytes, const std::vector<std::string>& reports, Time when) {
    last_ = std::max(last_, when);
    world_.at(last_, [this, opening = opening_, bytes, reports] {
      if (opening != opening_) return;
      world_.record('<', bytes);
      terminal_->received(bytes, reports);
    });
  }

  void hang_up(Time when) {
    last_ = std::max(last_, when);
    world_.at(last_, [this, opening = opening_] {
      if (opening != opening_) return;
      world_.record('#', "the line is hung up");
      if (chance_.one_in(2)) machine_.power_cycle();
      away_until_ = world_.now() + Time(chance_.one_in(2) ? 0 : chance_.between(100, 40000));
      close();
      terminal_->hung_up();
    });
  }

  // With the port open: it hears nothing for a while, then it may say so.
  void begin_anew(bool says) {
    machine_.power_cycle();
    deaf_until_ = world_.now() + Time(chance_.one_in(2) ? 0 : chance_.between(1, 8000));
    if (says && open_) deliver("\r\nRDY\r\n", {"\r\nRDY\r\n"}, deaf_until_);
  }

  std::string new_report() {
    std::string text(chance_.of(kReports));
    const size_t place = text.find('#');
    if (place != text.npos) text.replace(place, 1, std::to_string(10000 + ++reports_));
    return "\r\n" + text + "\r\n";
  }

  void report_at_rest() {
    world_.after(Time(chance_.between(1, 120 * faults_.silence) * 1000), [this] {
      if (open_) say("", false, world_.now());
      report_at_rest();
    });
  }

  // An empty answer: reports alone.
  void say(const std::string& answer, bool free_text, Time when) {
    const int count = answer.empty()                    ? 1
                      : free_text                       ? 0
                      : chance_.one_in(faults_.reports) ? chance_.between(1, 3)
                                                        : 0;
    // Behind any line of the answer, and in front of the first.
    std::vector<size_t> places = {0};
    for (size_t end = answer.find("\r\n", 2); end != answer.npos;
         end = answer.find("\r\n", end + 2)) {
      if (answer.compare(end - 1, 1, "\n") != 0) places.push_back(end + 2);
    }
    std::multiset<size_t> chosen;
    for (int k = 0; k < count; ++k) chosen.insert(chance_.of(places));
    std::string bytes;
    std::vector<std::pair<size_t, std::string>> ends;  // of each report
    size_t done = 0;
    for (const size_t place : chosen) {
      bytes.append(answer, done, place - done);
      done = place;
      const std::string report = new_report();
      bytes += report;
      ends.emplace_back(bytes.size(), report);
    }
    bytes.append(answer, done);

    const int pieces = chance_.one_in(faults_.pieces) ? chance_.between(2, 5) : 1;
    size_t from = 0;
    for (int k = 1; k <= pieces && from < bytes.size(); ++k) {
      size_t to =
          k == pieces ? bytes.size() : from + 1 + size_t(chance_.below(int(bytes.size() - from)));
      // Where a prompt could end is where reads like to end.
      const size_t sign = k == pieces || !chance_.one_in(2) ? bytes.npos : bytes.find("\n> ", from);
      if (sign != bytes.npos) to = sign + 3;
      std::vector<std::string> whole;
      for (const auto& [end, text] : ends) {
        if (end > from && end <= to) whole.push_back(text);
      }
      deliver(bytes.substr(from, to - from), whole, when);
      when += Time(chance_.below(30));
      from = to;
    }
  }

  World& world_;
  Machine& machine_;
  Chance chance_;
  const LineFaults faults_;
  Terminal* terminal_ = nullptr;
  bool open_ = false;
  uint64_t opening_ = 0;  // what was said before it is not heard
  Time away_until_{0};
  Time dead_until_{0};
  Time deaf_until_{0};
  Time last_{0};  // when the last piece comes
  int reports_ = 0;
};

}  // namespace

bool has_free_text(std::string_view line) {
  const auto commands = at::split_line(line);
  return commands &&
         std::any_of(commands->begin(), commands->end(), [](const at::Command& command) {
           return std::find(kFreeTexts.begin(), kFreeTexts.end(), command.name) != kFreeTexts.end();
         });
}

std::unique_ptr<Line> new_line(World& world, Machine& machine, Chance chance,
                               const LineFaults& faults) {
  return std::make_unique<ModemLine>(world, machine, chance, faults);
}

}  // namespace qalt::simulation
