/* The text codec. Wide literals hold escapes only, so that no compiler's source charset matters. */
#include <stdlib.h>

#include "road.h"

static char g_hex[1100];
static uint8_t g_bytes[512];
static wchar_t g_wide[600];
static uint16_t g_ucs2[200];

static void clear_outputs(void) {
  memset(g_hex, 0, sizeof g_hex);
  memset(g_bytes, 0, sizeof g_bytes);
  memset(g_wide, 0, sizeof g_wide);
  memset(g_ucs2, 0, sizeof g_ucs2);
  is808182CodeSupport = 0;
}
#define TEXT_ROAD(name) ROAD_AFTER(clear_outputs, name)

static int bytes_are(const char* bytes, size_t count) {
  return memcmp(g_bytes, bytes, count) == 0;
}
static int wide_is(const wchar_t* text) {
  return wcscmp(g_wide, text) == 0;
}
static const wchar_t kCyrillic[] = L"\x0410\x043D\x043D\x0430";

/* Tables: one accessor for each. */
#define TABLE_ROAD(accessor, table)                                \
  ROAD(accessor) {                                                 \
    uint32_t count = 0;                                            \
    return accessor(&count) == table && accessor(NULL) == table && \
           count == sizeof table / sizeof *table;                  \
  }
TABLE_ROAD(Get_GsmToUcs2_DefaultAlphabet, GsmToUcs2_DefaultAlphabet)
TABLE_ROAD(Get_Ucs2_To_Gsm7_Alphabet_ASC, Ucs2_To_Gsm7_Alphabet_ASC)
TABLE_ROAD(Get_Ucs2_To_Gsm7_Alphabet_UCS2, Ucs2_To_Gsm7_Alphabet_UCS2)
TABLE_ROAD(Get_Ucs2_To_Gsm7_Extend, Ucs2_To_Gsm7_Extend)
TABLE_ROAD(Get_Spanish_Gsm7_To_Ucs2_Alphabet, Spanish_Gsm7_To_Ucs2_Alphabet)
TABLE_ROAD(Get_Spanish_Gsm7_To_Ucs2_Extend, Spanish_Gsm7_To_Ucs2_Extend)
TABLE_ROAD(Get_Spanish_Ucs2_To_Gsm7_Alphabet_ASC, Spanish_Ucs2_To_Gsm7_Alphabet_ASC)
TABLE_ROAD(Get_Spanish_Ucs2_To_Gsm7_Alphabet_UCS2, Spanish_Ucs2_To_Gsm7_Alphabet_UCS2)
TABLE_ROAD(Get_Spanish_Ucs2_To_Gsm7_Extend, Spanish_Ucs2_To_Gsm7_Extend)
TABLE_ROAD(Get_Portuguese_Gsm7_To_Ucs2_Alphabet, Portuguese_Gsm7_To_Ucs2_Alphabet)
TABLE_ROAD(Get_Portuguese_Gsm7_To_Ucs2_Extend, Portuguese_Gsm7_To_Ucs2_Extend)
TABLE_ROAD(Get_Portuguese_Ucs2_To_Gsm7_Alphabet_ASC, Portuguese_Ucs2_To_Gsm7_Alphabet_ASC)
TABLE_ROAD(Get_Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2, Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2)
TABLE_ROAD(Get_Portuguese_Ucs2_To_Gsm7_Extend_ASC, Portuguese_Ucs2_To_Gsm7_Extend_ASC)
TABLE_ROAD(Get_Portuguese_Ucs2_To_Gsm7_Extend_UCS2, Portuguese_Ucs2_To_Gsm7_Extend_UCS2)
ROAD(CODE_InitCodecTable) {
  CODE_InitCodecTable();
  return CODE_GetCodecTable(2)->pUcs2ToGsm7AlphabetAsc == Spanish_Ucs2_To_Gsm7_Alphabet_ASC;
}
ROAD(CODE_GetCodecTable) {
  return CODE_GetCodecTable(-5)->pGsm7ToUcs2Alphabet == GsmToUcs2_DefaultAlphabet;
}
ROAD(CODE_GetAlphabetTableValue) {
  return CODE_GetAlphabetTableValue(GsmToUcs2_DefaultAlphabet, 2, 128) == '$' &&
         CODE_GetAlphabetTableValue(GsmToUcs2_DefaultAlphabet, 500, 128) == 500;
}
ROAD(CODE_GetCodecTableValue) {
  return CODE_GetCodecTableValue(Ucs2_To_Gsm7_Extend, 0, '[', 10) == 0x3C &&
         CODE_GetCodecTableValue(Ucs2_To_Gsm7_Extend, 1, 0x3C, 10) == '[' &&
         CODE_GetCodecTableValue(Ucs2_To_Gsm7_Extend, 2, '[', 10) == -1;
}

