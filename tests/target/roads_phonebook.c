/* The phonebook: discovery, reading, writing, deleting, and the index buffer. */
#include "road.h"

static PbParam g_param;
static PbItemList g_list;
static PbItem g_item;
static PbField g_fields[PB_READ_MAX][PB_FIELD_TYPES];
static PhonebookEntry g_entries[PB_READ_MAX];

static void clear_records(void) {
  memset(&g_param, 0, sizeof g_param);
  memset(&g_list, 0, sizeof g_list);
  memset(&g_item, 0, sizeof g_item);
  memset(g_fields, 0, sizeof g_fields);
  memset(g_entries, 0, sizeof g_entries);
  for (int i = 0; i < PB_READ_MAX; ++i) g_entries[i].pFieldList = g_fields[i];
}
static void as_standard(void) {
  modem_become(MODEM_STANDARD);
  QL_setCurrentPlatform(0);
  QL_getPhonebookInfo(0, &g_param);
  clear_records();
}
static void as_vendor(void) {
  modem_become(MODEM_VENDOR);
  QL_setCurrentPlatform(1);
  QL_getPhonebookInfo(0, &g_param);
  clear_records();
}
static int sent(const char* line) {
  return strcmp(modem_last_line(), line) == 0;
}

/* A contact with a number and a name. */
static PhonebookEntry* contact(int32_t index, const char* number, const char* text) {
  g_entries[0].storageIndex = index;
  g_entries[0].FieldCount = 2;
  g_fields[0][0].fieldType = PB_FIELD_NUMBER;
  strcpy(g_fields[0][0].pField, number);
  g_fields[0][1].fieldType = PB_FIELD_TEXT;
  strcpy(g_fields[0][1].pField, text);
  return g_entries;
}

ROAD(QL_setCurrentPlatform) {
  return QL_setCurrentPlatform(7) == 0 && g_phone_book_currentPlatform == 7;
}
ROAD(QL_setPBType) {
  return QL_setPBType(3) == 0;
}
ROAD(PB_SetPBType) {
  PB_SetPBType(3);
  return 1;
}
ROAD(_IsOldPhonebook) {
  gPbType.IsSupportExtend = 0;
  return _IsOldPhonebook() == 1;
}
ROAD_AFTER(as_standard, QL_getPhonebookInfo) {
  return QL_getPhonebookInfo(1, &g_param) == PB_ERR_PARAM &&
         QL_getPhonebookInfo(0, &g_param) == PB_OK && g_param.EntriesUsed == 12 &&
         g_param.MaxEntries == 250 && g_param.MinIndex == 1 && g_param.MaxIndex == 250 &&
         g_param.FieldAbility[PB_FIELD_TEXT].maxLength == 18;
}
ROAD_AFTER(as_vendor, _GetPbParam) {
  return _GetPbParam(0, &g_param) == PB_OK && g_param.PbType.IsSupportExtend == 1 &&
         g_param.PbType.IsSupportUSim == 1 && g_param.FieldAbility[PB_FIELD_TEXT].maxLength == 60;
}
ROAD_AFTER(as_standard, _GetPhonebookStorebility) {
  return _GetPhonebookStorebility(0, &g_param) == 0 && g_param.MaxEntries == 250;
}
ROAD_AFTER(as_vendor, _InitWcdmaPbPara) {
  return _InitWcdmaPbPara(0, &g_param) == 0 && g_param.PbType.IsSupportExtend == 1;
}
static void as_busy(void) {
  as_standard();
  modem_become(MODEM_BUSY);
}
ROAD_AFTER(as_busy, _InitStdPbConfig) {
  const int before = g_sleeps;
  _InitStdPbConfig(0, &g_param); /* asked again and again, with pauses */
  if (g_param.MaxIndex != 0 || g_sleeps == before) return 0;
  modem_become(MODEM_STANDARD);
  _InitStdPbConfig(0, &g_param);
  return g_param.MaxIndex == 250;
}
ROAD_AFTER(as_vendor, _InitQaltExtendPbConfig) {
  _InitQaltExtendPbConfig(0, &g_param);
  return g_param.MinIndex == 1 && g_param.MaxIndex == 250;
}
ROAD_AFTER(as_vendor, _IsSupportExtendPhonebook) {
  return _IsSupportExtendPhonebook() == 1;
}
ROAD_AFTER(as_vendor, _IsSupportUSim) {
  return _IsSupportUSim() == 1;
}
ROAD(_IsSupportJCPBM) {
  return _IsSupportJCPBM() == 0;
}
ROAD(_GetStorageParam) {
  static char name[10];
  _GetStorageParam(0, name);
  return strcmp(name, "SM") == 0;
}
ROAD(_CpbrTestToFieldability) {
  static PbFieldAbility ability[PB_FIELD_TYPES];
  for (int32_t k = 0; k < PB_FIELD_TYPES; ++k) ability[k].fieldType = k;
  _CpbrTestToFieldability(1, 250, 40, 60, 41, 42, 128, 61, PB_FIELD_TYPES, ability);
  return ability[PB_FIELD_NUMBER].maxLength == 40 && ability[PB_FIELD_TEXT].maxLength == 60 &&
         ability[PB_FIELD_EMAIL].maxLength == 128;
}

