// The tables of the default language (3GPP TS 23.038, 6.2.1).
#include "codec/language_tables.h"
#include "codec/standard_alphabet.h"

namespace {

using qalt::Alphabet;

// 0x08 is the capital O with grave in this library, in both directions. The escape's cell is never
// decoded; encoded, a no-break space takes its code.
constexpr CodecPair kDifferences[] = {{0x08, 0x00D2}};
constexpr CodecPair kDecodeDifferences[] = {{qalt::kEscape, 0x0020}};
constexpr Alphabet kAlphabet = qalt::with(qalt::kStandardAlphabet, kDifferences);
constexpr Alphabet kDecodeAlphabet = qalt::with(kAlphabet, kDecodeDifferences);
constexpr auto kDirect = qalt::direct_codes(kAlphabet);
constexpr auto kWide = qalt::wide_pairs<10>(kAlphabet);

// The decoder gives the euro sign without a look-up: its cell holds the currency sign.
constexpr CodecPair kExtensionDifferences[] = {{0x65, 0x00A4}};
constexpr Alphabet kExtension =
    qalt::with(qalt::indexed(qalt::kStandardExtension, qalt::kUndefined), kExtensionDifferences);
constexpr auto kExtensionPairs =
    qalt::inverse<10>(qalt::kStandardExtension, [](const CodecPair&) { return true; });

}  // namespace

constinit const qalt::EncodeMap qalt::kDefaultEncodeMap =
    qalt::encode_map(kDirect, kWide, kExtensionPairs);

constinit const uint16_t GsmToUcs2_DefaultAlphabet[128] = {QALT_128(kDecodeAlphabet, 0)};
constinit const uint16_t GsmToUcs2_ExtendAlphabet[128] = {QALT_128(kExtension, 0)};
constinit const uint8_t Ucs2_To_Gsm7_Alphabet_ASC[256] = {QALT_256(kDirect, 0)};
constinit const CodecPair Ucs2_To_Gsm7_Alphabet_UCS2[10] = {QALT_10(kWide, 0)};
constinit const CodecPair Ucs2_To_Gsm7_Extend[10] = {QALT_10(kExtensionPairs, 0)};
