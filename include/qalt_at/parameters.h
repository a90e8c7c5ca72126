/*
 * parameters.h - the parameter codec: cuts the payload of an answer into lines and parameters, and
 * rewrites one line so that a whitespace-driven scanner reads one token for each parameter.
 *
 * Conventions of this header:
 *  1. Results. No function reports an error or writes a log line. A null argument makes a call do
 *     nothing unless its description says otherwise.
 *  2. Ownership. The caller owns every text and record; nothing is kept after the call returns.
 *  3. Sizes and units. Texts are NUL-terminated bytes. Lengths count characters without the NUL.
 *  4. Quotes. A separator counts only where an even number of double quotes stands before it. One
 *     stray quote therefore hides every later separator. An empty separator or token occurs in no
 *     text.
 *  5. Threads. The functions work on their arguments alone and may run in any number of threads.
 *  6. Stack. A rewrite needs a little over 1 KB, every other function a few words. Nothing is
 *     allocated on the heap. A ParasList has 100 KB.
 */
#ifndef QALT_AT_PARAMETERS_H
#define QALT_AT_PARAMETERS_H

#include <stdint.h>

#include "qalt_at/export.h"

QALT_BEGIN_DECLS

enum {
  ATCODEC_MAX_PARAS = 100, /* pieces that a list holds */
  ATCODEC_PARA_LEN = 1024  /* bytes of a piece, terminating NUL included */
};

/* Bytes that stand in a rewritten line for what a whitespace scanner would not see. */
enum {
  ATCODEC_MARK_CR = 0xFA,    /* a carriage return inside quotes */
  ATCODEC_MARK_LF = 0xFB,    /* a line feed inside quotes */
  ATCODEC_MARK_TAB = 0xFC,   /* a tab inside quotes */
  ATCODEC_MARK_EMPTY = 0xFD, /* an empty parameter or quoted string */
  ATCODEC_MARK_SPACE = 0xFE  /* a space inside quotes */
};

/*
 * The pieces of a text. The caller fills the whole record with zeros before each split: a piece
 * that ends at a separator is copied without a terminator.
 */
typedef struct ParasList {
  int32_t nCount;                                 /* pieces stored */
  char Para[ATCODEC_MAX_PARAS][ATCODEC_PARA_LEN]; /* piece i in slot i, quotes and blanks kept */
} ParasList;

/*
 * Splitting a text into a list. Pieces go into the slots from the first on. A split ends silently,
 * with the pieces stored so far, at a piece of over 1023 characters before a separator or when 100
 * pieces are stored. The last piece is cut to 1023 characters; an empty last piece is not stored.
 */

/* Splits pText at ";", the joint between the lines of an answer. */
QALT_API void ATCodec_PreProc_Res_ParaList(ParasList* pList, const char* pText);

/*
 * Splits pText at pSeparator. The next piece begins one character behind the first character of the
 * separator, whatever its length. With a null separator the whole text is one piece.
 */
QALT_API void ATCodec_PreProc_Res_ParaList_Ex(ParasList* pList, const char* pText,
                                              const char* pSeparator);

/* Splits pText at ",", into the parameters of one line. */
QALT_API void ATCodec_PreProc_Res_ParaList_Special(ParasList* pList, const char* pText);

/*
 * Splits pText at the marker "*STGC:". What stands before the first marker is not stored; a text
 * without a marker is stored whole as one piece.
 */
QALT_API void ATCodec_PreProc_Res_Icera_ParaList(ParasList* pList, const char* pText);

/*
 * Splits pText into its lines, at "\r\n", and passes over empty lines. A null, empty or over 102400
 * characters long text clears the whole list.
 */
QALT_API void ATCodec_PreProc_Res_COPS5_ParaList(ParasList* pList, const char* pText);

/*
 * Stores in *pCount the number of "," separators of pText: the index, counted from 0, of its last
 * parameter. Stores nothing when nothing follows the last separator, when there are over 99
 * separators, or when a piece before a separator has over 1023 characters.
 */
QALT_API void ATCodec_PreProc_Res_ParaList_Entend(const char* pText, int32_t* pCount);

/*
 * Number of pieces into which pToken divides pText. A plain search: quotes play no part, and
 * overlapping occurrences count. 0 for a null argument.
 */
QALT_API int32_t ATCodec_GetSubStrCountByToken(const char* pText, const char* pToken);

/*
 * Copies one piece of pText, as divided by pToken, into pOut, which the caller has filled with
 * zeros and made large enough: 1024 bytes for a piece before a separator (copied without a
 * terminator), the length of the text for the last one (copied with it).
 *
 * nIndex  number of the piece, counted from 1; any other number up to 99 gives the last piece.
 *
 * Returns pOut when a piece was copied. With nothing copied: null when nothing follows the last
 * separator; the place of the separator when nIndex is over 99 or the piece before it has over 1023
 * characters; pText when pText or pOut is null.
 */
QALT_API char* ATCodec_FindSubStrByIndex(const char* pText, char* pOut, int32_t nIndex,
                                         const char* pToken);

/* First occurrence of pToken in pText outside quotes; null if there is none or for a null. */
QALT_API unsigned char* ATCodec_Find_Sub_Str(const unsigned char* pText, const char* pToken);

/*
 * Rewrites the line pLine, in a field of 1024 bytes, for a scan such as "%d %40s %d": a comma
 * outside quotes becomes a space, quotes go, a space or tab inside quotes becomes its marker, and
 * an empty parameter (except one at the start of the line) becomes ATCODEC_MARK_EMPTY. A line that
 * is empty, over 1023 characters long, or would become so, stays as it is.
 */
QALT_API void ATCodec_PreProc_Res_ParaLine(unsigned char* pLine);

/* The same, with carriage returns and line feeds inside quotes replaced by their markers too. */
QALT_API void ATCodec_PreProc_Res_ParaLine_Special(unsigned char* pLine);

/*
 * Turns the markers of a scanned field back into what they stood for, in place: space and tab, and
 * a field that is ATCODEC_MARK_EMPTY alone into an empty one.
 */
QALT_API void ATCodec_Restore_String_Para(char* pField);

/* The same, with the markers for carriage return and line feed. */
QALT_API void ATCodec_Restore_String_Para_Special(char* pField);

/*
 * Flattens the groups of a capability answer, in place: parentheses go, and a closing one becomes
 * ";" together with the comma behind it. A line of over 1023 characters stays as it is.
 */
QALT_API void ATCodec_ProcRes_ParaLineEx(char* pLine);

/*
 * Formats the arguments by pFormat into pCmdPara, as printf does. The text's length is not limited:
 * pCmdPara has room for all of it. Returns 0 always.
 */
QALT_API int ATCodec_TranslateToCmdPara(char* pCmdPara, const char* pFormat, ...) QALT_PRINTF(2, 3);

QALT_END_DECLS

#endif /* QALT_AT_PARAMETERS_H */
