// clients.h - what the clients of a run do, and whether what each call told them is true.
#ifndef QALT_TESTS_SIMULATION_CLIENTS_H_
#define QALT_TESTS_SIMULATION_CLIENTS_H_

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "tests/simulation/chance.h"
#include "tests/simulation/client.h"
#include "tests/simulation/oracle.h"
#include "tests/simulation/scenario.h"
#include "tests/simulation/server.h"

namespace qalt::simulation {

// What all clients of a run share.
struct Surroundings {
  World& world;
  Network& network;
  Server& server;
  Oracle& oracle;
  const Scenario& scenario;
  int contacts = 0;  // made up so far
};

class ClientProgram {
 public:
  ClientProgram(Surroundings& around, int number, Manner manner, Client& client, Chance chance)
      : around_(around), number_(number), manner_(manner), client_(client), chance_(chance) {}

  // On a task of its own.
  void run();

 private:
  using MayWrite = decltype(Call::may_write);

  // Begins a call: what it may change is judged while it goes on.
  std::shared_ptr<Call> begin(std::string what, MayWrite may_write);
  // Ends it.
  void told(const Call& call, const Outcome& outcome) const;
  void must_be_done(const Call& call, const Outcome& outcome) const;
  [[noreturn]] void wrong(const Call& call, const Outcome& outcome, const std::string& what) const;

  void start();
  void by_header();
  void by_import();
  void by_functions();
  void by_lines();

  void add();
  void put();
  void change();
  void erase();
  void get();
  void read(int first, int last);
  void c_read();
  void question();
  void raw_write();

  // Whether what was read is what stood there; `whole`: also that nothing is missing.
  void check_reading(const Call& call, const Outcome& outcome, int first, int last, bool whole,
                     bool c_functions);
  void check_stored(const Call& call, const Outcome& outcome, int index, const Stored& wanted);
  bool may_be_unseen(const Call& call, int index) const;
  std::string taken_blindly(const Call& call, int index, const Content& before) const;
  int some_index() { return chance_.between(first_, last_); }
  Entry new_entry(int index);

  Surroundings& around_;
  int number_;
  Manner manner_;
  Client& client_;
  Chance chance_;
  int first_ = 1;
  int last_ = 1;
  int name_length_ = 0;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_CLIENTS_H_
