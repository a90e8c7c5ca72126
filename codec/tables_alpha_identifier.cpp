// The tables that decode the GSM characters of a SIM alpha identifier (ETSI TS 102 221, Annex A),
// whatever the language.
#include "codec/standard_alphabet.h"

namespace {

using qalt::Alphabet;

constexpr uint16_t kSpace = 0x0020;

// Square brackets stand where the standard has capitals with diaeresis and tilde; the escape's own
// cell is never consulted.
constexpr CodecPair kDifferences[] = {{0x5B, 0x005B}, {0x5D, 0x005D}, {qalt::kEscape, kSpace}};
constexpr Alphabet kAlphabet = qalt::with(qalt::kStandardAlphabet, kDifferences);

// No page break, and a second escape is a space.
constexpr CodecPair kExtensionDifferences[] = {{0x0A, 0}, {qalt::kEscape, kSpace}};
constexpr Alphabet kExtension =
    qalt::with(qalt::indexed(qalt::kStandardExtension, 0), kExtensionDifferences);

// What fits a byte, and what does not: the two halves of the alphabet.
constexpr auto kBytes = [] {
  std::array<uint8_t, 128> bytes{};
  for (size_t code = 0; code < bytes.size(); ++code) {
    if (kAlphabet[code] < 0x100) bytes[code] = static_cast<uint8_t>(kAlphabet[code]);
  }
  return bytes;
}();
constexpr auto kGreek = [] {
  std::array<uint16_t, 11> greek{};
  for (size_t i = 0; i < greek.size(); ++i) {
    if (kAlphabet[0x10 + i] >= 0x100) greek[i] = kAlphabet[0x10 + i];
  }
  return greek;
}();

}  // namespace

constinit const uint8_t GsmToUcs2[128] = {QALT_128(kBytes, 0)};
constinit const uint16_t GsmGclToUcs2[11] = {QALT_10(kGreek, 0), QALT_1(kGreek, 10)};
constinit const uint16_t ExtendedGsmToUcs2[128] = {QALT_128(kExtension, 0)};
