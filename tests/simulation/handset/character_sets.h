// character_sets.h - TS 27.007 5.5: texts in the character sets between terminal and modem.
#ifndef QALT_TESTS_SIMULATION_HANDSET_CHARACTER_SETS_H_
#define QALT_TESTS_SIMULATION_HANDSET_CHARACTER_SETS_H_

#include <optional>
#include <string>
#include <string_view>

namespace qalt::simulation {

// `text` in the set of that name; a character that the set has not is a question mark.
std::string encoded(std::u16string_view text, std::string_view set, bool upper_hex);

// The other way; nothing where the bytes are no text of the set.
std::optional<std::u16string> decoded(std::string_view bytes, std::string_view set);

// A text of plain letters.
std::u16string widened(std::string_view text);

// A text as a SIM stores it, ETSI TS 102 221 Annex A: in the default alphabet, or 80 and UCS2.
std::string alpha_identifier(std::u16string_view text);

}  // namespace qalt::simulation

#endif  // QALT_TESTS_SIMULATION_HANDSET_CHARACTER_SETS_H_
