#include "tests/simulation/scenario.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "sim/text.h"
#include "tests/simulation/handset/handset.h"
#include "tests/simulation/sim_machine.h"

namespace qalt::simulation {
namespace {

// Beginnings of names: plain, with what the GSM alphabet has elsewhere or not at all, with what AT
// parsers trip over.
constexpr std::array<std::u16string_view, 9> kNames = {
    u"Anna ", u"Jürgen £", u"Ελένη ", u"Иван", u"李", u"a;b,c ", u"> ", u"OK\\", u"\"q "};

std::unique_ptr<Machine> make_sim(Chance& chance, Scenario& scenario) {
  sim::Config config;
  constexpr std::array<int, 3> kFirst = {1, 0, 5};
  config.first_index = chance.of(kFirst);
  config.size = chance.between(5, 60);
  if (chance.one_in(4)) config.profile = sim::Profile::kVendorUsim;
  config.empty = sim::EmptyAnswer(chance.below(3));
  config.send_lengths = !chance.one_in(4);
  config.plain_numbers = config.profile == sim::Profile::kStandard && chance.one_in(4);
  config.sim_contacts.clear();
  const int used = chance.below(config.size);
  for (int k = 0; k < used; ++k) {
    const Stored stored = new_contact(chance, k, int(config.name_length));
    sim::Contact contact;
    contact.number = stored.number;
    contact.type = stored.number.starts_with('+') ? sim::kTypeInternational : sim::kTypeUnknown;
    contact.name = stored.name;
    const int offset = chance.below(config.size);
    config.sim_contacts.push_back({offset, contact});
  }
  config.faults.always_echo = chance.one_in(5);
  config.faults.single_bytes = chance.one_in(10);
  config.faults.busy = chance.one_in(5) ? unsigned(chance.below(8)) : 0;
  config.faults.drop_writes = scenario.drops = chance.one_in(12);
  scenario.slow = chance.one_in(4);
  scenario.refuses = config.empty == sim::EmptyAnswer::kError;
  config.faults.delay = Time(scenario.slow ? chance.between(50, 900) : chance.between(0, 9));
  scenario.vendor = config.profile != sim::Profile::kStandard;
  scenario.text = "simulated modem, " + std::string(scenario.vendor ? "vendor's commands, " : "") +
                  std::to_string(config.size) + " places from " +
                  std::to_string(config.first_index) + (scenario.drops ? ", drops writes" : "");
  return std::make_unique<SimMachine>(std::move(config));
}

// Further parameters as a phone has them, and as TS 27.007 8.14 orders them.
std::string some_further(Chance& chance, int number) {
  return ",0,\"group " + std::to_string(number) + "\",\"555" + std::to_string(number) +
         "\",129,\"" + (chance.one_in(2) ? "" : "second") + "\",\"a@b;c\"";
}

std::unique_ptr<Machine> make_handset(Chance& chance, Scenario& scenario) {
  Options options;
  Storage& storage = options.storages.front();
  constexpr std::array<int, 3> kFirst = {1, 0, 5};
  storage.first = chance.of(kFirst);
  storage.size = chance.between(5, 60);
  storage.text_length = chance.between(8, 20);
  storage.number_length = 20;
  options.further = chance.one_in(3);
  const int last = storage.first + storage.size - 1;
  for (int k = chance.below(storage.size); k > 0; --k) {
    // What is stored may be longer than what is announced.
    Stored stored = new_contact(chance, k, 0);
    if (options.further && chance.one_in(2)) stored.further = some_further(chance, k);
    storage.contacts[chance.between(storage.first, last)] = stored;
  }
  Settings& settings = options.initial;
  settings.echo = chance.below(2);
  settings.verbose = !chance.one_in(5);
  settings.quiet = chance.one_in(8);
  settings.errors = chance.below(3);
  settings.message_format = 1;  // texts as they are
  if (chance.one_in(6)) options.unknown = {"+CMEE"};
  if (chance.one_in(8)) options.unknown = {"+CFUN", "+CSQ"};
  options.bare_at_fails = chance.one_in(6);
  options.blanks = chance.one_in(3);
  options.lines_framed = chance.one_in(4);
  options.upper_hex = !chance.one_in(3);
  options.set_named_in_itself = chance.one_in(3);
  options.plus_in_numbers = !chance.one_in(3);
  scenario.plain = !options.further && !options.blanks && options.upper_hex;
  options.busy_for = chance.one_in(5) ? chance.below(8) : 0;
  scenario.starts_busy = options.busy_for > 0;
  constexpr std::array<Result, 3> kEmpty = {Result::kOk, Result::kNotFound, Result::kError};
  options.empty_index = chance.of(kEmpty);
  options.empty_range = chance.of(kEmpty);
  if (chance.one_in(3)) options.largest_range = chance.between(1, 30);
  if (chance.one_in(4)) {
    for (int k = chance.between(1, 4); k > 0; --k) {
      const int index = chance.between(storage.first, last);
      options.refused_in_range.insert(index);
      if (!chance.one_in(4)) options.refused_alone.insert(index);
    }
    scenario.hidden = options.refused_in_range;
    options.lines_before_refusal = chance.one_in(2);
  }
  if (chance.one_in(12)) {
    scenario.drops = true;
    for (int k = chance.between(1, 10); k > 0; --k) {
      options.writes_dropped.insert(chance.between(storage.first, last));
    }
  }
  scenario.slow = chance.one_in(4);
  scenario.refuses = options.empty_index == Result::kError || options.largest_range ||
                     options.empty_range == Result::kError || !scenario.hidden.empty();
  const Time delay(scenario.slow ? chance.between(50, 900) : chance.between(0, 9));
  for (const char* name : {"+CPBR", "+CPBW", "+CPBS", "+CSCS"}) options.answer_times[name] = delay;
  scenario.text = "handset, " + std::to_string(storage.size) + " places from " +
                  std::to_string(storage.first) + (scenario.drops ? ", drops writes" : "") +
                  (options.further ? ", further parameters" : "") +
                  (!scenario.hidden.empty() ? ", refuses reads" : "");
  return std::make_unique<Handset>(std::move(options));
}

LineFaults make_line(Chance& chance) {
  LineFaults line;
  line.reports = chance.between(2, 12);
  line.silence = chance.below(3);
  line.pieces = chance.between(1, 8);
  if (chance.one_in(3)) return line;
  const auto some = [&] { return chance.one_in(2) ? chance.between(15, 120) : 0; };
  line.late = some();
  line.never = some();
  line.cut = some();
  line.hang_up = some();
  line.restart = some();
  if (chance.one_in(4)) line.dead = chance.between(100, 400);
  constexpr std::array<std::string_view, 3> kStubborn = {"AT+CSCS=\"IRA\"", "AT+CSCS?", "AT+CPBS?"};
  if (chance.one_in(10)) line.stubborn = chance.of(kStubborn);
  return line;
}

}  // namespace

bool Scenario::calm() const {
  return line.late + line.never + line.cut + line.hang_up + line.restart + line.dead == 0 &&
         line.stubborn.empty() && lives == 0;
}

Stored new_contact(Chance& chance, int number, int longest_name) {
  Stored stored;
  const std::string digits = std::to_string(100000 + number);
  if (!chance.one_in(10)) {
    stored.name = chance.of(kNames);
    for (const char digit : digits) stored.name += char16_t(digit);
    if (longest_name > 0 && int(stored.name.size()) > longest_name) {
      stored.name.erase(0, stored.name.size() - size_t(longest_name));
    }
  }
  if (stored.name.empty() || !chance.one_in(10)) {
    stored.number = (chance.one_in(2) ? "+49" : "0*#") + digits;
  }
  return stored;
}

Scenario make_scenario(uint64_t seed) {
  Chance chance(seed);
  Scenario scenario;
  scenario.seed = seed;
  const bool own = chance.one_in(2);  // the handset has keys
  scenario.machine = own ? make_handset(chance, scenario) : make_sim(chance, scenario);
  scenario.line = make_line(chance);
  // A write that waits for the card is repeated without another look.
  if (scenario.starts_busy) scenario.line.restart = 0;
  constexpr std::array<Manner, 4> kManners = {Manner::kHeader, Manner::kImporter,
                                              Manner::kFunctions, Manner::kLines};
  constexpr std::array<std::string_view, 4> kWords = {"header", "importer", "C functions", "lines"};
  for (int k = chance.between(1, 4); k > 0; --k) {
    Manner manner = chance.of(kManners);
    // The texts of the C functions would be coded otherwise.
    if (scenario.vendor && manner == Manner::kFunctions) manner = Manner::kHeader;
    scenario.clients.push_back(manner);
    scenario.text += ", " + std::string(kWords[size_t(scenario.clients.back())]);
  }
  scenario.calls = chance.between(5, 25);
  if (chance.one_in(5)) scenario.own_changes = own * chance.between(1, 60);
  scenario.lives = chance.one_in(4) ? chance.between(1, 4) : 0;
  return scenario;
}

}  // namespace qalt::simulation
