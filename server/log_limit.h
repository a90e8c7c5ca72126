// log_limit.h - lines of one class, the first few of each minute and a count of the others: what
// can be caused from outside as often as somebody likes must not fill the log. Pure: it is told the
// time.
#ifndef QALT_SERVER_LOG_LIMIT_H_
#define QALT_SERVER_LOG_LIMIT_H_

#include <chrono>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>

namespace qalt::server {

class LogLimit {
 public:
  using TimePoint = std::chrono::steady_clock::time_point;

  static constexpr unsigned kMost = 5;
  static constexpr std::chrono::seconds kPeriod{60};

  // What is to be written for `text`: it, with the number of those of its class that were left out
  // before it; none when it is left out itself. The class is a constant of the caller's.
  std::optional<std::string> limited(std::string_view of, std::string text, TimePoint now) {
    Class& one = classes_.try_emplace(of, Class{now}).first->second;
    if (now - one.since >= kPeriod) one = {now, 0, one.left_out};
    if (one.written == kMost) {
      ++one.left_out;
      return std::nullopt;
    }
    ++one.written;
    const unsigned long left_out = std::exchange(one.left_out, 0);
    if (left_out > 0) text += " (and " + std::to_string(left_out) + " such lines left out)";
    return text;
  }

 private:
  struct Class {
    TimePoint since;
    unsigned written = 0;
    unsigned long left_out = 0;
  };
  std::map<std::string_view, Class> classes_;
};

}  // namespace qalt::server

#endif  // QALT_SERVER_LOG_LIMIT_H_
