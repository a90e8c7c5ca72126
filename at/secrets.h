// secrets.h - PINs, PUKs and passwords of an AT line, masked before anything is written down.
//
// Masked are the digits of
//   - the values of a command whose name says that it takes such, whatever its prefix: with PIN,
//   PUK,
//     PWD, PASS, LCK or LOCK in it ("+CPIN=", "+CPIN2=", "+CPWD=", "+CLCK=", "^CPIN=");
//   - a service code that is dialled, or sent by "+CUSD=": passwords of call barring, changing and
//     unblocking PINs (3GPP TS 22.030, 6.5.4 and 6.6: "*33*PASSWORD#", "**04*OLD*NEW*NEW#");
//   - what a command to the card carries in "+CSIM=" and "+CGLA=", if it is about a PIN (ETSI TS
//   102
//     221, 11.1.9 to 11.1.13).
// Blanks, which a modem passes over, hide nothing. The bytes may come in pieces of any size, as the
// echo of a command does.
#ifndef QALT_AT_SECRETS_H_
#define QALT_AT_SECRETS_H_

#include <string>
#include <string_view>

namespace qalt::at {

class SecretMask {
 public:
  // The bytes that follow those before in one direction of the line, '*' for what is secret.
  std::string masked(std::string_view bytes);

 private:
  enum class Value { kNone, kSecret, kServiceCode, kCardCommand };

  char take(char byte);
  void take_name(char letter);
  bool is_secret(char letter);
  void reset();

  std::string name_;  // of the command at hand, "D" of a dialling one
  std::string text_;  // of its value, as far as it tells what the rest is
  Value value_ = Value::kNone;
  bool quoted_ = false;
};

// As SecretMask, of a text that stands by itself.
std::string without_secrets(std::string_view text);

}  // namespace qalt::at

#endif  // QALT_AT_SECRETS_H_
