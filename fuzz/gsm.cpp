// GSM 7-bit codes and UCS2 in every language: sizes, and texts that come back as they were.
#include <string>

#include "fuzz/property.h"
#include "qalt_at/text.h"

namespace {

constexpr int32_t kLanguages[] = {0, 2, 3, 1, -1};

std::wstring decoded(const std::string& bytes, int32_t language) {
  const auto* gsm = reinterpret_cast<const uint8_t*>(bytes.data());
  fuzz::Guarded<wchar_t> out(bytes.size());
  const uint32_t count =
      CODE_Gsm7ToUcs2(out.data(), gsm, static_cast<uint32_t>(bytes.size()), language);
  if (bytes.empty()) FUZZ_CHECK(count == UINT32_MAX);
  if (bytes.empty()) return {};
  FUZZ_CHECK(count <= bytes.size() && 2 * count >= bytes.size());
  return {out.data(), count};
}

std::string encoded(const std::wstring& text, int32_t language) {
  fuzz::Guarded<uint8_t> out(2 * text.size());
  const uint32_t count =
      CODE_Ucs2ToGsm7(out.data(), text.data(), static_cast<uint32_t>(text.size()), language);
  FUZZ_CHECK(count >= text.size() && count <= 2 * text.size());
  for (uint32_t i = 0; i < count; ++i) FUZZ_CHECK(out[i] < 0x80);
  return {reinterpret_cast<const char*>(out.data()), count};
}

// A character that a language carries: alone it comes back as it was.
bool carries(wchar_t character, int32_t language) {
  const std::wstring text(1, character);
  const std::string bytes = encoded(text, language);
  // An escape that is no pair would take the next code along.
  return decoded(bytes, language) == text && (bytes.size() == 2 || bytes[0] != 0x1B);
}

void check_text(const std::wstring& text, int32_t language) {
  const std::string bytes = encoded(text, language);
  std::string single;
  std::wstring carried;
  for (const wchar_t character : text) {
    single += encoded(std::wstring(1, character), language);
    if (carries(character, language)) carried += character;
  }
  FUZZ_CHECK(bytes == single);
  FUZZ_CHECK(decoded(encoded(carried, language), language) == carried);
}

// The check is stricter than the encoder: it accepts nothing that would become a space.
void check_check(const std::wstring& text) {
  int is_default = 0;
  const int32_t fits = CODE_IsPureGsm7Code(text.c_str(), CODEC_LANG_PORTUGUESE, &is_default);
  FUZZ_CHECK(fits == 0 || fits == 1);
  FUZZ_CHECK(is_default == 0 || fits == 1);
  for (const int32_t language : {0, 2, 3}) {
    if (CODE_FindFromCodecTable(text.data(), static_cast<int32_t>(text.size()), language) == 0) {
      continue;
    }
    for (const wchar_t character : text) {
      FUZZ_CHECK(character == L' ' || encoded(std::wstring(1, character), language) != " ");
    }
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, std::min<size_t>(size, 2000));
  const int32_t language = kLanguages[input.byte() % 5];
  const std::string gsm(reinterpret_cast<const char*>(input.data()), input.size());
  // What decodes to carried characters has an encoding, which decodes to the same.
  check_text(decoded(gsm, language), language);
  const std::wstring text = input.wide(500);
  check_text(text, language);
  check_check(text);
  return 0;
}
