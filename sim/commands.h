// commands.h - the commands of the simulated modem: tables of rows, and the state they act on.
#ifndef QALT_SIM_COMMANDS_H_
#define QALT_SIM_COMMANDS_H_

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "at/at_line.h"
#include "sim/config.h"

namespace qalt::sim {

// What the modem remembers between commands.
struct State {
  explicit State(Config configuration);
  // The settings as after power-up; contacts stay.
  void reset();
  Storage& selected() { return device_selected ? device : sim; }

  Config config;
  Storage sim;
  Storage device;
  bool device_selected = false;
  Charset charset = Charset::kIra;
  bool echo = true;
  bool verbose = true;  // results in words, not as digits
  bool quiet = false;   // no results at all
  int cmee = 1;
  unsigned busy_left = 0;
  unsigned refused_left = 0;
};

// Error codes of 3GPP TS 27.007, 9.2, that these commands use.
enum class CmeError {
  kNotAllowed = 3,
  kSimBusy = 14,
  kMemoryFull = 20,
  kInvalidIndex = 21,
  kNotFound = 22,
  kTextTooLong = 24,
  kInvalidText = 25,
  kNumberTooLong = 26,
  kInvalidNumber = 27,
};

struct Reply {
  enum class Final { kOk, kError, kCme, kNotSupported, kPrompt };
  Reply() = default;
  Reply(Final result) : final(result) {}                           // NOLINT: a result is a reply
  Reply(CmeError error) : final(Final::kCme), code(int(error)) {}  // NOLINT
  Reply(std::string line) : lines{std::move(line)} {}              // NOLINT: one line and OK

  Final final = Final::kOk;
  int code = 0;
  std::vector<std::string> lines;
};

using Handler = Reply (*)(State& state, const at::Command& command);

enum Forms : unsigned { kExecutes = 1, kSets = 2, kQueries = 4, kTests = 8 };

// What a row says besides its name and forms.
enum Traits : unsigned {
  kNoTraits = 0,
  kUsesStorage = 1,   // busy while the card starts
  kReadsEntries = 2,  // refused by Faults::refused_reads
  kVendorOnly = 4,    // of the profiles vendor and vendor-usim
  kScpbrOnly = 8,     // of the profile scpbr
};

struct CommandRow {
  std::string_view name;
  unsigned forms;
  unsigned traits;
  Handler handler;
};

// One table a concern; a command is looked up in all of them.
std::span<const CommandRow> general_commands();
std::span<const CommandRow> standard_phonebook_commands();
std::span<const CommandRow> vendor_phonebook_commands();

// Carries a command out, or says why not.
Reply run(State& state, const at::Command& command);

// The text of an error in the form that +CMEE selected: "ERROR", "+CME ERROR: 21" or in words.
std::string error_text(int cmee, int code);

// What phonebook commands of every family share.
std::optional<int> to_int(std::string_view digits);
std::string in_quotes(std::string_view text);
// A number as it is sent: without its "+" where the modem is configured so.
std::string wire_number(const State& state, std::string_view number, int type);
// The contacts of "first[,last]" of a read, by `line`; the errors of a range.
Reply read_range(State& state, std::string_view arguments,
                 std::string (*line)(const State& state, int index, const Contact& contact));
// Checks a number against the characters and the length that fit; kOk or the error.
Reply check_number(const State& state, std::string_view number);
// Stores a contact at an index text, or at the first free place where that is empty.
Reply store(State& state, std::string_view index, Contact contact);
Reply erase(State& state, std::string_view index);
// "(1-250)" of the selected storage.
std::string index_range(State& state);

}  // namespace qalt::sim

#endif  // QALT_SIM_COMMANDS_H_
