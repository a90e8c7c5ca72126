// contacts_file.h - contacts of a simulated modem from a JSON file.
//
//   {"SM": [{"index": 3, "number": "+4930123", "name": "Zoë",
//            "type": 145, "number2": "", "number3": "", "email": "", "extra": "",
//            "further": ",0,\"0041\""}],
//    "ME": [...]}
//
// An array alone is "SM". "index" is the place; left out, it is the one after the entry before.
// Everything else may be left out. These are stored already: a name may be longer than the modem
// would take. "further" is sent as it is, behind the name, by a modem with --sim-further.
#ifndef QALT_SIM_CONTACTS_FILE_H_
#define QALT_SIM_CONTACTS_FILE_H_

#include <string>

#include "sim/config.h"

namespace qalt::sim {

// Replaces the contacts of `config`, whose sizes and lengths must already be set. Throws
// std::runtime_error with a message that names the file, the entry and what is wrong with it.
void load_contacts(const std::string& path, Config& config);

}  // namespace qalt::sim

#endif  // QALT_SIM_CONTACTS_FILE_H_
