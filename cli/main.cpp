// qalt-pb: the SIM phonebook from the shell.
#include <syslog.h>

#include <clocale>
#include <exception>

#include "cli/context.h"
#include "cli/failure.h"
#include "cli/file_access.h"
#include "cli/interrupts.h"
#include "common/descriptors.h"

int main(int argc, char** argv) {
  using namespace qalt::cli;
  qalt::open_standard_descriptors();
  int status = 0;
  const auto arguments = read_arguments(argc, argv, status);
  if (!arguments) return status;
  // Characters are classified as Unicode, whatever the user's language.
  if (std::setlocale(LC_CTYPE, "C.UTF-8") == nullptr) std::setlocale(LC_CTYPE, "");
  // The library traces every step, contacts included: errors only, unless asked for more.
  openlog("qalt-pb", arguments->verbose ? LOG_PERROR : 0, LOG_USER);
  setlogmask(LOG_UPTO(arguments->verbose ? LOG_DEBUG : LOG_ERR));
  start_interrupts();

  Context context(*arguments);
  try {
    find_command(arguments->command)(context);
  } catch (const Failure& failure) {
    context.failed(failure.error());
  } catch (const std::exception& error) {
    context.failed({qalt::Cause::kBadInput, error.what(), ""});
  }
  context.end_progress();
  return context.status();
}
