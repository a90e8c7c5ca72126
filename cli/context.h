// context.h - what every command works with: its arguments, the phonebook, the output.
#ifndef QALT_CLI_CONTEXT_H_
#define QALT_CLI_CONTEXT_H_

#include <string>
#include <string_view>
#include <vector>

#include "cli/arguments.h"
#include "cli/output.h"
#include "qalt_at/phonebook.hpp"

namespace qalt::cli {

class Context {
 public:
  // Takes standard output for itself; what the library prints goes to standard error.
  explicit Context(Arguments arguments);
  ~Context();
  Context(const Context&) = delete;
  Context& operator=(const Context&) = delete;

  const Arguments& arguments() const { return arguments_; }
  bool json() const { return arguments_.json; }
  int columns() const;

  // The phonebook, opened at the first use. Throws Failure.
  Phonebook& book();

  // Writes all of `text` to standard output. Where that takes no more, standard error says so,
  // once, and a job whose whole point is the output looks at output_failed().
  void print(std::string_view text);
  bool output_failed() const { return output_failed_; }
  void warn(const std::string& text) const { say_warning(text, json()); }
  // Says what could not be read; the command then ends with the class "refused".
  void warn_unreadable(const std::vector<Unreadable>& gaps, int missing = 0);
  // A part of the job failed; the exit status is the first one's.
  void failed(const Error& error);
  // Takes down in `rest` what became of one change of many: whether to go on with the next.
  bool goes_on(const Result<Done>& changed, int index, Remainder& rest);
  // One line of a running job on standard error, where that is a terminal and a second has passed.
  void progress(const std::string& text);
  void end_progress();

  // Asks on the terminal, unless --yes was given. Throws Failure where the answer is no, or where
  // nobody can be asked. Gives whether anybody was: that takes time, in which others change things.
  bool confirm(const std::string& question);

  // What happened to the phonebook comes first, then the output.
  int status() const { return status_ == 0 && output_failed_ ? int(Cause::kOutput) : status_; }

 private:
  Arguments arguments_;
  Phonebook book_;
  bool open_ = false;
  int output_;
  int status_ = 0;
  bool output_failed_ = false;
  bool progress_shown_ = false;
  long started_ms_;
};

// The commands, by name. Each throws Failure.
using CommandFunction = void (*)(Context& context);
CommandFunction find_command(const std::string& name);

void run_info(Context& context);
void run_list(Context& context);
void run_get(Context& context);
void run_find(Context& context);
void run_add(Context& context);
void run_set(Context& context);
void run_delete(Context& context);
void run_clear(Context& context);
void run_export(Context& context);
void run_import(Context& context);
void run_at(Context& context);
void run_reports(Context& context);
void run_text(Context& context);

}  // namespace qalt::cli

#endif  // QALT_CLI_CONTEXT_H_
