// A file of its own, compiled without vectorisation and loop patterns, so that each item is handled
// by itself and no call is inlined away.
#include "bench/floors.h"

namespace floors {

void store_bytes(uint8_t* out, size_t count) {
  for (size_t i = 0; i < count; ++i) out[i] = static_cast<uint8_t>(i);
}

void decode(const uint16_t (&table)[128], const uint8_t* codes, wchar_t* out, size_t count) {
  for (size_t i = 0; i < count; ++i) out[i] = table[codes[i] & 0x7F];
}

void encode(const uint8_t (&table)[256], const wchar_t* text, uint8_t* out, size_t count) {
  for (size_t i = 0; i < count; ++i) out[i] = table[text[i] & 0xFF];
}

void write_digits(const uint8_t* bytes, char* out, size_t count) {
  static const char digits[] = "0123456789ABCDEF";
  for (size_t i = 0; i < count; ++i) {
    out[2 * i] = digits[bytes[i] >> 4];
    out[2 * i + 1] = digits[bytes[i] & 0xF];
  }
}

void read_digits(const char* digits, uint8_t* out, size_t count) {
  static const uint8_t values[16] = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15};
  for (size_t i = 0; i < count; ++i) {
    out[i] =
        static_cast<uint8_t>(values[digits[2 * i] & 0xF] << 4 | values[digits[2 * i + 1] & 0xF]);
  }
}

}  // namespace floors
