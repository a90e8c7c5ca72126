// The commands that have nothing to do with the phonebook: settings, identification, state of the
// device and of the network.
#include <algorithm>
#include <array>

#include "sim/commands.h"

namespace qalt::sim {
namespace {

struct FixedAnswer {
  std::string_view name;
  at::Form form;
  std::string_view line;
};

// Answers that never change, one a row; 490154203237518 is the IMEI of the standards' examples,
// 001 01 the network code reserved for tests.
// clang-format off
constexpr std::array<FixedAnswer, 22> kFixedAnswers = {{
    {"I",      at::Form::kExecute, "Simulated modem"},
    {"+CGMI",  at::Form::kExecute, "Simulated"},
    {"+CGMM",  at::Form::kExecute, "Simulated modem"},
    {"+CGMR",  at::Form::kExecute, "1.0"},
    {"+CGSN",  at::Form::kExecute, "490154203237518"},
    {"+GMI",   at::Form::kExecute, "Simulated"},
    {"+GMM",   at::Form::kExecute, "Simulated modem"},
    {"+GMR",   at::Form::kExecute, "1.0"},
    {"+GSN",   at::Form::kExecute, "490154203237518"},
    {"+CIMI",  at::Form::kExecute, "001010123456789"},
    {"+CSQ",   at::Form::kExecute, "+CSQ: 20,99"},
    {"+CSQ",   at::Form::kTest,    "+CSQ: (0-31,99),(0-7,99)"},
    {"+CPIN",  at::Form::kQuery,   "+CPIN: READY"},
    {"+CREG",  at::Form::kQuery,   "+CREG: 0,1"},
    {"+CGREG", at::Form::kQuery,   "+CGREG: 0,1"},
    {"+CEREG", at::Form::kQuery,   "+CEREG: 0,1"},
    {"+COPS",  at::Form::kQuery,   "+COPS: 0,0,\"Testnet\",2"},
    {"+CFUN",  at::Form::kQuery,   "+CFUN: 1"},
    {"+CFUN",  at::Form::kTest,    "+CFUN: (0,1),(0)"},
    {"+CPAS",  at::Form::kExecute, "+CPAS: 0"},
    {"+CMEE",  at::Form::kTest,    "+CMEE: (0-2)"},
    {"+CMGF",  at::Form::kQuery,   "+CMGF: 0"},
}};
// clang-format on

Reply fixed(State&, const at::Command& command) {
  for (const FixedAnswer& row : kFixedAnswers) {
    if (row.name == command.name && row.form == command.form) return std::string(row.line);
  }
  return command.form == at::Form::kSet ? Reply::Final::kOk : Reply::Final::kError;
}

// Settings that are taken and have no effect here.
Reply accepted(State&, const at::Command&) {
  return Reply::Final::kOk;
}

Reply reset(State& state, const at::Command&) {
  state.reset();
  return Reply::Final::kOk;
}

// E, Q and V: "0" or nothing is off, "1" is on.
template <bool State::*kSetting>
Reply flag(State& state, const at::Command& command) {
  if (!command.arguments.empty() && command.arguments != "0" && command.arguments != "1") {
    return Reply::Final::kError;
  }
  state.*kSetting = command.arguments == "1";
  return Reply::Final::kOk;
}

Reply cmee(State& state, const at::Command& command) {
  if (command.form == at::Form::kQuery) return "+CMEE: " + std::to_string(state.cmee);
  if (command.form == at::Form::kTest) return fixed(state, command);
  const auto value = to_int(command.arguments);
  if (!value || *value > 2) return Reply::Final::kError;
  state.cmee = *value;
  return Reply::Final::kOk;
}

Reply message(State&, const at::Command&) {
  return Reply::Final::kPrompt;
}

// clang-format off
constexpr CommandRow kGeneralRows[] = {
    {"E",      kExecutes,           kNoTraits, flag<&State::echo>},
    {"Z",      kExecutes,           kNoTraits, reset},
    {"&F",     kExecutes,           kNoTraits, reset},
    {"Q",      kExecutes,           kNoTraits, flag<&State::quiet>},
    {"V",      kExecutes,           kNoTraits, flag<&State::verbose>},
    {"X",      kExecutes,           kNoTraits, accepted},
    {"H",      kExecutes,           kNoTraits, accepted},
    {"&C",     kExecutes,           kNoTraits, accepted},
    {"&D",     kExecutes,           kNoTraits, accepted},
    {"S0",     kSets,               kNoTraits, accepted},
    {"I",      kExecutes,           kNoTraits, fixed},
    {"+CMEE",  kSets | kQueries | kTests, kNoTraits, cmee},
    {"+CGMI",  kExecutes,           kNoTraits, fixed},
    {"+CGMM",  kExecutes,           kNoTraits, fixed},
    {"+CGMR",  kExecutes,           kNoTraits, fixed},
    {"+CGSN",  kExecutes,           kNoTraits, fixed},
    {"+GMI",   kExecutes,           kNoTraits, fixed},
    {"+GMM",   kExecutes,           kNoTraits, fixed},
    {"+GMR",   kExecutes,           kNoTraits, fixed},
    {"+GSN",   kExecutes,           kNoTraits, fixed},
    {"+CIMI",  kExecutes,           kNoTraits, fixed},
    {"+CSQ",   kExecutes | kTests,  kNoTraits, fixed},
    {"+CPIN",  kQueries,            kNoTraits, fixed},
    {"+CREG",  kSets | kQueries,    kNoTraits, fixed},
    {"+CGREG", kSets | kQueries,    kNoTraits, fixed},
    {"+CEREG", kSets | kQueries,    kNoTraits, fixed},
    {"+COPS",  kQueries,            kNoTraits, fixed},
    {"+CFUN",  kSets | kQueries | kTests, kNoTraits, fixed},
    {"+CPAS",  kExecutes,           kNoTraits, fixed},
    {"+CMGF",  kSets | kQueries,    kNoTraits, fixed},
    {"+CNMI",  kSets,               kNoTraits, accepted},
    {"+CMGS",  kSets,               kNoTraits, message},
};
// clang-format on

}  // namespace

std::span<const CommandRow> general_commands() {
  return kGeneralRows;
}

}  // namespace qalt::sim
