// A contact's texts: encoded into and decoded from buffers of every size. Whole or refused, and
// what was encoded comes back.
#include <optional>

#include "qalt_at/text.h"
#include "tests/fuzz/property.h"

namespace {

// Converts into every size below `sizes`: refused up to some size, with the buffer as it was, and
// from there on the same text. None when no size did.
template <typename Character, typename Convert>
std::optional<std::basic_string<Character>> converted(size_t sizes, Convert convert) {
  std::optional<std::basic_string<Character>> text;
  for (size_t size = 0; size < sizes; ++size) {
    fuzz::Guarded<Character> out(size);
    const int result = convert(out.data(), static_cast<int>(size));
    FUZZ_CHECK(result == 0 || (result == 1 && !text && out.untouched()));
    if (result != 0) continue;
    FUZZ_CHECK(out.terminated() && (!text || *text == out.data()));
    text = out.data();
  }
  return text;
}

std::optional<std::wstring> decoded(const std::string& hex, int vendor) {
  return converted<wchar_t>(hex.size() / 2 + 3, [&](wchar_t* out, int size) {
    return QL_decodePBItem(hex.c_str(), out, size, vendor);
  });
}

void check_encoding(const std::wstring& text, int vendor) {
  const auto hex = converted<char>(4 * text.size() + 9, [&](char* out, int size) {
    int pure = -1;
    const int result = QL_encodePBItem(text.c_str(), out, size, &pure, vendor);
    FUZZ_CHECK(pure == 0 || pure == 1);
    return result;
  });
  if (!hex) return;
  FUZZ_CHECK(hex->find_first_not_of("0123456789ABCDEF") == hex->npos);
  int size = -1;
  FUZZ_CHECK(QL_preDecodePBItem(hex->c_str(), &size) == 0);
  const auto back = decoded(*hex, vendor != 0);
  // The forms that carry every character as it is; what GSM codes do not give back stands apart.
  const bool ucs2 = vendor != 0 ? hex->compare(0, 2, "80") == 0 : is808182CodeSupport == 0;
  if (!hex->empty() && back && ucs2 && text.find(L'\xFFFF') == text.npos) FUZZ_CHECK(*back == text);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  const uint8_t choice = input.byte();
  QL_808182CodeSupportSet(choice & 1);
  const int vendor = choice >> 1 & 3;
  std::wstring text;
  if ((choice & 0x80) != 0) {
    // Above a base, as names in one script are.
    const auto base = static_cast<wchar_t>(input.byte() << 7);
    while (input.size() != 0 && text.size() < 170) {
      const uint8_t c = input.byte();
      const wchar_t character = c < 0x80 ? c : base + (c & 0x7F);
      if (character != 0) text += character;
    }
  } else {
    decoded(fuzz::Input(input).text().substr(0, 300), vendor);
    text = input.wide(100);
  }
  check_encoding(text, vendor);
  return 0;
}
