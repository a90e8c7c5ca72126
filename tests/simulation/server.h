// server.h - the AT server's process: the real dispatcher between the simulated network and the
// line, started and killed as the world goes; and a judge of each answer that it gives.
#ifndef QALT_TESTS_SIMULATION_SERVER_H_
#define QALT_TESTS_SIMULATION_SERVER_H_

#include <memory>

#include "tests/simulation/line.h"
#include "tests/simulation/oracle.h"

namespace qalt::simulation {

class Server {
 public:
  virtual ~Server() = default;
  virtual void start() = 0;
  virtual void kill() = 0;
  // What the commands of a client belong to.
  virtual void set_call(int client, std::shared_ptr<Call> call) = 0;
  // A client's program begins again, as a process of its own.
  virtual void new_process(int client) = 0;
  virtual uint64_t commands() const = 0;  // that came
};

std::unique_ptr<Server> new_server(World& world, Line& line, Machine& machine, Oracle& oracle);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_SERVER_H_
