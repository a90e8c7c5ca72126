// config.h - everything that makes one simulated modem different from another.
#ifndef QALT_SIM_CONFIG_H_
#define QALT_SIM_CONFIG_H_

#include <vector>

#include "sim/faults.h"
#include "sim/phonebook.h"

namespace qalt::sim {

// Which phonebook commands there are besides the standard ones.
enum class Profile {
  kStandard,    // none
  kVendor,      // +JCPBR, +JCPBW on a card without USIM phonebook
  kVendorUsim,  // the same on a USIM
  kScpbr        // ^SCPBR, ^SCPBW, ^CARDMODE
};

// How an empty place is read.
enum class EmptyAnswer { kOk, kNotFound, kError };

struct Config {
  Profile profile = Profile::kStandard;
  int first_index = 1;
  int size = 250;         // places of "SM"
  int device_size = 100;  // places of "ME"
  unsigned number_length = 40;
  unsigned name_length = 18;
  bool send_lengths = true;       // +CPBR=? names the field lengths
  bool further = false;           // +CPBW takes parameters behind the name, +CPBR gives them back
  bool plain_numbers = false;     // international numbers are sent without "+", as type 145
  bool foreign_is_error = false;  // another profile's commands: ERROR, not "not support"
  EmptyAnswer empty = EmptyAnswer::kOk;
  int cmee = 1;           // +CMEE at power-up
  int card_mode = 2;      // ^CARDMODE=?, 1 a SIM, 2 a USIM
  int number_scheme = 0;  // third value of the query AT+CPBR=1 of profile scpbr
  std::vector<PlacedContact> sim_contacts = builtin_sim_contacts();
  std::vector<PlacedContact> device_contacts = builtin_device_contacts();
  Faults faults;
};

// Widths of the vendor records: texts in hexadecimal digits, the address in characters.
enum : unsigned { kItemDigits = 60, kEmailLength = 64 };

}  // namespace qalt::sim

#endif  // QALT_SIM_CONFIG_H_
