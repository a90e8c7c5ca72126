#include "cli/context.h"

#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <cctype>
#include <cerrno>
#include <chrono>
#include <iostream>
#include <system_error>
#include <utility>

#include "cli/failure.h"
#include "cli/file_access.h"
#include "cli/interrupts.h"
#include "cli/terminal.h"

namespace qalt::cli {
namespace {

long now_ms() {
  using std::chrono::milliseconds;
  const auto now = std::chrono::steady_clock::now().time_since_epoch();
  return std::chrono::duration_cast<milliseconds>(now).count();
}

struct CommandRow {
  std::string_view name;
  CommandFunction run;
};

constexpr std::array<CommandRow, 13> kCommands = {{{"info", run_info},
                                                   {"list", run_list},
                                                   {"get", run_get},
                                                   {"find", run_find},
                                                   {"add", run_add},
                                                   {"set", run_set},
                                                   {"delete", run_delete},
                                                   {"clear", run_clear},
                                                   {"export", run_export},
                                                   {"import", run_import},
                                                   {"at", run_at},
                                                   {"reports", run_reports},
                                                   {"text", run_text}}};

}  // namespace

CommandFunction find_command(const std::string& name) {
  for (const CommandRow& row : kCommands) {
    if (row.name == name) return row.run;
  }
  return nullptr;
}

Context::Context(Arguments arguments)
    : arguments_(std::move(arguments)),
      output_(fcntl(STDOUT_FILENO, F_DUPFD_CLOEXEC, 3)),
      started_ms_(now_ms()) {
  dup2(STDERR_FILENO, STDOUT_FILENO);
}

Context::~Context() {
  if (output_ != -1) close(output_);
}

int Context::columns() const {
  return terminal_columns(output_);
}

Phonebook& Context::book() {
  if (open_) return book_;
  Options options;
  options.platform = arguments_.platform;
  options.wait_seconds = arguments_.wait_seconds.value_or(options.wait_seconds);
  options.away_seconds = arguments_.wait_seconds.value_or(options.away_seconds);
  options.server_user = arguments_.server_user;
  options.stop = interrupted;
  options.pause = pause_second;
  options.progress = [this](int done, int all) {
    progress("reading " + std::to_string(done) + " of " + std::to_string(all));
  };
  take(book_.open(std::move(options)));
  open_ = true;
  return book_;
}

void Context::print(std::string_view text) {
  if (output_failed_ || write_all(output_, text)) return;
  output_failed_ = true;
  end_progress();
  say_error({Cause::kOutput,
             "standard output takes no more: " + std::generic_category().message(errno), ""},
            json());
}

void Context::warn_unreadable(const std::vector<Unreadable>& gaps, int missing) {
  end_progress();
  for (const Unreadable& gap : gaps) {
    failed({Cause::kRefused,
            "index " + std::to_string(gap.index) + " could not be read: " + gap.why, ""});
  }
  if (missing > 0) {
    failed({Cause::kRefused,
            "the modem counts " + std::to_string(missing) + " more contacts than its indices give",
            "try again; what is shown is not all"});
  }
}

void Context::failed(const Error& error) {
  end_progress();
  say_error(error, json());
  if (status_ == 0) status_ = int(error.cause);
}

bool Context::goes_on(const Result<Done>& changed, int index, Remainder& rest) {
  if (!changed) failed(changed.error());
  const bool over = !changed && (changed.error().cause == Cause::kInterrupted ||
                                 changed.error().cause == Cause::kNoAnswer);
  const bool made = changed || changed.error().fate != Fate::kNotDone;
  if (over && made) rest.unknown.push_back(index);
  if (!over || made) --rest.left;
  return !over;
}

void Context::progress(const std::string& text) {
  constexpr long kPatienceMs = 1000;
  if (!arguments_.progress || arguments_.json || !isatty(STDERR_FILENO)) return;
  if (now_ms() - started_ms_ < kPatienceMs) return;
  std::cerr << "\r" << text << "\x1B[K" << std::flush;
  progress_shown_ = true;
}

void Context::end_progress() {
  if (std::exchange(progress_shown_, false)) std::cerr << "\r\x1B[K" << std::flush;
}

bool Context::confirm(const std::string& question) {
  end_progress();
  if (arguments_.yes) return false;
  if (!isatty(STDIN_FILENO) || !isatty(STDERR_FILENO)) {
    throw Failure(Cause::kUsage, "there is no terminal to ask on", "say --yes to go ahead");
  }
  std::cerr << question << " [y/N] " << std::flush;
  if (!wait_readable(STDIN_FILENO)) {
    throw Failure(Cause::kInterrupted, "interrupted, nothing was changed");
  }
  std::string answer;
  std::getline(std::cin, answer);
  answer.erase(0, answer.find_first_not_of(" \t"));
  answer.erase(answer.find_last_not_of(" \t\r") + 1);
  for (char& c : answer) c = char(std::tolower(uint8_t(c)));
  if (answer != "y" && answer != "yes") {
    throw Failure(Cause::kUsage, "nothing was changed");
  }
  return true;
}

}  // namespace qalt::cli
