// soak.h - what conductor and clients agree on.
#ifndef QALT_SOAK_SOAK_H_
#define QALT_SOAK_SOAK_H_

#include <string>
#include <vector>

namespace soak {

constexpr int kContactsEach = 12;

// As the modem's faults write them.
const std::vector<std::string> kReports = {"+CMTI: \"SM\",3", "RING", "+CDS: 5\\r\\n0011"};

}  // namespace soak

#endif  // QALT_SOAK_SOAK_H_
