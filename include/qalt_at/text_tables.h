/*
 * text_tables.h - the character tables of the text codec: the GSM 7-bit default alphabet with its
 * extension table, and the Spanish and Portuguese national language tables of 3GPP TS 23.038.
 *
 * Conventions of this header:
 *  1. Results. An accessor always returns its table. A search that finds nothing returns -1; a
 *     look-up outside its table returns the code it was given.
 *  2. Ownership. All tables are constant data of the library; nothing is to be freed.
 *  3. Sizes and units. Four forms of table:
 *       indexed decode  128 code points, indexed by a GSM code 0 to 127;
 *       byte decode     128 bytes, indexed by a GSM code, 0 where the code point needs 16 bits;
 *       direct encode   256 GSM codes, indexed by a code point, 0x20 where there is no code;
 *       pairs           key and value, keys unique, ordered by GSM code.
 *  4. Threads. Every function may run in any number of threads at once, the first use included.
 *  5. Stack. A few words; nothing is allocated on the heap.
 */
#ifndef QALT_AT_TEXT_TABLES_H
#define QALT_AT_TEXT_TABLES_H

#include <stdint.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

/* Languages: the national language identifiers of TS 23.038. Any other selects the default. */
enum { CODEC_LANG_DEFAULT = 0, CODEC_LANG_SPANISH = 2, CODEC_LANG_PORTUGUESE = 3 };

typedef struct CodecPair {
  uint32_t key;
  uint32_t value;
} CodecPair;

/* The tables of one language. */
typedef struct CodecTable {
  const uint16_t* pGsm7ToUcs2Alphabet;      /* indexed decode, alphabet */
  const uint8_t* pUcs2ToGsm7AlphabetAsc;    /* direct encode */
  const uint16_t* pGsm7ToUcs2Extend;        /* indexed decode, after the escape; may be null */
  const CodecPair* pUcs2ToGsm7AlphabetUcs2; /* alphabet, code points from U+00FF up */
  const CodecPair* pUcs2ToGsm7ExtendAsc;    /* after the escape, code points below U+00FF */
  const CodecPair* pUcs2ToGsm7ExtendUcs2;   /* after the escape, from U+00FF up; may be null */
  uint32_t nGsm7ToUcs2AlphabetSize;         /* entries of pGsm7ToUcs2Alphabet */
  uint32_t nAlphabetAscSize;                /* entries of pUcs2ToGsm7AlphabetAsc */
  uint32_t nAlphabetUcs2Size;               /* pairs of pUcs2ToGsm7AlphabetUcs2 */
  uint32_t nExtendSize;                     /* entries of the extension table, the bound of a
                                               look-up in pGsm7ToUcs2Extend */
} CodecTable;

/*
 * SIM alpha identifiers (ETSI TS 102 221, Annex A). They follow TS 23.038 except that 0x5B and 0x5D
 * are square brackets, and that the extension has neither page break nor CR2.
 */
extern QALT_API const uint8_t GsmToUcs2[128];          /* byte decode */
extern QALT_API const uint16_t GsmGclToUcs2[11];       /* codes 0x10 to 0x1A; 0 for 0x11 */
extern QALT_API const uint16_t ExtendedGsmToUcs2[128]; /* after the escape; 0 = none */

/*
 * Default language. 0x08 is the capital O with grave in both directions (TS 23.038: the small one),
 * U+00A0 is written as 0x1B. After the escape 0x65 holds U+00A4: the decoder gives the euro sign
 * for it without a look-up, in every language.
 */
extern QALT_API const uint16_t GsmToUcs2_DefaultAlphabet[128];
extern QALT_API const uint16_t GsmToUcs2_ExtendAlphabet[128]; /* U+001B = undefined */
extern QALT_API const uint8_t Ucs2_To_Gsm7_Alphabet_ASC[256];
extern QALT_API const CodecPair Ucs2_To_Gsm7_Alphabet_UCS2[10]; /* code point, code */
extern QALT_API const CodecPair Ucs2_To_Gsm7_Extend[10];        /* code point, code after escape */

/*
 * Spanish. The default alphabet with the small c with cedilla at 0x09 and U+00A0 at 0x1B; the
 * single shift table of TS 23.038 A.2.2. The encode direction has no CR2, and U+00A4 as the key of
 * 0x65.
 */
