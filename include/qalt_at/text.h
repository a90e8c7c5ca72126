/*
 * text.h - the text codec: GSM 7-bit codes and UCS2, SIM alpha identifiers, and with the headers it
 * includes the character tables, the byte conversions and the phonebook texts.
 *
 * Conventions of this header:
 *  1. Results. Counts are of elements written; 1 is yes or success, 0 no or failure, unless the
 *     function says otherwise. Null pointers never crash. What cannot be encoded becomes a space,
 *     what cannot be decoded a space or U+001B: neither is a failure.
 *  2. Ownership. The caller owns every buffer; nothing is kept. Outputs may not overlap inputs.
 *  3. Sizes and units.
 *       wide text   32-bit wide characters, one UCS2 code point each, ended by 0;
 *       GSM bytes   unpacked 7-bit codes, one a byte, 0x1B in front of a code of the extension
 *                   table, not terminated: their number travels beside them;
 *       hex text    upper-case digits, two a byte, NUL-terminated.
 *  4. Threads. Every function may run in any number of threads at once.
 *  5. Stack. At most 2 KB. Nothing is allocated on the heap.
 */
#ifndef QALT_AT_TEXT_H
#define QALT_AT_TEXT_H

#include <stddef.h>
#include <stdint.h>

#include "qalt_at/export.h"
#include "qalt_at/text_bytes.h"
#include "qalt_at/text_items.h"
#include "qalt_at/text_tables.h"

QALT_BEGIN_DECLS

/* ---- GSM 7-bit codes and UCS2 (3GPP TS 23.038) ---- */

/*
 * Decodes nLength GSM bytes into pOut, which needs room for nLength wide characters; no terminator
 * is written.
 *
 * Bytes from 0x80 up give a space, and so does an escape with such a byte behind it. An escaped
 * 0x65 is the euro sign in every language; an escape without a character in the language's
 * extension table, or at the very end, gives U+001B. Languages 0, 2 and 3 have extension tables of
 * their own, every other uses that of the default language.
 *
 * Returns the number of characters; 0xFFFFFFFF when a pointer is null or nLength is 0.
 */
QALT_API uint32_t CODE_Gsm7ToUcs2(wchar_t* pOut, const uint8_t* pGsm, uint32_t nLength,
                                  int32_t language);

/*
 * Encodes nCount wide characters into pOut, which needs room for 2 * nCount bytes.
 *
 * A character is written as its code, else as escape and code, else as a space. The euro sign
 * without a code in the language's tables is written as 0x1B 0x65.
 *
 * Returns the number of bytes; 0 when a pointer is null.
 */
QALT_API uint32_t CODE_Ucs2ToGsm7(uint8_t* pOut, const wchar_t* pText, uint32_t nCount,
                                  int32_t language);

/*
 * Steps of the encoder: search the first nPairs pairs of pTable->pUcs2ToGsm7ExtendAsc, or the eight
 * pairs of pPairs, for the character pText[nIndex]. A match writes 0x1B at pOut[*pPosition], the
 * code behind it, sets *pFound to 1 and leaves *pPosition on the code. With a null pointer nothing
 * is done.
 */
QALT_API void CODE_Find_Ucs2_To_Gsm7_Extend(uint32_t nPairs, const CodecTable* pTable,
                                            uint32_t nIndex, uint32_t* pPosition, uint8_t* pOut,
                                            const wchar_t* pText, int* pFound);
QALT_API void CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(const CodecPair* pPairs, uint32_t nIndex,
                                                 uint32_t* pPosition, uint8_t* pOut,
                                                 const wchar_t* pText, int* pFound);

/*
 * Tells whether each of nCount characters has a code, or an escape and a code, in the language's
 * tables. Stricter than the encoder on purpose: of the Spanish extension only the characters that
 * the default extension has too are accepted.
 *
 * Returns 1 when all have one (also for a count of 0 or below), 0 otherwise and for a null text.
 */
QALT_API int32_t CODE_FindFromCodecTable(const wchar_t* pText, int32_t nCount, int32_t language);

/*
 * Steps of the check, for the character pText[nIndex]. nStart is the pair to start the search at.
 *   _Less        below U+00FF: a space, a direct code, or a key of pExtend from nStart up to
 *                nPairs; at least the pair at nStart is examined.
 *   _More        from U+00FF up: a key of the record's alphabet pairs from nStart.
 *   _Portuguese  from U+00FF up: likewise, or a key of the eight pairs of pExtend.
 * Each returns 1 or 0; 0 when a pointer is null or nStart is negative.
 */
QALT_API int32_t CODE_FindFromCodecTable_Less(const wchar_t* pText, int32_t nIndex, int32_t nStart,
                                              int32_t nPairs, const CodecTable* pTable,
                                              const CodecPair* pExtend);
QALT_API int32_t CODE_FindFromCodecTable_More(const wchar_t* pText, int32_t nIndex, int32_t nStart,
                                              const CodecTable* pTable);
QALT_API int32_t CODE_FindFromCodecTable_Portuguese(const wchar_t* pText, int32_t nIndex,
                                                    int32_t nStart, const CodecTable* pTable,
                                                    const CodecPair* pExtend);

