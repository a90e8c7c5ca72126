// Bytes and wide characters to hexadecimal digits, and digits to bytes.
#include <array>
#include <cstring>
#include <cwchar>

#include "codec/hex_digits.h"
#include "qalt_at/text_bytes.h"

namespace {

bool refused(const void* in, const void* out, int32_t count) {
  return in == nullptr || out == nullptr || count < 0;
}

void write_bytes(char* out, const uint8_t* bytes, size_t count) {
  for (size_t i = 0; i < count; ++i) out = qalt::put_byte(out, bytes[i]);
  *out = '\0';
}

void write_characters(char* out, const wchar_t* text, size_t count) {
  for (size_t i = 0; i < count; ++i) out = qalt::put_character(out, text[i]);
  *out = '\0';
}

// The value of a digit of either case, by its character.
constexpr std::array<uint8_t, 256> digit_values() {
  std::array<uint8_t, 256> values{};
  for (uint32_t c = 0; c < values.size(); ++c) values[c] = static_cast<uint8_t>(c - 0x37);
  for (uint8_t i = 0; i < 10; ++i) values['0' + i] = i;
  for (uint8_t i = 0; i < 6; ++i) values['a' + i] = static_cast<uint8_t>(10 + i);
  return values;
}
constexpr auto kDigitValues = digit_values();

// By look-up: digits and letters of a hex text follow no rule that a branch could foresee.
uint32_t digit_value(char digit) {
  return kDigitValues[static_cast<uint8_t>(digit)];
}

}  // namespace

int32_t CODE_Bytes2String(const uint8_t* pBytes, char* pOut, int32_t nCount) {
  if (refused(pBytes, pOut, nCount)) return -1;
  const auto count = static_cast<uint32_t>(nCount);
  write_bytes(pOut, pBytes, count);
  return static_cast<int32_t>(2 * count);
}

int32_t CODE_String2Bytes(const char* pHex, uint8_t* pOut, int32_t nCount) {
  if (refused(pHex, pOut, nCount)) return -1;
  const size_t bytes = static_cast<size_t>(nCount) / 2;
  for (size_t i = 0; i < bytes; ++i) {
    pOut[i] = qalt::joined(digit_value(pHex[2 * i]), digit_value(pHex[2 * i + 1]));
  }
  return static_cast<int32_t>(bytes);
}

int32_t CODE_AscToHex(uint8_t* pOut, const char* pHex, int32_t nCount) {
  if (refused(pHex, pOut, nCount)) return 1;
  const size_t digits = static_cast<size_t>(nCount);
  for (size_t i = 0; i < digits / 2; ++i) pOut[i] |= qalt::upper_byte(pHex + 2 * i);
  if (digits % 2 != 0) {
    pOut[digits / 2] |= qalt::joined(qalt::upper_digit_value(pHex[digits - 1]), 0);
  }
  return 1;
}

int32_t CODE_StringtoHex(const uint8_t* pBytes, char* pOut, int32_t nCount) {
  if (refused(pBytes, pOut, nCount)) return 1;
  write_bytes(pOut + std::strlen(pOut), pBytes, static_cast<size_t>(nCount));
  return 1;
}

int32_t CODE_Stringto2Bytes(const wchar_t* pText, char* pOut, int32_t nLength) {
  if (refused(pText, pOut, nLength)) return 1;
  const size_t count = (static_cast<size_t>(nLength) + 1) / 2;
  write_characters(pOut + std::strlen(pOut), pText, count);
  return 1;
}

void CODE_UCS2toASC(char* pOut, const wchar_t* pText) {
  if (pOut == nullptr || pText == nullptr) return;
  write_characters(pOut, pText, std::wcslen(pText));
}
