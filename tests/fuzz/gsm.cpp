// GSM 7-bit codes and UCS2 in every language: sizes, and texts that come back as they were.
#include "qalt_at/text.h"
#include "tests/fuzz/property.h"

namespace {

std::wstring decoded(const std::string& bytes, int32_t language) {
  fuzz::Guarded<wchar_t> out(bytes.size());
  const uint32_t count = CODE_Gsm7ToUcs2(out.data(), reinterpret_cast<const uint8_t*>(bytes.data()),
                                         static_cast<uint32_t>(bytes.size()), language);
  FUZZ_CHECK(bytes.empty() ? count == UINT32_MAX
                           : count <= bytes.size() && 2 * count >= bytes.size());
  return {out.data(), bytes.empty() ? 0 : count};
}

std::string encoded(const std::wstring& text, int32_t language) {
  fuzz::Guarded<uint8_t> out(2 * text.size());
  const uint32_t count =
      CODE_Ucs2ToGsm7(out.data(), text.data(), static_cast<uint32_t>(text.size()), language);
  FUZZ_CHECK(count >= text.size() && count <= 2 * text.size());
  for (uint32_t i = 0; i < count; ++i) FUZZ_CHECK(out[i] < 0x80);
  return {out.data(), out.data() + count};
}

// Characters that a language carries, each coming back alone, come back together.
void check_text(const std::wstring& text, int32_t language) {
  std::string all;
  std::wstring carried;
  for (const wchar_t character : text) {
    const std::wstring alone(1, character);
    const std::string codes = encoded(alone, language);
    all += codes;
    // An escape that is no pair would take the next code along.
    const bool lone_escape = codes.size() == 1 && codes[0] == 0x1B;
    if (decoded(codes, language) == alone && !lone_escape) carried += character;
  }
  FUZZ_CHECK(encoded(text, language) == all);
  FUZZ_CHECK(decoded(encoded(carried, language), language) == carried);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  constexpr int32_t kLanguages[] = {0, 2, 3, 1, -1};
  fuzz::Input input(bytes, std::min<size_t>(size, 2000));
  const int32_t language = kLanguages[input.byte() % 5];
  // What decodes to carried characters has an encoding, which decodes to the same.
  check_text(decoded(fuzz::Input(input).rest(), language), language);
  check_text(input.wide(500), language);
  return 0;
}
