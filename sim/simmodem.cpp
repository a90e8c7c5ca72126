// qalt-simmodem: the simulated modem on a pseudo-terminal, for any program that speaks AT.
#include <csignal>
#include <iostream>

#include "at/transcript.h"
#include "common/command_line.h"
#include "common/descriptors.h"
#include "sim/options.h"
#include "sim/player.h"
#include "sim/pty_line.h"

namespace {

constexpr char kExamples[] = R"(
Examples:
  qalt-simmodem --pty /tmp/modem                       then: qalt-atd --modem tty:/tmp/modem
  qalt-simmodem --pty /tmp/modem --sim-profile scpbr --sim-delay 50

At the end it says how often it did each --sim-fault.

Exit status: 0 ended by SIGINT or SIGTERM, 1 could not start, 2 wrong command line.)";

void run(const std::string& link, const std::string& log_path, const qalt::sim::Options& options,
         const qalt::sim::Config& config, int ready_descriptor) {
  using Kind = qalt::at::TranscriptEntry::Kind;
  qalt::at::Transcript log(log_path);
  asio::io_context context(1);
  qalt::sim::PtyLine line(context, link);
  qalt::sim::Player player(context, config);
  player.set_handlers({[&](std::string_view bytes) {
                         log.add(Kind::kFromModem, bytes);
                         line.write(bytes);
                       },
                       [&] {
                         line.hang_up();
                         player.start();
                       }});
  line.start([&](std::string_view bytes) {
    log.add(Kind::kToModem, bytes);
    player.receive(bytes);
  });
  asio::signal_set signals(context, SIGINT, SIGTERM);
  signals.async_wait([&](const asio::error_code&, int) { context.stop(); });
  if (ready_descriptor >= 0) qalt::tell_ready(ready_descriptor);
  context.run();
  const std::vector<unsigned>& done = player.faults().done();
  for (size_t i = 0; i < options.fault_rules.size(); ++i) {
    std::cout << done[i] << " " << options.fault_rules[i] << "\n";
  }
}

}  // namespace

int main(int argc, char** argv) {
  qalt::open_standard_descriptors();
  CLI::App app("qalt-simmodem - a simulated modem on a pseudo-terminal", "qalt-simmodem");
  app.footer(kExamples);
  app.set_version_flag("--version", "qalt-simmodem " QALT_VERSION);
  std::string link;
  std::string log;
  int ready_descriptor = -1;
  qalt::sim::Options options;
  app.add_option("--pty", link, "symbolic link to make, to the terminal")
      ->type_name("LINK")
      ->required();
  app.add_option("--log", log, "appends what goes over the line, each piece with its time")
      ->type_name("FILE");
  qalt::add_ready_option(app, ready_descriptor, "the link is there");
  qalt::sim::add_options(app, options);
  qalt::sim::Config config;
  try {
    qalt::parse_arguments(app, argc, argv);
    config = qalt::sim::make_config(options);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : 2;
  } catch (const std::exception& error) {
    std::cerr << "qalt-simmodem: " << error.what() << "\n";
    return 2;
  }
  try {
    run(link, log, options, config, ready_descriptor);
  } catch (const std::exception& error) {
    std::cerr << "qalt-simmodem: cannot start: " << error.what() << "\n";
    return 1;
  }
}
