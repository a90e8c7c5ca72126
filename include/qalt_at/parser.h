/*
 * parser.h - the response parser: reduces the raw text that a modem produced for one command to one
 * record, which says how the command ended and holds the payload.
 *
 * Conventions of this header:
 *  1. Results. Parser functions: 0 handled (also for an answer that reports an error: look at
 *     ResType), 19 nothing found, 20 null argument. Lookups: 0 found, 19 not found.
 *  2. Ownership. The caller owns the text and the record; nothing is kept after the call returns.
 *     The text is changed in place: the block that was handled is cut out of it.
 *  3. Sizes and units. Texts are NUL-terminated bytes of any length; lengths count characters
 *     without the NUL. A payload holds at most 102399 characters and is cut there. An information
 *     line counts with its first 1023 characters, a name before ": " with its first 29.
 *  4. Quotes. Every search is quote-aware: what stands behind an odd number of double quotes is
 *     never taken for a line end, a separator or an end flag.
 *  5. Threads. Bk_Parse_At_Res may run in any number of threads at once; one mutex, private to the
 *     parser, is held for the whole call. Bk_Parse_At_COPS5_Res, _Find_Sub_Str and the lookups
 *     touch only their arguments and the tables. The steps of Bk_Parse_At_Res take no lock: a
 *     client that calls one itself sees to it that no other parse runs meanwhile.
 *  6. Stack. Bk_Parse_At_Res needs 106 KB in all, besides the caller's AtRes of 100 KB. The library
 *     allocates nothing; syslog, which it calls, may. No thread is cancelled inside it.
 */
#ifndef QALT_AT_PARSER_H
#define QALT_AT_PARSER_H

#include <stdint.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

enum {
  QALT_AT_FLAG_SIZE = 32,     /* bytes of an end flag */
  QALT_AT_NAME_SIZE = 30,     /* bytes of a command name, terminating NUL included */
  QALT_AT_PARAS_SIZE = 102400 /* bytes of a payload, terminating NUL included */
};

/* Results of the parser. */
enum {
  AT_PARSE_OK = 0,         /* a block was found and handled */
  AT_PARSE_NOT_FOUND = 19, /* no end flag in the text, no such command */
  AT_PARSE_NULL = 20       /* a null argument */
};

/* How a block of modem output ended: AtRes.ResType. */
enum {
  AT_RES_OK = 1,          /* final result OK; the lines before it are the command's answer */
  AT_RES_ERROR = 2,       /* final result ERROR */
  AT_RES_CMS_ERROR = 3,   /* +CMS ERROR (3GPP TS 27.005); the payload is the error number */
  AT_RES_CME_ERROR = 4,   /* +CME ERROR (3GPP TS 27.007); the payload is the error number */
  AT_RES_PROMPT = 11,     /* the input prompt: the modem waits for a text */
  AT_RES_REPORT = 12,     /* an unsolicited report; the payload, if any, is its content */
  AT_RES_NOT_SUPPORT = 13 /* "not support" on a line of its own */
};

/* One row of the end-flag table: a text that ends a block of modem output. */
typedef struct AtEndFlgEntry {
  char EndFlag[QALT_AT_FLAG_SIZE]; /* searched verbatim; NUL-terminated unless it fills the field */
  uint32_t ResType;                /* an AT_RES_ code */
  uint32_t CmdId;                  /* identifier for AtRes.CmdId */
  uint32_t HavePara;               /* 1: a parameter follows the flag; 0: the flag stands alone */
  uint32_t reserved;               /* 0, never read */
} AtEndFlgEntry;

/* One row of the command table. */
typedef struct AtCmdEntry {
  uint16_t CmdId;                  /* the command's identifier */
  char CmdName[QALT_AT_NAME_SIZE]; /* its name with the leading "+", "^", "$", "%" or "*" */
} AtCmdEntry;

/*
 * The tables and their row counts. They may be changed while no call of the parser runs: every walk
 * reads the row count afresh and takes that many rows in row order.
 */
