// The phonebook commands of 3GPP TS 27.007: +CPBS, +CPBR, +CPBW and +CSCS; and what the vendor
// commands share with them.
#include <algorithm>
#include <charconv>

#include "sim/commands.h"

namespace qalt::sim {
namespace {

// A name that a client writes while a UCS2 set is selected may be in that set itself.
std::string plain_name(const State& state, const std::string& name) {
  if (state.charset != Charset::kUcs2 && state.charset != Charset::kUcs2With81) return name;
  const auto text = decode(Charset::kUcs2, name);
  return text && !text->empty() ? to_utf8(*text) : name;
}

Reply select_storage(State& state, const at::Command& command) {
  if (command.form == at::Form::kTest) return std::string("+CPBS: (\"SM\",\"ME\")");
  if (command.form == at::Form::kQuery) {
    const Storage& storage = state.selected();
    return "+CPBS: " + in_quotes(state.device_selected ? "ME" : "SM") + "," +
           std::to_string(storage.used()) + "," + std::to_string(storage.size());
  }
  const auto arguments = at::split_arguments(command.arguments);
  if (!arguments || arguments->size() > 2) return Reply::Final::kError;
  std::string name = arguments->front().value;
  if (name != "SM" && name != "ME") name = plain_name(state, name);
  if (name != "SM" && name != "ME") return CmeError::kNotAllowed;
  state.device_selected = name == "ME";
  return Reply::Final::kOk;
}

std::string standard_line(const State& state, int index, const Contact& contact) {
  return "+CPBR: " + std::to_string(index) + "," +
         in_quotes(wire_number(state, contact.number, contact.type)) + "," +
         std::to_string(contact.type) + "," + in_quotes(encode(state.charset, contact.name)) +
         (state.config.further ? contact.further : "");
}

// What stands behind the fourth parameter, as an answer has it: <hidden> is the last of a write and
// the first of an answer (TS 27.007, 8.14 and 8.12).
std::string behind_name(std::string_view arguments) {
  constexpr size_t kOthers = 7;
  std::vector<std::string> pieces(1);
  bool quoted = false;
  for (const char c : arguments) {
    if (c == '"') quoted = !quoted;
    if (c == ',' && !quoted) {
      pieces.emplace_back();
    } else {
      pieces.back() += c;
    }
  }
  if (pieces.size() < 5) return "";
  const bool hidden = pieces.size() == 4 + kOthers + 1;
  std::string text = "," + (hidden ? pieces.back() : "0");
  for (size_t k = 4; k < pieces.size() - size_t(hidden); ++k) text += "," + pieces[k];
  return text;
}

Reply read_entries(State& state, const at::Command& command) {
  const Config& config = state.config;
  const bool scpbr = config.profile == Profile::kScpbr;
  if (command.form == at::Form::kTest) {
    std::string line = "+CPBR: " + index_range(state);
    if (config.send_lengths) {
      line += "," + std::to_string(config.number_length) + "," + std::to_string(config.name_length);
      // This profile's test speaks for ^SCPBR as well: lengths of its further number and address.
      if (scpbr) line += "," + std::to_string(config.number_length) + ",64";
    }
    return line;
  }
  if (scpbr && command.arguments == "1") {
    return "+CPBR: 1,1," + std::to_string(config.number_scheme);
  }
  return read_range(state, command.arguments, standard_line);
}

Reply write_entry(State& state, const at::Command& command) {
  const Config& config = state.config;
  if (command.form == at::Form::kTest) {
    return "+CPBW: " + index_range(state) + "," + std::to_string(config.number_length) +
           ",(129,145)," + std::to_string(config.name_length);
  }
  const auto arguments = at::split_arguments(command.arguments);
  if (!arguments || arguments->size() > (config.further ? 12 : 4)) return Reply::Final::kError;
  const auto value = [&](size_t i) {
    return i < arguments->size() ? (*arguments)[i].value : std::string();
  };
  if (arguments->size() == 1) return erase(state, value(0));

  const auto name = decode(state.charset, value(3));
  if (!name) return CmeError::kInvalidText;
  if (name->size() > config.name_length) return CmeError::kTextTooLong;
  Contact contact;
  // Fields that this command does not carry stay as they are.
  if (const auto index = to_int(value(0))) {
    if (const Contact* old = state.selected().find(*index)) contact = *old;
  }
  contact.number = value(1);
  contact.name = *name;
  contact.further = behind_name(command.arguments);  // a write without them clears them
  const auto type = to_int(value(2));
  if (!type && !value(2).empty()) return Reply::Final::kError;
  contact.type = type.value_or(contact.number.starts_with('+') ? kTypeInternational : kTypeUnknown);
  return store(state, value(0), std::move(contact));
}

Reply character_set(State& state, const at::Command& command) {
  const bool ucs2 = !state.config.faults.no_ucs2;
  if (command.form == at::Form::kTest) {
    return std::string("+CSCS: (\"IRA\",\"GSM\"") + (ucs2 ? ",\"UCS2\",\"UCS2_0X81\")" : ")");
  }
  if (command.form == at::Form::kQuery) {
    return "+CSCS: " + in_quotes(charset_name(state.charset));
  }
  const auto arguments = at::split_arguments(command.arguments);
  if (!arguments || arguments->size() != 1) return Reply::Final::kError;
  const std::string& name = arguments->front().value;
  auto charset = charset_named(name);
  if (!charset) charset = charset_named(plain_name(state, name));
  if (!charset) return Reply::Final::kError;
  if (!ucs2 && *charset != Charset::kIra && *charset != Charset::kGsm) return Reply::Final::kError;
  state.charset = *charset;
  return Reply::Final::kOk;
}

// clang-format off
constexpr CommandRow kStandardRows[] = {
    {"+CPBS", kSets | kQueries | kTests, kUsesStorage,                 select_storage},
    {"+CPBR", kSets | kTests,            kUsesStorage | kReadsEntries, read_entries},
    {"+CPBW", kSets | kTests,            kUsesStorage,                 write_entry},
    {"+CSCS", kSets | kQueries | kTests, kNoTraits,                    character_set},
};
// clang-format on

}  // namespace

std::span<const CommandRow> standard_phonebook_commands() {
  return kStandardRows;
}

std::optional<int> to_int(std::string_view digits) {
  int value = 0;
  const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), value);
  if (error != std::errc() || end != digits.data() + digits.size() || value < 0) {
    return std::nullopt;
  }
  return value;
}

