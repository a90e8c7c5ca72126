/*
 * commands.h - one function per phonebook AT command: it formats the command line, exchanges it
 * with the AT server, has the answer parsed and reads the payload (3GPP TS 27.007 clauses 5.5 and
 * 8.11 to 8.14 for the standard commands; the others are the device makers' own).
 *
 * Conventions of this header:
 *  1. Results. 0 PB_OK when the modem answered OK; 1 PB_ERR_COMMAND for everything else: no answer,
 *     no end flag in it, any other final result, a null argument, an argument that does not fit the
 *     command line or would end it early (a quote, a line end, Ctrl-Z or ESC; nothing is sent then
 *     and a line at priority 3 says so). Only the entry reads also return 9 PB_ERR_READ_REFUSED.
 *  2. Ownership. Everything is the caller's. Values are written only when the modem answered OK,
 *     and only those that the answer holds; the others keep what the caller put there.
 *  3. Sizes and units. Command lines hold at most 99 characters, those of the writes 1023. The
 *     time-out that the AT server is given stands with each function, in milliseconds.
 *  4. Threads. No state: may run in several threads at once. The storage and the character set that
 *     a command selects are the modem's, shared by all its users.
 *  5. Stack. About 220 KB for the answer, its parsed form and the parser's work record. No heap.
 */
#ifndef QALT_AT_COMMANDS_H
#define QALT_AT_COMMANDS_H

#include <stdint.h>

#include "qalt_at/export.h"
#include "qalt_at/parser.h"
#include "qalt_at/phonebook_records.h"

QALT_BEGIN_DECLS

enum {
  PB_CMD_LINE_LEN = 100,
  PB_WRITE_LINE_LEN = 1024,
  PB_CMD_TIMEOUT_MS = 5000,
  PB_CMD_LONG_TIMEOUT_MS = 10000,
  PB_CAPABILITY_VALUES = 8,
  PB_CHARSET_NAME_SIZE = 255
};

/*
 * The values of a phonebook capability answer: 0 lowest index, 1 highest index, 2 longest number,
 * 3 longest text, 4 to 7 further lengths in the order in which the answer gives them.
 */
typedef int32_t CpbrTestResult[PB_CAPABILITY_VALUES];

/* A character set name, NUL-terminated, as +CSCS takes it; passed by value. */
typedef struct CharsetName {
  char acName[PB_CHARSET_NAME_SIZE];
} CharsetName;

/*
 * Storage and capability.
 */

/* AT+CPBS="<pStorage>", 5000 ms: selects the phonebook storage, such as "SM" or "ME". */
QALT_API uint32_t CPBS_Set(const char* pStorage);

/*
 * AT+CPBS?, 5000 ms: reads the used and the total number of entries of the selected storage, e.g.
 * from +CPBS: "SM",12,250.
 */
QALT_API uint32_t CPBS_Read(int32_t* iUser, int32_t* iTotal);

/*
 * AT+CPBR=?, 10000 ms: reads the index range and the lengths, e.g. from +CPBR: (1-250),40,18.
 * pResult: eight integers; positions that the answer does not give keep their value.
 */
QALT_API uint32_t CPBR_Test(int32_t* pResult);

/*
 * AT+JCPBR=?, 5000 ms: the same for the vendor contact commands. *pSupported becomes 1 on OK and 0
 * when the modem answers "not support"; otherwise it stays as it was.
 */
QALT_API uint32_t JCPBR_Test(int32_t* pSupported, int32_t* pResult);

/*
 * AT+CPBR=?, 10000 ms, read for the platform that uses ^SCPBR: the values go to positions 0, 1, 2,
 * 3 and 6. Of the lengths behind the text length, position 6 takes the fourth length where the
 * answer has one, else the third. *pSupported as for JCPBR_Test.
 */
QALT_API uint32_t SCPBR_Test(int32_t* pSupported, int32_t* pResult);

/* AT+CPBR=<n>, 5000 ms: the third of the three integers of the answer goes to *pValue. */
QALT_API uint32_t JCPBQ_Set(int32_t n, int32_t* pValue);

/* AT+JUSIM=?, 5000 ms: the integer of the answer goes to *pValue; not 0 means a USIM. */
QALT_API uint32_t JUSIM_Test(int32_t* pValue);

/* AT^CARDMODE=?, 5000 ms: the integer of the answer goes to *pValue; 1 means a SIM. */
QALT_API uint32_t CARDMODE_Test(int32_t* pValue);

/* AT+EUSIM?, 5000 ms: the integer of the answer goes to *pValue. */
QALT_API uint32_t EUSIM_Read(int32_t* pValue);

/* The facility is in no modem: sends nothing, returns 1. */
QALT_API uint32_t JCPBM_Test(void);

/*
 * Entry reads. pList arrives zero-filled; on success it holds one item for each answer line, at
 * most 100 (further lines are dropped). All three return 0 for an OK answer without lines.
 */

/*
 * AT+CPBR=<first>,<last>; 1000 ms for each index of last - first, 20000 ms when that is below 1.
 * Returns 0; 9 when the modem answered ERROR; 1 otherwise.
 */
QALT_API uint32_t CPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList);

/* AT+JCPBR=<first>,<last>, 5000 ms. Returns 0; 9 when the modem answered ERROR; 1 otherwise. */
QALT_API uint32_t JCPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList);

/* AT^SCPBR=<first>,<last>, 5000 ms. Returns 0, or 1 for everything else, ERROR included. */
QALT_API uint32_t SCPBR_Set(int32_t iFirst, int32_t iLast, PbItemList* pList);

/*
 * The answer processors of the three reads: fill pList from the lines of pAtRes->Paras, joined by
 * ";", one item a line. A line that does not match fills what its scan reached. A text wider than
 * its member is cut there, with a log line at priority 3. Always return 0.
 */
QALT_API uint32_t CPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList);
QALT_API uint32_t JCPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList);
QALT_API uint32_t SCPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList);

/*
 * Writes. A record whose number and text are both empty is sent as the delete of storageIndex
 * (storageIndex -1: 1, nothing is sent); with storageIndex 0 a write carries no index and the modem
 * chooses.
 */

/*
 * AT+CPBW=<index>,"<number>",<type>,"<text>" or AT+CPBW=<index>, 10000 ms. The type is sent only
 * together with an index and when it is not 0.
 */
QALT_API uint32_t CPBW_Set(const CpbwRecord* pRecord);

/* AT+JCPBW=<index>,"<number>",<type>,"<text>","<number2>","<number3>","<email>","<extraText>", or
 * AT+JCPBW=<index>, 5000 ms. */
QALT_API uint32_t JCPBW_Set(const JcpbwRecord* pRecord);

/*
 * AT^SCPBW=<index>, then number, number3, number2 and number2 again, each with type 145 when it
 * begins with "+" and 129 otherwise, then "<text>",1,"<email>"; or AT^SCPBW=<index>; 5000 ms.
 */
QALT_API uint32_t SCPBW_Set(const JcpbwRecord* pRecord);

/* AT+CSCS="<name>", 5000 ms: selects the character set of the texts, for every user of the modem.
 */
QALT_API uint32_t CSCS_Set(CharsetName tName);

QALT_END_DECLS

#endif /* QALT_AT_COMMANDS_H */
