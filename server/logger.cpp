#include "server/logger.h"

#include <poll.h>
#include <unistd.h>

#include "at/escape.h"
#include "at/secrets.h"

namespace qalt::server {
namespace {

// What a pipe that poll() calls writable takes at once.
constexpr size_t kMostAtOnce = 4096;

// A line that would have to be waited for is lost: nobody reads.
void write_unless_full(std::string line) {
  if (line.size() >= kMostAtOnce) line.resize(kMostAtOnce - 1);
  line += '\n';
  pollfd standard_error = {STDERR_FILENO, POLLOUT, 0};
  if (::poll(&standard_error, 1, 0) != 1) return;
  // Where it fails, there is nobody to tell.
  [[maybe_unused]] const ssize_t written = ::write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

Logger::Logger(Target target, bool verbose) : target_(target), verbose_(verbose) {
  if (target_ == Target::kSyslog) ::openlog("qalt-atd", LOG_PID, LOG_DAEMON);
}

void Logger::log(int priority, const std::string& text) const {
  if (target_ == Target::kNone || (priority > LOG_NOTICE && !verbose_)) return;
  const std::string line = at::escaped(at::without_secrets(text));
  if (target_ == Target::kSyslog) {
    ::syslog(priority, "%s", line.c_str());
  } else {
    write_unless_full("qalt-atd: " + line);
  }
}

}  // namespace qalt::server
