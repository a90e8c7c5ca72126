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
    {"AT+CSQ",   "+CSQ:"},
    {"AT+CFUN?", "+CFUN:"},
    {"AT+CMEE?", "+CMEE:"},
}};
// clang-format on

constexpr unsigned kEnoughInTurn = 3;
constexpr size_t kTelling = 3;  // with fewer questions, three in turn may be older ones
constexpr milliseconds kFirstPatience{2000};
constexpr milliseconds kMostPatience{5000};

// Whether the answer has a line that begins with `name`, and its result is OK.
bool is_answer(std::string_view text, std::string_view name) {
  return text.ends_with("\nOK\r\n") &&
         (text.starts_with(name) || text.find("\n" + std::string(name)) != text.npos);
}

}  // namespace

void Resync::reopened() {
  uses_ = {};
  known_ = {};
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
  const bool matches = recognised(text);
  if (!asked_) return usable() > 0 ? begin_asking(now) : wait(Step::kWait, now);
  if (!matches) {
    in_turn_ = 0;
    return wait(Step::kWait, now);
  }
  in_turn_ = results_ == 1 ? in_turn_ + 1 : 1;
  if (in_turn_ < kEnoughInTurn && usable() > 1) return ask(now);
  if (usable() < kTelling) return wait(Step::kWait, now);
  patience_ = kFirstPatience;
  return done();
}

Resync::Step Resync::timed_out(TimePoint now) {
  if (now >= end_ || now - heard_ >= kMostSilence) return Step::kGiveUp;
  if (results_ > 0 && (!asked_ || in_turn_ > 0)) return done();
  in_turn_ = 0;
  // A modem may answer all but the wake line.
  if (!asked_ && usable() > 0) return begin_asking(now);
  if (asked_) {
    uses_[question_] = results_ > 0 && !known_[question_] ? Use::kRefused : Use::kSilent;
    if (usable() < kTelling) allow_again();
  }
  patience_ = std::min(patience_ * 2, kMostPatience);
  return wake(now);
}

// What was silent may have lost a byte: what the modem knows is asked again when questions run out.
void Resync::allow_again() {
  const bool none = usable() == 0;
  for (size_t i = 0; i < kQuestions; ++i) {
    if (uses_[i] == Use::kSilent && (none || known_[i])) uses_[i] = Use::kUsable;
  }
}

Resync::Step Resync::done() {
  std::replace(uses_.begin(), uses_.end(), Use::kSilent, Use::kUsable);
  return Step::kDone;
}

// Whether it is the answer to the question asked last; that of another one shows that the modem
// knows that one, too.
bool Resync::recognised(std::string_view text) {
  for (size_t i = 0; i < kQuestions; ++i) {
    if (!is_answer(text, kAsked[i].answer)) continue;
    uses_[i] = Use::kUsable;
    known_[i] = true;
  }
  return asked_ && is_answer(text, kAsked[question_].answer);
}

Resync::Step Resync::wake(TimePoint now) {
  asked_ = false;
  results_ = 0;
  line_ = kWake;
  return wait(Step::kSend, now);
}

Resync::Step Resync::begin_asking(TimePoint now) {
  question_ = first_;
  first_ = (first_ + 1) % kQuestions;
  return ask(now);
}

Resync::Step Resync::ask(TimePoint now) {
  do {
    question_ = (question_ + kQuestions - 1) % kQuestions;
  } while (uses_[question_] != Use::kUsable);
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
  return size_t(std::count(uses_.begin(), uses_.end(), Use::kUsable));
}

}  // namespace qalt::server
