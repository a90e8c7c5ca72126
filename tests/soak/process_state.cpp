#include "tests/soak/process_state.h"

#include <filesystem>
#include <fstream>

namespace soak {

ProcessState state_of(pid_t process) {
  ProcessState state;
  const std::string folder = "/proc/" + std::to_string(process);
  std::ifstream status(folder + "/status");
  for (std::string line; std::getline(status, line);) {
    if (line.starts_with("VmRSS:")) state.resident_kb = std::stol(line.substr(6));
  }
  std::error_code gone;
  const std::filesystem::directory_iterator open(folder + "/fd", gone);
  state.descriptors = std::distance(begin(open), end(open));
  return state;
}

std::string growth(const ProcessState& start, const ProcessState& end, long tolerance_kb) {
  std::string text;
  if (end.descriptors != start.descriptors) {
    text += " descriptors " + std::to_string(start.descriptors) + " -> " +
            std::to_string(end.descriptors);
  }
  if (end.resident_kb > start.resident_kb + tolerance_kb) {
    text += " memory " + std::to_string(start.resident_kb) + " kB -> " +
            std::to_string(end.resident_kb) + " kB";
  }
  return text;
}

}  // namespace soak
