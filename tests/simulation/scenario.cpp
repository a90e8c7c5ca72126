#include "tests/simulation/scenario.h"

#include <algorithm>
#include <array>
#include <string_view>

#include "sim/modem.h"
#include "tests/simulation/handset.h"

namespace qalt::simulation {
namespace {

// The product's own simulated modem as a machine of the simulation.
class SimMachine : public Machine {
 public:
  explicit SimMachine(sim::Config config) : modem_(std::move(config)) { look(); }

  void receive(std::string_view bytes) override {
    modem_.receive(bytes);
    if (bytes.find("PBW") != bytes.npos) look();
    for (sim::Output& output : modem_.take()) {
      said_.push_back({output.delay, std::move(output.bytes)});
    }
  }

 private:
  // The contacts as they are now; those that differ are told to `changed`.
  void look() {
    const sim::Storage& storage = modem_.state().sim;
    for (int index = storage.first(); index <= storage.last(); ++index) {
      const sim::Contact* const there = storage.find(index);
      const Content now = there == nullptr ? Content() : Stored{there->number, there->name, {}};
      if (now == at(index)) continue;
      contacts_.erase(index);
      if (now) contacts_.emplace(index, *now);
      if (changed) changed(index);
    }
  }

  sim::Modem modem_;
};

// Beginnings of names: plain, with what the GSM alphabet has elsewhere or not at all, with what AT
// parsers trip over.
constexpr std::array<std::u16string_view, 9> kNames = {
    u"Anna ", u"Jürgen £", u"Ελένη ", u"Иван", u"李", u"a;b,c ", u"> ", u"OK\\", u"\"q "};

constexpr std::array<int, 3> kFirstIndices = {1, 0, 5};

Time some_delay(Chance& chance, Scenario& scenario) {
  scenario.slow = chance.one_in(4);
  return Time(scenario.slow ? chance.between(50, 900) : chance.between(0, 9));
}

std::string places_text(int size, int first, const Scenario& scenario) {
  return std::to_string(size) + " places from " + std::to_string(first) +
         (scenario.drops ? ", drops writes" : "");
}

std::unique_ptr<Machine> make_sim(Chance& chance, Scenario& scenario) {
  sim::Config config;
  config.first_index = chance.of(kFirstIndices);
  config.size = chance.between(5, 60);
  if (chance.one_in(4)) config.profile = sim::Profile::kVendorUsim;
  scenario.vendor = config.profile != sim::Profile::kStandard;
  config.empty = sim::EmptyAnswer(chance.below(3));
  scenario.refuses = config.empty == sim::EmptyAnswer::kError;
  config.send_lengths = !chance.one_in(4);
  config.plain_numbers = !scenario.vendor && chance.one_in(4);
  config.sim_contacts.clear();
  for (int k = chance.below(config.size); k > 0; --k) {
    const Stored stored = new_contact(chance, k, int(config.name_length));
    sim::Contact contact;
    contact.number = stored.number;
    contact.type = stored.number.starts_with('+') ? sim::kTypeInternational : sim::kTypeUnknown;
    contact.name = stored.name;
    config.sim_contacts.push_back({chance.below(config.size), contact});
  }
  config.faults.always_echo = chance.one_in(5);
  config.faults.single_bytes = chance.one_in(10);
  config.faults.busy = chance.one_in(5) ? unsigned(chance.below(8)) : 0;
  config.faults.drop_writes = scenario.drops = chance.one_in(12);
  config.faults.delay = some_delay(chance, scenario);
  scenario.text = "simulated modem, " + std::string(scenario.vendor ? "vendor's commands, " : "") +
                  places_text(config.size, config.first_index, scenario);
  return std::make_unique<SimMachine>(std::move(config));
}

// Further parameters as a phone has them, and as TS 27.007 8.14 orders them.
std::string some_further(Chance& chance, int number) {
  return ",0,\"group " + std::to_string(number) + "\",\"555" + std::to_string(number) +
         "\",129,\"" + (chance.one_in(2) ? "" : "second") + "\",\"a@b;c\"";
}

std::unique_ptr<Machine> make_handset(Chance& chance, Scenario& scenario) {
  HandsetOptions options;
  options.first = chance.of(kFirstIndices);
  options.size = chance.between(5, 60);
  options.text_length = chance.between(8, 20);
  options.further = chance.one_in(3);
  const int last = options.first + options.size - 1;
  for (int k = chance.below(options.size); k > 0; --k) {
    // What is stored may be longer than what is announced.
    Stored stored = new_contact(chance, k, 0);
    if (options.further && chance.one_in(2)) stored.further = some_further(chance, k);
    options.contacts[chance.between(options.first, last)] = stored;
  }
  options.initial.echo = chance.below(2);
  options.initial.verbose = !chance.one_in(5);
  options.initial.quiet = chance.one_in(8);
  options.initial.errors = chance.below(3);
  if (chance.one_in(6)) options.unknown = {"+CMEE"};
  if (chance.one_in(8)) options.unknown = {"+CFUN", "+CSQ"};
  options.bare_at_fails = chance.one_in(6);
  options.blanks = chance.one_in(3);
  options.lines_framed = chance.one_in(4);
  options.upper_hex = !chance.one_in(3);
  options.set_named_in_itself = chance.one_in(3);
  options.plus_in_numbers = !chance.one_in(3);
  options.busy_for = chance.one_in(5) ? chance.below(8) : 0;
  constexpr std::array<Ending, 3> kEmpty = {Ending::kOk, Ending::kNotFound, Ending::kError};
  options.empty_index = chance.of(kEmpty);
  options.empty_range = chance.of(kEmpty);
  if (chance.one_in(3)) options.largest_range = chance.between(1, 30);
  const auto some_indices = [&](int most) {
    std::set<int> indices;
    for (int k = chance.between(1, most); k > 0; --k) {
      indices.insert(chance.between(options.first, last));
    }
    return indices;
  };
  if (chance.one_in(4)) {
    options.refused_in_range = some_indices(4);
    for (const int index : options.refused_in_range) {
      if (!chance.one_in(4)) options.refused_alone.insert(index);
    }
    options.lines_before_refusal = chance.one_in(2);
  }
  if (chance.one_in(12)) options.writes_dropped = some_indices(10);
  options.delay = some_delay(chance, scenario);

  scenario.plain = !options.further && !options.blanks && options.upper_hex;
  scenario.hidden = options.refused_in_range;
  scenario.drops = !options.writes_dropped.empty();
  scenario.refuses = options.empty_index == Ending::kError || options.largest_range != 0 ||
                     options.empty_range == Ending::kError || !scenario.hidden.empty();
  scenario.text = "handset, " + places_text(options.size, options.first, scenario) +
                  (options.further ? ", further parameters" : "") +
                  (!scenario.hidden.empty() ? ", refuses reads" : "");
  return new_handset(std::move(options));
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
  if (chance.one_in(4)) line.dead = chance.between(100, 400);
  constexpr std::array<std::string_view, 3> kStubborn = {"AT+CSCS=\"IRA\"", "AT+CSCS?", "AT+CPBS?"};
  if (chance.one_in(10)) line.stubborn = chance.of(kStubborn);
  return line;
}

}  // namespace

bool Scenario::calm() const {
  return line.late + line.never + line.cut + line.hang_up + line.dead == 0 &&
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
  const bool own = chance.one_in(2);  // the handset has keys
  scenario.machine = own ? make_handset(chance, scenario) : make_sim(chance, scenario);
  scenario.line = make_line(chance);
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
