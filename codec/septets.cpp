// Septet packing (3GPP TS 23.038, 6.1.2.1): eight septets in seven bytes, a group at a time.
#include "qalt_at/text_bytes.h"

namespace {

constexpr uint32_t kGroupSeptets = 8;
constexpr uint32_t kGroupBytes = 7;

uint32_t low_byte(uint32_t element) {
  return element & 0xFF;
}

// The first `bytes` bytes of a group: each holds what is left of one septet, and above it the low
// bits of the next.
inline void pack(const uint32_t* septets, uint8_t* out, uint32_t bytes) {
  for (uint32_t k = 0; k < bytes; ++k) {
    out[k] = static_cast<uint8_t>(low_byte(septets[k]) >> k | low_byte(septets[k + 1]) << (7 - k));
  }
}

// The first `septets` septets of a group, 7 at most: each begins with the high bits of one byte,
// and above them has the low bits of the next.
inline void unpack(const uint8_t* packed, uint8_t* out, uint32_t septets) {
  uint32_t carry = 0;
  for (uint32_t k = 0; k < septets; ++k) {
    const uint32_t byte = packed[k];
    out[k] = static_cast<uint8_t>((carry | byte << k) & 0x7F);
    carry = byte >> (7 - k);
  }
}

}  // namespace

int32_t CODE_Encode7bit(const uint32_t* pSeptets, uint8_t* pOut, int32_t nCount) {
  if (pSeptets == nullptr || pOut == nullptr || nCount < 0) return -1;
  uint8_t* out = pOut;
  auto rest = static_cast<uint32_t>(nCount);
  for (; rest >= kGroupSeptets; rest -= kGroupSeptets) {
    pack(pSeptets, out, kGroupBytes);
    pSeptets += kGroupSeptets;
    out += kGroupBytes;
  }
  if (rest != 0) {
    pack(pSeptets, out, rest - 1);
    out += rest - 1;
    *out++ = static_cast<uint8_t>(low_byte(pSeptets[rest - 1]) >> (rest - 1));
  }
  return static_cast<int32_t>(out - pOut);
}

int32_t CODE_Decode7bit(const uint8_t* pPacked, uint8_t* pOut, int32_t nCount) {
  if (pPacked == nullptr || pOut == nullptr || nCount < 0) return -1;
  uint8_t* out = pOut;
  auto rest = static_cast<uint32_t>(nCount);
  for (; rest >= kGroupBytes; rest -= kGroupBytes) {
    unpack(pPacked, out, kGroupBytes);
    out[kGroupBytes] = pPacked[kGroupBytes - 1] >> 1;
    pPacked += kGroupBytes;
    out += kGroupSeptets;
  }
  unpack(pPacked, out, rest);
  out += rest;
  *out = 0;
  return static_cast<int32_t>(out - pOut);
}
