#include "server/turns.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace qalt::server {

void Turns::push_back(Command command) {
  Round& round = is_late(command.peer) ? late_ : in_time_;
  const auto own = std::find_if(round.begin(), round.end(),
                                [&](const Queue& queue) { return queue.peer == command.peer; });
  if (own != round.end()) return own->commands.push_back(std::move(command));
  // Whoever has just had a turn lets a new one go first, unless front() has promised the next one.
  const bool promised = chosen_ == &round && round.size() == 1;
  const bool first = !round.empty() && round.back().peer == served_ && !promised;
  const auto place = first ? std::prev(round.end()) : round.end();
  round.insert(place, Queue{command.peer, {}})->commands.push_back(std::move(command));
}

Turns::Round& Turns::chosen() {
  if (chosen_ == nullptr) {
    const bool late = in_time_.empty() || (before_late_ == 0 && !late_.empty());
    chosen_ = late ? &late_ : &in_time_;
  }
  return *chosen_;
}

Command Turns::take_front() {
  Round& round = chosen();
  chosen_ = nullptr;
  if (&round == &late_) {
    before_late_ = std::max(in_time_.size(), size_t(1));
  } else if (before_late_ > 0) {
    --before_late_;
  }
  Queue& queue = round.front();
  served_ = queue.peer;
  Command command = std::move(queue.commands.front());
  queue.commands.pop_front();
  if (queue.commands.empty()) {
    round.pop_front();
  } else {
    round.splice(round.end(), round, round.begin());
  }
  return command;
}

std::optional<Command> Turns::take(uint64_t id) {
  for (Round* const round : {&in_time_, &late_}) {
    for (auto queue = round->begin(); queue != round->end(); ++queue) {
      const auto found = std::find_if(queue->commands.begin(), queue->commands.end(),
                                      [&](const Command& command) { return command.id == id; });
      if (found == queue->commands.end()) continue;
      Command command = std::move(*found);
      queue->commands.erase(found);
      if (queue->commands.empty()) round->erase(queue);
      if (round->empty()) chosen_ = nullptr;
      return command;
    }
  }
  return std::nullopt;
}

void Turns::answered(const Peer& peer, bool in_time) {
  std::erase(late_peers_, peer);
  if (in_time) return;
  if (late_peers_.size() == kMostLate) late_peers_.pop_front();
  late_peers_.push_back(peer);
}

bool Turns::is_late(const Peer& peer) const {
  return std::find(late_peers_.begin(), late_peers_.end(), peer) != late_peers_.end();
}

}  // namespace qalt::server
