// log.h - the one way a diagnostic leaves the library: syslog, each line headed by the source
// module's name and the line number.
//
// A source file names its module once:  namespace { constexpr char kLogModule[] = "at_com"; }
#ifndef QALT_COMMON_LOG_H_
#define QALT_COMMON_LOG_H_

#include <syslog.h>

#define QALT_LOG(priority, format, ...) \
  syslog((priority), "%s, %d " format, kLogModule, __LINE__ __VA_OPT__(, ) __VA_ARGS__)

// Priority 7: traces. Priority 3: refused arguments and failed steps.
#define QALT_LOG_DEBUG(format, ...) QALT_LOG(LOG_DEBUG, format __VA_OPT__(, ) __VA_ARGS__)
#define QALT_LOG_ERROR(format, ...) QALT_LOG(LOG_ERR, format __VA_OPT__(, ) __VA_ARGS__)

#endif  // QALT_COMMON_LOG_H_
