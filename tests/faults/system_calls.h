// system_calls.h - the test program's own socket calls: connections lead to peers inside the test,
// all else does what the real one does, unless a plan says how its next uses go wrong.
#ifndef QALT_TESTS_FAULTS_SYSTEM_CALLS_H_
#define QALT_TESTS_FAULTS_SYSTEM_CALLS_H_

#include <cstddef>
#include <string>
#include <vector>

namespace test {

enum class Call { kSocket, kConnect, kSend, kRecv, kBind, kListen, kAccept, kClose, kThread };

constexpr int kForever = 1 << 30;
constexpr int kLastError = 133;  // errno counts from 1 to here

// From use number `skip` on, counted from 0, the next `times` uses of the call fail with `error`.
// Sends and receives move at most `piece` bytes at once.
struct Plan {
  Call call = Call::kSocket;
  int error = 0;
  int times = 0;
  int skip = 0;
  size_t piece = 1 << 20;
};

// Replaces the plan, sets the counts of uses to zero, and ends the last connection's peer.
void set_plan(const Plan& plan = {});

// How often the call was used since.
int uses(Call call);

// All that the AT server sends over the next connections; what it received over the last one.
inline std::string g_answer;
inline std::string g_request;

// What the next peers that are accepted send, each before it closes; then accepting is refused.
inline std::vector<std::string> g_reports;
inline int g_listening = -1;  // the descriptor that was listened on last

}  // namespace test

#endif  // QALT_TESTS_FAULTS_SYSTEM_CALLS_H_
