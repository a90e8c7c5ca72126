// Slow modems behind the server's dispatcher, in simulated time: of 1000 commands every tenth is
// answered late, by up to 9 s behind its time-out, or never. Prints rows for scripts/bench.sh: how
// many commands had another answer than their own, or, where that was late, any.
#include <chrono>
#include <cstdio>
#include <deque>
#include <string>
#include <utility>

#include "server/dispatcher.h"

namespace {

using qalt::server::TimePoint;
using std::chrono::milliseconds;

constexpr int kCommands = 1000;
constexpr int kEveryTenth = 10;
constexpr milliseconds kTimeout{5000};

class Run : qalt::server::Dispatcher::Host {
 public:
  explicit Run(milliseconds pace) : pace_(pace), dispatcher_(*this, {"ATE0", "AT+CMEE=1"}) {
    dispatcher_.opened(now_, false);
  }

  int wrong_answers() {
    for (number_ = 1; number_ <= kCommands; ++number_) {
      answered_ = false;
      // A name that the server's own questions have, too.
      const std::string line = "AT+CSQ=" + std::to_string(number_);
      dispatcher_.submit({uint64_t(number_), line, kTimeout, {1, 1}}, now_);
      while (!answered_) step();
    }
    return wrong_;
  }

 private:
  void step() {
    const TimePoint due = dispatcher_.deadline().value_or(TimePoint::max());
    if (said_.empty() || said_.front().first > due) {
      now_ = due;
      return dispatcher_.tick(now_);
    }
    const auto [when, text] = std::move(said_.front());
    said_.pop_front();
    now_ = std::max(now_, when);
    dispatcher_.receive(text, now_);
  }

  void write_modem(std::string_view bytes) override {
    const std::string line(bytes.substr(0, bytes.find('\r')));
    const size_t end = line.find_first_of("=?");
    const bool commands = line.starts_with("AT+CSQ=");
    milliseconds time = pace_;
    if (commands && number_ % kEveryTenth == 0) {
      if (number_ % (7 * kEveryTenth) == 0) return;
      time = kTimeout + milliseconds(number_ * 37 % 9'000);
    }
    std::string text = "\r\nOK\r\n";
    if (line.starts_with("AT+")) {
      const std::string value = end == line.npos ? "0" : line.substr(end + 1);
      text = "\r\n" + line.substr(2, end - 2) + ": " + value + "\r\n" + text;
    }
    free_ = std::max(free_, now_) + time;
    said_.emplace_back(free_, text);
  }
  void answer(uint64_t, std::string_view text) override {
    answered_ = true;
    const std::string own = "\r\n+CSQ: " + std::to_string(number_) + "\r\n\r\nOK\r\n";
    wrong_ += text != (number_ % kEveryTenth == 0 ? "" : own);
  }
  void report(std::string_view) override { ++wrong_; }
  void give_up_port() override { dispatcher_.opened(now_, false); }
  void note(int, const std::string&) override {}

  milliseconds pace_;
  qalt::server::Dispatcher dispatcher_;
  TimePoint now_{};
  TimePoint free_{};  // the modem carries out one line after the other
  std::deque<std::pair<TimePoint, std::string>> said_;
  int number_ = 0;
  int wrong_ = 0;
  bool answered_ = false;
};

}  // namespace

int main() {
  for (const int pace : {5, 150, 210, 300, 1000}) {
    const int wrong = Run(milliseconds(pace)).wrong_answers();
    std::printf("wrong answers of 1000, every tenth late, modem of %d ms\t%d\t-\t-\t-\tours<=0\n",
                pace, wrong);
  }
}
