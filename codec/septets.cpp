// Septet packing (3GPP TS 23.038, 6.1.2.1): eight septets in seven bytes, a group at a time
// through one word.
#include "qalt_at/text_bytes.h"

namespace {

constexpr uint32_t kGroupSeptets = 8;
constexpr uint32_t kGroupBytes = 7;

// The low byte of a value, at a bit of the group's word; septets begin at every seventh bit, bytes
// at every eighth.
constexpr uint64_t at(uint32_t bit, uint32_t value) {
  return uint64_t{value & 0xFF} << bit;
}

constexpr uint8_t byte_at(uint32_t bit, uint64_t word) {
  return static_cast<uint8_t>(word >> bit);
}

constexpr uint8_t septet_at(uint32_t bit, uint64_t word) {
  return static_cast<uint8_t>(word >> bit & 0x7F);
}

// A whole group is written out: with the bits known when compiling it takes half the time.
inline void pack_group(const uint32_t* septets, uint8_t* out) {
  const uint64_t word = at(0, septets[0]) | at(7, septets[1]) | at(14, septets[2]) |
                        at(21, septets[3]) | at(28, septets[4]) | at(35, septets[5]) |
                        at(42, septets[6]) | at(49, septets[7]);
  out[0] = byte_at(0, word);
  out[1] = byte_at(8, word);
  out[2] = byte_at(16, word);
  out[3] = byte_at(24, word);
  out[4] = byte_at(32, word);
  out[5] = byte_at(40, word);
  out[6] = byte_at(48, word);
}

inline void unpack_group(const uint8_t* packed, uint8_t* out) {
  const uint64_t word = at(0, packed[0]) | at(8, packed[1]) | at(16, packed[2]) |
                        at(24, packed[3]) | at(32, packed[4]) | at(40, packed[5]) |
                        at(48, packed[6]);
  out[0] = septet_at(0, word);
  out[1] = septet_at(7, word);
  out[2] = septet_at(14, word);
  out[3] = septet_at(21, word);
  out[4] = septet_at(28, word);
  out[5] = septet_at(35, word);
  out[6] = septet_at(42, word);
  out[7] = septet_at(49, word);
}

// What is left behind the last whole group: as many bytes as septets, and the reverse.
inline void pack_rest(const uint32_t* septets, uint8_t* out, uint32_t count) {
  uint64_t word = 0;
  for (uint32_t k = 0; k < count; ++k) word |= at(7 * k, septets[k]);
  for (uint32_t k = 0; k < count; ++k) out[k] = byte_at(8 * k, word);
}

inline void unpack_rest(const uint8_t* packed, uint8_t* out, uint32_t count) {
  uint64_t word = 0;
  for (uint32_t k = 0; k < count; ++k) word |= at(8 * k, packed[k]);
  for (uint32_t k = 0; k < count; ++k) out[k] = septet_at(7 * k, word);
}

}  // namespace

int32_t CODE_Encode7bit(const uint32_t* pSeptets, uint8_t* pOut, int32_t nCount) {
  if (pSeptets == nullptr || pOut == nullptr || nCount < 0) return -1;
  uint8_t* out = pOut;
  auto rest = static_cast<uint32_t>(nCount);
  for (; rest >= kGroupSeptets; rest -= kGroupSeptets) {
    pack_group(pSeptets, out);
    pSeptets += kGroupSeptets;
    out += kGroupBytes;
  }
  pack_rest(pSeptets, out, rest);
  return static_cast<int32_t>(out + rest - pOut);
}

int32_t CODE_Decode7bit(const uint8_t* pPacked, uint8_t* pOut, int32_t nCount) {
  if (pPacked == nullptr || pOut == nullptr || nCount < 0) return -1;
  uint8_t* out = pOut;
  auto rest = static_cast<uint32_t>(nCount);
  for (; rest >= kGroupBytes; rest -= kGroupBytes) {
    unpack_group(pPacked, out);
    pPacked += kGroupBytes;
    out += kGroupSeptets;
  }
  unpack_rest(pPacked, out, rest);
  out += rest;
  *out = 0;
  return static_cast<int32_t>(out - pOut);
}
