#include "sim/player.h"

#include <utility>

namespace qalt::sim {

void Player::start() {
  stop();
  modem_.reopened();
}

void Player::receive(std::string_view bytes) {
  modem_.receive(bytes);
  for (Output& output : modem_.take()) outputs_.push_back(std::move(output));
  if (!scheduled_ && !outputs_.empty()) schedule();
}

void Player::stop() {
  ++session_;
  outputs_.clear();
  scheduled_ = false;
  timer_.cancel();
}

// The outputs go out in order, each its delay after the one before it.
void Player::schedule() {
  scheduled_ = true;
  timer_.expires_after(outputs_.front().delay);
  timer_.async_wait([this, session = session_](const asio::error_code&) {
    if (session != session_) return;
    const Output output = std::move(outputs_.front());
    outputs_.pop_front();
    scheduled_ = false;
    if (output.kind == Output::Kind::kHangUp) {
      stop();
      return handlers_.hung_up();
    }
    handlers_.said(output.bytes);
    if (session == session_ && !scheduled_ && !outputs_.empty()) schedule();
  });
}

}  // namespace qalt::sim