/* The deepest road: 100 entries. Then a modem that refuses. */
ROAD_AFTER(as_standard, QL_getPhonebookEntry) {
  for (int i = 0; i < PB_READ_MAX; ++i) g_entries[i].pFieldList = g_fields[i];
  if (QL_getPhonebookEntry(0, 1, PB_READ_MAX, g_entries) != PB_OK ||
      g_entries[99].storageIndex != 100 || g_entries[99].FieldCount != 2 ||
      strcmp(g_fields[99][1].pField, "0041006E006E006100640042") != 0 ||
      strcmp(g_fields[0][0].pField, "+49301234567890") != 0 || !sent("AT+CSCS=\"IRA\"")) {
    return 0;
  }
  return QL_getPhonebookEntry(0, 999, 999, g_entries) == PB_ERR_READ_REFUSED &&
         QL_getPhonebookEntry(0, 1, 1, NULL) == PB_ERR_PARAM;
}
ROAD_AFTER(as_standard, _ReadQaltPbContact) {
  return _ReadQaltPbContact(&g_list, 3, 3) == PB_OK && g_list.count == 1;
}
ROAD_AFTER(as_vendor, _ReadQaltExtendContact) {
  return _ReadQaltExtendContact(&g_list, 7, 7) == PB_OK &&
         strcmp(g_list.items[0].email, "a@b") == 0;
}
ROAD_AFTER(as_standard, _ReadStdContact) {
  return _ReadStdContact(&g_list, 1, PB_READ_MAX) == PB_OK && g_list.count == PB_READ_MAX;
}
ROAD_AFTER(as_standard, _TranslatePbItemToPbEntry) {
  g_list.count = 1;
  g_list.items[0].storageIndex = 9;
  strcpy(g_list.items[0].text, "0042");
  return _TranslatePbItemToPbEntry(&g_list, g_entries) == PB_OK && g_entries[0].storageIndex == 9 &&
         strcmp(g_fields[0][1].pField, "0042") == 0;
}
ROAD_AFTER(as_standard, _TranslatePbItemToFields) {
  strcpy(g_item.number, "12");
  g_entries[0].FieldCount = 2;
  _TranslatePbItemToFields(&g_item, g_entries);
  return strcmp(g_fields[0][0].pField, "12") == 0;
}
ROAD_AFTER(as_standard, _TranslatePbItemToField) {
  memset(g_item.email, 'e', sizeof g_item.email); /* full: no terminator */
  g_fields[0][0].fieldType = PB_FIELD_EMAIL;
  _TranslatePbItemToField(&g_item, g_fields[0]);
  return strlen(g_fields[0][0].pField) == PB_EMAIL_SIZE;
}
ROAD_AFTER(as_standard, _TranslatePbItemToString) {
  _TranslatePbItemToString("0041", g_fields[0]);
  return strcmp(g_fields[0][0].pField, "0041") == 0;
}
ROAD_AFTER(as_standard, _SetPbCharactorSet) {
  return _SetPbCharactorSet(1) == 1 && sent("AT+CSCS=\"UCS2\"");
}

