// log_text.h - what a log of a modem line is made of: the time, and bytes as readable text.
#ifndef QALT_SIM_LOG_TEXT_H_
#define QALT_SIM_LOG_TEXT_H_

#include <string>
#include <string_view>

namespace qalt::sim {

// "2026-01-31T12:00:00.123456Z"
constexpr size_t kTimeLength = 27;
std::string time_now();

// Printable ASCII as it is; "\r", "\n", "\t", "\\"; every other byte "\xHH".
constexpr std::string_view kEscapeLetters = "rnt\\";
constexpr std::string_view kEscapeMeanings = "\r\n\t\\";
std::string escaped(std::string_view bytes);

}  // namespace qalt::sim

#endif  // QALT_SIM_LOG_TEXT_H_
