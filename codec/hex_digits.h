// hex_digits.h - bytes as pairs of hexadecimal digits.
#ifndef QALT_CODEC_HEX_DIGITS_H_
#define QALT_CODEC_HEX_DIGITS_H_

#include <cstdint>

namespace qalt {

inline constexpr char kHexDigits[] = "0123456789ABCDEF";

// Writes the two digits of a byte; returns the position behind them.
inline char* put_byte(char* out, uint32_t byte) {
  out[0] = kHexDigits[byte >> 4 & 0xF];
  out[1] = kHexDigits[byte & 0xF];
  return out + 2;
}

// Writes the four digits of a character's low 16 bits; returns the position behind them.
inline char* put_character(char* out, wchar_t character) {
  const auto value = static_cast<uint32_t>(character);
  return put_byte(put_byte(out, value >> 8), value);
}

// The value of a digit; only upper-case letters are read as such, and nothing is refused.
inline uint32_t upper_digit_value(char digit) {
  const auto c = static_cast<uint8_t>(digit);
  return c > '9' ? c - 0x37U : c - uint32_t{'0'};
}

// The byte of two digits, high nibble first.
inline uint8_t joined(uint32_t high, uint32_t low) {
  return static_cast<uint8_t>(high << 4 | low);
}
inline uint8_t upper_byte(const char* digits) {
  return joined(upper_digit_value(digits[0]), upper_digit_value(digits[1]));
}

}  // namespace qalt

#endif  // QALT_CODEC_HEX_DIGITS_H_
