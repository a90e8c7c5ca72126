// word_scan.h - looks at eight bytes of a text at once.
#ifndef QALT_COMMON_WORD_SCAN_H_
#define QALT_COMMON_WORD_SCAN_H_

#include <cstddef>
#include <cstdint>
#include <cstring>

namespace qalt {

constexpr size_t kWordSize = sizeof(uint64_t);

inline uint64_t load_word(const void* bytes) {
  uint64_t word;
  std::memcpy(&word, bytes, sizeof word);
  return word;
}

// Whether a byte of the word is below the limit, which is at most 0x80: only then does taking the
// limit off it borrow into a top bit that the byte did not have.
constexpr bool has_byte_below(uint64_t word, uint8_t limit) {
  constexpr uint64_t kOnes = 0x0101010101010101u;
  return ((word - kOnes * limit) & ~word & (kOnes << 7)) != 0;
}

}  // namespace qalt

#endif  // QALT_COMMON_WORD_SCAN_H_
