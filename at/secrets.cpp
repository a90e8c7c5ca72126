#include "at/secrets.h"

#include <algorithm>
#include <array>

namespace qalt::at {
namespace {

constexpr std::string_view kPrefixes = "+^$%*#!@_&\\";
// What may stand between a dialling command and its digits (ITU-T V.250, 6.3.1, and punctuation).
constexpr std::string_view kDialModifiers = "TPWLGI,!@\"()-./";
constexpr std::array<std::string_view, 6> kSecretWords = {"PIN", "PUK", "CHV",
                                                          "PWD", "LCK", "LOCK"};
constexpr std::string_view kPasswordWord = "PASS";
// User names and passwords, of letters too, follow two other values.
constexpr std::string_view kAccountWord = "AUTH";
constexpr int kAccountValue = 2;
constexpr int kShortestPin = 4;  // 3GPP TS 51.011, 9.3
// Instructions: VERIFY, CHANGE, DISABLE, ENABLE and UNBLOCK PIN.
// An odd one has its data in the other form (ISO/IEC 7816-4, 5.4.2).
constexpr std::array<std::string_view, 10> kPinInstructions = {"20", "21", "24", "25", "26",
                                                               "27", "28", "29", "2C", "2D"};
// Class, instruction, two parameters and the length, in digits.
constexpr size_t kCardHeader = 10;
constexpr size_t kLongestName = 32;
constexpr size_t kLongestServiceCode = 8;
// Names without their prefix.
constexpr std::array<std::string_view, 3> kServiceCommands = {"CUSD", "USSD", "CSTF"};
// The lock code of the device, and keys pressed (3GPP TS 27.007, 8.36 and 8.7).
constexpr std::array<std::string_view, 2> kSecretCommands = {"CMAR", "CKPD"};
struct AccountCommand {
  std::string_view name;
  int open_values;
  bool answers;  // bear them, too
};
// Commands with a user name or a password, and how many values stand in front of it. That of a
// storage is PIN2 (3GPP TS 27.007, 8.11).
// clang-format off
constexpr std::array<AccountCommand, 5> kAccountCommands = {{
    {"CPBS",   1, false},
    {"CSTT",   1, true},
    {"QICSGP", 2, true},
    {"QCPDPP", 2, true},
    {"UPSD",   2, true},
}};
// clang-format on
// A service code in UCS2 begins so, and one in octets or in septets.
constexpr std::array<std::string_view, 6> kCodedStarts = {"002A", "0023", "2A", "23", "AA", "A3"};
// What may be told of the answer to a secret.
constexpr std::array<std::string_view, 2> kErrors = {"+CME ERROR: ", "+CMS ERROR: "};
// Registering a password, changing a PIN, unblocking one; call barring.
constexpr std::array<std::string_view, 12> kServiceCodes = {
    "03", "04", "042", "05", "052", "33", "330", "331", "332", "333", "35", "351"};

char capital(char c) {
  return c >= 'a' && c <= 'z' ? char(c - 'a' + 'A') : c;
}
bool is_decimal(char c) {
  return c >= '0' && c <= '9';
}
bool is_hexadecimal(char c) {
  return is_decimal(c) || (c >= 'A' && c <= 'F');
}
bool is_of_name(char c) {
  return is_decimal(c) || (c >= 'A' && c <= 'Z') || c == '_' || c == '-' || c == '.' || c == '/';
}

template <typename List>
bool has(const List& list, std::string_view value) {
  return std::find(list.begin(), list.end(), value) != list.end();
}

bool names_secret(const std::string& name) {
  return name.find("PING") == name.npos &&
         std::any_of(kSecretWords.begin(), kSecretWords.end(),
                     [&](std::string_view word) { return name.find(word) != name.npos; });
}

// "**04*", "*33*" with whatever leads in: what follows is secret.
bool is_service_code(std::string_view text) {
  text.remove_prefix(std::min(text.find_first_not_of("*#"), text.size()));
  return !text.empty() && text.back() == '*' && has(kServiceCodes, text.substr(0, text.size() - 1));
}

bool is_error(std::string_view line) {
  return std::any_of(kErrors.begin(), kErrors.end(),
                     [line](std::string_view error) { return line.starts_with(error); });
}
bool is_result(std::string_view line) {
  return line == "OK\r" || line == "ERROR\r" || is_error(line);
}

}  // namespace

std::string SecretMask::masked(std::string_view bytes) {
  std::string result(bytes);
  masked_ = 0;
  for (char& byte : result) {
    const char shown = take(byte);
    masked_ += shown != byte;
    byte = shown;
  }
  return result;
}

void SecretMask::reset() {
  const int count = masked_;
  *this = SecretMask();
  masked_ = count;
}

char SecretMask::take(char byte) {
  if (byte == '\r' || byte == '\n') reset();
  if (static_cast<unsigned char>(byte) <= ' ') return byte;
  if (value_ == Value::kNone) {
    take_name(capital(byte));
  } else if (byte == ';' && !quoted_) {
    reset();
  } else if (byte == '"' || byte == ',') {
    quoted_ ^= byte == '"';
    values_ += byte == ',' && !quoted_ ? 1 : 0;
    text_.clear();
  } else if (is_secret(capital(byte))) {
    return '*';
  }
  return byte;
}

void SecretMask::take_name(char letter) {
  if (dials_ && (letter == '*' || letter == '#')) {
    value_ = Value::kServiceCode;
    text_ = letter;
    return;
  }
  dials_ = dials_ && kDialModifiers.find(letter) != kDialModifiers.npos;
  if (dials_) quoted_ ^= letter == '"';
  if (!name_.empty()) {
    if (is_of_name(letter) && name_.size() < kLongestName) {
      name_ += letter;
      return;
    }
    const std::string_view name = std::string_view(name_).substr(1);
    const bool password = name_.find(kPasswordWord) != name_.npos;
    const auto* const known =
        std::find_if(kAccountCommands.begin(), kAccountCommands.end(),
                     [name](const AccountCommand& command) { return command.name == name; });
    const bool listed = known != kAccountCommands.end();
    const bool account = password || listed || name_.find(kAccountWord) != name_.npos;
    // The answer to a question for them bears them, too.
    if (letter == '=' || (letter == ':' && account && (!listed || known->answers))) {
      const bool card = name_.ends_with("CSIM") || name_.ends_with("CGLA");
      open_values_ = listed ? known->open_values : account && !password ? kAccountValue : 0;
      value_ = account                                             ? Value::kAccount
               : names_secret(name_) || has(kSecretCommands, name) ? Value::kSecret
               : card                                              ? Value::kCardCommand
               : has(kServiceCommands, name)                       ? Value::kServiceCode
                                                                   : Value::kNone;
      quoted_ = false;
      name_.clear();
      return;
    }
  }
  if (letter == 'D') {
    dials_ = true;
    quoted_ = false;
  }
  name_ = kPrefixes.find(letter) != kPrefixes.npos ? std::string(1, letter) : "";
}

bool SecretMask::is_secret(char letter) {
  switch (value_) {
    case Value::kNone:
      return false;
    case Value::kSecret:
      return is_decimal(letter);
    case Value::kAccount:
      return values_ >= open_values_;
    case Value::kServiceCode:
      if (text_.size() < kLongestServiceCode) text_ += letter;
      if (is_service_code(text_)) value_ = Value::kSecret;
      if (has(kCodedStarts, text_)) value_ = Value::kAccount;
      return false;
    case Value::kCardCommand:
      if (!is_hexadecimal(letter)) return false;
      if (text_.size() == kCardHeader) return has(kPinInstructions, text_.substr(2, 2));
      text_ += letter;
      return false;
  }
  return false;
}

std::string LineMask::to_modem(std::string_view bytes) {
  std::string text = to_modem_.masked(bytes);
  const bool secret = to_modem_.masked_count() >= kShortestPin;
  if (secret) {
    sent_ = text;
    results_ = 0;
  }
  // What is late may come before the result of the next command, and has one of its own.
  overtaken_ = hiding_ && !secret && (overtaken_ || results_ == 0);
  ending_ = hiding_ && !secret && !overtaken_;
  hiding_ |= secret;
  return text;
}

std::string LineMask::from_modem(std::string_view bytes) {
  std::string text = from_modem_.masked(bytes);
  for (char& byte : text) {
    if (byte == '\n') {
      results_ += hiding_ && is_result(line_) ? 1 : 0;
      line_.clear();
      hiding_ = hiding_ && !ending_ && !(overtaken_ && results_ == 2);
      continue;
    }
    if (line_.size() <= std::max(sent_.size(), kErrors.front().size())) line_ += byte;
    if (hiding_ && is_decimal(byte) && !may_be_told()) byte = '*';
  }
  return text;
}

bool LineMask::may_be_told() const {
  return sent_.starts_with(line_) || is_error(line_);
}

std::string without_secrets(std::string_view text) {
  return SecretMask().masked(text);
}

}  // namespace qalt::at