/*
 * Tells whether a text can be written in GSM 7-bit with the default tables, or else with those of
 * `language`. *pIsDefaultGsm7 becomes 1 when the default tables do; it is never cleared.
 * Returns 1 or 0; 0 when a pointer is null.
 */
QALT_API int32_t CODE_IsPureGsm7Code(const wchar_t* pText, int32_t language, int* pIsDefaultGsm7);

/*
 * Estimates the hex digits that a text needs, without terminator: two a character in GSM 7-bit
 * (escapes not counted), else four a character and two for the "80" tag.
 * Returns 1; with a null pointer nothing is stored.
 */
QALT_API int32_t CODE_PreEncodeGsmUcs(const wchar_t* pText, uint32_t* pSize);

/* ---- Hex texts as the modem hands them over ---- */

/* The form of a hex text, told by its first two characters. */
typedef int32_t TextCoding;
enum {
  TEXT_CODING_GSM7 = 0,    /* GSM bytes, no tag */
  TEXT_CODING_UCS2_80 = 1, /* alpha identifier, tag "80" */
  TEXT_CODING_UCS2_81 = 2, /* alpha identifier, tag "81" */
  TEXT_CODING_UCS2_82 = 3  /* alpha identifier, tag "82" */
};

/* Stores the form of a hex text. Returns 1; 0 when a pointer is null. */
QALT_API int32_t CODE_GetDecodeType(const char* pHex, TextCoding* pCoding);

/*
 * Stores the number of characters that a hex text decodes to, by its length and form; 0 or below
 * when it is shorter than its header. Returns 1; 0 when a pointer is null.
 */
QALT_API int32_t CODE_PreDecodeGsmUcs(const char* pHex, int32_t* pCount);

/*
 * Decodes a hex text of at most 512 digits into a terminated wide text: an alpha identifier when it
 * begins with "80", "81" or "82" (at most 160 characters, ended by its first U+0000), GSM bytes of
 * `language` otherwise. An odd last digit is ignored. pOut needs room for half as many wide
 * characters as there are digits, and one more.
 *
 * Returns 1; 0, with nothing written, when a pointer is null, the text has more than 512 digits or,
 * without a tag, fewer than two.
 */
QALT_API int32_t CODE_Usc2orGsm7ToAscDecode(const char* pHex, wchar_t* pOut, int32_t language);

/* ---- SIM alpha identifiers (ETSI TS 102 221, Annex A) ---- */

/*
 * Decodes the identifier of nLength bytes at pId, of any coding, into at most nMax UCS2 values, and
 * never more than 160. Nothing is terminated. A first byte from 0x83 up is an unknown coding: no
 * characters, and pOut[0] is set to 0 (if nMax is not 0). A count larger than the data ends at the
 * data; an identifier shorter than its header has no characters.
 *
 * Returns 1 always; with a null pointer nothing is done.
 */
QALT_API int32_t CODE_utAlphaIdToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                      uint16_t nLength);

/*
 * The decoders of the single codings, byte 0 of the identifier included:
 *   Gsm  every byte a code of the default alphabet, 0x1B escaping the next
 *   80   byte pairs, most significant first; 0x0000 or 0xFFFF stores 0, uncounted, and ends the
 *   text 81   count, base byte (bits 15 to 8 of the base), then GSM codes or base + low seven bits
 *   82   count, base of two bytes, then as for 81; sums keep 16 bits
 * An escape in front of nothing, or of a code that the extension does not have, is a space and its
 * successor stands for itself; an escape pair that maps counts as one character.
 *
 * Each returns the number of characters written, at most nMax; 0 when a pointer is null.
 */
QALT_API uint16_t CODE_utAlphaIdGsmToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                          uint16_t nLength);
QALT_API uint16_t CODE_utAlphaId80ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                         uint16_t nLength);
QALT_API uint16_t CODE_utAlphaId81ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                         uint16_t nLength);
QALT_API uint16_t CODE_utAlphaId82ToUcs2(uint16_t* pOut, uint16_t nMax, const uint8_t* pId,
                                         uint16_t nLength);

/*
 * Maps one GSM code of an identifier; ucNext is the byte behind it. Stores the character and the
 * number of bytes used (2 for an escape pair that maps, else 1) and returns that number; 0, with
 * nothing stored, when a pointer is null.
 */
QALT_API uint16_t CODE_mapEGsmToUcs2(uint8_t ucCode, uint8_t ucNext, uint16_t* pOut,
                                     uint16_t* pUsed);

/*
 * Maps an escape (ucCode, 0x1B) and the byte behind it like CODE_mapEGsmToUcs2; *pResult receives
 * the number of bytes used as well. With a null pointer nothing is done.
 */
QALT_API void CODE_mapEGsmToUcs2_EXTENDED_ALPHABET(uint8_t ucCode, uint8_t ucNext, uint16_t* pOut,
                                                   uint16_t* pUsed, int* pResult);

QALT_END_DECLS

#endif /* QALT_AT_TEXT_H */
