// sim_machine.h - the product's own simulated modem as a machine of the simulation.
#ifndef QALT_TESTS_SIMULATION_SIM_MACHINE_H_
#define QALT_TESTS_SIMULATION_SIM_MACHINE_H_

#include <utility>

#include "sim/modem.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

class SimMachine : public Machine {
 public:
  explicit SimMachine(sim::Config config) : modem_(std::move(config)) { look(); }

  void receive(std::string_view bytes) override {
    modem_.receive(bytes);
    if (bytes.find("PBW") != bytes.npos) look();
    for (sim::Output& output : modem_.take()) {
      said_.push_back({output.delay, std::move(output.bytes)});
    }
  }

 private:
  // The contacts as they are now; those that differ are told to `changed`.
  void look() {
    const sim::Storage& storage = modem_.state().sim;
    for (int index = storage.first(); index <= storage.last(); ++index) {
      const sim::Contact* const there = storage.find(index);
      const Content now = there == nullptr ? Content() : Stored{there->number, there->name, {}};
      if (now == at(index)) continue;
      contacts_.erase(index);
      if (now) contacts_.emplace(index, *now);
      if (changed) changed(index);
    }
  }

  sim::Modem modem_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_SIM_MACHINE_H_
