// player.h - a simulated modem on an event loop: its outputs at their times.
#ifndef QALT_SIM_PLAYER_H_
#define QALT_SIM_PLAYER_H_

#include <asio.hpp>
#include <deque>
#include <functional>

#include "sim/modem.h"

namespace qalt::sim {

class Player {
 public:
  struct Handlers {
    std::function<void(std::string_view bytes)> said;
    std::function<void()> hung_up;  // the player is stopped then
  };

  Player(asio::io_context& context, Config config) : timer_(context), modem_(std::move(config)) {}

  void set_handlers(Handlers handlers) { handlers_ = std::move(handlers); }
  // The line is opened: half a command and outputs of an earlier time are forgotten.
  void start();
  // What a terminal sends; the handlers are never called from inside.
  void receive(std::string_view bytes);
  void stop();
  const FaultBook& faults() const { return modem_.faults(); }

 private:
  void schedule();

  asio::steady_timer timer_;
  Modem modem_;
  Handlers handlers_;
  std::deque<Output> outputs_;
  bool scheduled_ = false;
  unsigned session_ = 0;  // tells a handler of an earlier start
};

}  // namespace qalt::sim

#endif  // QALT_SIM_PLAYER_H_
