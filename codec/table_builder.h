// table_builder.h - derives the character tables from the alphabets of the standard, at compile
// time: a table is written out once, its variants by their differences, its inverses not at all.
#ifndef QALT_CODEC_TABLE_BUILDER_H_
#define QALT_CODEC_TABLE_BUILDER_H_

#include <array>
#include <cstddef>
#include <cstdint>

#include "qalt_at/text_tables.h"

namespace qalt {

constexpr uint8_t kEscape = 0x1B;
constexpr uint8_t kNoCode = 0x20;           // in a direct encode table
constexpr uint16_t kUndefined = 0x001B;     // in an indexed decode table of an extension
constexpr uint32_t kFirstPairPoint = 0xFF;  // code points from here on are encoded by pairs

using Alphabet = std::array<uint16_t, 128>;
using DirectCodes = std::array<uint8_t, 256>;
template <size_t N>
using Pairs = std::array<CodecPair, N>;

// Not constexpr: reaching it while a table is computed stops the compilation.
void table_has_another_size();

// The table with some cells (code, code point) put in the place of its own.
template <size_t N>
constexpr Alphabet with(Alphabet table, const CodecPair (&differences)[N]) {
  for (const CodecPair& cell : differences) table[cell.key] = static_cast<uint16_t>(cell.value);
  return table;
}

// An indexed decode table that holds the given cells and `filler` everywhere else.
template <size_t N>
constexpr Alphabet indexed(const Pairs<N>& cells, uint16_t filler) {
  Alphabet table{};
  for (uint16_t& entry : table) entry = filler;
  for (const CodecPair& cell : cells) table[cell.key] = static_cast<uint16_t>(cell.value);
  return table;
}

// The direct encode table of an alphabet.
constexpr DirectCodes direct_codes(const Alphabet& alphabet) {
  DirectCodes codes{};
  for (uint8_t& code : codes) code = kNoCode;
  for (size_t code = 0; code < alphabet.size(); ++code) {
    if (alphabet[code] < codes.size()) codes[alphabet[code]] = static_cast<uint8_t>(code);
  }
  return codes;
}

// The N pairs (code point, code) of an alphabet for its code points from U+00FF up, by code.
template <size_t N>
constexpr Pairs<N> wide_pairs(const Alphabet& alphabet) {
  Pairs<N> pairs{};
  size_t count = 0;
  for (uint32_t code = 0; code < alphabet.size(); ++code) {
    if (alphabet[code] >= kFirstPairPoint) pairs[count++] = {alphabet[code], code};
  }
  if (count != N) table_has_another_size();
  return pairs;
}

// The M pairs (code point, code) of N cells (code, code point), those of the cells that `wanted`
// accepts, in the same order.
template <size_t M, size_t N, typename Wanted>
constexpr Pairs<M> inverse(const Pairs<N>& cells, Wanted wanted) {
  Pairs<M> pairs{};
  size_t count = 0;
  for (const CodecPair& cell : cells) {
    if (wanted(cell)) pairs[count++] = {cell.value, cell.key};
  }
  if (count != M) table_has_another_size();
  return pairs;
}

}  // namespace qalt

// The elements of a computed table as an initializer list: the exported tables are plain arrays.
#define QALT_1(table, i) (table)[i]
#define QALT_2(table, i) QALT_1(table, i), QALT_1(table, (i) + 1)
#define QALT_4(table, i) QALT_2(table, i), QALT_2(table, (i) + 2)
#define QALT_8(table, i) QALT_4(table, i), QALT_4(table, (i) + 4)
#define QALT_16(table, i) QALT_8(table, i), QALT_8(table, (i) + 8)
#define QALT_32(table, i) QALT_16(table, i), QALT_16(table, (i) + 16)
#define QALT_64(table, i) QALT_32(table, i), QALT_32(table, (i) + 32)
#define QALT_128(table, i) QALT_64(table, i), QALT_64(table, (i) + 64)
#define QALT_256(table, i) QALT_128(table, i), QALT_128(table, (i) + 128)
#define QALT_10(table, i) QALT_8(table, i), QALT_2(table, (i) + 8)

#endif  // QALT_CODEC_TABLE_BUILDER_H_
