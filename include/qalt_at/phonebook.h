/*
 * phonebook.h - the SIM phonebook: discover it, read a range of contacts, write or delete one.
 *
 * Call QL_setCurrentPlatform where the platform is not an ordinary one, then QL_getPhonebookInfo,
 * then any number of reads, writes and deletes. Texts travel unconverted, in the modem's character
 * set of the moment: use QL_decodePBItem after a read and QL_encodePBItem before a write, as
 * convention 8 has it.
 *
 * Conventions of this header:
 *  1. Results. The PB_ codes of phonebook_records.h. Refused arguments and failures are logged.
 *  2. Ownership. The caller owns every record. The discovered PbParam and the index buffer are kept
 *     by the library, in static memory, for the life of the process.
 *  3. Sizes and units. Storage type 0, the SIM phonebook, is the only one served. Indices count as
 *     the modem counts them; the index buffer knows 0 to PBB_CAPACITY - 1, 1023 by default.
 *  4. Threads. A process runs one phonebook call at a time: the calls share the discovered PbParam,
 *     the index buffer and the modem's storage and character set, without a lock.
 *  5. Stack. QL_getPhonebookEntry needs up to 400 KB, the others up to 230 KB: give the calling
 *     thread 512 KB (the default is 8 MB with glibc, 2 MB with uClibc; with musl 128 KB, or 512 KB
 *     where the shared library was loaded at the start).
 *  6. Time. Calls block for the commands' time-outs, for the one-second pauses of the retries and,
 *     without a server, for 300 seconds a command. Look for the server first (link.h, convention
 * 8):
 *
 *                          the modem answers   a busy card      no server at all
 *     QL_getPhonebookInfo  up to 6 commands    20 s of pauses   6320 s (1 h 45 min)
 *     QL_getPhonebookEntry 2 or 3 commands     3 s of pauses    900 s
 *     QL_setPhonebookEntry up to 5 commands    10 s of pauses   3010 s
 *     QL_deletePhonebookEntry 1 to 3 commands  no pauses        900 s
 *
 *     A server that takes commands and does not answer holds a call until it does, or ends.
 *  7. Signals. As for ClientSendCmd: one without SA_RESTART fails the command under way, which the
 *     modem may have carried out, and a write that ends so may leave the modem's character set at
 *     UCS2 for this process. Install handlers with SA_RESTART, or block the signals around the
 * call. After a failed write read the entry before it is written again.
 *  8. Texts. Which commands read and write, and so the coding of the texts, text_items.h says. With
 *     the standard commands a text is UCS2 digits only while the modem's set is UCS2. The calls
 *     select it, and IRA behind, only where IsSupportExtend is 0; where it is 1 and the standard
 *     commands are in use all the same, a read brings and a write stores plain text. So with the
 *     standard commands call _SetPbCharactorSet(1) before each read and write, which says 0 where
 *     the modem has no such set, and _SetPbCharactorSet(0) behind it; it harms nowhere.
 */
#ifndef QALT_AT_PHONEBOOK_H
#define QALT_AT_PHONEBOOK_H

#include <stdint.h>

#include "qalt_at/config.h"
#include "qalt_at/export.h"
#include "qalt_at/phonebook_records.h"

QALT_BEGIN_DECLS

/*
 * Settings.
 */

/* The platform code, the failures of the last storage selection and of the last standard
 * capability test. */
extern QALT_API int32_t g_phone_book_currentPlatform;
extern QALT_API int32_t g_cpbs_pb_busy_count;
extern QALT_API int32_t g_cpbr_pb_busy_count;

/* For clients: what _IsOldPhonebook looks at. The library never writes it. */
extern QALT_API PbType gPbType;

/* Sets the platform code (any value); in force from the next phonebook call on. Returns 0. */
QALT_API int QL_setCurrentPlatform(int currentPlatform);

/* Stores the phonebook type setting, which no operation consults. Returns 0. */
QALT_API int QL_setPBType(int iPbType);
QALT_API void PB_SetPBType(int iPbType);

