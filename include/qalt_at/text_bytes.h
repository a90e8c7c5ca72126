/*
 * text_bytes.h - conversions between bytes, hex text, wide text and the forms of an SMS PDU: packed
 * septets, semi-octet digits, UCS2 bytes and the service centre time stamp (3GPP TS 23.038,
 * 23.040).
 *
 * Conventions of this header:
 *  1. Results. A function with a count returns -1, with nothing written, for a null pointer or a
 *     negative count, unless it says otherwise. Malformed digits are no failure: they give the
 *     values that the arithmetic gives them.
 *  2. Ownership. The caller owns every buffer; nothing is kept. Outputs may overlap inputs only
 *     where it says so.
 *  3. Sizes and units. Wide text is 32-bit wide characters, one UCS2 code point each, ended by 0.
 *     Hex text is NUL-terminated, two digits a byte, written in upper case.
 *  4. Threads. Every function may run in any number of threads at once.
 *  5. Stack. Under 1 KB. Only CODE_SerializeNumbers allocates: a work copy, freed before it
 *     returns.
 */
#ifndef QALT_AT_TEXT_BYTES_H
#define QALT_AT_TEXT_BYTES_H

#include <stddef.h>
#include <stdint.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

/*
 * Packs nCount septets, one in the low byte of each element, into 7 * nCount / 8 bytes, rounded up
 * (TS 23.038, 6.1.2.1). Returns the number of bytes written.
 */
QALT_API int32_t CODE_Encode7bit(const uint32_t* pSeptets, uint8_t* pOut, int32_t nCount);

/*
 * Unpacks nCount bytes into nCount + nCount / 7 septets, one a byte, and a 0 byte behind them:
 * seven bytes always give eight septets, the last of which may be filling. Returns the number of
 * septets.
 */
QALT_API int32_t CODE_Decode7bit(const uint8_t* pPacked, uint8_t* pOut, int32_t nCount);

/*
 * Swaps the digits of each pair (semi-octets, TS 23.040, 9.1.2.3); a last digit without partner
 * gets "F" in front. pOut receives the digits and a terminator and may be pDigits. Returns the
 * number of digits written: nCount, or nCount + 1 when it is odd.
 */
QALT_API int32_t CODE_InvertNumbers(const char* pDigits, char* pOut, int32_t nCount);

/*
 * Undoes CODE_InvertNumbers: swaps the digits of each pair back and drops a final "F". A last digit
 * without partner is ignored. pOut receives the digits and a terminator, at most nCount + 1 bytes,
 * and may be pDigits.
 * Returns the number of digits kept; -1 also when there is no memory for the work copy.
 */
QALT_API int32_t CODE_SerializeNumbers(const char* pDigits, char* pOut, int32_t nCount);

/* Writes nCount bytes as hex text. Returns the number of digits, 2 * nCount. */
QALT_API int32_t CODE_Bytes2String(const uint8_t* pBytes, char* pOut, int32_t nCount);

/*
 * Reads nCount hex digits, upper or lower case, into nCount / 2 bytes; an odd last digit is
 * ignored. Any other character counts as its code less 0x37. Returns the number of bytes.
 */
QALT_API int32_t CODE_String2Bytes(const char* pHex, uint8_t* pOut, int32_t nCount);

/*
 * Reads nCount upper-case hex digits into pOut by OR, so pOut must be zero-filled; an odd last
 * digit becomes a high nibble. A character above "9" counts as its code less 0x37. Returns 1
 * always; with a null pointer or a negative count nothing is done.
 */
QALT_API int32_t CODE_AscToHex(uint8_t* pOut, const char* pHex, int32_t nCount);

/*
 * Appends nCount bytes as hex digits to the terminated text in pOut.
 * Returns 1 always; with a null pointer or a negative count nothing is done.
 */
QALT_API int32_t CODE_StringtoHex(const uint8_t* pBytes, char* pOut, int32_t nCount);

/*
 * Appends wide characters as four hex digits each, high byte first, to the terminated text in pOut.
 * nLength is in UCS2 bytes, two a character, an odd one rounded up. Only the low 16 bits of a
 * character count. Returns 1 always; with a null pointer or a negative length nothing is done.
 */
QALT_API int32_t CODE_Stringto2Bytes(const wchar_t* pText, char* pOut, int32_t nLength);

/*
 * Writes a wide text of any length as hex text, four digits a character, high byte first. Only the
 * low 16 bits of a character count. With a null pointer nothing is done.
 */
QALT_API void CODE_UCS2toASC(char* pOut, const wchar_t* pText);

/*
 * Decodes UCS2 bytes, high byte first, into a terminated wide text, which ends at the first 0
 * character, at 255 characters or at nCount bytes; an odd last byte is ignored.
 * Returns the number of characters, terminator not counted.
 */
QALT_API int32_t CODE_DecodeUcs2(const uint8_t* pBytes, wchar_t* pOut, int32_t nCount);

/*
 * Writes a wide text of any length as UCS2 bytes, two a character, high byte first; nothing is
 * terminated. nCount is only tested for a negative value. Returns the number of bytes.
 */
QALT_API int32_t CODE_EncodeUcs2(const wchar_t* pText, uint8_t* pOut, int32_t nCount);

/*
 * Converts a terminated text of 8-bit characters, at most nCount of them, with the multibyte
 * conversion of the process's locale. pOut needs room for nCount + 1 wide characters; what the text
 * does not fill, or follows a byte that is no character of the locale, is 0. Returns nCount.
 */
QALT_API int32_t CODE_DecodeGSM8(const char* pText, wchar_t* pOut, int32_t nCount);

/* A point in time as a service centre time stamp gives it. */
typedef struct QaltTime {
  uint16_t year; /* full, such as 2012 */
  uint16_t month;
  uint16_t day;
  uint16_t hour;
  uint16_t minute;
  uint16_t second;
  int32_t reserved; /* always 0 */
  int32_t timeZone; /* quarters of an hour east of GMT, -48 to 48 */
} QaltTime;

/*
 * Decodes the 14 semi-octet digits of a service centre time stamp (TS 23.040, 9.2.3.11). Prints the
 * time zone's digits and its value on the standard output.
 *
 * Returns the time by value. All members are 0 for a null text and one longer than 39 characters.
 * The date and time stay 0 for a text shorter than 12; the zone does for one shorter than 14, for
 * unreadable digits and for more than 12 hours.
 */
QALT_API QaltTime CODE_DecodePduTimeToQaltTime(const char* pDigits);

QALT_END_DECLS

#endif /* QALT_AT_TEXT_BYTES_H */