std::string in_quotes(std::string_view text) {
  return '"' + std::string(text) + '"';
}

std::string wire_number(const State& state, std::string_view number, int type) {
  const bool strip = state.config.plain_numbers && type == kTypeInternational;
  if (strip && number.starts_with('+')) number.remove_prefix(1);
  return std::string(number);
}

std::string index_range(State& state) {
  const Storage& storage = state.selected();
  return "(" + std::to_string(storage.first()) + "-" + std::to_string(storage.last()) + ")";
}

Reply read_range(State& state, std::string_view arguments,
                 std::string (*line)(const State&, int, const Contact&)) {
  const Storage& storage = state.selected();
  const auto range = at::split_arguments(arguments);
  if (!range || range->size() > 2) return Reply::Final::kError;
  const auto first = to_int(range->front().value);
  const auto last = to_int(range->back().value);
  if (!first || !last) return Reply::Final::kError;
  if (!storage.contains(*first) || !storage.contains(*last) || *last < *first) {
    return CmeError::kInvalidIndex;
  }
  Reply reply;
  for (int index = *first; index <= *last; ++index) {
    if (const Contact* contact = storage.find(index)) {
      reply.lines.push_back(line(state, index, *contact));
    }
  }
  if (reply.lines.empty() && range->size() == 1) {
    if (state.config.empty == EmptyAnswer::kNotFound) return CmeError::kNotFound;
    if (state.config.empty == EmptyAnswer::kError) return Reply::Final::kError;
  }
  return reply;
}

Reply check_number(const State& state, std::string_view number) {
  if (number.starts_with('+')) number.remove_prefix(1);
  const bool dialable = std::all_of(number.begin(), number.end(), [](char c) {
    return std::string_view("0123456789*#pPwW?,").find(c) != std::string_view::npos;
  });
  if (!dialable) return CmeError::kInvalidNumber;
  if (number.size() > state.config.number_length) return CmeError::kNumberTooLong;
  return Reply::Final::kOk;
}

Reply store(State& state, std::string_view index_text, Contact contact) {
  Storage& storage = state.selected();
  for (const std::string& number : {contact.number, contact.number2, contact.number3}) {
    Reply checked = check_number(state, number);
    if (checked.final != Reply::Final::kOk) return checked;
  }
  auto index = to_int(index_text);
  if (!index && !index_text.empty()) return Reply::Final::kError;
  if (!index) index = storage.first_free();
  const bool full = !index || (state.config.faults.memory_full && !storage.find(*index));
  if (index && !storage.contains(*index)) return CmeError::kInvalidIndex;
  if (full) return CmeError::kMemoryFull;
  if (!state.config.faults.drop_writes) storage.put(*index, std::move(contact));
  return Reply::Final::kOk;
}

Reply erase(State& state, std::string_view index_text) {
  const auto index = to_int(index_text);
  if (!index) return Reply::Final::kError;
  if (!state.selected().contains(*index)) return CmeError::kInvalidIndex;
  if (!state.config.faults.drop_writes) state.selected().erase(*index);
  return Reply::Final::kOk;
}

}  // namespace qalt::sim
