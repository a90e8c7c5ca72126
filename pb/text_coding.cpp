// The choice of the cheapest SIM coding for a contact's text (ETSI TS 102 221, Annex A).
#include <cwchar>

#include "pb/text_encoding.h"
#include "qalt_at/text.h"

namespace {

constexpr uint32_t kHalfPage = 128;
constexpr uint32_t kLastBase = 255;

// The largest and smallest of some characters, as the 16-bit values that the codings carry.
struct Range {
  uint16_t max;
  uint16_t min;

  void widen(wchar_t character) {
    const auto value = static_cast<uint32_t>(character);
    if (value > max) max = static_cast<uint16_t>(value);
    if (value < min) min = static_cast<uint16_t>(value);
  }
};

bool is_high(wchar_t character) {
  return static_cast<uint32_t>(character) > qalt::kLastLow;
}

bool contains_any(const wchar_t* text, const wchar_t* wanted) {
  return text[std::wcscspn(text, wanted)] != 0;
}

// A text of characters up to U+007F: "81" is needed only for a grave accent, which has no GSM code.
int32_t choose_for_low(const wchar_t* text, uint32_t* base) {
  if (contains_any(text, L"^{}[]\\|~")) return TEXT_CODING_UCS2_80;
  if (!contains_any(text, L"`")) return TEXT_CODING_GSM7;
  *base = 0;
  return TEXT_CODING_UCS2_81;
}

}  // namespace

namespace qalt {

size_t count_high(const wchar_t* text) {
  size_t count = 0;
  for (; *text != 0; ++text) count += is_high(*text);
  return count;
}

}  // namespace qalt

int32_t GetMaxMinCharFromString(const wchar_t* pText, uint16_t* pMax, uint16_t* pMin) {
  if (pText == nullptr || pMax == nullptr || pMin == nullptr) return 0;
  Range range{*pMax, *pMin};
  const wchar_t* end = pText;
  for (; *end != 0; ++end) range.widen(*end);
  *pMax = range.max;
  *pMin = range.min;
  return static_cast<int32_t>(end - pText);
}

int32_t ChoosePhoneBookTextCodecType(const wchar_t* pText, uint32_t* pBase) {
  if (pText == nullptr || pBase == nullptr || *pText == 0) return TEXT_CODING_GSM7;
  const wchar_t* first = pText;
  while (*first != 0 && !is_high(*first)) ++first;
  if (*first == 0) return choose_for_low(pText, pBase);
  if (qalt::count_high(first) > qalt::kMaxHigh) return TEXT_CODING_UCS2_80;

  Range high{static_cast<uint16_t>(*first), static_cast<uint16_t>(*first)};
  for (const wchar_t* c = first; *c != 0; ++c) {
    if (is_high(*c)) high.widen(*c);
  }
  if (high.max - high.min >= static_cast<int32_t>(kHalfPage)) return TEXT_CODING_UCS2_80;
  const uint32_t half_page = high.min / kHalfPage;
  if (half_page > kLastBase || half_page != high.max / kHalfPage) return TEXT_CODING_UCS2_82;
  *pBase = half_page;
  return TEXT_CODING_UCS2_81;
}
