#include "server/logger.h"

#include <cstdio>

#include "at/escape.h"
#include "at/secrets.h"

namespace qalt::server {

Logger::Logger(Target target, bool verbose) : target_(target), verbose_(verbose) {
  if (target_ == Target::kSyslog) ::openlog("qalt-atd", LOG_PID, LOG_DAEMON);
}

void Logger::log(int priority, const std::string& text) const {
  if (target_ == Target::kNone || (priority > LOG_NOTICE && !verbose_)) return;
  const std::string line = at::escaped(at::without_secrets(text));
  if (target_ == Target::kSyslog) {
    ::syslog(priority, "%s", line.c_str());
  } else {
    std::fprintf(stderr, "qalt-atd: %s\n", line.c_str());
  }
}

}  // namespace qalt::server
