// The fuzz programs' own syslog and sleep: lines are formatted, so that every argument is read as
// the real one would read it, and dropped; nobody waits.
#include <syslog.h>
#include <unistd.h>

#include <cstdarg>
#include <cstdio>

extern "C" {

#define FORMAT_LINE(format)                             \
  static char line[512 * 1024];                         \
  va_list arguments;                                    \
  va_start(arguments, format);                          \
  std::vsnprintf(line, sizeof line, format, arguments); \
  va_end(arguments)

void syslog(int, const char* format, ...) {
  FORMAT_LINE(format);
}
// What a build with _FORTIFY_SOURCE calls instead.
__attribute__((format(printf, 3, 4))) void __syslog_chk(int, int, const char* format, ...) {
  FORMAT_LINE(format);
}
unsigned sleep(unsigned) {
  return 0;
}

}  // extern "C"
