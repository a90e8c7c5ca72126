// The commands that move contacts between the phonebook and files: export, import.
#include <algorithm>

#include "cli/context.h"
#include "cli/failure.h"
#include "cli/file_access.h"
#include "cli/import_run.h"
#include "cli/second_look.h"

namespace qalt::cli {
namespace {

constexpr size_t kProblemsShown = 20;

Format wanted_format(const Arguments& arguments) {
  auto format = format_named(arguments.format);
  if (!format) format = format_of_path(arguments.file);
  if (!format && arguments.command == "export" && is_standard_output(arguments.file)) {
    format = Format::kJsonLines;
  }
  if (!format) {
    throw Failure(Cause::kUsage, "the format of \"" + arguments.file + "\" is not clear",
                  "say --format jsonl, vcf or csv");
  }
  return *format;
}

[[noreturn]] void fail_on_problems(const std::string& path, const ImportPlan& plan) {
  std::string what = path + " was not imported, nothing was written";
  for (size_t i = 0; i < plan.problems.size() && i < kProblemsShown; ++i) {
    what += "\n  line " + std::to_string(plan.problems[i].line) + ": " + plan.problems[i].what;
  }
  if (plan.problems.size() > kProblemsShown) {
    what += "\n  and " + std::to_string(plan.problems.size() - kProblemsShown) + " more";
  }
  throw Failure(Cause::kBadInput, what);
}

void warn_of_losses(Context& context, const FileContents& contents, const ImportPlan& plan) {
  std::string names;
  for (const std::string& name : contents.ignored) names += (names.empty() ? "" : ", ") + name;
  if (!names.empty()) context.warn("the phonebook has no place for " + names);
  for (const Problem& dropped : plan.dropped) {
    context.warn("line " + std::to_string(dropped.line) + ": left out: " + dropped.what);
  }
  for (const Problem& tried : plan.tried) {
    context.warn("line " + std::to_string(tried.line) + ": tried as it is: " + tried.what);
  }
}

// The AT lines of the whole import, as they would be sent.
std::vector<std::string> lines_of(const Phonebook& book, const ImportPlan& plan) {
  const Family family = book.info().family;
  const bool standard = family == Family::kStandard;
  std::vector<std::string> lines = {"AT+CPBS=\"SM\""};
  if (standard) {
    lines.push_back("AT+CSCS=\"UCS2\"");
    lines.push_back("AT+CSCS?");
  }
  for (const int index : plan.deletes) {
    lines.push_back(book.erase_line(index));
    lines.push_back(detail::read_line(family, index, index));
  }
  for (const PlannedWrite& write : plan.writes) {
    const std::string look = detail::read_line(family, write.contact.index, write.contact.index);
    if (write.overwritten.empty()) lines.push_back(look);
    lines.push_back(book.write_line(write.contact, plan.limits));
    lines.push_back(look);
  }
  if (standard) lines.push_back("AT+CSCS=\"IRA\"");
  return lines;
}

// What is lost by --replace, where something is; whether anybody was asked.
bool confirm_losses(Context& context, const ImportPlan& plan) {
  const auto overwritten =
      std::count_if(plan.writes.begin(), plan.writes.end(),
                    [](const PlannedWrite& write) { return !write.overwritten.empty(); });
  if (plan.deletes.empty() && overwritten == 0) return false;
  return context.confirm("delete " + std::to_string(plan.deletes.size()) +
                         " contacts and overwrite " + std::to_string(overwritten) + "?");
}

void show_plan(Context& context, const ImportPlan& plan) {
  const std::vector<std::string> lines = lines_of(context.book(), plan);
  if (context.json()) {
    Json object = {{"delete", plan.deletes}, {"write", Json::array()}};
    for (const PlannedWrite& write : plan.writes) object["write"].push_back(json_of(write.contact));
    object["unchanged"] = plan.unchanged;
    object["lines"] = lines;
    context.print(line_of(object) + "\n");
    return;
  }
  std::string text;
  for (const int index : plan.deletes) text += "delete " + std::to_string(index) + "\n";
  for (const PlannedWrite& write : plan.writes) {
    text += "write " + std::to_string(write.contact.index) + " " + label_of(write.contact);
    if (!write.overwritten.empty()) text += ", over " + write.overwritten;
    text += "\n";
  }
  text += std::to_string(plan.unchanged) + " unchanged\n";
  if (!plan.deletes.empty() || !plan.writes.empty()) {
    text += "would be sent:\n";
    for (const std::string& line : lines) text += "  " + line + "\n";
  }
  context.print(text);
}

}  // namespace

void run_export(Context& context) {
  const Arguments& arguments = context.arguments();
  const Format format = wanted_format(arguments);
  const Reading reading = take(context.book().read_all());
  if (context.book().info().plain) {
    throw Failure(Cause::kRefused,
                  "the modem has no character set UCS2: the export would lose "
                  "characters",
                  "list shows what can be read");
  }
  context.end_progress();
  const std::string loss = loss_of(format, reading.contacts);
  if (!loss.empty()) context.warn(loss);
  const std::string text = write_contacts(format, reading.contacts);
  if (is_standard_output(arguments.file)) {
    context.print(text);
  } else {
    write_file(arguments.file, text);
    if (context.json()) {
      context.print(line_of(Json{{"exported", reading.contacts.size()}}) + "\n");
    } else {
      context.print(std::to_string(reading.contacts.size()) + " contacts written to " +
                    arguments.file + "\n");
    }
  }
  context.warn_unreadable(reading.unreadable, reading.missing);
}

void run_import(Context& context) {
  const Arguments& arguments = context.arguments();
  const Format format = wanted_format(arguments);
  const FileContents contents = read_contacts(format, read_file(arguments.file));
  // A file that cannot be read needs no modem to say so.
  if (!contents.problems.empty()) {
    ImportPlan plan;
    plan.problems = contents.problems;
    fail_on_problems(arguments.file, plan);
  }
  if (arguments.replace && contents.records.empty()) {
    throw Failure(Cause::kBadInput, arguments.file + " holds no contacts", "to delete all: clear");
  }
  Phonebook& book = context.book();
  const Reading stored = take(book.read_all());
  context.end_progress();
  if (book.info().plain) {
    throw Failure(Cause::kRefused, "the modem has no character set UCS2: names would be lost");
  }
  const Limits limits = format == Format::kJsonLines ? Limits::kSendable : Limits::kAnnounced;
  const ImportPlan plan =
      plan_import(book, stored, contents, {arguments.replace, arguments.force, limits});
  if (!plan.problems.empty()) fail_on_problems(arguments.file, plan);
  if (plan.without_place > 0) {
    throw Failure(Cause::kFull,
                  "there is no free index for " + std::to_string(plan.without_place) +
                      " of the contacts, nothing was written",
                  "delete some first");
  }
  warn_of_losses(context, contents, plan);
  context.warn_unreadable(plan.kept);
  if (arguments.dry_run) {
    show_plan(context, plan);
    return;
  }
  if (arguments.replace && confirm_losses(context, plan)) {
    expect_same(stored, take(book.read_all()));
  }
  Tally tally;
  if (!plan.deletes.empty() || !plan.writes.empty()) carry_out(context, plan, tally);
  context.end_progress();
  const size_t unchanged = size_t(plan.unchanged) + tally.met;
  if (context.json()) {
    context.print(line_of(Json{{"written", tally.written},
                               {"deleted", tally.deleted},
                               {"unchanged", unchanged},
                               {"missing", plan.writes.size() - tally.written - tally.met},
                               {"unknown", tally.rest.unknown},
                               {"left", tally.rest.left}}) +
                  "\n");
    return;
  }
  const std::string rest = text_of(tally.rest);
  context.print(std::to_string(tally.written) + " of " + std::to_string(plan.writes.size()) +
                " contacts written, " + std::to_string(tally.deleted) + " deleted, " +
                std::to_string(unchanged) + " unchanged" + rest +
                (rest.empty() ? "\n" : "; import again: what is stored is not written twice\n"));
}

}  // namespace qalt::cli
