#include <algorithm>
#include <array>

#include "tests/simulation/handset/character_sets.h"
#include "tests/simulation/handset/phone.h"

namespace qalt::simulation {
namespace {

std::string bounds(const Storage& held) {
  const int last = held.first + held.size - 1;
  return "(" + std::to_string(held.first) + "-" + std::to_string(last) + ")";
}

bool has_index(const Storage& held, int index) {
  return index >= held.first && index - held.first < held.size;
}

std::string announced(const std::optional<int>& length) {
  return length ? std::to_string(*length) : "";
}

// TS 27.007 8.12: <index>,<number>,<type>,<text> and what is behind it.
std::string line_of(const Phone& phone, std::string_view name, int index, const Stored& contact) {
  const bool international = contact.number.starts_with('+');
  const bool bare = international && !phone.options.plus_in_numbers;
  std::string line = std::string(name) + ": " + std::to_string(index);
  (line += comma(phone)) += quoted(contact.number.substr(bare ? 1 : 0), false);
  (line += comma(phone)) += international ? "145" : "129";
  (line += comma(phone)) += said(phone, contact.name);
  return phone.options.further ? line + contact.further : line;
}

// 8.11: +CPBS.
Result select(Phone& phone, Storage& held, const Command& command, Lines& lines) {
  const Options& options = phone.options;
  std::vector<std::string> names;
  for (const Storage& each : options.storages) names.push_back(each.name);
  if (command.form == Form::kTest) {
    lines = {"+CPBS: (" + list_of(phone, names) + ')'};
    return Result::kOk;
  }
  if (command.form == Form::kRead) {
    const size_t used = options.counts == Counts::kRight ? held.contacts.size() : 0;
    lines = {"+CPBS: " + quoted(held.name, false)};
    if (options.counts == Counts::kAbsent) return Result::kOk;
    (lines[0] += comma(phone)) += std::to_string(used);
    (lines[0] += comma(phone)) += std::to_string(held.size);
    return Result::kOk;
  }
  const std::string* parameter = sole_parameter(command);
  for (const std::string& name : names) {
    if (!parameter || !is_word(phone, *parameter, name)) continue;
    phone.now.storage = name;
    return Result::kOk;
  }
  return Result::kError;
}

// 8.12: +CPBR.
Result read(Phone& phone, Storage& held, const Command& command, Lines& lines) {
  const Options& options = phone.options;
  const auto& parameters = command.parameters;
  if (command.form == Form::kTest) {
    lines = {"+CPBR: " + bounds(held)};
    if (held.number_length || held.text_length)
      lines[0] += ',' + announced(held.number_length) + ',' + announced(held.text_length);
    return Result::kOk;
  }
  if (command.form != Form::kSet || parameters.size() > 2) return Result::kError;
  const bool alone = parameters.size() == 1;
  const auto first = number_of(parameters.front()), last = number_of(parameters.back());
  if (!first || !last) return Result::kError;
  if (!has_index(held, *first) || !has_index(held, *last) || *last < *first)
    return Result::kInvalidIndex;
  if (!alone && options.largest_range && *last - *first >= *options.largest_range)
    return Result::kError;

  const std::set<int>& refused = alone ? options.refused_alone : options.refused_in_range;
  const auto refusal = refused.lower_bound(*first);
  const bool refuses = refusal != refused.end() && *refusal <= *last;
  if (refuses && !options.lines_before_refusal) return Result::kError;
  const int end = refuses ? *refusal : *last + 1;
  for (auto at = held.contacts.lower_bound(*first); at != held.contacts.end() && at->first < end;
       ++at)
    lines.push_back(line_of(phone, "+CPBR", at->first, at->second));
  if (refuses) return Result::kError;
  if (!lines.empty()) return Result::kOk;
  return alone ? options.empty_index : options.empty_range;
}

// 8.13: +CPBF, those whose text begins as said.
Result find(Phone& phone, Storage& held, const Command& command, Lines& lines) {
  if (command.form == Form::kTest) {
    lines = {"+CPBF: " + announced(held.number_length) + ',' + announced(held.text_length)};
    return Result::kOk;
  }
  const std::string* parameter = sole_parameter(command);
  const auto value = string_of(parameter ? *parameter : "", phone.options.escapes);
  if (!value) return Result::kError;
  const auto wanted = decoded(*value, phone.now.set);
  if (!wanted) return Result::kTextInvalid;
  for (const auto& [index, contact] : held.contacts)
    if (contact.name.starts_with(*wanted)) lines.push_back(line_of(phone, "+CPBF", index, contact));
  return lines.empty() ? phone.options.empty_range : Result::kOk;
}

// What +CPBW has behind the text: group, adnumber, adtype, secondtext, email, sip_uri, tel_uri,
// hidden. A +CPBR line has the last of them first.
constexpr size_t kPlain = 4, kFurther = 8;
constexpr std::array<bool, kFurther> kIsNumber = {false, false, true,  false,
                                                  false, false, false, true};

std::optional<std::string> further_of(const Phone& phone, const Command& command) {
  const bool as_read = phone.options.further_order == FurtherOrder::kAsRead;
  std::array<std::string, kFurther> values;  // in the order of 8.14
  for (size_t i = kPlain; i < command.parameters.size(); ++i) {
    const std::string& value = command.parameters[i];
    const size_t place = as_read ? (i - kPlain + kFurther - 1) % kFurther : i - kPlain;
    const bool fits =
        kIsNumber[place] ? !!number_of(value) : !!string_of(value, phone.options.escapes);
    if (!fits && !value.empty()) return {};
    values[place] = value;
  }
  std::rotate(values.begin(), values.end() - 1, values.end());
  std::string further;
  for (const std::string& value : values) (further += comma(phone)) += value;
  further.erase(further.find_last_not_of(", ") + 1);
  return further;
}

// A dial string: <number> and <type> as TS 24.008 10.5.4.7 knows them.
Result take_number(const Storage& held, std::string number, int type, Stored& contact) {
  if (held.number_length && number.size() > static_cast<size_t>(*held.number_length))
    return Result::kNumberTooLong;
  const bool international = number.starts_with('+') || (type == 145 && !number.empty());
  if (number.starts_with('+')) number.erase(0, 1);
  const bool dialled = number.find_first_not_of("0123456789*#ABCDPWpw?") == std::string::npos;
  if (!dialled || (international && number.empty())) return Result::kNumberInvalid;
  contact.number = (international ? "+" : "") + number;
  return Result::kOk;
}

Result take_text(const Phone& phone, const Storage& held, std::string_view value, Stored& contact) {
  const auto text = decoded(value, phone.now.set);
  if (!text) return Result::kTextInvalid;
  const bool octets = phone.options.measure == Measure::kOctets;
  const size_t length = octets ? alpha_identifier(*text).size() : text->size();
  if (held.text_length && length > static_cast<size_t>(*held.text_length))
    return Result::kTextTooLong;
  contact.name = *text;
  return Result::kOk;
}

// The contact that a +CPBW has.
Result take_contact(const Phone& phone, const Storage& held, const Command& command,
                    Stored& contact) {
  const bool escapes = phone.options.escapes;
  std::array<std::string, kPlain> plain = {"", "\"\"", "", "\"\""};
  for (size_t i = 0; i < std::min(kPlain, command.parameters.size()); ++i)
    if (!command.parameters[i].empty()) plain[i] = command.parameters[i];
  const auto number = string_of(plain[1], escapes), text = string_of(plain[3], escapes);
  const bool typed = plain[2].empty() || plain[2] == "129" || plain[2] == "145";
  const auto further = further_of(phone, command);
  if (!number || !text || !typed || !further) return Result::kError;
  contact.further = *further;
  const Result result = take_number(held, *number, plain[2] == "145" ? 145 : 129, contact);
  return result == Result::kOk ? take_text(phone, held, *text, contact) : result;
}

std::optional<int> first_free(const Storage& held) {
  int index = held.first;
  while (held.contacts.contains(index)) ++index;
  return has_index(held, index) ? std::optional(index) : std::nullopt;
}

// 8.14: +CPBW.
Result write(Phone& phone, Storage& held, const Command& command, Lines& lines) {
  const Options& options = phone.options;
  if (command.form == Form::kTest) {
    lines = {"+CPBW: " + bounds(held) + ',' + announced(held.number_length) + ",(129,145)," +
             announced(held.text_length)};
    return Result::kOk;
  }
  const size_t known = kPlain + (options.further ? kFurther : 0);
  if (command.form != Form::kSet || command.parameters.size() > known) return Result::kError;
  const std::string& place_said = command.parameters[0];
  auto index = number_of(place_said);
  if (!index && !place_said.empty()) return Result::kError;
  if (index && !has_index(held, *index)) return Result::kInvalidIndex;
  Stored contact;
  const Result result = take_contact(phone, held, command, contact);
  if (result != Result::kOk) return result;
  // A record that holds neither number nor text is a free one.
  const bool nothing = contact == Stored{};
  if (!index && (nothing || !options.finds_free_index)) return Result::kError;
  if (!index) index = first_free(held);
  if (!index) return Result::kMemoryFull;
  if (!options.writes_dropped.contains(*index))
    place(phone, held, *index, nothing ? std::nullopt : std::optional(contact));
  if (options.tells_index && !nothing) lines = {"+CPBW: " + std::to_string(*index)};
  return Result::kOk;
}

// Whether the card can be asked.
Result readiness(Phone& phone) {
  if (phone.card == Card::kAbsent) return Result::kNoCard;
  if (phone.card == Card::kNeedsPin) return Result::kPinNeeded;
  return phone.busy_for > 0 && phone.busy_for-- > 0 ? Result::kCardBusy : Result::kOk;
}

}  // namespace

size_t storage_place(const Phone& phone, std::string_view name) {
  const auto& all = phone.options.storages;
  const auto found =
      std::find_if(all.begin(), all.end(), [&](const Storage& each) { return each.name == name; });
  return found == all.end() ? 0 : static_cast<size_t>(found - all.begin());
}

void place(Phone& phone, Storage& held, int index, const std::optional<Stored>& contact) {
  const auto before = held.contacts.find(index);
  const bool same = before == held.contacts.end() ? !contact : before->second == contact;
  if (same) return;
  if (contact)
    held.contacts[index] = *contact;
  else
    held.contacts.erase(before);
  if (&held == &phone.options.storages[storage_place(phone, "SM")]) phone.changes.push_back(index);
}

Result phonebook(Phone& phone, const Command& command, Lines& lines) {
  const Result ready = readiness(phone);
  if (ready != Result::kOk) return ready;
  Storage& held = phone.options.storages[storage_place(phone, phone.now.storage)];
  if (command.name == "+CPBS") return select(phone, held, command, lines);
  if (command.name == "+CPBR") return read(phone, held, command, lines);
  if (command.name == "+CPBF") return find(phone, held, command, lines);
  return write(phone, held, command, lines);
}

}  // namespace qalt::simulation
