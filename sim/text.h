// text.h - the texts of the simulated modem, as Unicode, and how they are written on the wire.
//
// The modem keeps every name as UTF-16 and converts at its edge, in the character set that +CSCS
// selected (3GPP TS 27.007) or in the SIM codings of the vendor phonebook (ETSI TS 102 221 Annex
// A). This code is written on its own, without the library's codec: the two check each other.
#ifndef QALT_SIM_TEXT_H_
#define QALT_SIM_TEXT_H_

#include <optional>
#include <string>
#include <string_view>

namespace qalt::sim {

using Text = std::u16string;

// UTF-8 to UTF-16 and back. Malformed UTF-8 throws std::invalid_argument; an unpaired surrogate
// becomes U+FFFD.
Text from_utf8(std::string_view utf8);
std::string to_utf8(const Text& text);

enum class Charset { kIra, kGsm, kUcs2, kUcs2With81 };

std::string_view charset_name(Charset charset);
std::optional<Charset> charset_named(std::string_view name);

// A text in the selected character set. What the set cannot carry goes out as '?'.
//   IRA        7-bit ASCII
//   GSM        the codes of the default alphabet of TS 23.038, one a byte, unpacked
//   UCS2       four upper-case hexadecimal digits a character
//   UCS2_0X81  the "81" form where all characters above U+007F lie in one half page, else as UCS2
std::string encode(Charset charset, const Text& text);
std::optional<Text> decode(Charset charset, std::string_view wire);

// A text of the vendor phonebook, in hexadecimal: the codes of the default alphabet where it has
// them all, else the shortest of the SIM codings "80", "81" and "82".
std::string encode_item(const Text& text);
std::optional<Text> decode_item(std::string_view wire);

// Two digits a byte. Decoding accepts both cases and refuses an odd or a foreign digit.
std::string to_hex(std::string_view bytes);
std::optional<std::string> from_hex(std::string_view digits);

}  // namespace qalt::sim

#endif  // QALT_SIM_TEXT_H_
