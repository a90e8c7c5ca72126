// UCS2 bytes and 8-bit text to wide text, and wide text to UCS2 bytes.
#include <algorithm>
#include <cstdlib>
#include <cwchar>

#include "qalt_at/text_bytes.h"

namespace {

constexpr size_t kMaxDecoded = 255;  // characters of one CODE_DecodeUcs2

bool refused(const void* in, const void* out, int32_t count) {
  return in == nullptr || out == nullptr || count < 0;
}

}  // namespace

int32_t CODE_DecodeUcs2(const uint8_t* pBytes, wchar_t* pOut, int32_t nCount) {
  if (refused(pBytes, pOut, nCount)) return -1;
  const size_t limit = std::min(static_cast<size_t>(nCount) / 2, kMaxDecoded);
  size_t count = 0;
  for (; count < limit; ++count) {
    const wchar_t character = pBytes[2 * count] << 8 | pBytes[2 * count + 1];
    if (character == 0) break;
    pOut[count] = character;
  }
  pOut[count] = 0;
  return static_cast<int32_t>(count);
}

int32_t CODE_EncodeUcs2(const wchar_t* pText, uint8_t* pOut, int32_t nCount) {
  if (refused(pText, pOut, nCount)) return -1;
  int32_t bytes = 0;
  for (; *pText != 0; ++pText) {
    pOut[bytes++] = static_cast<uint8_t>(*pText >> 8 & 0xFF);
    pOut[bytes++] = static_cast<uint8_t>(*pText & 0xFF);
  }
  return bytes;
}

int32_t CODE_DecodeGSM8(const char* pText, wchar_t* pOut, int32_t nCount) {
  if (refused(pText, pOut, nCount)) return -1;
  const auto count = static_cast<size_t>(nCount);
  // A byte that is no character of the locale ends the conversion without a word on how far it
  // came: the text then ends at the last character written.
  std::wmemset(pOut, 0, count + 1);
  static_cast<void>(std::mbstowcs(pOut, pText, count));
  pOut[count] = 0;
  return nCount;
}
