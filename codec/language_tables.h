// language_tables.h - what the encoder and the decoder look up, one entry a character. Derived from
// the exported tables, most of which are made for searching.
#ifndef QALT_CODEC_LANGUAGE_TABLES_H_
#define QALT_CODEC_LANGUAGE_TABLES_H_

#include "codec/table_builder.h"

namespace qalt {

constexpr uint32_t kEuro = 0x20AC;
constexpr uint8_t kEuroCode = 0x65;  // behind an escape, in every language

// The places of an encode map: Latin-1, capital Greek, two signs, and one for all other characters.
constexpr uint32_t kGreekPlace = 0x100;
constexpr uint32_t kFirstGreek = 0x0390;
constexpr uint32_t kGreekCount = 0x20;
constexpr uint32_t kEuroPlace = kGreekPlace + kGreekCount;
constexpr uint32_t kInfinity = 0x221E;
constexpr uint32_t kInfinityPlace = kEuroPlace + 1;
constexpr uint32_t kOtherPlace = kInfinityPlace + 1;

constexpr uint32_t place_of(uint32_t character) {
  if (character < kGreekPlace) return character;
  if (character - kFirstGreek < kGreekCount) return character - kFirstGreek + kGreekPlace;
  if (character == kEuro) return kEuroPlace;
  return character == kInfinity ? kInfinityPlace : kOtherPlace;
}

// The code at each place, with kEscaped when an escape goes in front of it; else a space.
using EncodeMap = std::array<uint8_t, kOtherPlace + 1>;
constexpr uint8_t kEscaped = 0x80;

// Not constexpr: reaching it while a map is computed stops the compilation.
void character_has_no_place();

constexpr void put_pair(EncodeMap& map, const CodecPair& pair, uint8_t mark) {
  const uint32_t place = place_of(pair.key);
  if (place == kOtherPlace) character_has_no_place();
  if (map[place] == kNoCode) map[place] = static_cast<uint8_t>(pair.value | mark);
}

// What has a code without an escape is written with it.
template <size_t N, size_t... M>
constexpr EncodeMap encode_map(const DirectCodes& direct, const Pairs<N>& wide,
                               const Pairs<M>&... escaped) {
  EncodeMap map{};
  for (uint8_t& code : map) code = kNoCode;
  for (size_t i = 0; i < direct.size(); ++i) map[i] = direct[i];
  for (const CodecPair& pair : wide) put_pair(map, pair, 0);
  const auto put_escaped = [&map](const auto& pairs) {
    for (const CodecPair& pair : pairs) put_pair(map, pair, kEscaped);
  };
  (put_escaped(escaped), ...);
  put_pair(map, {kEuro, kEuroCode}, kEscaped);
  return map;
}

extern const EncodeMap kDefaultEncodeMap;
extern const EncodeMap kSpanishEncodeMap;
extern const EncodeMap kPortugueseEncodeMap;

// Indexed decode, after the escape; the other languages have an exported table of this form.
extern const Alphabet kSpanishExtension;

}  // namespace qalt

#endif  // QALT_CODEC_LANGUAGE_TABLES_H_
