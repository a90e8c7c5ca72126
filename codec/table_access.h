// table_access.h - the look-ups that the encoder, the check and their steps share.
#ifndef QALT_CODEC_TABLE_ACCESS_H_
#define QALT_CODEC_TABLE_ACCESS_H_

#include <cstdint>

#include "codec/table_builder.h"

namespace qalt {

// wchar_t is signed on some platforms: a negative value becomes a code point that no table has.
inline uint32_t code_point(wchar_t character) {
  return static_cast<uint32_t>(character);
}

// The pair with this key among pairs [start, count), or null.
inline const CodecPair* find_key(const CodecPair* pairs, uint32_t start, uint32_t count,
                                 uint32_t key) {
  for (uint32_t i = start; i < count; ++i) {
    if (pairs[i].key == key) return &pairs[i];
  }
  return nullptr;
}

// Whether a direct encode table has a code for the character. A space is its own code, which is
// also the mark of a missing one.
inline bool has_direct_code(const uint8_t* direct, uint32_t character) {
  return character < kFirstPairPoint && (direct[character] != kNoCode || character == kNoCode);
}

}  // namespace qalt

#endif  // QALT_CODEC_TABLE_ACCESS_H_
