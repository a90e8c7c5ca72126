// phone.h - the telephone behind the command line: what it is set to, what it holds, what it
// answers.
#ifndef QALT_TESTS_SIMULATION_HANDSET_PHONE_H_
#define QALT_TESTS_SIMULATION_HANDSET_PHONE_H_

#include <string>
#include <string_view>
#include <vector>

#include "tests/simulation/handset/command_line.h"
#include "tests/simulation/handset/options.h"
#include "tests/simulation/handset/result.h"

namespace qalt::simulation {

struct Phone {
  Options options;  // storages and messages in it are those of now
  Settings now = {};
  Card card = Card::kReady;
  int busy_for = 0;
  std::vector<int> changes = {};  // in the SIM storage, not yet reported
};

using Lines = std::vector<std::string>;  // of information, without line ends

// Settings and card as after power-up.
void power_up(Phone& phone);

// Where in the options the storage of that name is, or the first one.
size_t storage_place(const Phone& phone, std::string_view name);

// A text between terminal and telephone: in the set of +CSCS, as the value of a string.
std::string said(const Phone& phone, std::u16string_view text);

// Whether a parameter is that word, plain or in the set of +CSCS; and words as +X=? lists them.
bool is_word(const Phone& phone, std::string_view parameter, std::string_view word);
std::string list_of(const Phone& phone, const std::vector<std::string>& words);

// What is between values.
std::string_view comma(const Phone& phone);

// Puts a contact, or none, at an index.
void place(Phone& phone, Storage& storage, int index, const std::optional<Stored>& contact);

// Runs one command of a line. ATZ ends the line.
Result run(Phone& phone, const Command& command, Lines& lines);

// The commands of TS 27.007 8.11 to 8.14.
Result phonebook(Phone& phone, const Command& command, Lines& lines);

// TS 27.005 3.4.3: +CMGR.
Result read_message(Phone& phone, const Command& command, Lines& lines);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_PHONE_H_