/* GSM 7-bit and UCS2. */
TEXT_ROAD(CODE_Gsm7ToUcs2) {
  return CODE_Gsm7ToUcs2(g_wide, (const uint8_t*)"A\x1B\x65\x10\x02", 5, 0) == 4 &&
         wide_is(L"A\x20AC\x0394$") &&
         CODE_Gsm7ToUcs2(g_wide, (const uint8_t*)"A", 0, 0) == 0xFFFFFFFFu;
}
TEXT_ROAD(CODE_Ucs2ToGsm7) {
  return CODE_Ucs2ToGsm7(g_bytes, L"A[\x4E00", 3, 0) == 4 && bytes_are("A\x1B\x3C\x20", 4);
}
TEXT_ROAD(CODE_Find_Ucs2_To_Gsm7_Extend) {
  uint32_t position = 0;
  int found = 0;
  CODE_Find_Ucs2_To_Gsm7_Extend(10, CODE_GetCodecTable(0), 1, &position, g_bytes, L"a{", &found);
  return found == 1 && position == 1 && bytes_are("\x1B\x28", 2);
}
TEXT_ROAD(CODE_Find_Ucs2_To_Gsm7_Extend_UCS2) {
  uint32_t position = 0;
  int found = 0;
  CODE_Find_Ucs2_To_Gsm7_Extend_UCS2(Portuguese_Ucs2_To_Gsm7_Extend_UCS2, 0, &position, g_bytes,
                                     L"\x03A6", &found);
  return found == 1 && position == 1 && bytes_are("\x1B\x12", 2);
}
ROAD(CODE_FindFromCodecTable) {
  return CODE_FindFromCodecTable(L"Hello", 5, 0) == 1 &&
         CODE_FindFromCodecTable(kCyrillic, 4, 0) == 0;
}
ROAD(CODE_FindFromCodecTable_Less) {
  const CodecTable* table = CODE_GetCodecTable(0);
  return CODE_FindFromCodecTable_Less(L"A[", 1, 0, 10, table, Ucs2_To_Gsm7_Extend) == 1 &&
         CODE_FindFromCodecTable_Less(L"`", 0, 0, 10, table, Ucs2_To_Gsm7_Extend) == 0;
}
ROAD(CODE_FindFromCodecTable_More) {
  return CODE_FindFromCodecTable_More(L"\x0394", 0, 0, CODE_GetCodecTable(0)) == 1 &&
         CODE_FindFromCodecTable_More(kCyrillic, 0, 0, CODE_GetCodecTable(0)) == 0;
}
ROAD(CODE_FindFromCodecTable_Portuguese) {
  return CODE_FindFromCodecTable_Portuguese(L"\x03A6", 0, 0, CODE_GetCodecTable(3),
                                            Portuguese_Ucs2_To_Gsm7_Extend_UCS2) == 1;
}
ROAD(CODE_IsPureGsm7Code) {
  int is_default = 0;
  return CODE_IsPureGsm7Code(L"Anna", 0, &is_default) == 1 && is_default == 1 &&
         CODE_IsPureGsm7Code(kCyrillic, 0, &is_default) == 0;
}
ROAD(CODE_PreEncodeGsmUcs) {
  uint32_t size = 0;
  return CODE_PreEncodeGsmUcs(kCyrillic, &size) == 1 && size == 18;
}
ROAD(CODE_GetDecodeType) {
  TextCoding coding = -1;
  return CODE_GetDecodeType("8102", &coding) == 1 && coding == TEXT_CODING_UCS2_81;
}
ROAD(CODE_PreDecodeGsmUcs) {
  int32_t count = 0;
  return CODE_PreDecodeGsmUcs("416E6E61", &count) == 1 && count == 4;
}
TEXT_ROAD(CODE_Usc2orGsm7ToAscDecode) {
  char longest[514];
  memset(longest, '4', sizeof longest);
  longest[513] = '\0';
  if (CODE_Usc2orGsm7ToAscDecode(longest, g_wide, 0) != 0) return 0;
  longest[512] = '\0';
  return CODE_Usc2orGsm7ToAscDecode(longest, g_wide, 0) == 1 && wcslen(g_wide) == 256 &&
         CODE_Usc2orGsm7ToAscDecode("8004100430", g_wide, 0) == 1 && wide_is(L"\x0410\x0430");
}

