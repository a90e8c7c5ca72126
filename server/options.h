// options.h - the command line of qalt-atd.
#ifndef QALT_SERVER_OPTIONS_H_
#define QALT_SERVER_OPTIONS_H_

#include <optional>
#include <string>
#include <variant>
#include <vector>

#include "server/dispatcher.h"
#include "server/socket_path.h"
#include "server/tcp_port.h"
#include "server/tty_port.h"
#include "sim/config.h"

namespace qalt::server {

struct SimAddress {
  sim::Config config;
};
struct ReplayAddress {
  std::string file;
};
using ModemAddress = std::variant<SimAddress, TtyAddress, TcpAddress, ReplayAddress>;

struct Options {
  std::string socket;
  SocketPath::Access access;
  ModemAddress modem;
  std::vector<std::string> start_lines;
  std::chrono::milliseconds longest_wait = kAnyWait;
  std::vector<std::string> report_paths;
  std::string transcript;
  int ready_descriptor = -1;  // gets a line once the server listens
  bool syslog = false;
  bool verbose = false;
};

// Reads the command line. None when the program is to end at once with `status`: help and version
// were printed (0), or the line is wrong and standard error says how (2).
std::optional<Options> read_options(int argc, char** argv, int& status);

// "tty:DEVICE[,BAUD][,rtscts]", "tcp:HOST:PORT" or "replay:FILE". Throws std::invalid_argument.
ModemAddress parse_modem_address(const std::string& text);

}  // namespace qalt::server

#endif  // QALT_SERVER_OPTIONS_H_
