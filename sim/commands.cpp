#include "sim/commands.h"

#include <algorithm>
#include <array>

namespace qalt::sim {
namespace {

struct ErrorRow {
  int code;
  std::string_view text;
};

// clang-format off
constexpr std::array<ErrorRow, 9> kErrors = {{
    {3,  "operation not allowed"},
    {14, "SIM busy"},
    {20, "memory full"},
    {21, "invalid index"},
    {22, "not found"},
    {24, "text string too long"},
    {25, "invalid characters in text string"},
    {26, "dial string too long"},
    {27, "invalid characters in dial string"},
}};
// clang-format on

unsigned form_bit(at::Form form) {
  switch (form) {
    case at::Form::kExecute:
      return kExecutes;
    case at::Form::kSet:
      return kSets;
    case at::Form::kQuery:
      return kQueries;
    case at::Form::kTest:
      return kTests;
  }
  return 0;
}

bool in_profile(Profile profile, unsigned traits) {
  const bool vendor = profile == Profile::kVendor || profile == Profile::kVendorUsim;
  if (traits & kVendorOnly) return vendor;
  if (traits & kScpbrOnly) return profile == Profile::kScpbr;
  return true;
}

const CommandRow* find_row(std::string_view name) {
  for (const auto table :
       {standard_phonebook_commands(), vendor_phonebook_commands(), general_commands()}) {
    for (const CommandRow& row : table) {
      if (row.name == name) return &row;
    }
  }
  return nullptr;
}

void fill(Storage& storage, const std::vector<PlacedContact>& contacts) {
  for (const PlacedContact& entry : contacts) {
    const int index = storage.first() + entry.offset;
    if (storage.contains(index)) storage.put(index, entry.contact);
  }
}

}  // namespace

State::State(Config configuration)
    : config(std::move(configuration)),
      sim(config.first_index, config.size),
      device(config.first_index, config.device_size),
      busy_left(config.faults.busy),
      refused_left(config.faults.refused_reads) {
  fill(sim, config.sim_contacts);
  fill(device, config.device_contacts);
  if (config.faults.odd_quote) {
    if (const auto index = sim.first_free()) {
      sim.put(*index, {"5550199", kTypeUnknown, u"Screen 5\" wide", "", "", "", u""});
    }
  }
  reset();
}

void State::reset() {
  device_selected = false;
  charset = Charset::kIra;
  echo = verbose = true;
  quiet = false;
  cmee = config.cmee;
}

Reply run(State& state, const at::Command& command) {
  const CommandRow* row = find_row(command.name);
  if (row == nullptr) return Reply::Final::kError;
  if (!in_profile(state.config.profile, row->traits)) {
    return state.config.foreign_is_error ? Reply::Final::kError : Reply::Final::kNotSupported;
  }
  if (!(row->forms & form_bit(command.form))) return Reply::Final::kError;
  if (row->traits & kUsesStorage && command.form != at::Form::kQuery && state.busy_left > 0) {
    --state.busy_left;
    return CmeError::kSimBusy;
  }
  if (row->traits & kReadsEntries && command.form == at::Form::kSet && state.refused_left > 0) {
    --state.refused_left;
    return Reply::Final::kError;
  }
  return row->handler(state, command);
}

std::string error_text(int cmee, int code) {
  if (cmee == 0) return "ERROR";
  if (cmee == 1) return "+CME ERROR: " + std::to_string(code);
  const auto row = std::find_if(kErrors.begin(), kErrors.end(),
                                [&](const ErrorRow& candidate) { return candidate.code == code; });
  return "+CME ERROR: " + std::string(row == kErrors.end() ? "unknown" : row->text);
}

}  // namespace qalt::sim
