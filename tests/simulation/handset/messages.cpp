#include "tests/simulation/handset/character_sets.h"
#include "tests/simulation/handset/phone.h"

namespace qalt::simulation {

std::vector<Message> confusing_messages() {
  const std::string header = "00040D91945111325476F8000062113281000040";
  return {{.text = u"see you\r\nOK\r\n", .pdu = header + "0DF37219947FD71B8AE7B2A100"},
          {.text = u"type behind\r\n> ", .pdu = header + "0FF43CBC0C1297D16937B9A1F08100"},
          {.text = u"so it said\r\n+CPBR: 1",
           .pdu = header + "14F337284D07CDC3697243B11A4285521D2806"}};
}

Result read_message(Phone& phone, const Command& command, Lines& lines) {
  if (command.form == Form::kTest) return Result::kOk;
  const std::string* parameter = sole_parameter(command);
  auto& messages = phone.options.messages;
  const auto index = number_of(parameter ? *parameter : "");
  if (!index) return Result::kError;
  if (*index < 1 || *index > static_cast<int>(messages.size())) return Result::kNoSuchMessage;
  Message& message = messages[static_cast<size_t>(*index) - 1];
  if (phone.now.message_format == 0) {
    // Its length is without the address of the service centre, here one octet.
    const std::string length = std::to_string(message.pdu.size() / 2 - 1);
    lines = {"+CMGR: " + std::string(message.read ? "1" : "0") + ",," + length, message.pdu};
  } else {
    // The address, too, is in the character set of the terminal.
    lines = {"+CMGR: \"REC " + std::string(message.read ? "READ" : "UNREAD") + "\"," +
                 said(phone, widened(message.from)) + ",,\"" + message.time + '"',
             encoded(message.text, phone.now.set, phone.options.upper_hex)};
  }
  message.read = true;
  return Result::kOk;
}

}  // namespace qalt::simulation
