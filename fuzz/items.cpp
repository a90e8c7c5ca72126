// A contact's texts: encoded into and decoded from buffers of every size. Whole or refused, and
// what was encoded comes back.
#include <string>

#include "fuzz/property.h"
#include "qalt_at/text.h"

namespace {

std::string hex_of(const std::wstring& text, size_t size, int vendor, int* result) {
  fuzz::Guarded<char> out(size);
  int pure = -1;
  *result = QL_encodePBItem(text.c_str(), out.data(), static_cast<int>(size), &pure, vendor);
  FUZZ_CHECK(pure == 0 || pure == 1);
  if (*result != 0) {
    FUZZ_CHECK(*result == 1);
    for (size_t i = 0; i < size; ++i) FUZZ_CHECK(out.untouched(i));
    return {};
  }
  FUZZ_CHECK(std::memchr(out.data(), '\0', size) != nullptr);
  return out.data();
}

std::wstring text_of(const std::string& hex, size_t size, int vendor, int* result) {
  fuzz::Guarded<wchar_t> out(size);
  *result = QL_decodePBItem(hex.c_str(), out.data(), static_cast<int>(size), vendor);
  if (*result != 0) {
    FUZZ_CHECK(*result == 1);
    for (size_t i = 0; i < size; ++i) FUZZ_CHECK(out.untouched(i));
    return {};
  }
  FUZZ_CHECK(std::find(out.data(), out.data() + size, L'\0') != out.data() + size);
  return out.data();
}

// Decodes into every size: refused up to some size, and from there on the same text.
std::wstring decoded(const std::string& hex, int vendor, bool* fits) {
  std::wstring text;
  *fits = false;
  for (size_t size = 0; size <= hex.size() / 2 + 2; ++size) {
    int result = 1;
    const std::wstring now = text_of(hex, size, vendor, &result);
    FUZZ_CHECK(!*fits || (result == 0 && now == text));
    if (result == 0) text = now;
    *fits = result == 0;
  }
  return text;
}

std::string encoded(const std::wstring& text, int vendor, bool* fits) {
  std::string hex;
  *fits = false;
  for (size_t size = 0; size <= 4 * text.size() + 8; ++size) {
    int result = 1;
    const std::string now = hex_of(text, size, vendor, &result);
    FUZZ_CHECK(!*fits || (result == 0 && now == hex));
    FUZZ_CHECK(result != 0 || now.size() < size);
    if (result == 0) hex = now;
    *fits = result == 0;
  }
  return hex;
}

// The forms that carry every character as it is; what the default alphabet cannot give back apart.
bool comes_back(const std::wstring& text, const std::string& hex, int vendor) {
  const bool ucs2 = vendor != 0 ? hex.compare(0, 2, "80") == 0 : is808182CodeSupport == 0;
  return ucs2 && text.find(L'\xFFFF') == text.npos;
}

void check_encoding(const std::wstring& text, int vendor) {
  bool fits = false;
  const std::string hex = encoded(text, vendor, &fits);
  if (!fits) return;
  FUZZ_CHECK(hex.find_first_not_of("0123456789ABCDEF") == hex.npos);
  int size = -1;
  FUZZ_CHECK(QL_preDecodePBItem(hex.c_str(), &size) == 0);
  if (hex.empty()) return;
  bool decodes = false;
  const std::wstring back = decoded(hex, vendor == 0 ? 0 : 1, &decodes);
  if (decodes && comes_back(text, hex, vendor)) FUZZ_CHECK(back == text);
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
      if (c != 0) text += c < 0x80 ? static_cast<wchar_t>(c) : base + (c & 0x7F);
    }
    text.erase(std::remove(text.begin(), text.end(), L'\0'), text.end());
    check_encoding(text, vendor);
  } else {
    const std::string hex(
        reinterpret_cast<const char*>(input.data()),
        std::find(input.data(), input.data() + std::min<size_t>(input.size(), 300), uint8_t{0}) -
            input.data());
    bool fits = false;
    decoded(hex, vendor, &fits);
    check_encoding(input.wide(100), vendor);
  }
  return 0;
}
