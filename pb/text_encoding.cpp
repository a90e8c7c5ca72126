// The forms of a contact's hex text, each written whole into a bounded buffer or not at all.
#include "pb/text_encoding.h"

#include <algorithm>
#include <cstring>
#include <cwchar>

#include "codec/hex_text.h"
#include "common/log.h"
#include "common/text.h"
#include "qalt_at/text.h"

namespace {

constexpr char kLogModule[] = "lib_pb";

constexpr size_t kMaxGsmBytes = 160;
constexpr size_t kMaxTag80Characters = 39;
constexpr size_t kMaxTag81Body = 79;   // bytes behind the base byte
constexpr size_t kMaxHexLength = 255;  // digits to decode, tag included
constexpr char kTag80[] = "80";
constexpr uint8_t kTag81 = 0x81;

bool fits(size_t needed, size_t size) {
  if (needed <= size) return true;
  QALT_LOG_ERROR("text needs %lu, the buffer has %lu\n", static_cast<unsigned long>(needed),
                 static_cast<unsigned long>(size));
  return false;
}

bool within(size_t count, size_t limit, const char* what) {
  if (count <= limit) return true;
  QALT_LOG_ERROR("text exceeds %lu %s\n", static_cast<unsigned long>(limit), what);
  return false;
}

bool write_bytes(const uint8_t* bytes, size_t count, char* out, size_t size) {
  if (!fits(2 * count + 1, size)) return false;
  CODE_Bytes2String(bytes, out, static_cast<int32_t>(count));
  return true;
}

bool write_ucs2(const wchar_t* text, size_t length, char* out, size_t size) {
  if (!fits(4 * length + 1, size)) return false;
  CODE_UCS2toASC(out, text);
  return true;
}

bool write_tag80(const wchar_t* text, size_t length, char* out, size_t size) {
  constexpr size_t kTagLength = sizeof kTag80 - 1;
  if (!within(length, kMaxTag80Characters, "characters") ||
      !fits(kTagLength + 4 * length + 1, size)) {
    return false;
  }
  qalt::copy_text(out, sizeof kTag80, kTag80, kTagLength);
  CODE_UCS2toASC(out + kTagLength, text);
  return true;
}

bool write_gsm(const wchar_t* text, size_t length, char* out, size_t size) {
  uint8_t bytes[2 * kMaxGsmBytes];
  if (!within(length, kMaxGsmBytes, "GSM bytes")) return false;
  const size_t count =
      CODE_Ucs2ToGsm7(bytes, text, static_cast<uint32_t>(length), CODEC_LANG_DEFAULT);
  return within(count, kMaxGsmBytes, "GSM bytes") && write_bytes(bytes, count, out, size);
}

bool write_tag81(const wchar_t* text, size_t length, uint32_t base, char* out, size_t size) {
  constexpr size_t kHeader = 3;
  if (!within(length, kMaxTag81Body, "bytes in the 0x81 coding")) return false;
  uint8_t bytes[kHeader + 2 * kMaxTag81Body];
  bytes[0] = kTag81;
  bytes[1] = static_cast<uint8_t>(length);
  bytes[2] = static_cast<uint8_t>(base);
  size_t count = kHeader;
  for (size_t i = 0; i < length; ++i) {
    const auto character = static_cast<uint32_t>(text[i]);
    if (character <= qalt::kLastLow) {
      count += CODE_Ucs2ToGsm7(bytes + count, text + i, 1, CODEC_LANG_DEFAULT);
    } else {
      bytes[count++] = static_cast<uint8_t>(0x80 + (character - base * 128));
    }
  }
  return within(count - kHeader, kMaxTag81Body, "bytes in the 0x81 coding") &&
         write_bytes(bytes, count, out, size);
}

// Hex text carries 16 bits of a character: what has more would be stored as another one.
bool is_ucs2(const wchar_t* text, size_t length) {
  const bool all = std::all_of(text, text + length,
                               [](wchar_t c) { return static_cast<uint32_t>(c) <= 0xFFFF; });
  if (!all) QALT_LOG_ERROR("text has a character above U+FFFF\n");
  return all;
}

// A standard contact's text where the "81" form may be used. The 0x82 coding is chosen but never
// written.
bool encode_by_choice(const wchar_t* text, size_t length, char* out, size_t size) {
  if (!within(qalt::count_high(text), qalt::kMaxHigh, "characters above U+007F")) return false;
  uint32_t base = 0;
  return ChoosePhoneBookTextCodecType(text, &base) == TEXT_CODING_UCS2_81
             ? write_tag81(text, length, base, out, size)
             : write_ucs2(text, length, out, size);
}

bool is_default_gsm(const wchar_t* text) {
  int is_default = 0;
  return CODE_IsPureGsm7Code(text, CODEC_LANG_DEFAULT, &is_default) != 0;
}

}  // namespace

int32_t is808182CodeSupport;

namespace qalt {

bool encode_item(const wchar_t* text, char* out, size_t size, bool extended) {
  const size_t length = std::wcslen(text);
  if (!is_ucs2(text, length)) return false;
  if (extended) {
    return is_default_gsm(text) ? write_gsm(text, length, out, size)
                                : write_tag80(text, length, out, size);
  }
  return is808182CodeSupport != 0 ? encode_by_choice(text, length, out, size)
                                  : write_ucs2(text, length, out, size);
}

bool decode_item(const char* hex, wchar_t* out, size_t size, bool extended) {
  char work[kMaxHexLength + 1];
  // The modem's UCS2 digits have no tag: with one they are an identifier of the 0x80 coding.
  const size_t tag = extended ? 0 : copy_text(work, sizeof work, kTag80, sizeof kTag80 - 1);
  const size_t length = std::strlen(hex);
  if (!within(tag + length, kMaxHexLength, "hex digits")) return false;
  copy_text(work + tag, sizeof work - tag, hex, length);
  if (decode_hex_text(work, out, size, CODEC_LANG_DEFAULT)) return true;
  QALT_LOG_ERROR("hex text has no characters, or does not fit\n");
  return false;
}

}  // namespace qalt

int PB_EncodeItem(const wchar_t* pText, char* pOut, int bIsQaltExtendContact) {
  if (pText == nullptr || pOut == nullptr) return 0;
  return qalt::encode_item(pText, pOut, qalt::kUnbounded, bIsQaltExtendContact != 0);
}

int PB808182EncodeItem(const wchar_t* pText, char* pOut) {
  if (pText == nullptr || pOut == nullptr) return 0;
  const size_t length = std::wcslen(pText);
  return is_ucs2(pText, length) && encode_by_choice(pText, length, pOut, qalt::kUnbounded);
}

int PB_DecodeItem(const char* pHex, wchar_t* pOut, int bIsQaltExtendContact) {
  if (pHex == nullptr || pOut == nullptr) return 0;
  return qalt::decode_item(pHex, pOut, qalt::kUnbounded, bIsQaltExtendContact == 1);
}

int PB_PreEncodeItem(const wchar_t* pText, int* pSize) {
  if (pText == nullptr || pSize == nullptr) return 1;
  const auto length = static_cast<int>(std::wcslen(pText));
  *pSize = is_default_gsm(pText) ? length : 4 * length;
  return 0;
}

int PB_PreDecodeItem(const char* pHex, int* pCount) {
  if (pCount == nullptr || CODE_PreDecodeGsmUcs(pHex, pCount) == 0) return 1;
  ++*pCount;
  return 0;
}
