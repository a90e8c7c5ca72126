// interrupts.h - Ctrl-C and SIGTERM end a job between two commands, so that the one under way is
// finished and the modem's character set is put back.
//
// The signals are blocked and taken by a thread of their own: no system call of the library is
// ever interrupted. A second Ctrl-C, a second later or more, ends the program where it stands;
// signals that come twice do not.
#ifndef QALT_CLI_INTERRUPTS_H_
#define QALT_CLI_INTERRUPTS_H_

namespace qalt::cli {

// Before any other thread is started.
void start_interrupts();

bool interrupted();

// Readable as soon as interrupted() is true, for poll.
int interrupt_descriptor();

// Lets a second pass, or less when the user interrupts.
void pause_second();

// Waits until `descriptor` is readable; false when the user interrupts first.
bool wait_readable(int descriptor);

}  // namespace qalt::cli

#endif  // QALT_CLI_INTERRUPTS_H_
