// client.h - a client program, as the simulation calls it. Each is loaded as a module of its own,
// so that each has a library of its own, as processes have.
#ifndef QALT_TESTS_SIMULATION_CLIENT_H_
#define QALT_TESTS_SIMULATION_CLIENT_H_

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace qalt::simulation {

struct Entry {
  int index = -1;
  std::string name;  // UTF-8
  std::string number;
  std::string further;
};

// What a call came to.
struct Outcome {
  int cause = 0;  // 0: done; else a qalt::Cause, or what a C function returned
  int fate = 0;   // a qalt::Fate
  std::string what;
  std::vector<Entry> contacts;
  std::vector<int> unreadable;
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
  virtual Outcome add(const Entry& entry) = 0;
  virtual Outcome put(const Entry& entry) = 0;
  virtual Outcome change(int index, const std::optional<std::string>& name,
                         const std::optional<std::string>& number) = 0;
  virtual Outcome erase(int index) = 0;
  // As the tool imports a file of them: all are new ones.
  virtual Outcome import(const std::vector<Entry>& entries) = 0;

  // By the C functions.
  virtual Outcome c_discover() = 0;
  virtual Outcome c_read(int first, int last) = 0;
  virtual Outcome c_write(const Entry& entry) = 0;
  virtual Outcome c_erase(int index) = 0;

  // A command line as it is; its answer is `what`.
  virtual Outcome command(const std::string& line, uint32_t timeout_ms) = 0;
};

}  // namespace qalt::simulation

// What each module exports.
extern "C" qalt::simulation::Client* simulation_client();

#endif  // QALT_TESTS_SIMULATION_CLIENT_H_
