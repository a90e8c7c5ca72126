/*
 * text_items.h - a contact's texts: from wide text to the hex text that a phonebook write sends,
 * and from the hex text that a read brings to wide text.
 *
 * Conventions of this header:
 *  1. Results. QL_ functions: 0 success, 1 failure. PB_EncodeItem, PB808182EncodeItem and
 *     PB_DecodeItem: 1 success, 0 failure. A text is converted whole or refused, never cut: after a
 *     failure the destination is as it was. Inputs and results go to syslog at priority 7, the
 *     cause of a refusal at 3. A null pointer is a failure.
 *  2. Ownership. The caller owns every buffer; nothing is kept.
 *  3. Sizes and units. Wide text is 32-bit wide characters, one UCS2 code point each, ended by 0.
 *     Hex text is upper-case digits, two a byte, NUL-terminated. Encoder buffers are counted in
 *     bytes, decoder buffers in wide characters, the terminator included in both.
 *  4. Threads. Every function may run in any number of threads at once; is808182CodeSupport is to
 *     be set before the first of them encodes.
 *  5. Stack. Under 3 KB. Nothing is allocated on the heap.
 *
 * Forms of a hex text (ETSI TS 102 221, Annex A, for the tagged ones):
 *   GSM hex   codes of the default language, an escape pair as two bytes; at most 160 bytes
 *   "80"      the tag, then four digits a character; at most 39 characters
 *   "81"      the tag, the count of characters, the base byte, then a byte for each character, two
 *             for one that GSM 7-bit writes with an escape; at most 79 bytes behind the base byte
 *   tagless   four digits a character, any number
 * A text that exceeds the limit of its form, or holds a character above U+FFFF, is refused.
 *
 * Which contact is a vendor contact, for bIsQaltExtendContact: one that the vendor commands read or
 * write. IsSupportExtend alone does not tell; of the PbType that QL_getPhonebookInfo gives this
 * does:
 *
 *   vendor = g_phone_book_currentPlatform == PB_PLATFORM_4 ||
 *            (type.IsSupportExtend &&
 *             (g_phone_book_currentPlatform == PB_PLATFORM_1 || type.IsSupportUSim));
 *
 * A vendor contact's text is the same in every character set of the modem. A standard contact's is
 * tagless digits only while the set is UCS2: see phonebook.h, convention 8.
 */
#ifndef QALT_AT_TEXT_ITEMS_H
#define QALT_AT_TEXT_ITEMS_H

#include <stddef.h>
#include <stdint.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

/* 1 when standard contacts whose text fits the "81" form are written in it; 0 at load. */
extern QALT_API int32_t is808182CodeSupport;

/*
 * Sets is808182CodeSupport to 0 or 1; any other value is logged as out of range and has no effect.
 */
QALT_API void QL_808182CodeSupportSet(int32_t value);

/*
 * Encodes a contact's text for a phonebook write.
 *
 * pSrcPbItem             wide text.
 * pDstEncodeItem         receives the hex text.
 * DstBufSize             bytes of pDstEncodeItem.
 * pbPureGsm7             receives 1 when GSM 7-bit can carry the text, else 0; set in any case.
 * bIsQaltExtendContact   0 a standard contact: tagless, or "81" where is808182CodeSupport is 1 and
 *                        the text fits it. Other: a vendor contact: GSM hex, or "80" where GSM
 *                        7-bit cannot carry the text.
 *
 * Returns 0; 1 when the estimate of CODE_PreEncodeGsmUcs or the encoded text with its terminator
 * exceeds DstBufSize, or the text is refused.
 */
QALT_API int QL_encodePBItem(const wchar_t* pSrcPbItem, char* pDstEncodeItem, int DstBufSize,
                             int* pbPureGsm7, int bIsQaltExtendContact);

/*
 * Decodes a contact's text after a phonebook read.
 *
 * pSrEncodeItem          hex text, at most 255 digits (253 for a standard contact).
 * pDstPbItem             receives the wide text.
 * DstBufSize             wide characters of pDstPbItem.
 * bIsQaltExtendContact   1 a vendor contact: an alpha identifier or GSM hex. Other: a standard
 *                        contact: tagless UCS2 digits.
 *
 * Returns 0; 1 when the count of CODE_PreDecodeGsmUcs or the decoded text with its terminator
 * exceeds DstBufSize, the hex text is too long, or it is GSM hex of fewer than two digits.
 */
QALT_API int QL_decodePBItem(const char* pSrEncodeItem, wchar_t* pDstPbItem, int DstBufSize,
                             int bIsQaltExtendContact);

/*
 * Stores a size for the encoded text: its number of characters when GSM 7-bit can carry it, else
 * four times that. QL_encodePBItem asks for more: 4 * length + 7 bytes always suffice. Returns 0.
 */
QALT_API int QL_preEncodePBItem(const wchar_t* pSrcPbItem, int* pEncodeBufSize);

/*
 * Stores the wide characters that the decoded text needs, terminator included, by the form that the
 * hex text seems to have. Returns 0, or 1 for a null text.
 */
QALT_API int QL_preDecodePBItem(const char* pSrEncodeItem, int* pDecodeBufSize);

/* ---- The steps of the above, without log lines for inputs and results ---- */

/*
 * Encodes like QL_encodePBItem, without a bound of its own: pOut needs room for 4 * length + 7
 * bytes.
 */
QALT_API int PB_EncodeItem(const wchar_t* pText, char* pOut, int bIsQaltExtendContact);

/*
 * Encodes a standard contact's text by the coding that ChoosePhoneBookTextCodecType gives: "81" for
 * TEXT_CODING_UCS2_81, tagless for every other. pOut needs room for 4 * length + 7 bytes.
 */
QALT_API int PB808182EncodeItem(const wchar_t* pText, char* pOut);

/*
 * Chooses the cheapest SIM coding (TextCoding) for a text, and for TEXT_CODING_UCS2_81 stores the
 * base byte in *pBase:
 *   an empty text, or characters up to U+007F that all have a code       TEXT_CODING_GSM7
 *   characters up to U+007F, one of them needing an escape               TEXT_CODING_UCS2_80
 *   characters up to U+007F with a grave accent, base 0                  TEXT_CODING_UCS2_81
 *   all characters above U+007F in one half page up to U+7FFF            TEXT_CODING_UCS2_81
 *   all characters above U+007F within 128 code points                   TEXT_CODING_UCS2_82
 *   any other, and more than 260 characters above U+007F                 TEXT_CODING_UCS2_80
 */
QALT_API int32_t ChoosePhoneBookTextCodecType(const wchar_t* pText, uint32_t* pBase);

/*
 * Raises *pMax to the largest and lowers *pMin to the smallest character of a text. Returns the
 * text's length; 0, with nothing done, when a pointer is null.
 */
QALT_API int32_t GetMaxMinCharFromString(const wchar_t* pText, uint16_t* pMax, uint16_t* pMin);

/* Decodes like QL_decodePBItem, without a bound of its own: pOut needs room for 128 characters. */
QALT_API int PB_DecodeItem(const char* pHex, wchar_t* pOut, int bIsQaltExtendContact);

/* QL_preEncodePBItem and QL_preDecodePBItem without their log lines. */
QALT_API int PB_PreEncodeItem(const wchar_t* pText, int* pSize);
QALT_API int PB_PreDecodeItem(const char* pHex, int* pCount);

QALT_END_DECLS

#endif /* QALT_AT_TEXT_ITEMS_H */
