#include "sim/text.h"

#include <algorithm>
#include <array>
#include <cstdint>
#include <stdexcept>

#include "sim/gsm_alphabet.h"

namespace qalt::sim {
namespace {

constexpr std::array<std::string_view, 4> kCharsetNames = {"IRA", "GSM", "UCS2", "UCS2_0X81"};

std::string ucs2_bytes(const Text& text) {
  std::string bytes;
  bytes.reserve(text.size() * 2);
  for (char16_t c : text) {
    bytes += char(c >> 8);
    bytes += char(c & 0xFF);
  }
  return bytes;
}

Text text_of_ucs2(std::string_view bytes) {
  Text text;
  for (size_t i = 0; i + 1 < bytes.size(); i += 2) {
    text += static_cast<char16_t>(uint8_t(bytes[i]) << 8 | uint8_t(bytes[i + 1]));
  }
  return text;
}

// The codings 0x81 and 0x82: characters up to U+007F as codes of the default alphabet, the others
// as an offset into 128 characters from `base`. None where a character fits neither.
std::optional<std::string> offset_body(const Text& text, unsigned base) {
  std::string body;
  for (char16_t c : text) {
    if (c >= 0x80 && c >= base && c - base < 0x80) {
      body += char(0x80 | (c - base));
      continue;
    }
    const std::string codes = c < 0x80 ? gsm_codes(c) : std::string();
    if (codes.empty()) return std::nullopt;
    body += codes;
  }
  return body;
}

std::optional<std::string> form_81(const Text& text) {
  const auto wide = std::find_if(text.begin(), text.end(), [](char16_t c) { return c >= 0x80; });
  if (wide == text.end() || text.size() > 255 || (*wide >> 7) > 255) return std::nullopt;
  const auto body = offset_body(text, *wide & ~0x7Fu);
  if (!body) return std::nullopt;
  return std::string{char(0x81), char(text.size()), char(*wide >> 7)} + *body;
}

std::optional<std::string> form_82(const Text& text) {
  char16_t base = 0xFFFF;
  for (char16_t c : text) {
    if (c >= 0x80) base = std::min(base, c);
  }
  if (text.size() > 255) return std::nullopt;
  const auto body = offset_body(text, base);
  if (!body) return std::nullopt;
  return std::string{char(0x82), char(text.size()), char(base >> 8), char(base & 0xFF)} + *body;
}

// The characters of the codings 0x81 and 0x82, exactly `count` of them; none if the bytes hold
// another number, which is how a UCS2 text that begins with U+81xx is told from a tag.
std::optional<Text> offset_text(std::string_view body, size_t count, unsigned base) {
  Text text;
  for (size_t i = 0; i < body.size();) {
    const uint8_t byte = static_cast<uint8_t>(body[i]);
    if (byte & 0x80) {
      text += static_cast<char16_t>(base + (byte & 0x7F));
      ++i;
      continue;
    }
    const size_t length = byte == 0x1B ? 2 : 1;
    const auto character = gsm_text(body.substr(i, length));
    if (!character) return std::nullopt;
    text += *character;
    i += length;
  }
  if (text.size() != count) return std::nullopt;
  return text;
}

std::optional<Text> identifier_text(std::string_view bytes) {
  const auto byte = [&](size_t i) { return static_cast<uint8_t>(bytes[i]); };
  if (bytes.empty()) return Text();
  switch (byte(0)) {
    case 0x80:
      if (bytes.size() % 2 == 0) return std::nullopt;
      return text_of_ucs2(bytes.substr(1));
    case 0x81:
      if (bytes.size() < 3) return std::nullopt;
      return offset_text(bytes.substr(3), byte(1), byte(2) * 0x80u);
    case 0x82:
      if (bytes.size() < 4) return std::nullopt;
      return offset_text(bytes.substr(4), byte(1), byte(2) << 8 | byte(3));
    default:
      return gsm_text(bytes);
  }
}

std::optional<std::string> gsm_bytes(const Text& text) {
  std::string bytes;
  for (char16_t c : text) {
    const std::string codes = gsm_codes(c);
    if (codes.empty()) return std::nullopt;
    bytes += codes;
  }
  return bytes;
}

}  // namespace

std::string_view charset_name(Charset charset) {
  return kCharsetNames[size_t(charset)];
}

std::optional<Charset> charset_named(std::string_view name) {
  const auto found = std::find(kCharsetNames.begin(), kCharsetNames.end(), name);
  if (found == kCharsetNames.end()) return std::nullopt;
  return Charset(found - kCharsetNames.begin());
}

std::string encode(Charset charset, const Text& text) {
  std::string wire;
  switch (charset) {
    case Charset::kIra:
      for (char16_t c : text) wire += c < 0x80 ? char(c) : '?';
      break;
    case Charset::kGsm:
      for (char16_t c : text) {
        const std::string codes = gsm_codes(c);
        wire += codes.empty() ? "?" : codes;
      }
      break;
    case Charset::kUcs2With81:
      if (const auto form = form_81(text)) return to_hex(*form);
      [[fallthrough]];
    case Charset::kUcs2:
      wire = to_hex(ucs2_bytes(text));
      break;
  }
  return wire;
}

std::optional<Text> decode(Charset charset, std::string_view wire) {
  if (charset == Charset::kGsm) return gsm_text(wire);
  if (charset == Charset::kIra) {
    if (std::any_of(wire.begin(), wire.end(), [](char c) { return uint8_t(c) > 0x7F; })) {
      return std::nullopt;
    }
    return Text(wire.begin(), wire.end());
  }
  const auto bytes = from_hex(wire);
  if (!bytes) return std::nullopt;
  if (charset == Charset::kUcs2With81 && bytes->substr(0, 1) == "\x81") {
    if (auto text = identifier_text(*bytes)) return text;
  }
  if (bytes->size() % 2 != 0) return std::nullopt;
  return text_of_ucs2(*bytes);
}

std::string encode_item(const Text& text) {
  if (const auto codes = gsm_bytes(text)) return to_hex(*codes);
  std::string shortest = "\x80" + ucs2_bytes(text);
  for (const auto& form : {form_81(text), form_82(text)}) {
    if (form && form->size() <= shortest.size()) shortest = *form;
  }
  return to_hex(shortest);
}

std::optional<Text> decode_item(std::string_view wire) {
  const auto bytes = from_hex(wire);
  return bytes ? identifier_text(*bytes) : std::nullopt;
}

std::string to_hex(std::string_view bytes) {
  constexpr std::string_view kDigits = "0123456789ABCDEF";
  std::string digits;
  digits.reserve(bytes.size() * 2);
  for (char byte : bytes) {
    digits += kDigits[uint8_t(byte) >> 4];
    digits += kDigits[uint8_t(byte) & 0xF];
  }
  return digits;
}

std::optional<std::string> from_hex(std::string_view digits) {
  const auto value = [](char c) -> int {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    return -1;
  };
  if (digits.size() % 2 != 0) return std::nullopt;
  std::string bytes;
  for (size_t i = 0; i < digits.size(); i += 2) {
    const int high = value(digits[i]);
    const int low = value(digits[i + 1]);
    if (high < 0 || low < 0) return std::nullopt;
    bytes += char(high << 4 | low);
  }
  return bytes;
}

Text from_utf8(std::string_view utf8) {
  Text text;
  for (size_t i = 0; i < utf8.size();) {
    const uint8_t lead = static_cast<uint8_t>(utf8[i]);
    const size_t length = lead < 0x80 ? 1 : lead >> 5 == 6 ? 2 : lead >> 4 == 14 ? 3 : 4;
    if ((length == 4 && lead >> 3 != 30) || i + length > utf8.size()) {
      throw std::invalid_argument("malformed UTF-8");
    }
    uint32_t code = length == 1 ? lead : lead & (0x7Fu >> length);
    for (size_t k = 1; k < length; ++k) {
      const uint8_t next = static_cast<uint8_t>(utf8[i + k]);
      if (next >> 6 != 2) throw std::invalid_argument("malformed UTF-8");
      code = code << 6 | (next & 0x3F);
    }
    constexpr std::array<uint32_t, 5> kSmallest = {0, 0, 0x80, 0x800, 0x10000};
    if (code < kSmallest[length] || code > 0x10FFFF || (code >= 0xD800 && code < 0xE000)) {
      throw std::invalid_argument("malformed UTF-8");
    }
    if (code >= 0x10000) {
      text += static_cast<char16_t>(0xD800 + ((code - 0x10000) >> 10));
      code = 0xDC00 + ((code - 0x10000) & 0x3FF);
    }
    text += static_cast<char16_t>(code);
    i += length;
  }
  return text;
}

std::string to_utf8(const Text& text) {
  std::string utf8;
  for (size_t i = 0; i < text.size(); ++i) {
    uint32_t code = text[i];
    if (code >= 0xD800 && code < 0xE000) {
      const bool paired = code < 0xDC00 && i + 1 < text.size() && text[i + 1] >> 10 == 0x37;
      code = paired ? 0x10000 + ((code - 0xD800) << 10) + (text[++i] - 0xDC00u) : 0xFFFD;
    }
    if (code < 0x80) {
      utf8 += char(code);
      continue;
    }
    const int more = code < 0x800 ? 1 : code < 0x10000 ? 2 : 3;
    utf8 += char((0xF0u << (3 - more) & 0xFF) | code >> (6 * more));
    for (int k = more - 1; k >= 0; --k) utf8 += char(0x80 | (code >> (6 * k) & 0x3F));
  }
  return utf8;
}

}  // namespace qalt::sim