/* Alpha identifiers; the bytes from 0x80 up are where plain char may be signed or not. */
#define IDENTIFIER_ROAD(name, bytes, result, count, first, last)                        \
  TEXT_ROAD(name) {                                                                     \
    return (int)name(g_ucs2, 160, (const uint8_t*)bytes, sizeof bytes - 1) == result && \
           g_ucs2[0] == first && g_ucs2[count - 1] == last && g_ucs2[count] == 0;       \
  }
IDENTIFIER_ROAD(CODE_utAlphaIdToUcs2,
                "\x81\x03\x08"
                "A\x90\xB0",
                1, 3, 'A', 0x0430)
IDENTIFIER_ROAD(CODE_utAlphaIdGsmToUcs2, "A\x1B\x65", 2, 2, 'A', 0x20AC)
IDENTIFIER_ROAD(CODE_utAlphaId80ToUcs2, "\x80\x04\x10\x04\x30", 2, 2, 0x0410, 0x0430)
IDENTIFIER_ROAD(CODE_utAlphaId81ToUcs2, "\x81\x02\x08\x90\xB0", 2, 2, 0x0410, 0x0430)
IDENTIFIER_ROAD(CODE_utAlphaId82ToUcs2,
                "\x82\x02\x04\x10\x80"
                "a",
                2, 2, 0x0410, 'a')
ROAD(CODE_mapEGsmToUcs2) {
  uint16_t out = 0, used = 0;
  return CODE_mapEGsmToUcs2(0x1B, 0x65, &out, &used) == 2 && out == 0x20AC && used == 2 &&
         CODE_mapEGsmToUcs2(0x02, 0x65, &out, &used) == 1 && out == '$';
}
ROAD(CODE_mapEGsmToUcs2_EXTENDED_ALPHABET) {
  uint16_t out = 0, used = 0;
  int result = 0;
  CODE_mapEGsmToUcs2_EXTENDED_ALPHABET(0x1B, 0x28, &out, &used, &result);
  return out == '{' && used == 2 && result == 2;
}

/* Bytes, digits, time. */
TEXT_ROAD(CODE_Encode7bit) {
  static const uint32_t septets[] = {'h', 'e', 'l', 'l', 'o', 'h', 'e', 'l', 'l', 'o'};
  return CODE_Encode7bit(septets, g_bytes, 10) == 9 &&
         bytes_are("\xE8\x32\x9B\xFD\x46\x97\xD9\xEC\x37", 9);
}
TEXT_ROAD(CODE_Decode7bit) {
  return CODE_Decode7bit((const uint8_t*)"\xE8\x32\x9B\xFD\x46\x97\xD9\xEC\x37", g_bytes, 9) ==
             10 &&
         bytes_are("hellohello", 11);
}
TEXT_ROAD(CODE_InvertNumbers) {
  return CODE_InvertNumbers("12345", g_hex, 5) == 6 && strcmp(g_hex, "2143F5") == 0;
}
TEXT_ROAD(CODE_SerializeNumbers) {
  return CODE_SerializeNumbers("2143F5", g_hex, 6) == 5 && strcmp(g_hex, "12345") == 0;
}
TEXT_ROAD(CODE_Bytes2String) {
  return CODE_Bytes2String((const uint8_t*)"\xFE\x01", g_hex, 2) == 4 && strcmp(g_hex, "FE01") == 0;
}
TEXT_ROAD(CODE_String2Bytes) {
  return CODE_String2Bytes("fE01", g_bytes, 4) == 2 && bytes_are("\xFE\x01", 2);
}
TEXT_ROAD(CODE_AscToHex) {
  return CODE_AscToHex(g_bytes, "FE01", 4) == 1 && bytes_are("\xFE\x01", 2);
}
TEXT_ROAD(CODE_StringtoHex) {
  strcpy(g_hex, "80");
  return CODE_StringtoHex((const uint8_t*)"\xFE\x01", g_hex, 2) == 1 &&
         strcmp(g_hex, "80FE01") == 0;
}
TEXT_ROAD(CODE_Stringto2Bytes) {
  return CODE_Stringto2Bytes(L"A\x20AC", g_hex, 4) == 1 && strcmp(g_hex, "004120AC") == 0;
}
TEXT_ROAD(CODE_UCS2toASC) {
  CODE_UCS2toASC(g_hex, kCyrillic);
  return strcmp(g_hex, "0410043D043D0430") == 0;
}
TEXT_ROAD(CODE_DecodeUcs2) {
  return CODE_DecodeUcs2((const uint8_t*)"\x04\x10\xFF\xE1", g_wide, 4) == 2 &&
         wide_is(L"\x0410\xFFE1");
}
TEXT_ROAD(CODE_EncodeUcs2) {
  return CODE_EncodeUcs2(L"\x0410\xFFE1", g_bytes, 2) == 4 && bytes_are("\x04\x10\xFF\xE1", 4);
}
TEXT_ROAD(CODE_DecodeGSM8) {
  return CODE_DecodeGSM8("Anna", g_wide, 4) == 4 && wide_is(L"Anna");
}
ROAD(CODE_DecodePduTimeToQaltTime) {
  const QaltTime time = CODE_DecodePduTimeToQaltTime("21111003214380");
  return time.year == 2012 && time.month == 11 && time.day == 1 && time.hour == 30 &&
         time.minute == 12 && time.second == 34 && time.timeZone == 8;
}

