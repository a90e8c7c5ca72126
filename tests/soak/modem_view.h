// modem_view.h - the contacts as the modem itself has them, past the server and the library.
#ifndef QALT_SOAK_MODEM_VIEW_H_
#define QALT_SOAK_MODEM_VIEW_H_

#include <set>
#include <string>

namespace soak {

// The answer lines of a read of all indices, asked on the terminal `device` with texts in UCS2.
// Nobody else may have it open. An empty set also when the modem does not answer.
std::set<std::string> ask_modem(const std::string& device, int first, int last);

}  // namespace soak

#endif  // QALT_SOAK_MODEM_VIEW_H_
