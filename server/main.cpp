// qalt-atd: owns the modem and carries out the AT commands of all processes, one at a time.
#include <exception>
#include <iostream>

#include "common/descriptors.h"
#include "server/app.h"
#include "server/options.h"

int main(int argc, char** argv) {
  qalt::open_standard_descriptors();
  int status = 0;
  const auto options = qalt::server::read_options(argc, argv, status);
  if (!options) return status;
  try {
    asio::io_context context(1);
    qalt::server::App app(context, *options);
    context.run();
    return 0;
  } catch (const std::exception& error) {
    std::cerr << "qalt-atd: cannot start: " << error.what() << "\n";
    return 1;
  }
}
