// oracle.h - what really stands in the modem and stood there before, who wrote it, and whether that
// was what he had been asked for.
#ifndef QALT_TESTS_SIMULATION_ORACLE_H_
#define QALT_TESTS_SIMULATION_ORACLE_H_

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tests/simulation/machine.h"
#include "tests/simulation/world.h"

namespace qalt::simulation {

using Moment = uint64_t;  // changes of the phonebook so far

// One call of a client's.
struct Call {
  std::string what;  // for messages
  Moment begun = 0;
  // Whether the call may make of what stands at an index what it makes; empty, or what is wrong.
  std::function<std::string(const Call& call, int index, const Content& before,
                            const Content& after)>
      may_write;
  bool takes_turns = false;  // nobody else who does writes while it looks and writes
  struct Look {
    Moment moment = 0;
    int command = 0;  // which of the call's
  };
  std::map<int, Look> looks;  // when the call last had an index read
  Look counted;               // and the contacts counted
  std::map<int, Content> written;
  bool wrote = false;    // a command of it that writes was carried out
  bool touched = false;  // a command of it was not answered as it should be
  int commands = 0;
};

class Oracle {
 public:
  Oracle(World& world, const Machine& machine);

  Moment now() const { return now_; }
  // What is wrong with a write of the call to an index that it believes to be free, if anything is.
  std::string taken_blindly(const Call& call, int index, const Content& before) const;
  // Something changed the index: a call, or where that is null the modem itself.
  void changed(int index, const std::shared_ptr<Call>& call);

  // What stands at the index.
  Content at(int index) const;
  // Whether something stood there at some moment since then.
  bool stood(int index, Moment since, const std::function<bool(const Content&)>& is) const;
  bool stood(int index, Moment since, const Content& content) const;
  // All that stood there since then, for messages.
  std::string story(int index, Moment since) const;

 private:
  struct Version {
    Moment since;
    Content content;
    std::shared_ptr<Call> author;  // none: the modem itself
  };

  World& world_;
  const Machine& machine_;
  std::map<int, std::vector<Version>> versions_;
  Moment now_ = 1;
};

std::string shown(const Content& content);
// With further parameters in the one form in which they are compared.
Stored normal(Stored stored);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_ORACLE_H_