ROAD_AFTER(as_standard, QL_setPhonebookEntry) {
  return QL_setPhonebookEntry(0, contact(5, "+4930", "0041")) == PB_OK &&
         QL_setPhonebookEntry(0, contact(0, "1", "0042")) == PB_OK &&
         g_entries[0].storageIndex == 1 &&
         QL_setPhonebookEntry(0, contact(251, "1", "")) == PB_ERR_PARAM;
}
ROAD_AFTER(as_vendor, QL_deletePhonebookEntry) {
  return QL_deletePhonebookEntry(0, 5) == PB_OK && QL_deletePhonebookEntry(0, 0) == PB_ERR_PARAM;
}
ROAD_AFTER(as_standard, _TranslatePbEntryToPbItem) {
  return _TranslatePbEntryToPbItem(&g_item, contact(4, "12", "0041")) == PB_OK &&
         g_item.storageIndex == 4 && strcmp(g_item.text, "0041") == 0;
}
ROAD_AFTER(as_standard, _TranslateFieldToPbItem) {
  _TranslateFieldToPbItem(&g_item, &contact(4, "12", "")->pFieldList[0]);
  return strcmp(g_item.number, "12") == 0;
}
ROAD_AFTER(as_standard, _TranslateStringToPbItem) {
  _TranslateStringToPbItem(g_item.number, 3, &contact(4, "12345", "")->pFieldList[0]);
  return strcmp(g_item.number, "123") == 0;
}
ROAD_AFTER(as_standard, _WriteStdContact) {
  strcpy(g_item.number, "12");
  return _WriteStdContact(g_item, 6) == PB_OK;
}
ROAD_AFTER(as_vendor, _WriteQaltExtendContact) {
  const int before = g_errors_logged;
  strcpy(g_item.number, "12");
  memset(g_item.extraText, '7', 64); /* the record takes 63 */
  if (_WriteQaltExtendContact(g_item, 6) != PB_ERR_PARAM || g_errors_logged == before) return 0;
  g_item.extraText[60] = '\0';
  return _WriteQaltExtendContact(g_item, 6) == PB_OK;
}
ROAD_AFTER(as_standard, _DeleteStdContact) {
  return _DeleteStdContact(6) == PB_OK;
}
ROAD_AFTER(as_vendor, _DeleteQaltExtendContact) {
  return _DeleteQaltExtendContact(6) == PB_OK;
}

/* The index buffer holds what the build gave it room for, and nothing beyond. */
static void empty_buffer(void) {
  clear_records();
  PBB_InitPbBuffer(1, 2000, 2000);
}
ROAD(PBB_InitPbBuffer) {
  PBB_InitPbBuffer(3, 5, 3);
  return PBB_GetFirstEmptyIndex() == 3;
}
ROAD_AFTER(empty_buffer, PBB_WritePB) {
  g_item.storageIndex = PBB_CAPACITY - 1;
  if (PBB_WritePB(&g_item) != 1) return 0;
  g_item.storageIndex = PBB_CAPACITY;
  return PBB_WritePB(&g_item) == 0 && PBB_WritePB(NULL) == 0;
}
static void fill_buffer(void) {
  empty_buffer();
  for (g_item.storageIndex = 0; g_item.storageIndex < PBB_CAPACITY; ++g_item.storageIndex) {
    PBB_WritePB(&g_item);
  }
}
ROAD_AFTER(fill_buffer, PBB_ReadPB) {
  return PBB_ReadPB(PBB_CAPACITY - 1, &g_item) == 1 && g_item.storageIndex == PBB_CAPACITY - 1 &&
         PBB_ReadPB(PBB_CAPACITY, &g_item) == 0 && PBB_ReadPB(-1, &g_item) == 0;
}
ROAD_AFTER(fill_buffer, PBB_DeletePB) {
  return PBB_DeletePB(2) == 1 && PBB_ReadPB(2, &g_item) == 0 && PBB_DeletePB(PBB_CAPACITY) == 0;
}
ROAD_AFTER(fill_buffer, PBB_GetFirstEmptyIndex) {
  if (PBB_GetFirstEmptyIndex() != -1) return 0;
  PBB_DeletePB(PBB_CAPACITY - 1);
  return PBB_GetFirstEmptyIndex() == PBB_CAPACITY - 1;
}
ROAD_AFTER(empty_buffer, _PBB_UseEmptyIndex) {
  _PBB_UseEmptyIndex(1);
  _PBB_UseEmptyIndex(PBB_CAPACITY);
  return PBB_GetFirstEmptyIndex() == 2;
}
ROAD_AFTER(fill_buffer, _PBB_SetEmptyIndex) {
  _PBB_SetEmptyIndex(2);
  _PBB_SetEmptyIndex(-1);
  return PBB_GetFirstEmptyIndex() == 2;
}
ROAD_AFTER(empty_buffer, _PBB_GetIndexIsEmpty) {
  return _PBB_GetIndexIsEmpty(1) == 1 && _PBB_GetIndexIsEmpty(PBB_CAPACITY) == 0;
}
