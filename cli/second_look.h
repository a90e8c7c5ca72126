// second_look.h - what a question was about has to be there still when its answer has come.
#ifndef QALT_CLI_SECOND_LOOK_H_
#define QALT_CLI_SECOND_LOOK_H_

#include "qalt_at/phonebook.hpp"

namespace qalt::cli {

// Throws a Failure where another client has changed what was shown.
void expect_same(const Reading& shown, const Reading& now);

}  // namespace qalt::cli

#endif  // QALT_CLI_SECOND_LOOK_H_
