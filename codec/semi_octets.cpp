// Semi-octet digits (3GPP TS 23.040, 9.1.2.3): the two digits of every octet swapped, an odd count
// completed with "F".
#include <cstdlib>

#include "common/text.h"
#include "qalt_at/text_bytes.h"

namespace {

constexpr char kFiller = 'F';

bool refused(const char* in, const char* out, int32_t count) {
  return in == nullptr || out == nullptr || count < 0;
}

// Swaps the digits of each whole pair among `count`; the two texts may be one. Returns the number
// of digits swapped.
size_t swap_pairs(const char* digits, char* out, size_t count) {
  const size_t even = count / 2 * 2;
  for (size_t i = 0; i < even; i += 2) {
    const char first = digits[i];
    out[i] = digits[i + 1];
    out[i + 1] = first;
  }
  return even;
}

}  // namespace

int32_t CODE_InvertNumbers(const char* pDigits, char* pOut, int32_t nCount) {
  if (refused(pDigits, pOut, nCount)) return -1;
  const auto count = static_cast<size_t>(nCount);
  size_t written = swap_pairs(pDigits, pOut, count);
  if (written < count) {
    pOut[written + 1] = pDigits[written];
    pOut[written] = kFiller;
    written += 2;
  }
  pOut[written] = '\0';
  return static_cast<int32_t>(written);
}

int32_t CODE_SerializeNumbers(const char* pDigits, char* pOut, int32_t nCount) {
  if (refused(pDigits, pOut, nCount)) return -1;
  const size_t capacity = static_cast<size_t>(nCount) + 1;
  auto* copy = static_cast<char*>(std::malloc(capacity));
  if (copy == nullptr) return -1;
  size_t kept = swap_pairs(pDigits, copy, capacity - 1);
  if (kept != 0 && copy[kept - 1] == kFiller) --kept;
  qalt::copy_text(pOut, capacity, copy, kept);
  std::free(copy);
  return static_cast<int32_t>(kept);
}
