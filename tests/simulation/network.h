// network.h - the Unix sockets of the simulated machine: the AT server's, and the names by which
// the phonebook tool takes its turns. The clients' system calls lead here, and into the time of
// their world.
#ifndef QALT_TESTS_SIMULATION_NETWORK_H_
#define QALT_TESTS_SIMULATION_NETWORK_H_

#include <cstdint>
#include <string_view>

#include "qalt_at/link.h"
#include "tests/simulation/world.h"

namespace qalt::simulation {

// The process behind the AT server's socket.
class Service {
 public:
  virtual ~Service() = default;
  // Answers by network::answer, with this number.
  virtual void requested(uint64_t connection, int client, const AtMsg& frame) = 0;
  virtual void left(uint64_t connection) = 0;
};

namespace network {

// To be called first.
void begin(World& world);
// None: the server does not run, and connecting to it is refused. Connections that it had end.
void serve(Service* service);
void answer(uint64_t connection, std::string_view text);

}  // namespace network
}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_NETWORK_H_
