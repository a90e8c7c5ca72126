#include "server/resync.h"

#include <algorithm>
#include <string>

namespace qalt::server {
namespace {

using std::chrono::milliseconds;

struct Question {
  std::string_view line;
  std::string_view answer;
};

// Each has one line of its own name and works without a card. No report of the standards has one of
// these names.
// clang-format off
constexpr std::array<Question, 4> kAsked = {{
    {"AT+CPAS",  "+CPAS:"},
    {"AT+CMEE?", "+CMEE:"},
    {"AT+CFUN?", "+CFUN:"},
    {"AT+CSQ",   "+CSQ:"},
}};
// clang-format on

constexpr std::string_view kWake = "ATE0Q0V1";
constexpr unsigned kEnoughInTurn = 3;
constexpr milliseconds kFirstPatience{2000};
constexpr milliseconds kMostPatience{5000};

// Whether the answer has a line that begins with `name`, and its result is OK.
bool is_answer(std::string_view text, std::string_view name) {
  return text.ends_with("\nOK\r\n") &&
         (text.starts_with(name) || text.find("\n" + std::string(name)) != text.npos);
}

}  // namespace

void Resync::reopened() {
  refused_ = {};
  patience_ = kFirstPatience;
}

Resync::Step Resync::begin(TimePoint now) {
  in_turn_ = 0;
  heard_ = now;
  end_ = now + kMostTime;
  return wake(now);
}

Resync::Step Resync::answered(std::string_view text, TimePoint now) {
  heard_ = now;
  ++results_;
  if (!asked_) return usable() > 0 ? ask(now) : wait(Step::kWait, now);
  if (!is_answer(text, kAsked[question_].answer)) {
    in_turn_ = 0;
    return wait(Step::kWait, now);
  }
  in_turn_ = results_ == 1 ? in_turn_ + 1 : 1;
  if (in_turn_ == kEnoughInTurn) {
    patience_ = kFirstPatience;
    return Step::kDone;
  }
  // The same question twice needs something between.
  return usable() > 1 ? ask(now) : wake(now);
}

Resync::Step Resync::timed_out(TimePoint now) {
  if (now >= end_ || now - heard_ >= kMostSilence) return Step::kGiveUp;
  if (!asked_ && results_ > 0) return Step::kDone;
  if (asked_) refused_[question_] = true;
  patience_ = std::min(patience_ * 2, kMostPatience);
  in_turn_ = 0;
  // A modem may answer all but the wake line.
  return asked_ || usable() == 0 ? wake(now) : ask(now);
}

Resync::Step Resync::wake(TimePoint now) {
  asked_ = false;
  results_ = 0;
  line_ = kWake;
  return wait(Step::kSend, now);
}

Resync::Step Resync::ask(TimePoint now) {
  do {
    question_ = (question_ + 1) % kQuestions;
  } while (refused_[question_]);
  asked_ = true;
  results_ = 0;
  line_ = kAsked[question_].line;
  return wait(Step::kSend, now);
}

Resync::Step Resync::wait(Step step, TimePoint now) {
  deadline_ = std::min({now + patience_, heard_ + kMostSilence, end_});
  return step;
}

size_t Resync::usable() const {
  return size_t(std::count(refused_.begin(), refused_.end(), false));
}

}  // namespace qalt::server
