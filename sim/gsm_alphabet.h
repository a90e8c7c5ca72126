// gsm_alphabet.h - the GSM 7-bit default alphabet and its extension table (3GPP TS 23.038, 6.2.1).
#ifndef QALT_SIM_GSM_ALPHABET_H_
#define QALT_SIM_GSM_ALPHABET_H_

#include <optional>
#include <string>
#include <string_view>

namespace qalt::sim {

// The codes of one character, the escape 0x1B before a code of the extension table; empty for a
// character that the alphabet does not have.
std::string gsm_codes(char16_t character);

// The text of a string of codes, one a byte; none if a byte is above 0x7F or an escape is followed
// by nothing. An escape before a code that the extension table leaves free gives that code's
// character of the default alphabet, as the standard asks of a receiver.
std::optional<std::u16string> gsm_text(std::string_view codes);

}  // namespace qalt::sim

#endif  // QALT_SIM_GSM_ALPHABET_H_
