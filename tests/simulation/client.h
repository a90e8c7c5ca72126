// client.h - a client program, as the simulation calls it. Each is loaded as a module of its own,
// so that each has a library of its own, as processes have. The soak run's owners are some, too.
#ifndef QALT_TESTS_SIMULATION_CLIENT_H_
#define QALT_TESTS_SIMULATION_CLIENT_H_

#include <cstdint>
#include <string>
#include <vector>

#include "qalt_at/detail/contact.hpp"

namespace qalt::simulation {

// What a call came to.
struct Outcome {
  int cause = 0;  // 0: done; else a qalt::Cause, or what a C function returned
  Fate fate = Fate::kNotDone;
  std::string what = {};
  std::vector<Contact> contacts = {};
  std::vector<int> unreadable = {};
  int first = 0;  // the phonebook's indices
  int last = 0;
  int name_length = 0;
  bool done() const { return cause == 0; }
};

class Client {
 public:
  virtual ~Client() = default;

  // By phonebook.hpp. Between begin_job() and end_job() all calls are of one job.
  virtual Outcome open() = 0;
  virtual Outcome begin_job() = 0;
  virtual void end_job() = 0;
  virtual Outcome read(int first, int last) = 0;
  virtual Outcome get(int index) = 0;
  virtual Outcome add(const Contact& contact) = 0;
  virtual Outcome put(const Contact& contact) = 0;
  virtual Outcome change(int index, const Changes& changes) = 0;
  virtual Outcome erase(int index) = 0;
  // As the tool imports a file of them: all are new ones.
  virtual Outcome import(const std::vector<Contact>& contacts) = 0;

  // By the C functions.
  virtual Outcome c_discover() = 0;
  virtual Outcome c_read(int first, int last) = 0;
  virtual Outcome c_write(const Contact& contact) = 0;
  virtual Outcome c_erase(int index) = 0;

  // A command line as it is; its answer is `what`.
  virtual Outcome command(const std::string& line, uint32_t timeout_ms) = 0;
};

}  // namespace qalt::simulation

// What each module exports.
extern "C" qalt::simulation::Client* simulation_client();

#endif  // QALT_TESTS_SIMULATION_CLIENT_H_
