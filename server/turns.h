// turns.h - whose command is next: each process has a queue of its own, and the queues take turns,
// so that a process with two hundred commands makes another one wait for one of them.
//
// A process whose last command had no answer in time, or was left by its client, costs the others
// more than a command: the way back after it. All such together take one turn in each round, in
// turn among themselves, until a command of theirs is answered. Pure: no I/O.
#ifndef QALT_SERVER_TURNS_H_
#define QALT_SERVER_TURNS_H_

#include <chrono>
#include <cstdint>
#include <deque>
#include <list>
#include <optional>
#include <string>

#include "server/client_settings.h"

namespace qalt::server {

struct Command {
  uint64_t id = 0;
  std::string line;
  std::chrono::milliseconds timeout{0};
  Peer peer;
  bool older = false;  // the peer may have worked with a server that ended without a word
};

class Turns {
 public:
  // Processes that are remembered as late ones; beyond these the first is forgotten.
  static constexpr size_t kMostLate = 256;

  bool empty() const { return in_time_.empty() && late_.empty(); }
  void push_back(Command command);
  // The command whose turn it is; the same one until it is removed.
  const Command& front() { return chosen().front().commands.front(); }
  Command take_front();
  void pop_front() { take_front(); }
  // Removes a command, if it is there.
  std::optional<Command> take(uint64_t id);
  // A command of the process was answered, or was not in time.
  void answered(const Peer& peer, bool in_time);

 private:
  struct Queue {
    Peer peer;
    std::deque<Command> commands;
  };
  using Round = std::list<Queue>;

  Round& chosen();
  bool is_late(const Peer& peer) const;

  Round in_time_;
  Round late_;
  Round* chosen_ = nullptr;  // by front(), until that is removed
  Peer served_;              // who had the last turn
  size_t before_late_ = 0;   // turns of the others until one of late_ is due
  std::deque<Peer> late_peers_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_TURNS_H_