extern QALT_API AtEndFlgEntry QaltWcdma_AtEndFlgTable[54];
extern QALT_API int QaltWcdma_AtEndFlgTableSize;
extern QALT_API AtCmdEntry QaltWcdma_AtCmdTable[293];
extern QALT_API int QaltWcdma_AtCmdTableSize;

/*
 * Finds the first row of the command table with the identifier ulCmdId.
 * Returns 0 and stores the row in *pIndex; 19 when no row matches (an identifier above 0xFFFF never
 * does) or pIndex is null.
 */
QALT_API int _Find_Cmd_By_ID(int32_t* pIndex, uint32_t ulCmdId);

/*
 * Finds the first row of the command table with exactly the name pName. For a name that is both a
 * command and a report this is the command's row.
 * Returns 0 and stores the row in *pIndex; 19 when no row matches or an argument is null.
 */
QALT_API int _Find_Cmd_By_Name(int32_t* pIndex, const char* pName);

/* The parsed answer. The caller fills it with zeros before each parse. */
typedef struct AtRes {
  uint16_t CmdId;                 /* 1 to 6 for a final result or the prompt, else the report's */
  uint8_t reserved;               /* never written */
  uint8_t ResType;                /* an AT_RES_ code: what callers test */
  uint32_t ParaLen;               /* low 16 bits of the length of the parameter behind a flag */
  uint8_t reserved2[8];           /* never written */
  char Paras[QALT_AT_PARAS_SIZE]; /* the payload, NUL-terminated; empty when there is none */
} AtRes;

/* The work record of one parse. */
typedef struct AtParseBuf {
  char CmdName[QALT_AT_NAME_SIZE];  /* name of the first named line; empty until one is seen */
  char ParaBuf[QALT_AT_PARAS_SIZE]; /* the payload that is being joined */
} AtParseBuf;

/* Characters that the running call will cut out of the text, counted from the end flag on. */
extern QALT_API int g_iProcDataLen;

/*
 * Handles one block of modem output, the one closed by the earliest end flag of the text, and cuts
 * it out, so that what remains can be handed over again.
 *
 * pStr    the modem's raw text. What stands before its first line end (an echoed command) goes; a
 *         text without a line end is cut down to its last character.
 * pAtRes  receives CmdId and ResType; Paras after an OK with information lines, Paras and ParaLen
 *         for an error number or a report. Other members and other bytes stay, except that after
 *         an OK with information all of Paras behind the payload is zero.
 *
 * Payload of an OK: the information lines without the name before ": ", joined by ";". A line
 * without a name becomes one more quoted parameter of the line before it. The join ends at the
 * first line of another name, and takes only lines that are followed by a line end of their own:
 * information with the final result directly behind it is lost.
 *
 * Returns 0 when a block was handled; 19 when the text holds no end flag (the record stays
 * untouched), as a report that the table does not have; 20 when an argument is null. Log lines:
 * three at priority 7 for each block.
 */
QALT_API int Bk_Parse_At_Res(char* pStr, AtRes* pAtRes);

/*
 * Takes a text that contains an OK outside quotes whole as the payload: CmdId 1, ResType AT_RES_OK,
 * Paras the text with its line ends, names and final result. The text stays as it is.
 * Returns 0 on success; 19 with nothing changed when there is no OK or the text has over 102399
 * characters; 20 when an argument is null.
 */
QALT_API int Bk_Parse_At_COPS5_Res(const char* pStr, AtRes* pAtRes);

/*
 * The steps of Bk_Parse_At_Res, exported so that a client can use them alone. A null argument gives
 * the step's failure result and changes nothing.
 */

/*
 * First occurrence of pNeedle in pStr that stands outside double quotes, counted from the start of
 * the text; null when there is none or an argument is null.
 */
QALT_API char* _Find_Sub_Str(const char* pStr, const char* pNeedle);

/*
 * Drops what stands before the first line end of the text and finds the earliest end flag; of flags
 * at one place the lowest row of the table wins.
 * Returns 0 and stores the place in *pBlockHead and the row in *iFlagIndex; 19 without a line end
 * (the text is cut down to its last character, nothing is stored) or without a flag (*pBlockHead is
 * the end of the text, *iFlagIndex stays).
 */
