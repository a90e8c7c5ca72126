#include "sim/log_text.h"

#include <chrono>
#include <cstdio>
#include <ctime>

#include "sim/text.h"

namespace qalt::sim {

std::string time_now() {
  using namespace std::chrono;
  const auto now = system_clock::now().time_since_epoch();
  const std::time_t whole = duration_cast<seconds>(now).count();
  const long fraction = long(duration_cast<microseconds>(now).count() % 1'000'000);
  std::tm utc{};
  gmtime_r(&whole, &utc);
  char text[64];
  const size_t length = std::strftime(text, sizeof text, "%Y-%m-%dT%H:%M:%S", &utc);
  std::snprintf(text + length, sizeof text - length, ".%06ldZ", fraction);
  return text;
}

std::string escaped(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + 8);
  for (char byte : bytes) {
    const size_t letter = kEscapeMeanings.find(byte);
    if (letter != kEscapeMeanings.npos) {
      text += '\\';
      text += kEscapeLetters[letter];
    } else if (byte >= 0x20 && byte < 0x7F) {
      text += byte;
    } else {
      text += "\\x" + to_hex(std::string_view(&byte, 1));
    }
  }
  return text;
}

}  // namespace qalt::sim
