// machine.h - a modem as the simulation sees one: bytes in, bytes out. It does nothing by itself
// and knows no clock, so that a run is the same each time.
#ifndef QALT_TESTS_SIMULATION_MACHINE_H_
#define QALT_TESTS_SIMULATION_MACHINE_H_

#include <chrono>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace qalt::simulation {

// A contact as the modem holds it.
struct Stored {
  std::string number = {};  // with "+" when international
  std::u16string name = {};
  std::string further = {};  // behind the name in a +CPBR line, verbatim, e.g. `,0,"group"`
  bool operator==(const Stored&) const = default;
};
using Content = std::optional<Stored>;  // of an index; none: it is empty

// One piece of what a modem says: an echo, a line of information, a result code.
struct Said {
  std::chrono::milliseconds delay;  // after the piece before
  std::string bytes;
};

class Machine {
 public:
  virtual ~Machine() = default;
  // From the terminal, in pieces of any size.
  virtual void receive(std::string_view bytes) = 0;
  // What it has said since the last call, in order.
  std::vector<Said> take() { return std::exchange(said_, {}); }
  // Settings are as after power-up, a line that was begun is gone; stored contacts stay.
  virtual void power_cycle() {}
  // A person at its keys.
  virtual void change_by_itself(int /*index*/, const Content& /*contact*/) {}
  // Those of the SIM storage, by index.
  const std::map<int, Stored>& contacts() const { return contacts_; }
  Content at(int index) const {
    const auto found = contacts_.find(index);
    return found == contacts_.end() ? Content() : found->second;
  }
  // Called at each change that a command makes, before the command's answer.
  std::function<void(int index)> changed;

 protected:
  std::map<int, Stored> contacts_;
  std::vector<Said> said_;
};

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_MACHINE_H_
