// handset.h - a second modem, written apart from the first one by the standards alone: ITU-T V.250,
// 3GPP TS 27.007 and TS 27.005.
#ifndef QALT_TESTS_SIMULATION_HANDSET_H_
#define QALT_TESTS_SIMULATION_HANDSET_H_

#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

#include "at/at_line.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

// How a command ends: with the number of an error of the telephone, TS 27.007 9.2, or with another
// result code.
enum class Ending {
  kOk = -2,
  kError = -1,
  kCardBusy = 14,
  kInvalidIndex = 21,
  kNotFound = 22,
  kTextTooLong = 24,
  kTextInvalid = 25,
  kNumberTooLong = 26,
  kNumberInvalid = 27,
};

// What commands change, and what power-up brings back.
struct Settings {
  int echo = 1;             // V.250 6.2.4
  int quiet = 0;            // V.250 6.2.5
  int verbose = 1;          // V.250 6.2.6
  int errors = 0;           // TS 27.007 9.1, +CMEE
  std::string set = "IRA";  // TS 27.007 5.5, +CSCS: that or "UCS2"
};

// What one handset does otherwise than another.
struct HandsetOptions {
  Settings initial = {};               // as somebody left it
  std::set<std::string> unknown = {};  // commands it has not, as "+CMEE", which then stays as it is
  bool bare_at_fails = false;          // ERROR to AT alone
  bool lines_framed = false;           // each line of an answer has a line end before it, too
  bool blanks = false;                 // after commas
  bool upper_hex = true;               // of UCS2
  bool set_named_in_itself = false;    // +CSCS? answers "0055004300530032" for UCS2
  std::chrono::milliseconds delay{0};  // of a command about the phonebook or its texts

  // The phonebook.
  int first = 1;
  int size = 250;
  int number_length = 20;
  int text_length = 14;
  std::map<int, Stored> contacts = {};
  int busy_for = 0;                  // commands about it, after power-up
  bool further = false;              // the parameters behind the text are known
  bool plus_in_numbers = true;       // "+49",145, not "49",145
  Ending empty_index = Ending::kOk;  // or kNotFound, kError
  Ending empty_range = Ending::kOk;
  std::set<int> refused_alone = {};  // reads that end with ERROR
  std::set<int> refused_in_range = {};
  bool lines_before_refusal = false;  // of the indices before it
  int largest_range = 0;              // indices in one read; more: ERROR
  std::set<int> writes_dropped = {};  // with OK, silently
};

class Handset : public Machine {
 public:
  explicit Handset(HandsetOptions options);

  void receive(std::string_view bytes) override;
  void power_cycle() override;
  void change_by_itself(int index, const Content& contact) override;

 private:
  using Lines = std::vector<std::string>;  // of information, without line ends
  using Arguments = std::vector<at::Argument>;

  void flush_echo();
  void run_line(std::string_view line);
  Ending run(const at::Command& command, Lines& lines);
  Ending character_set(const at::Command& command, Lines& lines);
  Ending phonebook(const at::Command& command, Lines& lines);
  Ending storage(const at::Command& command, Lines& lines) const;
  Ending read(const at::Command& command, Lines& lines) const;
  Ending write(const at::Command& command, Lines& lines);
  std::optional<std::string> further_of(const Arguments& arguments) const;

  bool has_index(int index) const {
    return index >= options_.first && index - options_.first < options_.size;
  }
  // Between values.
  std::string comma() const { return options_.blanks ? ", " : ","; }
  // A text in the set of +CSCS, and back.
  std::string encoded(std::u16string_view text) const;
  std::optional<std::u16string> decoded(std::string_view bytes) const;
  // Whether the command sets to that word, plain or in the set of +CSCS.
  bool sets_to(const at::Command& command, std::string_view word) const;

  HandsetOptions options_;
  Settings now_;
  int busy_for_ = 0;
  std::string line_;
  std::string echo_;  // not yet said
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_H_
