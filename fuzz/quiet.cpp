// The fuzz programs' own syslog and sleep: lines are formatted, so that every argument is read as
// the real one would read it, and dropped; nobody waits.
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

namespace {

char g_line[512 * 1024];

__attribute__((format(printf, 1, 0))) void format_line(const char* format, va_list arguments) {
  std::vsnprintf(g_line, sizeof g_line, format, arguments);
}

}  // namespace

extern "C" {

void syslog(int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  format_line(format, arguments);
  va_end(arguments);
}

// What a build with _FORTIFY_SOURCE calls instead.
__attribute__((format(printf, 3, 4))) void __syslog_chk(int, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  format_line(format, arguments);
  va_end(arguments);
}

unsigned sleep(unsigned) {
  return 0;
}

}  // extern "C"
