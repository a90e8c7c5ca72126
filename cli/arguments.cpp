#include "cli/arguments.h"

#include <pwd.h>

#include <CLI/CLI.hpp>
#include <algorithm>

#include "cli/output.h"
#include "common/command_line.h"

namespace qalt::cli {
namespace {

constexpr char kFooter[] = R"(
Examples:
  qalt-pb list                                       all contacts as a table
  qalt-pb --json find anna | jq -r '.[].number'      numbers, for a script
  qalt-pb add --name 'Ελένη' --number +302105550123  takes the lowest free index
  qalt-pb set 5 --number +4930901820                 changes the number, keeps the rest
  qalt-pb export backup.jsonl                        restored by: qalt-pb import backup.jsonl
  qalt-pb import friends.vcf --dry-run               what would change
  qalt-pb --wait 30 info                             a card that has just been powered up

Exit status: 0 done, 1 the modem refused, 2 usage, 3 no AT server, no modem or no answer, 4 no such contact,
5 phonebook full, 6 read-back differs, 7 bad file, 8 output failed, 9 another client
was faster, 130 interrupted.)";

constexpr char kFieldGroup[] = "Fields";

void add_fields(CLI::App& command, Arguments& arguments) {
  for (const FieldRow& field : kFields) {
    auto& value = arguments.fields.fields[size_t(field.type)];
    command
        .add_option_function<std::string>(std::string("--") + field.key,
                                          [&value](const std::string& given) { value = given; })
        ->type_name("TEXT")
        ->group(kFieldGroup);
  }
}

void add_indices(CLI::App& command, Arguments& arguments) {
  command.add_option("INDEX", arguments.indices, "index of a contact")
      ->required()
      ->transform(decimal());
}

void add_yes(CLI::App& command, Arguments& arguments) {
  command.add_flag("--yes", arguments.yes, "do not ask; required without a terminal");
}

void add_format(CLI::App& command, Arguments& arguments) {
  command.add_option("--format", arguments.format, "jsonl, vcf or csv; else by the file's ending")
      ->check(CLI::IsMember({"jsonl", "vcf", "csv"}))
      ->type_name("FORMAT");
}

void add_reading_commands(CLI::App& app, Arguments& arguments) {
  app.add_subcommand("info", "size, index range, field lengths, command family");
  CLI::App* list = app.add_subcommand("list", "the contacts as a table, or JSON");
  list->add_option("--from", arguments.from, "first index")->type_name("N")->transform(decimal());
  list->add_option("--to", arguments.to, "last index")->type_name("N")->transform(decimal());
  add_indices(*app.add_subcommand("get", "single contacts"), arguments);
  app.add_subcommand("find", "contacts by a part of a name or number, in any case")
      ->add_option("TEXT", arguments.text, "what to look for")
      ->required();
}

void add_writing_commands(CLI::App& app, Arguments& arguments) {
  CLI::App* add = app.add_subcommand("add", "writes a new contact");
  add_fields(*add, arguments);
  add->add_option("--index", arguments.index, "its index; else the lowest free one")
      ->type_name("N")
      ->transform(decimal());
  add->add_flag("--force", arguments.force, "overwrite what stands at --index");
  CLI::App* set = app.add_subcommand("set", "changes the fields named, keeps the others");
  set->add_option("INDEX", arguments.index, "index of a contact")->required()->transform(decimal());
  add_fields(*set, arguments);
  CLI::App* erase = app.add_subcommand("delete", "deletes contacts");
  add_indices(*erase, arguments);
  CLI::App* clear = app.add_subcommand("clear", "deletes all contacts");
  for (CLI::App* command : {erase, clear}) add_yes(*command, arguments);
}

void add_file_commands(CLI::App& app, Arguments& arguments) {
  CLI::App* save = app.add_subcommand("export", "writes all contacts to a file");
  save->add_option("FILE", arguments.file, "standard output without it, or for -");
  add_format(*save, arguments);
  CLI::App* load = app.add_subcommand("import", "writes the contacts of a file");
  load->add_option("FILE", arguments.file, "a file, or - for standard input")->required();
  add_format(*load, arguments);
  load->add_flag("--dry-run", arguments.dry_run, "say what would change and be sent");
  load->add_flag("--replace", arguments.replace, "delete what the file does not have");
  add_yes(*load, arguments);
  load->add_flag("--force", arguments.force,
                 "overwrite occupied indices, leave out fields that the phonebook does not have");
}

void add_other_commands(CLI::App& app, Arguments& arguments) {
  CLI::App* at = app.add_subcommand("at", "sends AT command lines, prints what they give");
  at->add_option("COMMAND", arguments.lines, "such as AT+CSQ")->required();
  at->add_option("--timeout", arguments.timeout_seconds, "for each answer (10)")
      ->type_name("SECONDS")
      ->check(CLI::Range(1, 600))
      ->transform(decimal());
  CLI::App* reports = app.add_subcommand("reports", "receives pushed reports and prints them");
  reports
      ->add_option("--module", arguments.module,
                   "socket to listen on, as given to qalt-atd --report-to (/tmp/qalt-pb.reports)")
      ->type_name("PATH");
  reports->add_option("--count", arguments.count, "end after so many")
      ->type_name("N")
      ->transform(decimal());
  CLI::App* text = app.add_subcommand("text", "codes a contact's text without a modem");
  CLI::App* encode = text->add_subcommand("encode", "text to hexadecimal digits");
  CLI::App* decode = text->add_subcommand("decode", "hexadecimal digits to text");
  text->require_subcommand(1);
  for (CLI::App* command : {encode, decode}) {
    command->add_flag("--vendor", arguments.vendor, "as the vendor commands carry it");
    command->add_option("TEXT", arguments.text, "the text")->required();
    command->fallthrough();
  }
  encode->add_flag("--compact", arguments.compact, "the coding 0x81 where the text allows it");
  decode->callback([&arguments] { arguments.decode = true; });
}

// The number of a user who is given by name or by number; a function as CLI11 wants it.
std::string user_number(const std::string& user) {
  const passwd* const entry = getpwnam(user.c_str());  // NOLINT: at the start there is one thread
  if (entry != nullptr) return std::to_string(entry->pw_uid);
  const bool number = !user.empty() && user.size() < 10 &&
                      user.find_first_not_of("0123456789") == std::string::npos;
  if (!number) throw CLI::ValidationError("there is no user " + user);
  return user;
}

}  // namespace

