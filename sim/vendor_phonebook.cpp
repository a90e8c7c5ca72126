// The vendors' phonebook commands: +JCPBR and +JCPBW with +JUSIM and +EUSIM, and ^SCPBR and ^SCPBW
// with ^CARDMODE. Their texts are SIM codings in hexadecimal, whatever +CSCS selected.
#include "sim/commands.h"

namespace qalt::sim {
namespace {

using Values = std::vector<at::Argument>;

std::string value(const Values& values, size_t i) {
  return i < values.size() ? values[i].value : std::string();
}

std::string jcpbr_line(const State& state, int index, const Contact& contact) {
  const auto number = [&](const std::string& digits) {
    const int type = digits.starts_with('+') ? kTypeInternational : kTypeUnknown;
    return in_quotes(wire_number(state, digits, type));
  };
  return "+JCPBR: " + std::to_string(index) + "," + number(contact.number) + "," +
         in_quotes(encode_item(contact.name)) + "," + number(contact.number2) + "," +
         number(contact.number3) + "," + in_quotes(contact.email) + "," +
         in_quotes(encode_item(contact.extra));
}

Reply jcpbr(State& state, const at::Command& command) {
  if (command.form == at::Form::kTest) {
    const std::string number = "," + std::to_string(state.config.number_length);
    // A name has at most half as many characters as its record has digits.
    const std::string name = "," + std::to_string(kItemDigits / 2);
    return "+JCPBR: " + index_range(state) + number + name + number + number + "," +
           std::to_string(kEmailLength) + name;
  }
  return read_range(state, command.arguments, jcpbr_line);
}

// A vendor text; kOk and the text in `text`, or the error.
Reply read_item(const std::string& wire, Text& text) {
  if (wire.size() > kItemDigits) return CmeError::kTextTooLong;
  const auto decoded = decode_item(wire);
  if (!decoded) return CmeError::kInvalidText;
  text = *decoded;
  return Reply::Final::kOk;
}

Reply store_checked(State& state, const std::string& index, Contact contact,
                    const std::string& name, const std::string& extra) {
  for (const auto& [wire, text] : {std::pair(&name, &contact.name), {&extra, &contact.extra}}) {
    Reply checked = read_item(*wire, *text);
    if (checked.final != Reply::Final::kOk) return checked;
  }
  if (contact.email.size() > kEmailLength) return CmeError::kTextTooLong;
  return store(state, index, std::move(contact));
}

// The type of number sent with it, or the one its leading "+" tells.
int type_of(const std::string& type, const std::string& number) {
  return to_int(type).value_or(number.starts_with('+') ? kTypeInternational : kTypeUnknown);
}

// index, number, type, name, second number, third number, address, extra text
Reply jcpbw(State& state, const at::Command& command) {
  const auto values = at::split_arguments(command.arguments);
  if (!values || values->size() > 8) return Reply::Final::kError;
  if (values->size() == 1) return erase(state, value(*values, 0));
  Contact contact;
  contact.number = value(*values, 1);
  contact.type = type_of(value(*values, 2), contact.number);
  contact.number2 = value(*values, 4);
  contact.number3 = value(*values, 5);
  contact.email = value(*values, 6);
  return store_checked(state, value(*values, 0), std::move(contact), value(*values, 3),
                       value(*values, 7));
}

// index, four numbers each with its type, name, coding, address. The contact's second number is
// the line's third and its third the line's second.
std::string scpbr_line(const State& state, int index, const Contact& contact) {
  const auto number = [&](const std::string& digits) {
    const int type = digits.empty()            ? 0
                     : digits.starts_with('+') ? kTypeInternational
                                               : kTypeUnknown;
    return in_quotes(wire_number(state, digits, type)) + "," + std::to_string(type) + ",";
  };
  const std::string name = encode_item(contact.name);
  return "^SCPBR: " + std::to_string(index) + "," + number(contact.number) +
         number(contact.number3) + number(contact.number2) + number("") + in_quotes(name) + "," +
         (name.starts_with('8') ? "1" : "0") + "," + in_quotes(contact.email);
}

Reply scpbr(State& state, const at::Command& command) {
  return read_range(state, command.arguments, scpbr_line);
}

Reply scpbw(State& state, const at::Command& command) {
  const auto values = at::split_arguments(command.arguments);
  if (!values || values->size() > 12) return Reply::Final::kError;
  if (values->size() == 1) return erase(state, value(*values, 0));
  Contact contact;
  contact.number = value(*values, 1);
  contact.type = type_of(value(*values, 2), contact.number);
  contact.number3 = value(*values, 3);
  contact.number2 = value(*values, 5);
  contact.email = value(*values, 11);
  return store_checked(state, value(*values, 0), std::move(contact), value(*values, 9), "");
}

Reply jusim(State& state, const at::Command&) {
  return std::string("+JUSIM: ") + (state.config.profile == Profile::kVendorUsim ? "1" : "0");
}

Reply eusim(State& state, const at::Command&) {
  return std::string("+EUSIM: ") + (state.config.profile == Profile::kVendorUsim ? "1" : "0");
}

Reply card_mode(State& state, const at::Command&) {
  return "^CARDMODE: " + std::to_string(state.config.card_mode);
}

// clang-format off
constexpr CommandRow kVendorRows[] = {
    {"+JCPBR",    kSets | kTests, kUsesStorage | kReadsEntries | kVendorOnly, jcpbr},
    {"+JCPBW",    kSets,          kUsesStorage | kVendorOnly,                 jcpbw},
    {"+JUSIM",    kTests,         kVendorOnly,                                jusim},
    {"+EUSIM",    kQueries,       kVendorOnly,                                eusim},
    {"^SCPBR",    kSets,          kUsesStorage | kReadsEntries | kScpbrOnly,  scpbr},
    {"^SCPBW",    kSets,          kUsesStorage | kScpbrOnly,                  scpbw},
    {"^CARDMODE", kTests,         kScpbrOnly,                                 card_mode},
};
// clang-format on

}  // namespace

std::span<const CommandRow> vendor_phonebook_commands() {
  return kVendorRows;
}

}  // namespace qalt::sim