/* A contact's texts. */
ROAD(QL_808182CodeSupportSet) {
  QL_808182CodeSupportSet(1);
  QL_808182CodeSupportSet(7);
  return is808182CodeSupport == 1;
}
TEXT_ROAD(QL_encodePBItem) {
  int pure = -1;
  return QL_encodePBItem(kCyrillic, g_hex, 23, &pure, 0) == 0 && pure == 0 &&
         strcmp(g_hex, "0410043D043D0430") == 0 &&
         QL_encodePBItem(L"Anna", g_hex, 8, &pure, 1) == 1 &&
         QL_encodePBItem(L"Anna", g_hex, 9, &pure, 1) == 0 && strcmp(g_hex, "416E6E61") == 0;
}
TEXT_ROAD(QL_decodePBItem) {
  return QL_decodePBItem("0410043D043D0430", g_wide, 64, 0) == 0 && wide_is(kCyrillic) &&
         QL_decodePBItem("8104083D90BD416E", g_wide, 64, 1) == 0 &&
         QL_decodePBItem("0041", g_wide, 1, 0) == 1;
}
ROAD(QL_preEncodePBItem) {
  int size = 0;
  return QL_preEncodePBItem(kCyrillic, &size) == 0 && size == 16;
}
ROAD(QL_preDecodePBItem) {
  int size = 0;
  return QL_preDecodePBItem("416E6E61", &size) == 0 && size >= 5 &&
         QL_preDecodePBItem(NULL, &size) == 1;
}
TEXT_ROAD(PB_EncodeItem) {
  return PB_EncodeItem(kCyrillic, g_hex, 1) == 1 && strcmp(g_hex, "800410043D043D0430") == 0;
}
TEXT_ROAD(PB808182EncodeItem) {
  return PB808182EncodeItem(kCyrillic, g_hex) == 1 && strcmp(g_hex, "81040890BDBDB0") == 0;
}
ROAD(ChoosePhoneBookTextCodecType) {
  uint32_t base = 0;
  return ChoosePhoneBookTextCodecType(kCyrillic, &base) == TEXT_CODING_UCS2_81 && base == 8 &&
         ChoosePhoneBookTextCodecType(L"Anna", &base) == TEXT_CODING_GSM7;
}
ROAD(GetMaxMinCharFromString) {
  uint16_t most = 0, least = 0xFFFF;
  return GetMaxMinCharFromString(kCyrillic, &most, &least) == 4 && most == 0x043D &&
         least == 0x0410;
}
TEXT_ROAD(PB_DecodeItem) {
  return PB_DecodeItem("416E6E61", g_wide, 1) == 1 && wide_is(L"Anna");
}
ROAD(PB_PreEncodeItem) {
  int size = 0;
  return PB_PreEncodeItem(L"Anna", &size) == 0 && size == 4;
}
ROAD(PB_PreDecodeItem) {
  int count = 0;
  return PB_PreDecodeItem("416E6E61", &count) == 0 && count >= 4;
}
