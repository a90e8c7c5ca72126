// logger.h - what the server tells its operator: standard error, or syslog.
#ifndef QALT_SERVER_LOGGER_H_
#define QALT_SERVER_LOGGER_H_

#include <syslog.h>

#include <string>

namespace qalt::server {

class Logger {
 public:
  enum class Target { kStandardError, kSyslog, kNone };
  explicit Logger(Target target, bool verbose = false);

  // Priorities of syslog. Digits of PINs are masked, other bytes than printable ones escaped.
  void log(int priority, const std::string& text) const;

 private:
  Target target_;
  bool verbose_;  // priorities below LOG_NOTICE too
};

}  // namespace qalt::server

#endif  // QALT_SERVER_LOGGER_H_
