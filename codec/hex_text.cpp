// Hex texts as the modem hands them over: their form, their size, and their decoding.
#include "codec/hex_text.h"

#include <algorithm>
#include <cstring>

#include "codec/alpha_identifier.h"
#include "codec/hex_digits.h"
#include "qalt_at/text.h"

namespace {

constexpr size_t kMaxBytes = 256;  // of a hex text

TextCoding coding_of(const char* hex) {
  if (hex[0] != '8') return TEXT_CODING_GSM7;
  switch (hex[1]) {
    case '0':
      return TEXT_CODING_UCS2_80;
    case '1':
      return TEXT_CODING_UCS2_81;
    case '2':
      return TEXT_CODING_UCS2_82;
    default:
      return TEXT_CODING_GSM7;
  }
}

// Copies decoded characters and the terminator when they fit.
template <typename Character>
bool deliver(const Character* characters, size_t count, wchar_t* out, size_t size) {
  if (count >= size) return false;
  std::copy_n(characters, count, out);
  out[count] = 0;
  return true;
}

bool decode_identifier(const uint8_t* id, size_t length, wchar_t* out, size_t size) {
  uint16_t characters[qalt::kMaxIdentifierCharacters];
  const uint16_t count = qalt::decode_alpha_identifier(characters, qalt::kMaxIdentifierCharacters,
                                                       id, static_cast<uint16_t>(length));
  const uint16_t* end = std::find(characters, characters + count, 0);
  return deliver(characters, static_cast<size_t>(end - characters), out, size);
}

bool decode_gsm(const uint8_t* bytes, size_t length, wchar_t* out, size_t size, int32_t language) {
  wchar_t characters[kMaxBytes];
  const uint32_t count =
      CODE_Gsm7ToUcs2(characters, bytes, static_cast<uint32_t>(length), language);
  return count != UINT32_MAX && deliver(characters, count, out, size);
}

}  // namespace

namespace qalt {

bool decode_hex_text(const char* hex, wchar_t* out, size_t size, int32_t language) {
  const size_t digits = std::strlen(hex);
  if (digits > 2 * kMaxBytes) return false;
  const size_t length = digits / 2;
  uint8_t bytes[kMaxBytes];
  for (size_t i = 0; i < length; ++i) bytes[i] = upper_byte(hex + 2 * i);
  return coding_of(hex) == TEXT_CODING_GSM7 ? decode_gsm(bytes, length, out, size, language)
                                            : decode_identifier(bytes, length, out, size);
}

}  // namespace qalt

int32_t CODE_GetDecodeType(const char* pHex, TextCoding* pCoding) {
  if (pHex == nullptr || pCoding == nullptr) return 0;
  *pCoding = coding_of(pHex);
  return 1;
}

int32_t CODE_PreDecodeGsmUcs(const char* pHex, int32_t* pCount) {
  if (pHex == nullptr || pCount == nullptr) return 0;
  const auto length = static_cast<int32_t>(std::strlen(pHex));
  switch (coding_of(pHex)) {
    case TEXT_CODING_UCS2_80:
      *pCount = (length - 2) / 4;
      break;
    case TEXT_CODING_UCS2_81:
      *pCount = (length - 6) / 2;
      break;
    case TEXT_CODING_UCS2_82:
      *pCount = (length - 8) / 2;
      break;
    default:
      *pCount = length / 2;
      break;
  }
  return 1;
}

int32_t CODE_Usc2orGsm7ToAscDecode(const char* pHex, wchar_t* pOut, int32_t language) {
  if (pHex == nullptr || pOut == nullptr) return 0;
  return qalt::decode_hex_text(pHex, pOut, qalt::kUnbounded, language);
}
