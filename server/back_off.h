// back_off.h - when a port that was lost is opened again. Pure: it is told the time.
//
// The pause doubles while the port cannot be opened, so that a modem that was taken away costs
// nothing. It stays short while somebody wants the modem: a client has asked within kWantedFor. The
// device's own return ends any pause, see modem_port.h.
#ifndef QALT_SERVER_BACK_OFF_H_
#define QALT_SERVER_BACK_OFF_H_

#include <algorithm>
#include <chrono>
#include <optional>
#include <utility>

namespace qalt::server {

class BackOff {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;
  using milliseconds = std::chrono::milliseconds;

  static constexpr milliseconds kFirst{250};
  static constexpr milliseconds kLongest{30'000};
  static constexpr milliseconds kLongestWanted{1000};
  static constexpr milliseconds kWantedFor{60'000};

  // The port was lost, or could not be opened.
  void failed(TimePoint now) {
    failed_ = now;
    pause_ = std::exchange(next_, std::min(next_ * 2, kLongest));
  }
  // The modem answers what it is asked: the next failure is a first one again. A byte is no answer:
  // what sends one and closes would be opened four times a second for ever.
  void answered() { next_ = kFirst; }
  // A client has a command.
  void asked(TimePoint now) { asked_ = now; }
  // When the port is to be opened again; asked() makes it sooner.
  TimePoint due() const {
    const bool wanted = asked_ && *asked_ + kWantedFor > failed_;
    return failed_ + (wanted ? std::min(pause_, kLongestWanted) : pause_);
  }

 private:
  milliseconds pause_ = kFirst;
  milliseconds next_ = kFirst;
  TimePoint failed_;
  std::optional<TimePoint> asked_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_BACK_OFF_H_