QALT_API int _Parse_At_PreProcess(char* pStr, char** pBlockHead, int* iFlagIndex);

/*
 * Runs the handler that ulHavePara, the member of the row, selects. On entry g_iProcDataLen is the
 * length of the flag at *pBlockHead.
 * Returns the handler's result; 19 when ulHavePara is neither 0 nor 1.
 */
QALT_API int _Parse_At_End_Flag(char* pStr, AtRes* pAtRes, char** pBlockHead, AtParseBuf* pParseBuf,
                                uint32_t ulHavePara);

/*
 * A flag that stands alone: takes the information lines before an OK as the payload, moves
 * *pBlockHead to the start of the text and adds their length to g_iProcDataLen.
 * Returns 0 when a payload was taken; 19, with nothing changed, when pAtRes->ResType is not
 * AT_RES_OK or the flag is at the start of the text.
 */
QALT_API int _Parse_At_End_Flag_NoPara(char* pStr, AtRes* pAtRes, char** pBlockHead,
                                       AtParseBuf* pParseBuf);

/*
 * A flag with a parameter: takes the rest of the line as the payload, or all of the text behind the
 * flag where the text contains a report whose data follows on further lines (+CBM, +CMT, +CDS,
 * +JCLAS), and adds its length, line end included, to g_iProcDataLen.
 * Returns 0 when the parameter was taken, 19 when it has no end.
 */
QALT_API int _Parse_At_End_Flag_HavePara(char* pStr, AtRes* pAtRes, char** pBlockHead,
                                         AtParseBuf* pParseBuf);

/*
 * Copies the parameter from pParaStart up to pParaEnd into Paras and stores the low 16 bits of its
 * length in ParaLen. pStr is the text it stands in. Returns 0; 20 for a null argument.
 */
QALT_API int _Parse_At_ParaOfTheEndColon(const char* pStr, const char* pParaStart,
                                         const char* pParaEnd, AtRes* pAtRes);

/*
 * Joins the lines held in Paras, from its third character on, into the work record.
 * Returns 0; 20 for a null argument.
 */
QALT_API int _Parse_At_Ok_Res(AtRes* pAtRes, AtParseBuf* pParseBuf);

/*
 * Joins the lines of pStr into the work record. pLine is a line buffer of 1024 bytes.
 * Returns 0 when the lines ran out; 19 when a line of another name ended the join, or for a null
 * argument.
 */
QALT_API int _First_Parse_At_OK_Res(const char* pStr, char* pLine, AtParseBuf* pParseBuf);

/*
 * Takes the line pLine, whose ": " is at pColon. Its name is compared with the work record's over
 * the length of the line's own name.
 * Returns 1 when the line was taken; 0 when its name differs.
 */
QALT_API int ParseCmdLineWithCmdName(AtParseBuf* pParseBuf, const char* pLine, const char* pColon);

/*
 * Takes or drops the unnamed line pLine; pRest is the text from this line on. It becomes a quoted
 * parameter behind a named line, is dropped before one, and is taken as it is where there is none.
 */
QALT_API void ParseCmdLineWithoutCmdName(AtParseBuf* pParseBuf, const char* pLine,
                                         const char* pRest);

/*
 * +CLIP is a report and the answer to a query (3GPP TS 27.007, 7.6). A block with this identifier
 * whose parameter, from pParaStart up to pParaEnd, has two values and is directly followed by an OK
 * is the answer: ResType becomes AT_RES_OK, Paras the parameter, and g_iProcDataLen grows by the
 * parameter and the OK.
 * Returns 1 when the block was taken; 0 when it is an ordinary report, or for a null argument.
 */
QALT_API int ProcessClipCmd(const char* pParaStart, const char* pParaEnd, AtRes* pAtRes,
                            AtParseBuf* pParseBuf);

QALT_END_DECLS

#endif /* QALT_AT_PARSER_H */
