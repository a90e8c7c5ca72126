// secrets.h - PINs, PUKs and passwords of an AT line, masked before anything is written down.
//
// Masked are the digits of
//   - the values of a command whose name says that it takes such, whatever its prefix: with PIN,
//     PUK, CHV, PWD, LCK or LOCK in it ("+CPIN=", "+CPIN2=", "+CPWD=", "+CLCK=", "^CPIN="), and
//     those of
//     "+CMAR=" and "+CKPD=";
//   - a service code that is dialled, whatever dial modifiers lead in, or sent by "+CUSD=",
//     "+USSD=" or "+CSTF=", as text or in hexadecimal digits: passwords of call barring, changing
//     and unblocking PINs (3GPP TS 22.030, 6.5.4 and 6.6: "*33*PASSWORD#", "**04*OLD*NEW*NEW#");
//   - what a command to the card carries in "+CSIM=" and "+CGLA=", if it is about a PIN (ETSI
//     TS 102 221, 11.1.9 to 11.1.13);
// and, letters and all, the values of commands with PASS in their name, and the user names and
// passwords of those with AUTH ("+CGAUTH=1,1,USER,PASSWORD"), of some others known to take such,
// and of the answers to them; and PIN2 behind a storage ("+CPBS="FD","PIN2""). Blanks, which a
// modem passes over, hide nothing. The bytes may come in pieces of any size, as the echo of a
// command does.
#ifndef QALT_AT_SECRETS_H_
#define QALT_AT_SECRETS_H_

#include <string>
#include <string_view>

namespace qalt::at {

class SecretMask {
 public:
  // The bytes that follow those before in one direction of the line, '*' for what is secret.
  std::string masked(std::string_view bytes);
  // How many of them were.
  int masked_count() const { return masked_; }

 private:
  enum class Value { kNone, kSecret, kAccount, kServiceCode, kCardCommand };

  char take(char byte);
  void take_name(char letter);
  bool is_secret(char letter);
  void reset();

  std::string name_;  // of the command at hand
  std::string text_;  // of its value, as far as it tells what the rest is
  Value value_ = Value::kNone;
  int values_ = 0;       // commas passed in the command at hand
  int open_values_ = 0;  // of an account, those in front of its name
  int masked_ = 0;
  bool dials_ = false;  // a dialling command has no digits yet
  bool quoted_ = false;
};

// Both directions of a line. What the modem says to a secret, up to the end of the line in which
// the next command comes, has no digits but those of an error: an echo may have lost its beginning.
// Where the next one did not wait for the result, up to the second result: the first may be late.
class LineMask {
 public:
  std::string to_modem(std::string_view bytes);
  std::string from_modem(std::string_view bytes);

 private:
  bool may_be_told() const;

  SecretMask to_modem_;
  SecretMask from_modem_;
  std::string sent_;        // the secret, masked
  std::string line_;        // the modem's at hand, as far as it tells an echo or an error
  bool hiding_ = false;     // the modem may say the secret again
  bool ending_ = false;     // until its line ends
  bool overtaken_ = false;  // until the second result
  int results_ = 0;         // since the secret
};

// As SecretMask, of a text that stands by itself.
std::string without_secrets(std::string_view text);

}  // namespace qalt::at

#endif  // QALT_AT_SECRETS_H_
