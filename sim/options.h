// options.h - the --sim-... options, the same for every program that has a simulated modem in it.
#ifndef QALT_SIM_OPTIONS_H_
#define QALT_SIM_OPTIONS_H_

#include <CLI/CLI.hpp>
#include <string>
#include <vector>

#include "sim/config.h"

namespace qalt::sim {

// The values as given; make_config turns them into a configuration.
struct Options {
  Config config;
  bool no_lengths = false;
  unsigned delay_ms = 0;
  std::string contacts_file;
  std::vector<std::string> fault_rules;
  std::string report;  // after every phonebook write
};

// Adds the options to `app`; `options` must live until it has parsed.
void add_options(CLI::App& app, Options& options);

// Throws std::runtime_error or std::invalid_argument with a message for the user.
Config make_config(const Options& options);

}  // namespace qalt::sim

#endif  // QALT_SIM_OPTIONS_H_
