#include "sim/gsm_alphabet.h"

#include <array>
#include <cstdint>

namespace qalt::sim {
namespace {

constexpr uint8_t kEscape = 0x1B;

// clang-format off
constexpr std::u16string_view kDefault =
    u"@£$¥èéùìòÇ\nØø\rÅå"
    u"Δ_ΦΓΛΩΠΨΣΘΞ\x1BÆæßÉ"
    u" !\"#¤%&'()*+,-./"
    u"0123456789:;<=>?"
    u"¡ABCDEFGHIJKLMNO"
    u"PQRSTUVWXYZÄÖÑÜ§"
    u"¿abcdefghijklmno"
    u"pqrstuvwxyzäöñüà";

struct Extension { uint8_t code; char16_t character; };
constexpr std::array<Extension, 10> kExtensions = {{
    {0x0A, u'\f'},
    {0x14, u'^'},
    {0x28, u'{'},
    {0x29, u'}'},
    {0x2F, u'\\'},
    {0x3C, u'['},
    {0x3D, u'~'},
    {0x3E, u']'},
    {0x40, u'|'},
    {0x65, u'€'},
}};
// clang-format on
static_assert(kDefault.size() == 128);

}  // namespace

std::string gsm_codes(char16_t character) {
  for (const Extension& row : kExtensions) {
    if (row.character == character) return {char(kEscape), char(row.code)};
  }
  const size_t code = kDefault.find(character);
  if (code == kDefault.npos || code == kEscape) return {};
  return std::string(1, char(code));
}

std::optional<std::u16string> gsm_text(std::string_view codes) {
  std::u16string text;
  text.reserve(codes.size());
  for (size_t i = 0; i < codes.size(); ++i) {
    uint8_t code = static_cast<uint8_t>(codes[i]);
    if (code > 0x7F) return std::nullopt;
    if (code != kEscape) {
      text += kDefault[code];
      continue;
    }
    if (++i == codes.size()) return std::nullopt;
    code = static_cast<uint8_t>(codes[i]);
    if (code > 0x7F || code == kEscape) return std::nullopt;
    char16_t character = kDefault[code];
    for (const Extension& row : kExtensions) {
      if (row.code == code) character = row.character;
    }
    text += character;
  }
  return text;
}

}  // namespace qalt::sim
