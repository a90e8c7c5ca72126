// text.h - the bounded helpers that every copy of a terminated text goes through.
#ifndef QALT_COMMON_TEXT_H_
#define QALT_COMMON_TEXT_H_

#include <cstddef>
#include <cstring>

namespace qalt {

// Length of a text that may fill its field to the last byte without a terminator.
// (strnlen is younger than the oldest C library served.)
inline size_t bounded_length(const char* text, size_t size) {
  const void* end = std::memchr(text, '\0', size);
  return end ? static_cast<size_t>(static_cast<const char*>(end) - text) : size;
}

// Copies at most size - 1 of the `length` characters and always terminates. Returns the number of
// characters copied, so that a caller who must not cut compares it with `length`. The two texts may
// overlap; size must not be 0.
inline size_t copy_text(char* destination, size_t size, const char* source, size_t length) {
  const size_t count = length < size ? length : size - 1;
  if (count != 0) std::memmove(destination, source, count);
  destination[count] = '\0';
  return count;
}

}  // namespace qalt

#endif  // QALT_COMMON_TEXT_H_
