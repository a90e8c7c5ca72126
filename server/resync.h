// resync.h - finding the place again where the modem's answers and the server's questions match.
//
// What may still come when this begins: the late answer of a command, answers of questions asked
// before, anything of a program that had the line before; or nothing, where bytes were lost. A
// modem answers in order. So the server asks what has an answer of its own, by name, and when the
// answer to the question asked last is there, nothing older can follow it.
//
// That it is not the late answer of the same question asked earlier is told by asking on: three
// questions, each sent when the one before is answered, each answered at once. Older ones cannot
// have been left unanswered in this order: every attempt begins with a wake line and ends with the
// first question without an answer, the attempts begin with the questions in one order, and within
// one they are asked in the reverse. No pause decides, so a modem may be slow; and its answer to
// the wake line may be OK, ERROR or nothing.
//
// The wake line also brings back a modem that was left with echo, with numeric results or with none
// (ITU-T V.250, 6.2.4 to 6.2.6).
//
// A question that a modem answers otherwise, with ERROR as a rule, or not at all is left out until
// its answer is seen after all. Where fewer than three are left, answers look alike: then the line
// counts as clear only when nothing more came for as long as the modem may take.
//
// Bounded whatever the modem does: `kMostSilence` without a result, `kMostTime` in all. Pure, as
// the dispatcher is.
#ifndef QALT_SERVER_RESYNC_H_
#define QALT_SERVER_RESYNC_H_

#include <array>
#include <chrono>
#include <cstddef>
#include <string_view>

namespace qalt::server {

using TimePoint = std::chrono::steady_clock::time_point;

class Resync {
 public:
  static constexpr std::chrono::milliseconds kMostSilence{10'000};
  static constexpr std::chrono::milliseconds kMostTime{30'000};
  // Takes the line back from echo, from numeric results and from none.
  static constexpr std::string_view kWake = "ATE0Q0V1";

  enum class Step {
    kWait,    // for the modem, or until deadline()
    kSend,    // line(), then as kWait
    kDone,    // answers and questions match
    kGiveUp,  // the modem does not answer, or nothing that makes sense
  };

  // The port was opened anew: what the modem refuses is not known.
  void reopened();
  Step begin(TimePoint now);
  // A whole answer came, up to its final result.
  Step answered(std::string_view text, TimePoint now);
  // The deadline has passed.
  Step timed_out(TimePoint now);

  std::string_view line() const { return line_; }
  // Whether it is the wake line.
  bool wakes() const { return !asked_; }
  TimePoint deadline() const { return deadline_; }

 private:
  static constexpr size_t kQuestions = 4;

  bool recognised(std::string_view text);
  Step wake(TimePoint now);
  Step begin_asking(TimePoint now);
  Step ask(TimePoint now);
  Step wait(Step step, TimePoint now);
  Step done();
  void allow_again();
  size_t usable() const;

  enum class Use { kUsable, kRefused, kSilent };
  std::array<Use, kQuestions> uses_{};
  std::array<bool, kQuestions> known_{};  // answered once by its name
  std::chrono::milliseconds patience_{};  // how long the modem may take for one line
  std::string_view line_;                 // sent last
  size_t first_ = 1;                      // of the next attempt, this or one before it
  size_t question_ = 0;                   // asked last
  bool asked_ = false;                    // line_ is that, not the wake line
  unsigned results_ = 0;                  // since line_ was sent
  unsigned in_turn_ = 0;                  // questions answered at once, one after the other
  TimePoint heard_;                       // the last result, or the beginning
  TimePoint end_;
  TimePoint deadline_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_RESYNC_H_