extern QALT_API const uint16_t Spanish_Gsm7_To_Ucs2_Alphabet[128];
extern QALT_API const CodecPair Spanish_Gsm7_To_Ucs2_Extend[20]; /* code after escape, code point */
extern QALT_API const uint8_t Spanish_Ucs2_To_Gsm7_Alphabet_ASC[256];
extern QALT_API const CodecPair Spanish_Ucs2_To_Gsm7_Alphabet_UCS2[10];
extern QALT_API const CodecPair Spanish_Ucs2_To_Gsm7_Extend[19];

/*
 * Portuguese. The locking shift table of TS 23.038 A.3.3 with U+00A0 at 0x1B, and the single shift
 * table of A.2.3. Decoding, escape 0x0A gives a line feed and escape 0x1A a vertical bar; encoding,
 * the degree sign shares the ordinal indicator's code 0x24.
 */
extern QALT_API const uint16_t Portuguese_Gsm7_To_Ucs2_Alphabet[128];
extern QALT_API const uint16_t Portuguese_Gsm7_To_Ucs2_Extend[128]; /* U+001B = undefined */
extern QALT_API const uint8_t Portuguese_Ucs2_To_Gsm7_Alphabet_ASC[256];
extern QALT_API const CodecPair Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2[3];
extern QALT_API const CodecPair Portuguese_Ucs2_To_Gsm7_Extend_ASC[30];
extern QALT_API const CodecPair Portuguese_Ucs2_To_Gsm7_Extend_UCS2[8];

/*
 * Returns the tables of a language: the Spanish record for 2, the Portuguese for 3, the default
 * record for every other value. The first call fills the records.
 */
QALT_API const CodecTable* CODE_GetCodecTable(int32_t language);

/* Fills the three records, unless they are filled. Never needed before CODE_GetCodecTable. */
QALT_API void CODE_InitCodecTable(void);

/*
 * Looks nCode up in an indexed decode table of nSize entries. Returns the entry; nCode itself when
 * it is not below nSize or pTable is null.
 */
QALT_API uint32_t CODE_GetAlphabetTableValue(const uint16_t* pTable, uint32_t nCode,
                                             uint32_t nSize);

/*
 * Searches the first nCount pairs of a pair table, in order.
 *
 * nMode 0   a pair whose key is nItem yields its value, else a pair whose value is nItem its key.
 * nMode 1   a pair whose value is nItem yields its key.
 *
 * Returns what the first matching pair yields; -1 when none matches, for any other mode, and when
 * pTable is null.
 */
QALT_API int32_t CODE_GetCodecTableValue(const CodecPair* pTable, int32_t nMode, uint32_t nItem,
                                         int32_t nCount);

/*
 * The accessors: each returns the table named like it and, when pCount is not null, stores its
 * number of entries in *pCount.
 */
QALT_API const uint16_t* Get_GsmToUcs2_DefaultAlphabet(uint32_t* pCount);
QALT_API const uint8_t* Get_Ucs2_To_Gsm7_Alphabet_ASC(uint32_t* pCount);
QALT_API const CodecPair* Get_Ucs2_To_Gsm7_Alphabet_UCS2(uint32_t* pCount);
QALT_API const CodecPair* Get_Ucs2_To_Gsm7_Extend(uint32_t* pCount);
QALT_API const uint16_t* Get_Spanish_Gsm7_To_Ucs2_Alphabet(uint32_t* pCount);
QALT_API const CodecPair* Get_Spanish_Gsm7_To_Ucs2_Extend(uint32_t* pCount);
QALT_API const uint8_t* Get_Spanish_Ucs2_To_Gsm7_Alphabet_ASC(uint32_t* pCount);
QALT_API const CodecPair* Get_Spanish_Ucs2_To_Gsm7_Alphabet_UCS2(uint32_t* pCount);
QALT_API const CodecPair* Get_Spanish_Ucs2_To_Gsm7_Extend(uint32_t* pCount);
QALT_API const uint16_t* Get_Portuguese_Gsm7_To_Ucs2_Alphabet(uint32_t* pCount);
QALT_API const uint16_t* Get_Portuguese_Gsm7_To_Ucs2_Extend(uint32_t* pCount);
QALT_API const uint8_t* Get_Portuguese_Ucs2_To_Gsm7_Alphabet_ASC(uint32_t* pCount);
QALT_API const CodecPair* Get_Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2(uint32_t* pCount);
QALT_API const CodecPair* Get_Portuguese_Ucs2_To_Gsm7_Extend_ASC(uint32_t* pCount);
QALT_API const CodecPair* Get_Portuguese_Ucs2_To_Gsm7_Extend_UCS2(uint32_t* pCount);

QALT_END_DECLS

#endif /* QALT_AT_TEXT_TABLES_H */
