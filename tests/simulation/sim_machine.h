// sim_machine.h - the product's own simulated modem as a machine of the simulation.
#ifndef QALT_TESTS_SIMULATION_SIM_MACHINE_H_
#define QALT_TESTS_SIMULATION_SIM_MACHINE_H_

#include "sim/modem.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

class SimMachine : public Machine {
 public:
  explicit SimMachine(sim::Config config) : modem_(std::move(config)) { look(); }

  void receive(std::string_view bytes) override;
  std::vector<Said> take() override;
  void power_cycle() override {}
  const std::map<int, Stored>& contacts() const override { return contacts_; }
  void change_by_itself(int index, std::optional<Stored> contact) override;

 private:
  // The contacts as they are now; those that differ are told to `changed`.
  void look();

  sim::Modem modem_;
  std::map<int, Stored> contacts_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_SIM_MACHINE_H_
