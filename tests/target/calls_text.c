/* The text codec. Wide literals hold escapes only, so that no compiler's source charset matters. */
#include "call.h"

static int bytes_are(const char* bytes, size_t count) {
  return memcmp(g.bytes, bytes, count) == 0;
}
static int wide_is(const wchar_t* text) {
  return wcscmp(g.wide, text) == 0;
}
static const wchar_t kCyrillic[] = L"\x0410\x043D\x043D\x0430";
static const uint8_t kBytes[] = {0xFE, 0x01};

/* Tables: one accessor for each. */
#define TABLE_CALL(table) \
  CALL(Get_##table, (&g.size) == table && g.size == sizeof table / sizeof *table)
TABLE_CALL(GsmToUcs2_DefaultAlphabet);
TABLE_CALL(Ucs2_To_Gsm7_Alphabet_ASC);
TABLE_CALL(Ucs2_To_Gsm7_Alphabet_UCS2);
TABLE_CALL(Ucs2_To_Gsm7_Extend);
TABLE_CALL(Spanish_Gsm7_To_Ucs2_Alphabet);
TABLE_CALL(Spanish_Gsm7_To_Ucs2_Extend);
TABLE_CALL(Spanish_Ucs2_To_Gsm7_Alphabet_ASC);
TABLE_CALL(Spanish_Ucs2_To_Gsm7_Alphabet_UCS2);
TABLE_CALL(Spanish_Ucs2_To_Gsm7_Extend);
TABLE_CALL(Portuguese_Gsm7_To_Ucs2_Alphabet);
TABLE_CALL(Portuguese_Gsm7_To_Ucs2_Extend);
TABLE_CALL(Portuguese_Ucs2_To_Gsm7_Alphabet_ASC);
TABLE_CALL(Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2);
TABLE_CALL(Portuguese_Ucs2_To_Gsm7_Extend_ASC);
TABLE_CALL(Portuguese_Ucs2_To_Gsm7_Extend_UCS2);
STEP(CODE_InitCodecTable, (), CODE_GetCodecTable(3)->pUcs2ToGsm7ExtendUcs2 != NULL);
CALL(CODE_GetCodecTable, (-5)->pGsm7ToUcs2Alphabet == GsmToUcs2_DefaultAlphabet);
CALL(CODE_GetAlphabetTableValue, (GsmToUcs2_DefaultAlphabet, 2, 128) == '$');
CALL(CODE_GetCodecTableValue, (Ucs2_To_Gsm7_Extend, 0, '[', 10) == 0x3C);

/* GSM 7-bit and UCS2. */
CALL(CODE_Gsm7ToUcs2,
     (g.wide, (const uint8_t*)"A\x1B\x65\x10\x02", 5, 0) == 4 && wide_is(L"A\x20AC\x0394$"));
CALL(CODE_Ucs2ToGsm7, (g.bytes, L"A[\x4E00", 3, 0) == 4 && bytes_are("A\x1B\x3C\x20", 4));
STEP(CODE_Find_Ucs2_To_Gsm7_Extend,
     (10, CODE_GetCodecTable(0), 1, &g.size, g.bytes, L"a{", &g.number), bytes_are("\x1B\x28", 2));
STEP(CODE_Find_Ucs2_To_Gsm7_Extend_UCS2,
     (Portuguese_Ucs2_To_Gsm7_Extend_UCS2, 0, &g.size, g.bytes, L"\x03A6", &g.number),
     bytes_are("\x1B\x12", 2));
CALL(CODE_FindFromCodecTable, (kCyrillic, 4, 0) == 0);
CALL(CODE_FindFromCodecTable_Less,
     (L"A[", 1, 0, 10, CODE_GetCodecTable(0), Ucs2_To_Gsm7_Extend) == 1);
CALL(CODE_FindFromCodecTable_More, (L"\x0394", 0, 0, CODE_GetCodecTable(0)) == 1);
CALL(CODE_FindFromCodecTable_Portuguese,
     (L"\x03A6", 0, 0, CODE_GetCodecTable(3), Portuguese_Ucs2_To_Gsm7_Extend_UCS2) == 1);
CALL(CODE_IsPureGsm7Code, (L"Anna", 0, &g.number) == 1 && g.number == 1);
CALL(CODE_PreEncodeGsmUcs, (kCyrillic, &g.size) == 1 && g.size == 18);
CALL(CODE_GetDecodeType, ("8102", &g.number) == 1 && g.number == TEXT_CODING_UCS2_81);
CALL(CODE_PreDecodeGsmUcs, ("416E6E61", &g.number) == 1 && g.number == 4);
/* The longest text. */
CALL(CODE_Usc2orGsm7ToAscDecode, (memset((char[514]){0}, '4', 512), g.wide, 0) == 1 &&
                                     wcslen(g.wide) == 256 && g.wide[255] == 'D');

/* Alpha identifiers; the bytes from 0x80 up are where plain char may be signed or not. */
#define IDENTIFIER_CALL(name, bytes, result, count, last)                        \
  CALL(name, (g.ucs2, 160, (const uint8_t*)bytes, sizeof bytes - 1) == result && \
                 g.ucs2[count - 1] == last && g.ucs2[count] == 0)
IDENTIFIER_CALL(CODE_utAlphaIdToUcs2, "\x81\x03\x08\x41\x90\xB0", 1, 3, 0x0430);
IDENTIFIER_CALL(CODE_utAlphaIdGsmToUcs2, "A\x1B\x65", 2, 2, 0x20AC);
IDENTIFIER_CALL(CODE_utAlphaId80ToUcs2, "\x80\x04\x10\x04\x30", 2, 2, 0x0430);
IDENTIFIER_CALL(CODE_utAlphaId81ToUcs2, "\x81\x02\x08\x90\xB0", 2, 2, 0x0430);
IDENTIFIER_CALL(CODE_utAlphaId82ToUcs2, "\x82\x02\x04\x10\x80\x90", 2, 2, 0x0420);
CALL(CODE_mapEGsmToUcs2, (0x1B, 0x65, &g.half, &g.used) == 2 && g.half == 0x20AC && g.used == 2);
STEP(CODE_mapEGsmToUcs2_EXTENDED_ALPHABET, (0x1B, 0x28, &g.half, &g.used, &g.number),
     g.half == '{' && g.used == 2 && g.number == 2);

/* Bytes, digits, time. */
static const uint32_t kSeptets[] = {'h', 'e', 'l', 'l', 'o', 'h', 'e', 'l', 'l', 'o'};
static const char kPacked[] = "\xE8\x32\x9B\xFD\x46\x97\xD9\xEC\x37";
CALL(CODE_Encode7bit, (kSeptets, g.bytes, 10) == 9 && bytes_are(kPacked, 9));
CALL(CODE_Decode7bit, ((const uint8_t*)kPacked, g.bytes, 9) == 10 && bytes_are("hellohello", 11));
CALL(CODE_InvertNumbers, ("12345", g.line, 5) == 6 && same(g.line, "2143F5"));
CALL(CODE_SerializeNumbers, ("2143F5", g.line, 6) == 5 && same(g.line, "12345"));
CALL(CODE_Bytes2String, (kBytes, g.line, 2) == 4 && same(g.line, "FE01"));
CALL(CODE_String2Bytes, ("fE01", g.bytes, 4) == 2 && bytes_are("\xFE\x01", 2));
CALL(CODE_AscToHex, (g.bytes, "FE01", 4) == 1 && bytes_are("\xFE\x01", 2));
CALL(CODE_StringtoHex, (kBytes, strcpy(g.line, "80"), 2) == 1 && same(g.line, "80FE01"));
CALL(CODE_Stringto2Bytes, (L"A\x20AC", g.line, 4) == 1 && same(g.line, "004120AC"));
STEP(CODE_UCS2toASC, (g.line, kCyrillic), same(g.line, "0410043D043D0430"));
CALL(CODE_DecodeUcs2, (kBytes, g.wide, 2) == 1 && wide_is(L"\xFE01"));
CALL(CODE_EncodeUcs2, (L"\xFE01", g.bytes, 1) == 2 && bytes_are("\xFE\x01", 2));
CALL(CODE_DecodeGSM8, ("Anna", g.wide, 4) == 4 && wide_is(L"Anna"));
CALL(CODE_DecodePduTimeToQaltTime, ("21111003214380").second == 34);

/* A contact's texts. */
STEP(QL_808182CodeSupportSet, (1), is808182CodeSupport == 1);
CALL(QL_encodePBItem, (kCyrillic, g.line, 23, &g.number, 0) == 0 &&
                          same(g.line, "0410043D043D0430") &&
                          QL_encodePBItem(L"Anna", g.line, 8, &g.number, 1) == 1);
CALL(QL_decodePBItem, ("0410043D043D0430", g.wide, 64, 0) == 0 && wide_is(kCyrillic));
CALL(QL_preEncodePBItem, (kCyrillic, &g.number) == 0 && g.number == 16);
CALL(QL_preDecodePBItem, ("416E6E61", &g.number) == 0 && g.number >= 5);
CALL(PB_EncodeItem, (kCyrillic, g.line, 1) == 1 && same(g.line, "800410043D043D0430"));
CALL(PB808182EncodeItem, (kCyrillic, g.line) == 1 && same(g.line, "81040890BDBDB0"));
CALL(ChoosePhoneBookTextCodecType, (kCyrillic, &g.size) == TEXT_CODING_UCS2_81 && g.size == 8);
CALL(GetMaxMinCharFromString, (kCyrillic, &g.half, &g.used) == 4 && g.half == 0x043D);
CALL(PB_DecodeItem, ("416E6E61", g.wide, 1) == 1 && wide_is(L"Anna"));
CALL(PB_PreEncodeItem, (L"Anna", &g.number) == 0 && g.number == 4);
CALL(PB_PreDecodeItem, ("416E6E61", &g.number) == 0 && g.number >= 4);
