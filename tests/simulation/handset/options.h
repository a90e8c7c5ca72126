// options.h - what one handset does otherwise than another. Everything comes from outside; what is
// not set is as the standards say.
#ifndef QALT_TESTS_SIMULATION_HANDSET_OPTIONS_H_
#define QALT_TESTS_SIMULATION_HANDSET_OPTIONS_H_

#include <chrono>
#include <map>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "tests/simulation/handset/result.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

// What commands change, and what ATZ and power-up bring back.
struct Settings {
  int echo = 1;                // V.250 6.2.4
  int quiet = 0;               // V.250 6.2.5
  int verbose = 1;             // V.250 6.2.6
  int monitor = 4;             // V.250 6.2.7
  int end_of_line = 13;        // V.250 6.2.1, S3
  int line_feed = 10;          // V.250 6.2.2, S4
  int backspace = 8;           // V.250 6.2.3, S5
  int errors = 0;              // TS 27.007 9.1, +CMEE
  int registration = 0;        // TS 27.007 7.2, +CREG
  int message_format = 0;      // TS 27.005 3.2.3, +CMGF
  std::string set = "IRA";     // TS 27.007 5.5, +CSCS
  std::string storage = "SM";  // TS 27.007 8.11, +CPBS
};

// A phonebook storage.
struct Storage {
  std::string name = "SM";
  int first = 1, size = 250;
  // Announced; what is written may not be longer. None: not announced, anything may be written.
  std::optional<int> number_length = 40, text_length = 14;
  std::map<int, Stored> contacts = {};
};

// A short message that was received, in the default alphabet.
struct Message {
  std::string from = "+4915112345678";
  std::string time = "26/11/23,18:00:00+04";
  std::u16string text = {};
  std::string pdu = {};  // the same as TS 23.040 9.2.2.1 has it, behind no service centre's address
  bool read = false;
};

// Three whose text has lines as a modem's own: "OK", a prompt, the beginning of a contact.
std::vector<Message> confusing_messages();

enum class Card { kReady, kNeedsPin, kAbsent };
enum class Counts { kRight, kAbsent, kZero };    // "used" and "total" of +CPBS?
enum class Measure { kCharacters, kOctets };     // what the announced length of a text counts
enum class FurtherOrder { kStandard, kAsRead };  // of the parameters of +CPBW

struct Options {
  Settings initial = {};                 // as somebody left it
  std::vector<Storage> storages = {{}};  // the first is selected where `initial` names none of them
  std::vector<std::string> sets = {"GSM", "IRA", "8859-1", "UCS2", "HEX"};
  std::vector<Message> messages = confusing_messages();
  std::set<std::string> unknown = {};  // commands it has not, as "+CMEE", which then stays as it is

  // The command line.
  size_t line_length = 560;    // of a body; longer ones are errors
  bool bare_at_fails = false;  // ERROR to AT alone
  bool escapes = false;        // V.250 5.4.2.2: \22 and \5C in strings, both ways
  bool lines_framed = false;   // each line of an answer has a line end before it, too
  bool blanks = false;         // after commas
  std::map<std::string, std::chrono::milliseconds> answer_times = {};  // by command, as "+CPBW"

  // The card.
  Card card = Card::kReady;
  std::string pin = "1234";
  int busy_for = 0;  // phonebook commands, after power-up

  // Texts.
  bool upper_hex = true;
  bool set_named_in_itself = false;  // +CSCS? answers "0055004300530032" for UCS2

  // Phonebook.
  bool further = false;  // the parameters behind the text are known
  FurtherOrder further_order = FurtherOrder::kStandard;
  bool plus_in_numbers = true;                              // "+49",145, not "49",145
  bool finds_free_index = true;                             // where +CPBW has none
  bool tells_index = false;                                 // +CPBW answers where it has written
  Result empty_index = Result::kOk;                         // or kNotFound, kError
  Result empty_range = Result::kOk;                         // nor has +CPBF found any
  std::set<int> refused_alone = {}, refused_in_range = {};  // reads that end with ERROR
  bool lines_before_refusal = false;                        // of the indices before it
  std::optional<int> largest_range = {};                    // indices in one read; more: ERROR
  std::set<int> writes_dropped = {};                        // with OK, silently
  Counts counts = Counts::kRight;
  Measure measure = Measure::kCharacters;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_OPTIONS_H_
