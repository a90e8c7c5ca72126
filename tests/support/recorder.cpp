#include "tests/support/recorder.h"

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <mutex>

namespace test {
namespace {

std::mutex g_mutex;
std::vector<LogLine> g_logs;
std::vector<unsigned> g_sleeps;

[[gnu::format(printf, 2, 0)]] void record(int priority, const char* format, va_list arguments) {
  char* text = nullptr;
  if (vasprintf(&text, format, arguments) == -1) return;
  const std::lock_guard lock(g_mutex);
  g_logs.push_back({priority, text});
  free(text);
}

}  // namespace

std::vector<LogLine> logs() {
  const std::lock_guard lock(g_mutex);
  return g_logs;
}

std::vector<std::string> logged(const std::string& module, int priority) {
  std::vector<std::string> lines;
  const std::string start = module + ", ";
  for (const auto& [given, text] : logs()) {
    if (given != priority || text.rfind(start, 0) != 0) continue;
    lines.push_back(text.substr(text.find(' ', start.size()) + 1));
  }
  return lines;
}

std::vector<unsigned> sleeps() {
  const std::lock_guard lock(g_mutex);
  return g_sleeps;
}

void clear_records() {
  const std::lock_guard lock(g_mutex);
  g_logs.clear();
  g_sleeps.clear();
}

}  // namespace test

extern "C" {

[[gnu::format(printf, 2, 3)]] void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  test::record(priority, format, arguments);
  va_end(arguments);
}

// What a build with _FORTIFY_SOURCE calls instead.
[[gnu::format(printf, 3, 4)]] void __syslog_chk(int priority, int, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  test::record(priority, format, arguments);
  va_end(arguments);
}

unsigned sleep(unsigned seconds) {
  const std::lock_guard lock(test::g_mutex);
  test::g_sleeps.push_back(seconds);
  return 0;
}

}  // extern "C"
