#include "tests/simulation/handset/character_sets.h"

#include <array>

#include "tests/simulation/handset/command_line.h"

namespace qalt::simulation {
namespace {

using Text = std::optional<std::u16string>;

// TS 23.038 6.2.1. Behind code 1B is one of the extension table, 6.2.1.1.
constexpr std::u16string_view kDefaultAlphabet =
    u"@£$¥èéùìòÇ\nØø\rÅå"
    u"Δ_ΦΓΛΩΠΨΣΘΞ\u001bÆæßÉ"
    u" !\"#¤%&'()*+,-./"
    u"0123456789:;<=>?"
    u"¡ABCDEFGHIJKLMNO"
    u"PQRSTUVWXYZÄÖÑÜ§"
    u"¿abcdefghijklmno"
    u"pqrstuvwxyzäöñüà";
static_assert(kDefaultAlphabet.size() == 128);

constexpr char kEscape = 0x1b;
struct Extended {
  char code;
  char16_t character;
};
constexpr std::array<Extended, 10> kExtension = {{
    {0x0a, u'\f'},
    {0x14, u'^'},
    {0x28, u'{'},
    {0x29, u'}'},
    {0x2f, u'\\'},
    {0x3c, u'['},
    {0x3d, u'~'},
    {0x3e, u']'},
    {0x40, u'|'},
    {0x65, u'€'},
}};

unsigned byte_at(std::string_view bytes, size_t at) {
  return static_cast<unsigned char>(bytes[at]);
}

std::optional<std::string> septets_of(char16_t character) {
  const size_t code = kDefaultAlphabet.find(character);
  if (code != std::u16string_view::npos && code != kEscape)
    return std::string(1, static_cast<char>(code));
  for (const Extended& row : kExtension)
    if (row.character == character) return std::string{kEscape, row.code};
  return {};
}

std::string to_septets(std::u16string_view text) {
  std::string bytes;
  for (char16_t c : text) bytes += septets_of(c).value_or("?");
  return bytes;
}

Text from_septets(std::string_view bytes) {
  std::u16string text;
  bool extended = false;
  for (char c : bytes) {
    if (static_cast<unsigned char>(c) > 127) return {};
    // 6.2.1.1: a code that the extension table has not stands for that of the default alphabet.
    char16_t character = kDefaultAlphabet[static_cast<unsigned char>(c)];
    for (const Extended& row : kExtension)
      if (extended && row.code == c) character = row.character;
    extended = c == kEscape && !extended;
    if (!extended) text += character;
  }
  return text;
}

std::string to_single_bytes(std::u16string_view text, char16_t last) {
  std::string bytes;
  for (char16_t c : text) bytes += c <= last ? static_cast<char>(c) : '?';
  return bytes;
}

Text from_single_bytes(std::string_view bytes, char16_t last) {
  std::u16string text;
  for (char c : bytes) {
    if (static_cast<unsigned char>(c) > last) return {};
    text += static_cast<unsigned char>(c);
  }
  return text;
}

std::string to_big_endian(std::u16string_view text) {
  std::string bytes;
  for (char16_t c : text) (bytes += static_cast<char>(c >> 8)) += static_cast<char>(c & 0xff);
  return bytes;
}

Text from_big_endian(std::string_view bytes) {
  if (bytes.size() % 2 != 0) return {};
  std::u16string text;
  for (size_t i = 0; i < bytes.size(); i += 2)
    text += static_cast<char16_t>(byte_at(bytes, i) << 8 | byte_at(bytes, i + 1));
  return text;
}

// ETSI TS 102 221 Annex A, 81 and 82: a length, a base, then septets and, from 80 on, what is added
// to the base.
Text from_base_form(std::string_view bytes) {
  const bool short_base = byte_at(bytes, 0) == 0x81;
  const size_t header = short_base ? 3 : 4;
  if (bytes.size() < header || bytes.size() != header + byte_at(bytes, 1)) return {};
  const unsigned base =
      short_base ? byte_at(bytes, 2) << 7 : byte_at(bytes, 2) << 8 | byte_at(bytes, 3);
  std::u16string text;
  for (size_t i = header; i < bytes.size(); ++i) {
    const unsigned byte = byte_at(bytes, i);
    text += byte > 127 ? static_cast<char16_t>(base + (byte & 127)) : kDefaultAlphabet[byte];
  }
  return text;
}

Text from_alpha_identifier(std::string_view bytes) {
  if (bytes.empty() || byte_at(bytes, 0) < 0x80) return from_septets(bytes);
  if (byte_at(bytes, 0) == 0x80) return from_big_endian(bytes.substr(1));
  return byte_at(bytes, 0) <= 0x82 ? from_base_form(bytes) : std::nullopt;
}

std::string to_hex(std::string_view bytes, bool upper) {
  std::string digits;
  for (size_t i = 0; i < bytes.size(); ++i) digits += hex_of(byte_at(bytes, i), upper);
  return digits;
}

std::optional<std::string> from_hex(std::string_view digits) {
  std::string bytes;
  for (; !digits.empty(); digits.remove_prefix(2)) {
    const auto byte = byte_of(digits.substr(0, 2));
    if (!byte) return {};
    bytes += static_cast<char>(*byte);
  }
  return bytes;
}

}  // namespace

std::u16string widened(std::string_view text) {
  return {text.begin(), text.end()};
}

std::string alpha_identifier(std::u16string_view text) {
  for (char16_t c : text)
    if (!septets_of(c)) return '\x80' + to_big_endian(text);
  return to_septets(text);
}

std::string encoded(std::u16string_view text, std::string_view set, bool upper_hex) {
  if (set == "GSM") return to_septets(text);
  if (set == "IRA") return to_single_bytes(text, 0x7f);
  if (set == "8859-1") return to_single_bytes(text, 0xff);
  // "HEX" converts nothing: it is what the card has.
  return to_hex(set == "HEX" ? alpha_identifier(text) : to_big_endian(text), upper_hex);
}

Text decoded(std::string_view bytes, std::string_view set) {
  if (set == "GSM") return from_septets(bytes);
  if (set == "IRA") return from_single_bytes(bytes, 0x7f);
  if (set == "8859-1") return from_single_bytes(bytes, 0xff);
  const auto held = from_hex(bytes);
  if (!held) return {};
  return set == "HEX" ? from_alpha_identifier(*held) : from_big_endian(*held);
}

}  // namespace qalt::simulation
