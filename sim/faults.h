// faults.h - what a simulated modem does wrong on demand.
//
// A fault is a rule: on the N-th command line that begins with a text, or on one in N by chance, do
// something. What a rule cannot say (a state of the phonebook rather than of one answer) is a field
// of Faults.
#ifndef QALT_SIM_FAULTS_H_
#define QALT_SIM_FAULTS_H_

#include <chrono>
#include <optional>
#include <random>
#include <string>
#include <string_view>
#include <vector>

namespace qalt::sim {

enum class Action {
  kDelay,         // the answer comes `value` ms late
  kNever,         // the command is carried out, its answer never comes
  kCut,           // only the first `value` bytes of the answer come
  kHangUp,        // as kCut, then the line is closed
  kReportBefore,  // the report `text` comes before the answer
  kReportInside,  // between the lines of the answer
  kReportAfter,   // behind it
  kAnswer,        // the command is not carried out; `text` is sent in place of its answer
};

struct FaultRule {
  unsigned first =
      1;  // of the lines that begin with `prefix`, the first and the last one it is for
  unsigned last = 1;
  unsigned one_in = 0;  // above 0: instead, one in so many lines on average
  std::string prefix;   // compared without regard to case; empty: every line
  Action action = Action::kNever;
  unsigned value = 0;
  std::string text;
};

// Reads "WHICH:PREFIX:ACTION[=VALUE]": WHICH is "2", "2-5", "2-", "*" or "1/40"; ACTION is delay,
// never, cut, hang-up, report-before, report-inside, report-after or answer. A text may hold "\r",
// "\n",
// "\t" and "\\". Throws std::invalid_argument with a message for the user.
FaultRule parse_fault_rule(std::string_view rule);

struct Faults {
  std::vector<FaultRule> rules;
  unsigned seed = 1;                   // of the rules by chance
  unsigned busy = 0;                   // storage commands answered "SIM busy" after power-up
  unsigned refused_reads = 0;          // entry reads answered ERROR
  std::chrono::milliseconds delay{0};  // of every answer
  bool single_bytes = false;           // everything comes byte by byte
  bool always_echo = false;            // ATE0 is accepted and without effect
  bool drop_writes = false;            // writes are answered OK and not stored
  bool memory_full = false;            // no free place takes a contact
  bool no_ucs2 = false;                // +CSCS refuses the UCS2 sets
  bool odd_quote = false;              // one stored name holds a single double quote
};

// What is due for one command line.
struct FaultPlan {
  std::chrono::milliseconds delay{0};
  bool silent = false;
  std::optional<unsigned> cut;  // bytes of the answer that come
  bool hang_up = false;
  std::optional<std::string> answer;
  std::vector<std::string> reports_before;
  std::vector<std::string> reports_inside;
  std::vector<std::string> reports_after;
};

// Counts the lines that each rule matches and says what is due.
class FaultBook {
 public:
  FaultBook(std::vector<FaultRule> rules, unsigned seed)
      : rules_(std::move(rules)), matched_(rules_.size()), done_(rules_.size()), chance_(seed) {}
  FaultPlan plan(std::string_view line);
  // How often each rule was followed so far.
  const std::vector<unsigned>& done() const { return done_; }

 private:
  bool is_due(size_t rule);

  std::vector<FaultRule> rules_;
  std::vector<unsigned> matched_;
  std::vector<unsigned> done_;
  std::minstd_rand chance_;
};

}  // namespace qalt::sim

#endif  // QALT_SIM_FAULTS_H_
