// alpha_identifier.h - SIM alpha identifiers of any coding (ETSI TS 102 221, Annex A).
#ifndef QALT_CODEC_ALPHA_IDENTIFIER_H_
#define QALT_CODEC_ALPHA_IDENTIFIER_H_

#include <cstdint>

namespace qalt {

// No identifier decodes to more characters than this.
constexpr uint16_t kMaxIdentifierCharacters = 160;

// Decodes an identifier by its first byte into at most `limit` values. Returns their number; where
// a pair of the 0x80 coding ends the text, one value behind them is written too.
uint16_t decode_alpha_identifier(uint16_t* out, uint16_t limit, const uint8_t* id, uint16_t length);

}  // namespace qalt

#endif  // QALT_CODEC_ALPHA_IDENTIFIER_H_
