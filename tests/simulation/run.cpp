#include "tests/simulation/run.h"

#include <dlfcn.h>

#include <algorithm>
#include <memory>
#include <stdexcept>
#include <vector>

#include "tests/simulation/clients.h"

namespace qalt::simulation {
namespace {

// The copy of the library and the tool that the client of this number works with.
Client& load_client(int number) {
  const std::string path = CLIENT_MODULE + std::to_string(number) + ".so";
  void* const module = dlopen(path.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (module == nullptr) throw std::runtime_error(dlerror());
  using Make = Client* (*)();
  return *reinterpret_cast<Make>(dlsym(module, "simulation_client"))();
}

// The server ends, kindly or not, and is there again after a while. Only one that was killed is
// known to have forgotten in which set the C functions are in the middle of a job.
void live(World& world, Server& server, Chance chance, int lives, bool kindly) {
  if (lives == 0) return;
  world.after(Time(chance.between(1, 60000)), [&world, &server, chance, lives, kindly]() mutable {
    if (!kindly || chance.one_in(2)) {
      server.kill();
    } else {
      server.stop();
    }
    world.after(Time(chance.between(10, 5000)), [&world, &server, chance, lives, kindly]() mutable {
      if (server.running()) server.kill();
      server.start();
      live(world, server, chance, lives - 1, kindly);
    });
  });
}

// Somebody changes contacts at the phone itself.
void change_by_itself(World& world, Machine& machine, Oracle& oracle, Chance chance, int seconds) {
  if (seconds == 0) return;
  world.after(Time(chance.between(1, 2000 * seconds)), [&world, &machine, &oracle, chance,
                                                        seconds]() mutable {
    if (machine.contacts().empty()) return;
    auto some = machine.contacts().begin();
    std::advance(some, chance.below(int(machine.contacts().size())));
    const int index = some->first;
    Content content;
    if (chance.one_in(2)) content = new_contact(chance, 900000 + chance.below(99999), 0);
    machine.change_by_itself(index, content);
    const auto found = machine.contacts().find(index);
    oracle.changed(index, found == machine.contacts().end() ? Content() : found->second, nullptr);
    change_by_itself(world, machine, oracle, chance, seconds);
  });
}

}  // namespace

RunReport run_seed(uint64_t seed,
                   const std::function<void(const std::string& what, const std::string& scenario,
                                            const std::string& transcript)>& wrong) {
  Scenario scenario = make_scenario(seed);
  World world;
  world.when_wrong = [&](const std::string& what) {
    wrong(what, scenario.text, world.transcript());
  };
  Network network(world);
  Network::g_network = &network;
  Chance chance(~seed);
  Oracle oracle(world, *scenario.machine);
  Line line(world, *scenario.machine, chance.branch(), scenario.line);
  Server server(world, network, line, *scenario.machine, oracle);
  server.start();
  const auto functions =
      std::count(scenario.clients.begin(), scenario.clients.end(), Manner::kFunctions);
  live(world, server, chance.branch(), scenario.lives, functions == 0);
  change_by_itself(world, *scenario.machine, oracle, chance.branch(), scenario.own_changes);

  Surroundings around{world, network, server, oracle, scenario};
  std::vector<std::unique_ptr<ClientProgram>> programs;
  for (size_t k = 0; k < scenario.clients.size(); ++k) {
    programs.push_back(std::make_unique<ClientProgram>(around, int(k), scenario.clients[k],
                                                       load_client(int(k)), chance.branch()));
    world.spawn([program = programs.back().get()] { program->run(); });
  }
  world.run();
  return {server.commands(), world.now().count() / 1000, scenario.text};
}

}  // namespace qalt::simulation
