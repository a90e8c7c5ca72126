// SIM alpha identifiers (ETSI TS 102 221, Annex A): one decoder per coding, and their dispatch.
#include "codec/alpha_identifier.h"

#include <algorithm>
#include <cstring>

#include "codec/table_builder.h"
#include "qalt_at/text.h"

namespace {

constexpr uint16_t kSpace = 0x20;
constexpr uint8_t kTag80 = 0x80;
constexpr uint8_t kTag81 = 0x81;
constexpr uint8_t kTag82 = 0x82;

struct Mapped {
  uint16_t character;
  uint16_t used;  // bytes of the identifier
};

// An escape that maps to nothing is a space of its own; its successor stands for itself.
Mapped map_escape(uint8_t next) {
  if (next < 0x80 && ExtendedGsmToUcs2[next] != 0) return {ExtendedGsmToUcs2[next], 2};
  return {kSpace, 1};
}

Mapped map_code(uint8_t code, uint8_t next) {
  if (code >= 0x80) return {kSpace, 1};
  if (code == qalt::kEscape) return map_escape(next);
  if (GsmToUcs2[code] != 0) return {GsmToUcs2[code], 1};
  return {GsmGclToUcs2[code - 0x10], 1};
}

bool anything_null(const void* out, const void* id) {
  return out == nullptr || id == nullptr;
}

// What a byte from 0x80 up stands for: a space, or a code point above the base.
class HighBytes {
 public:
  static constexpr HighBytes spaces() { return HighBytes(false, 0); }
  static constexpr HighBytes above(uint16_t base) { return HighBytes(true, base); }
  uint16_t character(uint8_t byte) const {
    return based_ ? static_cast<uint16_t>(base_ + (byte & 0x7F)) : kSpace;
  }

 private:
  constexpr HighBytes(bool based, uint16_t base) : based_(based), base_(base) {}
  bool based_;
  uint16_t base_;
};

// The characters of bytes [first, length), at most `limit` of them. The byte behind the last is
// taken as a space.
uint16_t decode_bytes(uint16_t* out, uint16_t limit, const uint8_t* id, uint32_t first,
                      uint32_t length, HighBytes high) {
  uint16_t count = 0;
  for (uint32_t i = first; count < limit && i < length;) {
    if (id[i] >= 0x80) {
      out[count++] = high.character(id[i++]);
    } else {
      const Mapped mapped = map_code(id[i], i + 1 < length ? id[i + 1] : uint8_t{kSpace});
      out[count++] = mapped.character;
      i += mapped.used;
    }
  }
  return count;
}

uint16_t decode_80(uint16_t* out, uint16_t limit, const uint8_t* id, uint32_t length) {
  uint16_t count = 0;
  for (uint32_t i = 1; count < limit && i + 1 < length; i += 2) {
    const auto character = static_cast<uint16_t>(id[i] << 8 | id[i + 1]);
    if (character == 0x0000 || character == 0xFFFF) {
      out[count] = 0;
      break;
    }
    out[count++] = character;
  }
  return count;
}

uint16_t decode_81(uint16_t* out, uint16_t limit, const uint8_t* id, uint32_t length) {
  if (length < 3) return 0;
  const auto base = static_cast<uint16_t>(id[2] << 7);
  return decode_bytes(out, std::min<uint16_t>(limit, id[1]), id, 3, length, HighBytes::above(base));
}

uint16_t decode_82(uint16_t* out, uint16_t limit, const uint8_t* id, uint32_t length) {
  if (length < 4) return 0;
  const auto base = static_cast<uint16_t>(id[2] << 8 | id[3]);
  return decode_bytes(out, std::min<uint16_t>(limit, id[1]), id, 4, length, HighBytes::above(base));
}

uint16_t decode_gsm(uint16_t* out, uint16_t limit, const uint8_t* id, uint32_t length) {
  return decode_bytes(out, limit, id, 0, length, HighBytes::spaces());
}

bool known_coding(uint8_t first_byte) {
  return first_byte <= kTag82;
}

}  // namespace

namespace qalt {

uint16_t decode_alpha_identifier(uint16_t* out, uint16_t limit, const uint8_t* id,
                                 uint16_t length) {
  if (length == 0) return 0;
  switch (id[0]) {
    case kTag80:
      return decode_80(out, limit, id, length);
    case kTag81:
      return decode_81(out, limit, id, length);
    case kTag82:
      return decode_82(out, limit, id, length);
    default:
      return known_coding(id[0]) ? decode_gsm(out, limit, id, length) : uint16_t{0};
  }
}

}  // namespace qalt

int32_t CODE_utAlphaIdToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId, uint16_t nLength) {
  if (anything_null(pOut, pId) || nLength == 0) return 1;
  // Decoded beside the output, so that what ends a text of the 0x80 coding is not written there.
  uint16_t characters[qalt::kMaxIdentifierCharacters];
  const uint16_t limit = std::min(nMax, qalt::kMaxIdentifierCharacters);
  const uint16_t count = qalt::decode_alpha_identifier(characters, limit, pId, nLength);
  if (!known_coding(pId[0]) && nMax != 0) pOut[0] = 0;
  std::memcpy(pOut, characters, count * sizeof(uint16_t));
  return 1;
}

uint16_t CODE_utAlphaIdGsmToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                 uint16_t nLength) {
  return anything_null(pOut, pId) ? uint16_t{0} : decode_gsm(pOut, nMax, pId, nLength);
}

uint16_t CODE_utAlphaId80ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                uint16_t nLength) {
  return anything_null(pOut, pId) ? uint16_t{0} : decode_80(pOut, nMax, pId, nLength);
}

uint16_t CODE_utAlphaId81ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                uint16_t nLength) {
  return anything_null(pOut, pId) ? uint16_t{0} : decode_81(pOut, nMax, pId, nLength);
}

uint16_t CODE_utAlphaId82ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                uint16_t nLength) {
  return anything_null(pOut, pId) ? uint16_t{0} : decode_82(pOut, nMax, pId, nLength);
}

uint16_t CODE_mapEGsmToUcs2(uint8_t ucCode, uint8_t ucNext, uint16_t* pOut, uint16_t* pUsed) {
  if (anything_null(pOut, pUsed)) return 0;
  const Mapped mapped = map_code(ucCode, ucNext);
  *pOut = mapped.character;
  *pUsed = mapped.used;
  return mapped.used;
}

void CODE_mapEGsmToUcs2_EXTENDED_ALPHABET(uint8_t ucCode, uint8_t ucNext, uint16_t* pOut,
                                          uint16_t* pUsed, int* pResult) {
  static_cast<void>(ucCode);  // always an escape
  if (anything_null(pOut, pUsed) || pResult == nullptr) return;
  const Mapped mapped = map_escape(ucNext);
  *pOut = mapped.character;
  *pUsed = mapped.used;
  *pResult = mapped.used;
}
