#include "server/port_list.h"

#include <algorithm>
#include <array>
#include <string_view>

namespace qalt::server {
namespace {

// Names of the kernel's drivers for modems: USB serial converters, CDC ACM, WWAN ports, multiplexed
// lines.
constexpr std::array<std::string_view, 4> kPortNames = {"ttyUSB", "ttyACM", "wwan", "gsmtty"};

}  // namespace

std::vector<std::string> modem_ports(const std::filesystem::path& folder) {
  std::vector<std::string> ports;
  std::error_code error;
  for (std::filesystem::directory_iterator at(folder, error), end; !error && at != end;
       at.increment(error)) {
    const std::string name = at->path().filename();
    if (std::any_of(kPortNames.begin(), kPortNames.end(),
                    [&](std::string_view prefix) { return name.starts_with(prefix); })) {
      ports.push_back(at->path());
    }
  }
  std::sort(ports.begin(), ports.end());
  return ports;
}

}  // namespace qalt::server
