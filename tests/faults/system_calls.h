// system_calls.h - the test program's own socket calls: each does what the real one does, unless a
// plan says how its next uses go wrong.
#ifndef QALT_TESTS_FAULTS_SYSTEM_CALLS_H_
#define QALT_TESTS_FAULTS_SYSTEM_CALLS_H_

#include <cstddef>
#include <string>

namespace test {

enum class Call { kSocket, kConnect, kSend, kRecv, kBind, kListen, kAccept, kClose, kThread };

constexpr int kForever = 1 << 30;
constexpr int kLastError = 133;  // errno counts from 1 to here

// From use number `skip` on, counted from 0, the next `times` uses of the call fail with `error`.
// Use number `then_skip` fails with `then_error`, where that is set.
struct Plan {
  Call call = Call::kSocket;
  int error = 0;
  int times = 0;
  int skip = 0;
  int then_error = 0;
  int then_skip = 0;
};

// Replaces the plan, sets the counts of uses to zero, and lets sends and receives move at most
// `piece` bytes at once.
void set_plan(const Plan& plan = {}, size_t piece = 1 << 20);

// How often the call was used since.
int uses(Call call);

// Where a connection to the AT server's fixed path really goes.
inline std::string g_server;
// The descriptor that was listened on last; read when the thread that did has ended.
inline int g_listening = -1;

}  // namespace test

#endif  // QALT_TESTS_FAULTS_SYSTEM_CALLS_H_
