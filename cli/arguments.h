// arguments.h - the command line of qalt-pb.
#ifndef QALT_CLI_ARGUMENTS_H_
#define QALT_CLI_ARGUMENTS_H_

#include <optional>
#include <string>
#include <vector>

#include "qalt_at/detail/contact.hpp"

namespace qalt::cli {

struct Arguments {
  // For every command.
  int platform = 0;
  std::optional<int> wait_seconds;
  uint32_t server_user = 0;
  bool json = false;
  bool progress = true;
  bool verbose = false;

  std::string command;
  std::optional<int> from, to, index;
  std::vector<int> indices;
  Changes fields;
  std::string text;
  std::string file;
  std::string format;
  std::vector<std::string> lines;
  std::string module = "/tmp/qalt-pb.reports";
  unsigned timeout_seconds = 10;
  unsigned count = 0;  // of reports; 0 until interrupted
  bool force = false;
  bool yes = false;
  bool dry_run = false;
  bool replace = false;
  bool decode = false;
  bool vendor = false;
  bool compact = false;
};

// Reads the command line. None when the program is to end at once with `status`: help and version
// were printed (0), or the line is wrong and standard error says how (2).
std::optional<Arguments> read_arguments(int argc, char** argv, int& status);

}  // namespace qalt::cli

#endif  // QALT_CLI_ARGUMENTS_H_