std::optional<Arguments> read_arguments(int argc, char** argv, int& status) {
  Arguments arguments;
  bool no_progress = false;
  CLI::App app("qalt-pb - the SIM phonebook from the shell", "qalt-pb");
  app.footer(kFooter);
  app.set_version_flag("--version", "qalt-pb " QALT_VERSION);
  app.require_subcommand(1);
  app.add_option("--platform", arguments.platform, "platform code of the device (0)")
      ->type_name("N")
      ->transform(decimal());
  app.add_option("--wait", arguments.wait_seconds,
                 "how long a starting card may be busy (10), a modem or a server be away (0)")
      ->type_name("SECONDS")
      ->check(CLI::Range(0, 3600))
      ->transform(decimal());
  app.add_option("--server-user", arguments.server_user,
                 "whose AT server is trusted, beside root's and one's own")
      ->type_name("NAME")
      ->transform(user_number);
  app.add_flag("--json", arguments.json, "objects on standard output, errors too, on the other");
  app.add_flag("--no-progress", no_progress, "no progress on a terminal");
  app.add_flag("--verbose", arguments.verbose, "the library's diagnostics on standard error");
  add_reading_commands(app, arguments);
  add_writing_commands(app, arguments);
  add_file_commands(app, arguments);
  add_other_commands(app, arguments);
  for (CLI::App* command : app.get_subcommands({})) command->fallthrough();

  const auto fail = [&](const std::string& what) {
    const bool json = std::find(argv, argv + argc, std::string("--json")) != argv + argc;
    say_error({Cause::kUsage, what, "see qalt-pb --help"}, json);
    status = int(Cause::kUsage);
  };
  try {
    parse_arguments(app, argc, argv);
    arguments.command = app.get_subcommands().front()->get_name();
    arguments.progress = !no_progress;
    return arguments;
  } catch (const CLI::ExtrasError&) {
    std::string what;
    for (const std::string& extra : app.remaining(/*recurse=*/true)) {
      what += (what.empty() ? "not expected: " : " ") + extra;
    }
    fail(what);
  } catch (const CLI::ParseError& error) {
    if (error.get_exit_code() == 0) {
      status = app.exit(error);
    } else {
      fail(error.what());
    }
  }
  return std::nullopt;
}

}  // namespace qalt::cli
