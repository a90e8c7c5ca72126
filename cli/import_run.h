// import_run.h - carries out what an import has planned, while other clients may be writing, too.
#ifndef QALT_CLI_IMPORT_RUN_H_
#define QALT_CLI_IMPORT_RUN_H_

#include <cstddef>

#include "cli/context.h"
#include "cli/import_plan.h"

namespace qalt::cli {

struct Tally {
  size_t written = 0;
  size_t deleted = 0;
  size_t met = 0;  // not written: another client has just stored the same
  Remainder rest;
};

// Goes on after a refusal, which `context` is told of; ends where no more can be sent, with what is
// left in `tally`.
void carry_out(Context& context, const ImportPlan& plan, Tally& tally);

}  // namespace qalt::cli

#endif  // QALT_CLI_IMPORT_RUN_H_
