#include "tests/simulation/scenario.h"

#include <array>
#include <string_view>

#include "sim/modem.h"

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

std::unique_ptr<Machine> make_sim(Chance& chance, Scenario& scenario) {
  sim::Config config;
  config.first_index = scenario.first;
  config.size = scenario.size;
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
  config.faults.delay = scenario.delay;
  return std::make_unique<SimMachine>(std::move(config));
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
  constexpr std::array<int, 3> kFirst = {1, 0, 5};
  scenario.first = chance.of(kFirst);
  scenario.size = chance.between(5, 60);
  scenario.slow = chance.one_in(4);
  scenario.delay = Time(scenario.slow ? chance.between(50, 900) : chance.between(0, 9));
  const bool own = chance.one_in(2);  // the handset has keys
  scenario.machine = own ? make_handset(chance, scenario) : make_sim(chance, scenario);
  scenario.text = std::string(own ? "handset, " : "simulated modem, ") +
                  (scenario.vendor ? "vendor's commands, " : "") + std::to_string(scenario.size) +
                  " places from " + std::to_string(scenario.first) +
                  (scenario.drops ? ", drops writes" : "") +
                  (scenario.hidden.empty() ? "" : ", refuses reads");
  scenario.line = make_line(chance);
  constexpr std::array<std::pair<Manner, const char*>, 4> kManners = {{
      {Manner::kHeader, "header"},
      {Manner::kImporter, "importer"},
      {Manner::kFunctions, "C functions"},
      {Manner::kLines, "lines"},
  }};
  for (const size_t count = size_t(chance.between(1, 4)); scenario.clients.size() < count;) {
    const auto& [manner, word] = chance.of(kManners);
    // The texts of the C functions would be coded otherwise.
    if (scenario.vendor && manner == Manner::kFunctions) continue;
    scenario.clients.push_back(manner);
    scenario.text += std::string(", ") + word;
  }
  scenario.calls = chance.between(5, 25);
  if (chance.one_in(5)) scenario.own_changes = own * chance.between(1, 60);
  scenario.lives = chance.one_in(4) ? chance.between(1, 12) : 0;
  return scenario;
}

}  // namespace qalt::simulation
