// recorder.h - the test program's own syslog and sleep: both only take down what was asked of them.
#ifndef QALT_TESTS_SUPPORT_RECORDER_H_
#define QALT_TESTS_SUPPORT_RECORDER_H_

#include <string>
#include <vector>

namespace test {

struct LogLine {
  int priority;
  std::string text;  // "module, line " included
};

// Everything logged since the last clear; thread-safe copies.
std::vector<LogLine> logs();

// The lines of one module and priority, without "module, line ".
std::vector<std::string> logged(const std::string& module, int priority);

// The seconds of each sleep since the last clear.
std::vector<unsigned> sleeps();

void clear_records();

}  // namespace test

#endif  // QALT_TESTS_SUPPORT_RECORDER_H_