/* 1 when IsSupportExtend and IsSupportJCPBM of gPbType are both 0, else 0. */
QALT_API int _IsOldPhonebook(void);

/*
 * Discovery.
 */

/*
 * Finds out the storage's counts, the command family, the index range and the field lengths,
 * empties the index buffer for that range, and copies the result to *pPbParam. What a failing
 * command would have set keeps the value of an earlier discovery, 0 before the first.
 *
 * Returns 0, whatever the modem answered; 13 when storageType is not 0 or pPbParam is null (nothing
 * is sent). A busy modem is asked for up to about 20 seconds; without a server it takes an hour and
 * three quarters (convention 6).
 */
QALT_API int QL_getPhonebookInfo(int storageType, PbParam* pPbParam);

/* The steps of discovery. Those that take a PbParam change it in place; null does nothing. */
QALT_API int _GetPbParam(int storageType, PbParam* pPbParam);
QALT_API int _GetPhonebookStorebility(int storageType, PbParam* pPbParam); /* counts; 0 or 1 */
QALT_API int _InitWcdmaPbPara(int storageType, PbParam* pPbParam);         /* flags; 0 or 1 */
QALT_API void _InitStdPbConfig(int storageType, PbParam* pPbParam);        /* range and lengths */
QALT_API void _InitQaltExtendPbConfig(int storageType, PbParam* pPbParam); /* range and lengths */
QALT_API int _IsSupportExtendPhonebook(void);                              /* 0 or 1 */
QALT_API int _IsSupportUSim(void);                                         /* 0 or 1 */
QALT_API int _IsSupportJCPBM(void);                                        /* 0 */
/* Puts "SM" (storage type 0) or "ME" into the 10 bytes at pName. */
QALT_API void _GetStorageParam(int storageType, char* pName);
/* Sets maxLength of the first nCount entries at pAbility from the eight capability values. */
QALT_API void _CpbrTestToFieldability(int32_t iMinIndex, int32_t iMaxIndex, int32_t iNumber,
                                      int32_t iText, int32_t iNumber2, int32_t iNumber3,
                                      int32_t iEmail, int32_t iExtraText, int32_t nCount,
                                      PbFieldAbility* pAbility);

/*
 * Reading.
 */

/*
 * Reads the entries at beginIndex to endIndex (neither is checked: the modem decides).
 *
 * pPhonebookArray  one record for each entry that can come back: the length of the range, at least
 *                  1 and at most 100; a longer range brings its first 100 entries, and what the
 *                  modem sends beyond the range is dropped, with a log line at priority 3. Each
 *                  pFieldList has room for 6 fields. Filled: storageIndex, FieldCount (6 when the
 *                  modem has the vendor commands and a USIM, else 2), coding and the fields, type k
 *                  at position k. The other records are not touched: zero storageIndex to see how
 *                  many came.
 *
 * Returns 0, also when the range is empty; 13 when pPhonebookArray is null or storageType is not 0
 * (nothing is sent), or a record that an entry is meant for has no pFieldList; 9 when the modem
 * answered ERROR four times; 1 for any other failure.
 */
QALT_API int QL_getPhonebookEntry(int storageType, int beginIndex, int endIndex,
                                  PhonebookEntry* pPhonebookArray);

/* The steps of reading. */
QALT_API int _ReadQaltPbContact(PbItemList* pList, int beginIndex, int endIndex);
QALT_API int _ReadQaltExtendContact(PbItemList* pList, int beginIndex, int endIndex);
QALT_API int _ReadStdContact(PbItemList* pList, int beginIndex, int endIndex);
QALT_API int _TranslatePbItemToPbEntry(const PbItemList* pList, PhonebookEntry* pPhonebookArray);
QALT_API void _TranslatePbItemToFields(const PbItem* pItem, PhonebookEntry* pEntry);
QALT_API void _TranslatePbItemToField(const PbItem* pItem, PbField* pField);
QALT_API void _TranslatePbItemToString(const char* pText, PbField* pField);
/* Mode 1 selects "UCS2", 2 "UCS2_0X81", any other "GSM" on platform 4 and "IRA" elsewhere.
 * Returns 1 when the modem took it, else 0. */
