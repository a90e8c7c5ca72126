#include "at/escape.h"

#include <charconv>
#include <cstdint>

namespace qalt::at {
namespace {

constexpr std::string_view kLetters = "rnt\\";
constexpr std::string_view kMeanings = "\r\n\t\\";
constexpr std::string_view kDigits = "0123456789ABCDEF";

}  // namespace

std::string escaped(std::string_view bytes) {
  std::string text;
  text.reserve(bytes.size() + 8);
  for (char byte : bytes) {
    const size_t letter = kMeanings.find(byte);
    if (letter != kMeanings.npos) {
      text += {'\\', kLetters[letter]};
    } else if (byte >= 0x20 && byte < 0x7F) {
      text += byte;
    } else {
      text += {'\\', 'x', kDigits[uint8_t(byte) >> 4], kDigits[uint8_t(byte) & 0xF]};
    }
  }
  return text;
}

std::optional<std::string> unescaped(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    const size_t letter = kLetters.find(text[i]);
    if (letter != kLetters.npos) {
      bytes += kMeanings[letter];
      continue;
    }
    const std::string_view digits = text.substr(i + 1, 2);
    uint8_t byte = 0;
    const char* const end = digits.data() + digits.size();
    if (text[i] != 'x' || digits.size() < 2 ||
        std::from_chars(digits.data(), end, byte, 16).ptr != end) {
      return std::nullopt;
    }
    bytes += char(byte);
    i += 2;
  }
  return bytes;
}

}  // namespace qalt::at
