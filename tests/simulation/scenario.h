// scenario.h - what a seed stands for: a modem, a line, clients and what becomes of the server.
#ifndef QALT_TESTS_SIMULATION_SCENARIO_H_
#define QALT_TESTS_SIMULATION_SCENARIO_H_

#include <memory>
#include <set>
#include <string>
#include <vector>

#include "tests/simulation/chance.h"
#include "tests/simulation/line.h"
#include "tests/simulation/machine.h"

namespace qalt::simulation {

// How a client works with the phonebook.
enum class Manner { kHeader, kImporter, kFunctions, kLines };

struct Scenario {
  std::string text;  // in a few words
  std::unique_ptr<Machine> machine;
  int first = 0;  // of its indices
  int size = 0;
  Time delay{0};         // of its answers about the phonebook
  bool plain = true;     // contacts are as the C functions can carry them
  std::set<int> hidden;  // indices that the modem refuses to read, though nothing is wrong
  bool vendor = false;   // vendor's commands, where the text is coded otherwise
  bool slow = false;     // to answer
  bool refuses = false;  // says ERROR where it could say otherwise: only the count tells
  bool drops = false;    // writes, and says OK
  LineFaults line;
  std::vector<Manner> clients;
  int calls = 0;        // of each client
  int lives = 0;        // how often the server ends and begins again
  int own_changes = 0;  // seconds between changes that the modem makes by itself; 0: none
  bool calm() const;    // nothing goes wrong but reports
};

Scenario make_scenario(uint64_t seed);
std::unique_ptr<Machine> make_handset(Chance& chance, Scenario& scenario);

// A contact that no other is like.
Stored new_contact(Chance& chance, int number, int longest_name);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_SCENARIO_H_
