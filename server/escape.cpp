#include "server/escape.h"

#include <array>
#include <cstdint>

#include "sim/at_line.h"
#include "sim/text.h"

namespace qalt::server {
namespace {

constexpr std::array<std::string_view, 4> kSecretCommands = {
    "+CPIN=", "+CPWD=", "+CLCK=", "^CPIN="};

}  // namespace

std::optional<std::string> unescaped(std::string_view text) {
  std::string bytes;
  for (size_t i = 0; i < text.size(); ++i) {
    if (text[i] != '\\') {
      bytes += text[i];
      continue;
    }
    if (++i == text.size()) return std::nullopt;
    const size_t letter = sim::kEscapeLetters.find(text[i]);
    if (letter != sim::kEscapeLetters.npos) {
      bytes += sim::kEscapeMeanings[letter];
      continue;
    }
    const auto byte =
        text[i] == 'x' && text.size() - i > 2 ? sim::from_hex(text.substr(i + 1, 2)) : std::nullopt;
    if (!byte) return std::nullopt;
    bytes += *byte;
    i += 2;
  }
  return bytes;
}

std::string without_secrets(std::string_view text) {
  std::string result(text);
  for (size_t i = 0; i < result.size(); ++i) {
    for (std::string_view name : kSecretCommands) {
      if (!at::starts_with_nocase(std::string_view(result).substr(i), name)) continue;
      for (i += name.size(); i < result.size() && result[i] != ';' && result[i] != '\r'; ++i) {
        if (result[i] >= '0' && result[i] <= '9') result[i] = '*';
      }
      break;
    }
  }
  return result;
}

}  // namespace qalt::server
