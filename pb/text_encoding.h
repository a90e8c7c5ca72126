// text_encoding.h - a contact's text to and from the modem's hex text, bounded by the caller's
// buffer.
#ifndef QALT_PB_TEXT_ENCODING_H_
#define QALT_PB_TEXT_ENCODING_H_

#include <cstddef>
#include <cstdint>

namespace qalt {

constexpr uint32_t kLastLow = 0x7F;  // characters up to here are never counted into a half page
constexpr size_t kMaxHigh = 260;     // characters above it that the choice of a coding looks at

size_t count_high(const wchar_t* text);

// Both write `out` only when the whole text with its terminator fits `size`; false otherwise and
// for a text that is refused, with the cause in the log.
bool encode_item(const wchar_t* text, char* out, size_t size, bool extended);
bool decode_item(const char* hex, wchar_t* out, size_t size, bool extended);

}  // namespace qalt

#endif  // QALT_PB_TEXT_ENCODING_H_
