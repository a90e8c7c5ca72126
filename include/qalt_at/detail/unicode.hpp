/*
 * unicode.hpp - UTF-8 outside, wide text inside (32-bit characters, as text_items.h takes it).
 */
#ifndef QALT_AT_DETAIL_UNICODE_HPP
#define QALT_AT_DETAIL_UNICODE_HPP

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace qalt {
namespace detail {

constexpr uint32_t kReplacement = 0xFFFD;
constexpr uint32_t kLastUcs2 = 0xFFFF;

inline bool is_surrogate(uint32_t code) {
  return code >= 0xD800 && code <= 0xDFFF;
}

inline void append_utf8(std::string& utf8, uint32_t code) {
  if (code < 0x80) {
    utf8 += static_cast<char>(code);
    return;
  }
  const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
  utf8 += static_cast<char>((0xF0u << (3 - more) & 0xFFu) | code >> 6 * more);
  for (int k = more - 1; k >= 0; --k) utf8 += static_cast<char>(0x80u | (code >> 6 * k & 0x3Fu));
}

/* The character at `position`, which moves behind it; none when it is malformed: an overlong form,
 * a surrogate, a value above U+10FFFF, a cut sequence. */
inline std::optional<uint32_t> next_code_point(std::string_view utf8, size_t& position) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(utf8[i]); };
  const uint8_t lead = byte(position);
  const size_t length = lead < 0x80         ? 1
                        : lead >> 5 == 0x06 ? 2
                        : lead >> 4 == 0x0E ? 3
                        : lead >> 3 == 0x1E ? 4
                                            : 0;
  if (length == 0 || utf8.size() - position < length) return std::nullopt;
  uint32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
  for (size_t k = 1; k < length; ++k) {
    if (byte(position + k) >> 6 != 2) return std::nullopt;
    code = code << 6 | (byte(position + k) & 0x3Fu);
  }
  constexpr uint32_t kSmallest[] = {0, 0, 0x80, 0x800, 0x10000};
  if (code < kSmallest[length] || code > 0x10FFFF || is_surrogate(code)) return std::nullopt;
  position += length;
  return code;
}

/* The characters of a UTF-8 text, none when it is malformed. */
inline std::optional<std::u32string> code_points(std::string_view utf8) {
  std::u32string text;
  for (size_t position = 0; position < utf8.size();) {
    const std::optional<uint32_t> code = next_code_point(utf8, position);
    if (!code) return std::nullopt;
    text += static_cast<char32_t>(*code);
  }
  return text;
}

/* UTF-8 of UCS2 characters. Two surrogates that belong together are one character, as modems that
 * take UTF-16 send them; a single one becomes U+FFFD. */
inline std::string utf8_of(std::wstring_view text) {
  std::string utf8;
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t code = static_cast<uint32_t>(text[i]);
    if (is_surrogate(code)) {
      const uint32_t low = i + 1 < text.size() ? static_cast<uint32_t>(text[i + 1]) : 0;
      const bool paired = code < 0xDC00 && low >= 0xDC00 && low <= 0xDFFF;
      code = paired ? 0x10000 + ((code - 0xD800) << 10) + (low - 0xDC00) : kReplacement;
      i += paired;
    }
    append_utf8(utf8, code);
  }
  return utf8;
}

} /* namespace detail */
} /* namespace qalt */

#endif /* QALT_AT_DETAIL_UNICODE_HPP */
