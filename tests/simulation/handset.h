// handset.h - a second modem, written apart from the first one by the standards alone: ITU-T V.250,
// 3GPP TS 27.007 and TS 27.005.
#ifndef QALT_TESTS_SIMULATION_HANDSET_H_
#define QALT_TESTS_SIMULATION_HANDSET_H_

#include <map>
#include <memory>
#include <set>
#include <string>

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

std::unique_ptr<Machine> new_handset(HandsetOptions options);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_H_
