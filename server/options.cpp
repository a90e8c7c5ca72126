#include "server/options.h"

#include <CLI/CLI.hpp>
#include <iostream>
#include <sstream>
#include <stdexcept>

#include "common/command_line.h"
#include "qalt_at/link.h"
#include "server/port_list.h"
#include "sim/options.h"

namespace qalt::server {
namespace {

constexpr char kExamples[] = R"(
Examples:
  qalt-atd --modem tty:/dev/ttyUSB2,115200 --log at.log
  qalt-atd --modem replay:at.log                       the same modem again, from the record
  qalt-atd --modem sim                                 simulated modem, ordinary phonebook
  qalt-atd --modem sim --sim-profile vendor-usim --sim-busy 3
  qalt-atd --modem sim --sim-fault '1:AT+CPBR:never'   the first read is never answered

Exit status: 0 ended by SIGINT or SIGTERM, 1 could not start, 2 wrong command line.)";

std::vector<std::string> split(const std::string& text, char separator) {
  std::vector<std::string> parts;
  std::istringstream stream(text);
  for (std::string part; std::getline(stream, part, separator);) parts.push_back(part);
  return parts;
}

TtyAddress parse_tty(const std::string& text) {
  TtyAddress address;
  const std::vector<std::string> parts = split(text, ',');
  if (parts.empty() || parts[0].empty()) throw std::invalid_argument("tty: names no device");
  address.device = parts[0];
  for (size_t i = 1; i < parts.size(); ++i) {
    if (parts[i] == "rtscts") {
      address.rtscts = true;
    } else if (parts[i].size() < 8 &&
               parts[i].find_first_not_of("0123456789") == std::string::npos && !parts[i].empty() &&
               is_baud_rate(unsigned(std::stoul(parts[i])))) {
      address.baud = unsigned(std::stoul(parts[i]));
    } else {
      throw std::invalid_argument("'" + parts[i] + "' is neither rtscts nor a speed");
    }
  }
  return address;
}

// "[::1]:7000" and "host:7000": the port follows the last colon.
TcpAddress parse_tcp(const std::string& text) {
  const size_t colon = text.rfind(':');
  if (colon == text.npos || colon == 0 || colon + 1 == text.size()) {
    throw std::invalid_argument("tcp: is followed by HOST:PORT");
  }
  TcpAddress address{text.substr(0, colon), text.substr(colon + 1)};
  if (address.host.front() == '[' && address.host.back() == ']') {
    address.host = address.host.substr(1, address.host.size() - 2);
  }
  return address;
}

// A phonebook that nobody has must not be taken for the card's, so no modem is the default.
std::string say_which_modem() {
  std::string text;
  for (const std::string& port : modem_ports()) text += " tty:" + port;
  return "--modem says which: " +
         (text.empty()
              ? "sim, the simulated one; there is no port of a modem in /dev"
              : "a port of this machine (" + text.substr(1) + "), or sim, the simulated one");
}

unsigned parse_mode(const std::string& text) {
  if (text.empty() || text.size() > 4 || text.find_first_not_of("01234567") != text.npos) {
    throw std::invalid_argument("--socket-mode: '" + text + "' is no octal mode such as 0660");
  }
  return unsigned(std::stoul(text, nullptr, 8));
}

}  // namespace

ModemAddress parse_modem_address(const std::string& text) {
  const size_t colon = text.find(':');
  const std::string kind = text.substr(0, colon);
  const std::string rest = colon == text.npos ? "" : text.substr(colon + 1);
  if (kind == "tty") return parse_tty(rest);
  if (kind == "tcp") return parse_tcp(rest);
  if (kind == "replay" && !rest.empty()) return ReplayAddress{rest};
  throw std::invalid_argument(
      "--modem: '" + text +
      "' is not sim, tty:DEVICE[,BAUD][,rtscts], tcp:HOST:PORT or replay:FILE");
}

std::optional<Options> read_options(int argc, char** argv, int& status) {
  Options options;
  options.socket = QALT_AT_SERVER_PATH;
  sim::Options sim;
  std::string modem;
  std::string start = "ATE0";
  std::string mode = "0660";

  CLI::App app("qalt-atd - AT server: gives several processes one modem", "qalt-atd");
  app.footer(kExamples);
  app.set_version_flag("--version", "qalt-atd " QALT_VERSION);
  app.add_option("--socket", options.socket, "where clients connect (" QALT_AT_SERVER_PATH ")")
      ->type_name("PATH");
  app.add_option("--socket-mode", mode, "who may connect, in octal (0660)")->type_name("MODE");
  app.add_option("--socket-group", options.access.group, "group of the socket")->type_name("GROUP");
  app.add_option("--modem", modem, "sim | tty:DEVICE[,BAUD][,rtscts] | tcp:HOST:PORT | replay:FILE")
      ->type_name("MODEM");
  app.add_option("--init", start, "command lines after every opening, \"|\" between them (ATE0)")
      ->type_name("LINES");
  app.add_option_function<unsigned>(
         "--longest-wait",
         [&options](unsigned ms) { options.longest_wait = std::chrono::milliseconds(ms); },
         "most that is waited for an answer, whatever time-out a client asks for")
      ->type_name("MS")
      ->check(CLI::Range(1, 1 << 30))
      ->transform(decimal());
  app.add_option("--report-to", options.report_paths,
                 "socket that gets the reports; may be repeated")
      ->type_name("PATH")
      ->allow_extra_args(false)
      ->take_all();
  app.add_option("--log", options.transcript, "transcript of the modem line; appended to")
      ->type_name("FILE");
  add_ready_option(app, options.ready_descriptor, "clients may connect");
  app.add_flag("--syslog", options.syslog, "messages to syslog, not to standard error");
  app.add_flag("--verbose", options.verbose, "more messages");
  sim::add_options(app, sim);

  try {
    parse_arguments(app, argc, argv);
    options.start_lines = split(start, '|');
    options.access.mode = parse_mode(mode);
    if (modem.empty()) throw std::invalid_argument(say_which_modem());
    if (modem == "sim") {
      options.modem = SimAddress{sim::make_config(sim)};
    } else {
      options.modem = parse_modem_address(modem);
    }
    return options;
  } catch (const CLI::ParseError& error) {
    status = app.exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& error) {
    std::cerr << "qalt-atd: " << error.what() << "\nRun with --help for more information.\n";
    status = 2;
  }
  return std::nullopt;
}

}  // namespace qalt::server
