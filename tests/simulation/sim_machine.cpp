#include "tests/simulation/sim_machine.h"

#include <utility>

namespace qalt::simulation {

void SimMachine::look() {
  const sim::Storage& storage = modem_.state().sim;
  for (int index = storage.first(); index <= storage.last(); ++index) {
    const sim::Contact* const there = storage.find(index);
    const auto known = contacts_.find(index);
    if (there == nullptr && known == contacts_.end()) continue;
    if (there == nullptr) {
      contacts_.erase(known);
    } else {
      Stored now{there->number, there->name, {}};
      if (known != contacts_.end() && known->second == now) continue;
      contacts_[index] = std::move(now);
    }
    if (changed) changed(index);
  }
}

void SimMachine::receive(std::string_view bytes) {
  modem_.receive(bytes);
  if (bytes.find("PBW") != bytes.npos) look();
}

std::vector<Said> SimMachine::take() {
  std::vector<Said> said;
  for (sim::Output& output : modem_.take()) said.push_back({output.delay, std::move(output.bytes)});
  return said;
}

void SimMachine::change_by_itself(int, std::optional<Stored>) {}

}  // namespace qalt::simulation
