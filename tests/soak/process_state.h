// process_state.h - what a process holds of the system: memory and descriptors.
#ifndef QALT_SOAK_PROCESS_STATE_H_
#define QALT_SOAK_PROCESS_STATE_H_

#include <sys/types.h>

#include <string>

namespace soak {

struct ProcessState {
  long resident_kb = 0;  // VmRSS
  long descriptors = 0;
};

ProcessState state_of(pid_t process);

// What has grown beyond its tolerance since `start`: the descriptors by any, the memory by more
// than `tolerance_kb`. Empty when nothing has.
std::string growth(const ProcessState& start, const ProcessState& end, long tolerance_kb);

}  // namespace soak

#endif  // QALT_SOAK_PROCESS_STATE_H_
