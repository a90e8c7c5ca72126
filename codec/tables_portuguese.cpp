// The tables of the Portuguese language (3GPP TS 23.038, A.2.3 and A.3.3).
#include "codec/language_tables.h"

namespace {

using qalt::Alphabet;

// clang-format off

// TS 23.038, A.3.3: Portuguese national language locking shift table; the escape is a blank as a
// character of its own.
constexpr Alphabet kAlphabet = {
    0x0040, 0x00A3, 0x0024, 0x00A5, 0x00EA, 0x00E9, 0x00FA, 0x00ED,  // @ £ $ ¥ ê é ú í
    0x00F3, 0x00E7, 0x000A, 0x00D4, 0x00F4, 0x000D, 0x00C1, 0x00E1,  // ó ç LF Ô ô CR Á á
    0x0394, 0x005F, 0x00AA, 0x00C7, 0x00C0, 0x221E, 0x005E, 0x005C,  // Δ _ ª Ç À ∞ ^ '\'
    0x20AC, 0x00D3, 0x007C, 0x00A0, 0x00C2, 0x00E2, 0x00CA, 0x00C9,  // € Ó | ESC Â â Ê É
    0x0020, 0x0021, 0x0022, 0x0023, 0x00BA, 0x0025, 0x0026, 0x0027,  // SP ! " # º % & '
    0x0028, 0x0029, 0x002A, 0x002B, 0x002C, 0x002D, 0x002E, 0x002F,  // ( ) * + , - . /
    0x0030, 0x0031, 0x0032, 0x0033, 0x0034, 0x0035, 0x0036, 0x0037,  // 0 1 2 3 4 5 6 7
    0x0038, 0x0039, 0x003A, 0x003B, 0x003C, 0x003D, 0x003E, 0x003F,  // 8 9 : ; < = > ?
    0x00CD, 0x0041, 0x0042, 0x0043, 0x0044, 0x0045, 0x0046, 0x0047,  // Í A B C D E F G
    0x0048, 0x0049, 0x004A, 0x004B, 0x004C, 0x004D, 0x004E, 0x004F,  // H I J K L M N O
    0x0050, 0x0051, 0x0052, 0x0053, 0x0054, 0x0055, 0x0056, 0x0057,  // P Q R S T U V W
    0x0058, 0x0059, 0x005A, 0x00C3, 0x00D5, 0x00DA, 0x00DC, 0x00A7,  // X Y Z Ã Õ Ú Ü §
    0x007E, 0x0061, 0x0062, 0x0063, 0x0064, 0x0065, 0x0066, 0x0067,  // ~ a b c d e f g
    0x0068, 0x0069, 0x006A, 0x006B, 0x006C, 0x006D, 0x006E, 0x006F,  // h i j k l m n o
    0x0070, 0x0071, 0x0072, 0x0073, 0x0074, 0x0075, 0x0076, 0x0077,  // p q r s t u v w
    0x0078, 0x0079, 0x007A, 0x00E3, 0x00F5, 0x0060, 0x00FC, 0x00E0,  // x y z ã õ ` ü à
};

// TS 23.038, A.2.3: Portuguese national language single shift table (code after the escape, code
// point), without the second escape.
constexpr qalt::Pairs<38> kSingleShift = {{
    {0x05, 0x00EA}, {0x09, 0x00E7}, {0x0A, 0x000C}, {0x0B, 0x00D4}, {0x0C, 0x00F4},  // ê ç FF Ô ô
    {0x0D, 0x000D}, {0x0E, 0x00C1}, {0x0F, 0x00E1}, {0x12, 0x03A6}, {0x13, 0x0393},  // CR2 Á á Φ Γ
    {0x14, 0x005E}, {0x15, 0x03A9}, {0x16, 0x03A0}, {0x17, 0x03A8}, {0x18, 0x03A3},  // ^ Ω Π Ψ Σ
    {0x19, 0x0398}, {0x1F, 0x00CA}, {0x28, 0x007B}, {0x29, 0x007D}, {0x2F, 0x005C},  // Θ Ê { } '\'
    {0x3C, 0x005B}, {0x3D, 0x007E}, {0x3E, 0x005D}, {0x40, 0x007C}, {0x41, 0x00C0},  // [ ~ ] | À
    {0x49, 0x00CD}, {0x4F, 0x00D3}, {0x55, 0x00DA}, {0x5B, 0x00C3}, {0x5C, 0x00D5},  // Í Ó Ú Ã Õ
    {0x61, 0x00C2}, {0x65, 0x20AC}, {0x69, 0x00ED}, {0x6F, 0x00F3}, {0x75, 0x00FA},  // Â € í ó ú
    {0x7B, 0x00E3}, {0x7C, 0x00F5}, {0x7F, 0x00E2},                                  // ã õ â
}};

// clang-format on

// The degree sign is written as the ordinal indicator, which looks like it.
constexpr auto kDirect = [] {
  auto codes = qalt::direct_codes(kAlphabet);
  codes[0x00B0] = 0x24;
  return codes;
}();
constexpr auto kWide = qalt::wide_pairs<3>(kAlphabet);

// Decoded, the page break is a line feed; 0x1A, undefined in the standard, is a vertical bar.
constexpr CodecPair kExtensionDifferences[] = {{0x0A, 0x000A}, {0x1A, 0x007C}};
constexpr Alphabet kExtension =
    qalt::with(qalt::indexed(kSingleShift, qalt::kUndefined), kExtensionDifferences);
constexpr auto kExtensionPairs = qalt::inverse<30>(
    kSingleShift, [](const CodecPair& cell) { return cell.value < qalt::kFirstPairPoint; });
constexpr auto kWideExtensionPairs = qalt::inverse<8>(
    kSingleShift, [](const CodecPair& cell) { return cell.value >= qalt::kFirstPairPoint; });

}  // namespace

constinit const qalt::EncodeMap qalt::kPortugueseEncodeMap =
    qalt::encode_map(kDirect, kWide, kExtensionPairs, kWideExtensionPairs);

constinit const uint16_t Portuguese_Gsm7_To_Ucs2_Alphabet[128] = {QALT_128(kAlphabet, 0)};
constinit const uint16_t Portuguese_Gsm7_To_Ucs2_Extend[128] = {QALT_128(kExtension, 0)};
constinit const uint8_t Portuguese_Ucs2_To_Gsm7_Alphabet_ASC[256] = {QALT_256(kDirect, 0)};
constinit const CodecPair Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2[3] = {QALT_2(kWide, 0),
                                                                      QALT_1(kWide, 2)};
constinit const CodecPair Portuguese_Ucs2_To_Gsm7_Extend_ASC[30] = {
    QALT_16(kExtensionPairs, 0), QALT_8(kExtensionPairs, 16), QALT_4(kExtensionPairs, 24),
    QALT_2(kExtensionPairs, 28)};
constinit const CodecPair Portuguese_Ucs2_To_Gsm7_Extend_UCS2[8] = {QALT_8(kWideExtensionPairs, 0)};
