// The tables of the Spanish language (3GPP TS 23.038, A.2.2). The standard defines no Spanish
// locking shift table: the alphabet is the default one.
#include "codec/language_tables.h"
#include "codec/standard_alphabet.h"

namespace {

using qalt::Alphabet;

// The small c with cedilla in the place of the capital.
constexpr CodecPair kDifferences[] = {{0x09, 0x00E7}};
constexpr Alphabet kAlphabet = qalt::with(qalt::kStandardAlphabet, kDifferences);
constexpr auto kDirect = qalt::direct_codes(kAlphabet);
constexpr auto kWide = qalt::wide_pairs<10>(kAlphabet);

// clang-format off

// TS 23.038, A.2.2: Spanish national language single shift table (code after the escape, code
// point), without the second escape.
constexpr qalt::Pairs<20> kSingleShift = {{
    {0x09, 0x00E7}, {0x0A, 0x000C}, {0x0D, 0x000D}, {0x14, 0x005E}, {0x28, 0x007B},  // ç FF CR2 ^ {
    {0x29, 0x007D}, {0x2F, 0x005C}, {0x3C, 0x005B}, {0x3D, 0x007E}, {0x3E, 0x005D},  // } '\' [ ~ ]
    {0x40, 0x007C}, {0x41, 0x00C1}, {0x49, 0x00CD}, {0x4F, 0x00D3}, {0x55, 0x00DA},  // | Á Í Ó Ú
    {0x61, 0x00E1}, {0x65, 0x20AC}, {0x69, 0x00ED}, {0x6F, 0x00F3}, {0x75, 0x00FA},  // á € í ó ú
}};

// clang-format on

// Encoded without CR2; the encoder writes the euro sign without a look-up, its pair has the
// currency sign as key (never reached: that has a direct code).
constexpr auto kExtensionPairs = [] {
  auto pairs =
      qalt::inverse<19>(kSingleShift, [](const CodecPair& cell) { return cell.key != 0x0D; });
  for (CodecPair& pair : pairs) {
    if (pair.value == 0x65) pair.key = 0x00A4;
  }
  return pairs;
}();

}  // namespace

constinit const qalt::EncodeMap qalt::kSpanishEncodeMap =
    qalt::encode_map(kDirect, kWide, kExtensionPairs);
constinit const Alphabet qalt::kSpanishExtension = qalt::indexed(kSingleShift, qalt::kUndefined);

constinit const uint16_t Spanish_Gsm7_To_Ucs2_Alphabet[128] = {QALT_128(kAlphabet, 0)};
constinit const CodecPair Spanish_Gsm7_To_Ucs2_Extend[20] = {QALT_16(kSingleShift, 0),
                                                             QALT_4(kSingleShift, 16)};
constinit const uint8_t Spanish_Ucs2_To_Gsm7_Alphabet_ASC[256] = {QALT_256(kDirect, 0)};
constinit const CodecPair Spanish_Ucs2_To_Gsm7_Alphabet_UCS2[10] = {QALT_10(kWide, 0)};
constinit const CodecPair Spanish_Ucs2_To_Gsm7_Extend[19] = {
    QALT_16(kExtensionPairs, 0), QALT_2(kExtensionPairs, 16), QALT_1(kExtensionPairs, 18)};
