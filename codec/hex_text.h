// hex_text.h - hex texts as the modem hands them over, decoded into a bounded output.
#ifndef QALT_CODEC_HEX_TEXT_H_
#define QALT_CODEC_HEX_TEXT_H_

#include <cstddef>
#include <cstdint>

namespace qalt {

// The output of a caller who has given no size: large enough by contract.
constexpr size_t kUnbounded = SIZE_MAX;

// Decodes a hex text into at most `size` wide characters, terminator included; see
// CODE_Usc2orGsm7ToAscDecode. False, with nothing written, when it cannot be decoded or does not
// fit.
bool decode_hex_text(const char* hex, wchar_t* out, size_t size, int32_t language);

}  // namespace qalt

#endif  // QALT_CODEC_HEX_TEXT_H_