QALT_API int _SetPbCharactorSet(int mode);

/*
 * Writing and deleting.
 */

/*
 * Writes one contact. With storageIndex 0 it takes the lowest index that the index buffer knows to
 * be free - an entry that this process has not read counts as free, so read the range first - and
 * puts it into storageIndex, even when the write then fails. Field texts are cut at the limits of
 * phonebook_records.h. A contact whose number and text are empty deletes the index.
 *
 * Returns 0; 13 when pEntry (or its pFieldList, with FieldCount above 0) is null, storageType is
 * not 0, the index lies outside the discovered range, or a vendor record cannot hold a text whole;
 * 34 when no index is free or the storage reports more used than it has; 1 when +CPBW failed, 31
 * when the vendor write failed.
 */
QALT_API int QL_setPhonebookEntry(int storageType, PhonebookEntry* pEntry);

/*
 * Deletes the entry at storageIndex; the modem decides whether the index exists.
 * Returns 0; 13 when storageIndex is 0 or storageType is not 0; 1 or 31 when the command failed.
 */
QALT_API int QL_deletePhonebookEntry(int storageType, int storageIndex);

/* The steps of writing and deleting. */
QALT_API int _TranslatePbEntryToPbItem(PbItem* pItem, const PhonebookEntry* pEntry);
QALT_API void _TranslateFieldToPbItem(PbItem* pItem, const PbField* pField);
/* Copies at most nLimit bytes of the field's text to pMember; writes no terminator. */
QALT_API void _TranslateStringToPbItem(char* pMember, int nLimit, const PbField* pField);
QALT_API int _WriteStdContact(PbItem tItem, int storageIndex);
QALT_API int _WriteQaltExtendContact(PbItem tItem, int storageIndex);
QALT_API int _DeleteStdContact(int storageIndex);
QALT_API int _DeleteQaltExtendContact(int storageIndex);

/*
 * The index buffer: which indices this process knows to be in use since the last discovery, and a
 * copy of each entry. Indices outside 0 to PBB_CAPACITY - 1 are neither stored nor found: those
 * calls return 0.
 */

enum { PBB_CAPACITY = QALT_PBB_CAPACITY };

typedef struct PhonebookIndexBuffer {
  int32_t MinIndex; /* the range searched for a free index, both ends included */
  int32_t MaxIndex;
  int32_t MaxEntries;
  int32_t Used[PBB_CAPACITY]; /* 0 free or unknown, 1 used */
  PbItem Items[PBB_CAPACITY]; /* entry k at position k; zero while free */
} PhonebookIndexBuffer;

/* Empties the buffer and sets the range. */
QALT_API void PBB_InitPbBuffer(int MinIndex, int MaxIndex, int MaxEntries);
/* 1 and the entry in *pItem when the index is used, else 0 (*pItem stays as it was). */
QALT_API int PBB_ReadPB(int storageIndex, PbItem* pItem);
/* Marks pItem->storageIndex used and stores a copy. Returns 1. */
QALT_API int PBB_WritePB(const PbItem* pItem);
/* Marks the index free and zeroes its entry. Returns 1. */
QALT_API int PBB_DeletePB(int storageIndex);
/* The lowest free index of the range, -1 when there is none. */
QALT_API int PBB_GetFirstEmptyIndex(void);
/* Mark an index used or free without touching its entry. */
QALT_API void _PBB_UseEmptyIndex(int storageIndex);
QALT_API void _PBB_SetEmptyIndex(int storageIndex);
/* 1 when the index is free, 0 when it is used. */
QALT_API int _PBB_GetIndexIsEmpty(int storageIndex);

QALT_END_DECLS

#endif /* QALT_AT_PHONEBOOK_H */
