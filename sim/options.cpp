#include "sim/options.h"

#include <array>
#include <string_view>
#include <utility>

#include "common/command_line.h"
#include "sim/contacts_file.h"

namespace qalt::sim {
namespace {

template <typename T>
using Choice = std::pair<std::string_view, T>;

constexpr std::array<Choice<Profile>, 4> kProfiles = {{{"scpbr", Profile::kScpbr},
                                                       {"standard", Profile::kStandard},
                                                       {"vendor", Profile::kVendor},
                                                       {"vendor-usim", Profile::kVendorUsim}}};
constexpr std::array<Choice<EmptyAnswer>, 3> kEmptyAnswers = {
    {{"22", EmptyAnswer::kNotFound}, {"error", EmptyAnswer::kError}, {"ok", EmptyAnswer::kOk}}};

// An option with one of several names as its value; the help lists the names, not the numbers.
template <typename T, size_t kCount>
void add_choice(CLI::App& app, const std::string& name, T& value,
                const std::array<Choice<T>, kCount>& choices, const std::string& help) {
  std::string names;
  for (const auto& [choice, unused] : choices)
    names.append(names.empty() ? "" : "|").append(choice);
  app.add_option_function<std::string>(
         name,
         [&value, &choices, name, names](const std::string& given) {
           for (const auto& [choice, meaning] : choices) {
             if (choice != given) continue;
             value = meaning;
             return;
           }
           throw CLI::ValidationError(name, "'" + given + "' is none of " + names);
         },
         help)
      ->type_name(names)
      ->group("Simulated modem");
}

}  // namespace

void add_options(CLI::App& app, Options& options) {
  Config& config = options.config;
  Faults& faults = config.faults;
  const std::string modem = "Simulated modem";
  const std::string fault = "Faults of the simulated modem";

  add_choice(app, "--sim-profile", config.profile, kProfiles, "phonebook commands beside +CPBR");
  app.add_option("--sim-contacts", options.contacts_file, "contacts from a JSON file")
      ->type_name("FILE")
      ->group(modem);
  app.add_option("--sim-base", config.first_index, "first index of a storage (1)")
      ->check(CLI::Range(0, 1000))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-size", config.size, "places of the storage SM (250)")
      ->check(CLI::Range(1, 10000))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-number-length", config.number_length, "longest number (40)")
      ->check(CLI::Range(1, 80))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-name-length", config.name_length, "longest name (18)")
      ->check(CLI::Range(1, 240))
      ->transform(decimal())
      ->group(modem);
  app.add_flag("--sim-no-lengths", options.no_lengths, "+CPBR=? without field lengths")
      ->group(modem);
  app.add_flag("--sim-further", config.further,
               "parameters behind the name are stored and given back as they are")
      ->group(modem);
  app.add_flag("--sim-plain-numbers", config.plain_numbers,
               "international numbers without \"+\", as type 145")
      ->group(modem);
  app.add_flag("--sim-foreign-error", config.foreign_is_error,
               "ERROR for another profile's commands, not \"not support\"")
      ->group(modem);
  add_choice(app, "--sim-empty", config.empty, kEmptyAnswers,
             "answer to the read of an empty place");
  app.add_option("--sim-cmee", config.cmee, "+CMEE at power-up (1)")
      ->check(CLI::Range(0, 2))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-card-mode", config.card_mode, "answer to ^CARDMODE=? (2)")
      ->check(CLI::Range(0, 9))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-number-scheme", config.number_scheme,
                 "third value of AT+CPBR=1 on profile scpbr (0)")
      ->check(CLI::Range(0, 9))
      ->transform(decimal())
      ->group(modem);
  app.add_option("--sim-report", options.report, "report after every write to the phonebook")
      ->type_name("TEXT")
      ->group(modem);

  app.add_option("--sim-busy", faults.busy, "the first N storage commands find the card busy")
      ->type_name("N")
      ->transform(decimal())
      ->group(fault);
  app.add_option("--sim-refuse", faults.refused_reads, "the first N entry reads get ERROR")
      ->type_name("N")
      ->transform(decimal())
      ->group(fault);
  app.add_option("--sim-delay", options.delay_ms, "delay of every answer")
      ->type_name("MS")
      ->transform(decimal())
      ->group(fault);
  app.add_flag("--sim-split", faults.single_bytes, "everything comes byte by byte")->group(fault);
  app.add_flag("--sim-echo", faults.always_echo, "commands are echoed in spite of ATE0")
      ->group(fault);
  app.add_flag("--sim-drop-writes", faults.drop_writes, "writes get OK and are not stored")
      ->group(fault);
  app.add_flag("--sim-full", faults.memory_full, "no free place takes a contact")->group(fault);
  app.add_flag("--sim-no-ucs2", faults.no_ucs2, "+CSCS knows IRA and GSM only")->group(fault);
  app.add_flag("--sim-odd-quote", faults.odd_quote, "one stored name holds a single double quote")
      ->group(fault);
  app.add_option("--sim-fault", options.fault_rules,
                 "WHICH:PREFIX:ACTION[=VALUE], may be repeated: on the lines WHICH (2, 2-5, 2-, *, "
                 "or by chance 1/40) of those that begin with PREFIX do ACTION: delay=MS, never, "
                 "cut=BYTES, "
                 "hang-up=BYTES, report-before=TEXT, report-inside=TEXT, report-after=TEXT, "
                 "answer=TEXT")
      ->type_name("RULE")
      ->allow_extra_args(false)
      ->take_all()
      ->group(fault);
  app.add_option("--sim-seed", faults.seed, "of the faults by chance (1)")
      ->type_name("N")
      ->transform(decimal())
      ->group(fault);
}

Config make_config(const Options& options) {
  Config config = options.config;
  config.send_lengths = !options.no_lengths;
  config.faults.delay = std::chrono::milliseconds(options.delay_ms);
  for (const std::string& rule : options.fault_rules) {
    config.faults.rules.push_back(parse_fault_rule(rule));
  }
  if (!options.report.empty()) {
    for (const char* prefix : {"AT+CPBW", "AT+JCPBW", "AT^SCPBW"}) {
      config.faults.rules.push_back(
          parse_fault_rule("*:" + std::string(prefix) + ":report-after=" + options.report));
    }
  }
  if (!options.contacts_file.empty()) load_contacts(options.contacts_file, config);
  return config;
}

}  // namespace qalt::sim
