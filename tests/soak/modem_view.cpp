#include "tests/soak/modem_view.h"

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

#include <sstream>

namespace soak {
namespace {

// No rule for faults names a line that begins like this.
constexpr char kFaultless[] = "ATE0";
constexpr int kPatienceMs = 5000;
constexpr int kQuietMs = 500;

// What comes until `end` does or nothing more for a while.
std::string ask(int terminal, const std::string& command, const char* end = "\r\nOK\r\n",
                int patience_ms = kPatienceMs) {
  const std::string line = kFaultless + command + "\r";
  if (::write(terminal, line.data(), line.size()) != ssize_t(line.size())) return "";
  std::string answer;
  pollfd ready = {terminal, POLLIN, 0};
  while (answer.find(end) == answer.npos && ::poll(&ready, 1, patience_ms) == 1) {
    char bytes[4096];
    const ssize_t count = ::read(terminal, bytes, sizeof bytes);
    if (count <= 0) break;
    answer.append(bytes, size_t(count));
  }
  return answer;
}

}  // namespace

std::set<std::string> ask_modem(const std::string& device, int first, int last) {
  std::set<std::string> lines;
  const int terminal = ::open(device.c_str(), O_RDWR | O_NOCTTY | O_CLOEXEC);
  if (terminal < 0) return lines;
  termios settings{};
  ::tcgetattr(terminal, &settings);
  ::cfmakeraw(&settings);
  ::tcsetattr(terminal, TCSAFLUSH, &settings);
  // Whatever is left of the killed server's last command, and its answer, is passed over.
  ask(terminal, "", "\n\n", kQuietMs);
  ask(terminal, "+CPBS=\"SM\"");
  ask(terminal, "+CSCS=\"UCS2\"");
  std::istringstream answer(
      ask(terminal, "+CPBR=" + std::to_string(first) + "," + std::to_string(last)));
  ::close(terminal);
  for (std::string line; std::getline(answer, line);) {
    if (line.starts_with("+CPBR:")) lines.insert(line.substr(0, line.find('\r')));
  }
  return lines;
}

}  // namespace soak
