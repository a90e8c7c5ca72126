/* The phonebook: discovery, reading, writing, deleting, and the index buffer. */
#include "call.h"

static void forget(void) {
  memset(&g.param, 0, sizeof g.param);
}
static void as_vendor(void) {
  QL_setCurrentPlatform(PB_PLATFORM_1);
  QL_getPhonebookInfo(0, &g.param);
  forget();
}
static void as_busy(void) {
  forget();
  g_busy = 1;
}

/* A contact with a number and a name. */
static PhonebookEntry* contact(int32_t index, const char* number, const char* text) {
  g.entries[0].storageIndex = index;
  g.entries[0].FieldCount = 2;
  g.fields[0][1].fieldType = PB_FIELD_TEXT;
  strcpy(g.fields[0][0].pField, number);
  strcpy(g.fields[0][1].pField, text);
  return g.entries;
}
static PbItem* item(int32_t index) {
  g.item.storageIndex = index;
  strcpy(g.item.number, "12");
  return &g.item;
}
static PbItemList* list_of_one(void) {
  g.list.count = 1;
  g.list.items[0] = *item(9);
  return &g.list;
}
static int number_is(const char* text) {
  return same(g.item.number, text);
}
static int field_is(int entry, int field, const char* text) {
  return same(g.fields[entry][field].pField, text);
}
static int longest_are(int number, int text) {
  return g.param.FieldAbility[PB_FIELD_NUMBER].maxLength == number &&
         g.param.FieldAbility[PB_FIELD_TEXT].maxLength == text;
}

CALL(QL_setCurrentPlatform, (9) == 0 && g_phone_book_currentPlatform == 9);
CALL(QL_setPBType, (3) == 0);
STEP(PB_SetPBType, (3), 1);
CALL(_IsOldPhonebook, () == 1);
CALL_AFTER(forget, QL_getPhonebookInfo,
           (0, &g.param) == PB_OK && g.param.EntriesUsed == 12 && g.param.MaxEntries == 250 &&
               g.param.MinIndex == 1 && g.param.MaxIndex == 250 && longest_are(40, 18));
CALL_AFTER(as_vendor, _GetPbParam,
           (0, &g.param) == PB_OK && g.param.PbType.IsSupportUSim == 1 && longest_are(40, 60));
CALL_AFTER(forget, _GetPhonebookStorebility, (0, &g.param) == 0 && g.param.MaxEntries == 250);
CALL_AFTER(as_vendor, _InitWcdmaPbPara, (0, &g.param) == 0 && g.param.PbType.IsSupportExtend == 1);
/* Asked again and again, with pauses. */
STEP_AFTER(as_busy, _InitStdPbConfig, (0, &g.param), g.param.MaxIndex == 0 && g_sleeps > 0);
STEP_AFTER(as_vendor, _InitQaltExtendPbConfig, (0, &g.param), g.param.MaxIndex == 250);
CALL_AFTER(as_vendor, _IsSupportExtendPhonebook, () == 1);
CALL_AFTER(as_vendor, _IsSupportUSim, () == 1);
CALL(_IsSupportJCPBM, () == 0);
STEP(_GetStorageParam, (0, g.line), same(g.line, "SM"));
STEP(_CpbrTestToFieldability, (1, 250, 40, 60, 41, 42, 128, 61, 6, g.param.FieldAbility),
     longest_are(40, 60));

/* The deepest call: 100 entries. */
CALL(QL_getPhonebookEntry, (0, 1, PB_READ_MAX, g.entries) == PB_OK && sent("AT+CSCS=\"IRA\"") &&
                               g.entries[99].storageIndex == 100 && g.entries[99].FieldCount == 2 &&
                               field_is(99, 1, "0041006E006E006100640042") &&
                               field_is(0, 0, "+4930123456789"));
CALL(_ReadQaltPbContact, (&g.list, 3, 3) == PB_OK && g.list.count == 1);
CALL_AFTER(as_vendor, _ReadQaltExtendContact, (&g.list, 7, 7) == PB_OK && g.list.count == 1);
CALL(_ReadStdContact, (&g.list, 1, PB_READ_MAX) == PB_OK && g.list.count == 100);
CALL(_TranslatePbItemToPbEntry, (list_of_one(), g.entries) == PB_OK && field_is(0, 0, "12"));
STEP(_TranslatePbItemToFields, (item(1), contact(1, "", "")), field_is(0, 0, "12"));
STEP(_TranslatePbItemToField, (item(1), g.fields[0]), field_is(0, 0, "12"));
STEP(_TranslatePbItemToString, ("0041", g.fields[0]), field_is(0, 0, "0041"));
CALL(_SetPbCharactorSet, (2) == 1 && sent("AT+CSCS=\"UCS2_0X81\""));

CALL(QL_setPhonebookEntry, (0, contact(0, "1", "0042")) == PB_OK &&
                               g.entries[0].storageIndex == 1 &&
                               QL_setPhonebookEntry(0, contact(251, "1", "")) == PB_ERR_PARAM);
CALL_AFTER(as_vendor, QL_deletePhonebookEntry, (0, 5) == PB_OK && sent("AT+JCPBW=5"));
CALL(_TranslatePbEntryToPbItem,
     (&g.item, contact(4, "12", "0041")) == PB_OK && same(g.item.text, "0041"));
STEP(_TranslateFieldToPbItem, (&g.item, contact(4, "12", "")->pFieldList), number_is("12"));
STEP(_TranslateStringToPbItem, (g.item.number, 3, contact(4, "12345", "")->pFieldList),
     number_is("123"));
CALL(_WriteStdContact, (*item(0), 6) == PB_OK);
CALL(_WriteQaltExtendContact, (*item(0), 6) == PB_OK);
CALL(_DeleteStdContact, (6) == PB_OK);
CALL(_DeleteQaltExtendContact, (6) == PB_OK);

/* The index buffer holds what the build gave it room for, and nothing beyond. */
enum { kLast = PBB_CAPACITY - 1 };
static void empty_buffer(void) {
  PBB_InitPbBuffer(1, 2000, 2000);
}
static void fill_buffer(void) {
  empty_buffer();
  for (int32_t index = 0; index <= kLast; ++index) PBB_WritePB(item(index));
}
STEP(PBB_InitPbBuffer, (3, 5, 3), PBB_GetFirstEmptyIndex() == 3);
CALL_AFTER(empty_buffer, PBB_WritePB, (item(kLast)) == 1 && PBB_WritePB(item(kLast + 1)) == 0);
CALL_AFTER(fill_buffer, PBB_ReadPB, (kLast, &g.item) == 1 && PBB_ReadPB(kLast + 1, &g.item) == 0);
CALL_AFTER(fill_buffer, PBB_DeletePB, (2) == 1 && PBB_DeletePB(kLast + 1) == 0);
CALL_AFTER(fill_buffer, PBB_GetFirstEmptyIndex, () == -1);
STEP_AFTER(empty_buffer, _PBB_UseEmptyIndex, (1), PBB_GetFirstEmptyIndex() == 2);
STEP_AFTER(fill_buffer, _PBB_SetEmptyIndex, (2), PBB_GetFirstEmptyIndex() == 2);
CALL_AFTER(empty_buffer, _PBB_GetIndexIsEmpty, (1) == 1 && _PBB_GetIndexIsEmpty(kLast + 1) == 0);
