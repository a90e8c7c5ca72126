// clients.h - what the clients of a run do, and whether what each call told them is true.
#ifndef QALT_TESTS_SIMULATION_CLIENTS_H_
#define QALT_TESTS_SIMULATION_CLIENTS_H_

#include "tests/simulation/client.h"
#include "tests/simulation/scenario.h"
#include "tests/simulation/server.h"

namespace qalt::simulation {

// What all clients of a run share.
struct Surroundings {
  World& world;
  Server& server;
  Oracle& oracle;
  const Scenario& scenario;
  int contacts = 0;  // made up so far
};

// On a task of its own; `number` is its place in the scenario.
void run_client(Surroundings& around, int number, Client& client, Chance chance);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_CLIENTS_H_
