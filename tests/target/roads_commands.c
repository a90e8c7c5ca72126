/* One road for each AT command: the line that went out, and what came back. */
#include "road.h"

static PbItemList g_list;
static AtRes g_res;
static int32_t g_values[8];

static void ask_standard(void) {
  modem_become(MODEM_STANDARD);
  QL_setCurrentPlatform(0);
  memset(&g_list, 0, sizeof g_list);
  memset(&g_res, 0, sizeof g_res);
}
static void ask_vendor(void) {
  ask_standard();
  modem_become(MODEM_VENDOR);
}

static int sent(const char* line) {
  return strcmp(modem_last_line(), line) == 0;
}
static int values_are(int32_t first, int32_t last, int32_t number, int32_t text) {
  return g_values[0] == first && g_values[1] == last && g_values[2] == number &&
         g_values[3] == text;
}
static int item_is(int32_t index, const char* number, const char* text, const char* email) {
  const PbItem* item = &g_list.items[0];
  return g_list.count == 1 && item->storageIndex == index && strcmp(item->number, number) == 0 &&
         strcmp(item->text, text) == 0 && strcmp(item->email, email) == 0;
}

ROAD_AFTER(ask_standard, CPBS_Set) {
  return CPBS_Set("SM") == 0 && sent("AT+CPBS=\"SM\"") && CPBS_Set("S\"M") == 1;
}
ROAD_AFTER(ask_standard, CPBS_Read) {
  int32_t used = 0, total = 0;
  return CPBS_Read(&used, &total) == 0 && used == 12 && total == 250;
}
ROAD_AFTER(ask_standard, CPBR_Test) {
  return CPBR_Test(g_values) == 0 && values_are(1, 250, 40, 18);
}
ROAD_AFTER(ask_vendor, JCPBR_Test) {
  int32_t supported = 0;
  return JCPBR_Test(&supported, g_values) == 0 && supported == 1 && values_are(1, 250, 40, 60);
}
ROAD_AFTER(ask_standard, SCPBR_Test) {
  int32_t supported = 0;
  return SCPBR_Test(&supported, g_values) == 0 && supported == 1 && values_are(1, 250, 40, 18);
}
ROAD_AFTER(ask_standard, JCPBQ_Set) {
  int32_t value = -7;
  return JCPBQ_Set(3, &value) == 0 && sent("AT+CPBR=3");
}
ROAD_AFTER(ask_vendor, JUSIM_Test) {
  int32_t value = 0;
  return JUSIM_Test(&value) == 0 && value == 1;
}
ROAD_AFTER(ask_standard, CARDMODE_Test) {
  int32_t value = 0;
  return CARDMODE_Test(&value) == 0 && value == 1;
}
ROAD_AFTER(ask_standard, EUSIM_Read) {
  int32_t value = 0;
  return EUSIM_Read(&value) == 0 && value == 1;
}
ROAD(JCPBM_Test) {
  return JCPBM_Test() == 1;
}
ROAD_AFTER(ask_standard, CPBR_Set) {
  return CPBR_Set(3, 3, &g_list) == 0 && sent("AT+CPBR=3,3") && item_is(3, "+4930", "0041", "") &&
         CPBR_Set(999, 999, &g_list) == 9;
}
ROAD_AFTER(ask_vendor, JCPBR_Set) {
  return JCPBR_Set(7, 7, &g_list) == 0 && item_is(7, "123", "Ann A", "a@b");
}
ROAD_AFTER(ask_standard, SCPBR_Set) {
  QL_setCurrentPlatform(4);
  return SCPBR_Set(8, 8, &g_list) == 0 && item_is(8, "111", "Lee B", "mail");
}
ROAD_AFTER(ask_standard, CPBR_SetATResProcess) {
  strcpy(g_res.Paras, "1,\"\",129,\"Zed\"");
  return CPBR_SetATResProcess(&g_res, &g_list) == 0 && item_is(1, "", "Zed", "");
}
ROAD_AFTER(ask_standard, JCPBR_SetATResProcess) {
  strcpy(g_res.Paras, "9,\"1\",\"T\",\"2\",\"3\",\"m\",\"x\"");
  return JCPBR_SetATResProcess(&g_res, &g_list) == 0 && item_is(9, "1", "T", "m");
}
ROAD_AFTER(ask_standard, SCPBR_SetATResProcess) {
  strcpy(g_res.Paras, "8,\"1\",129,\"2\",129,\"3\",129,\"\",129,\"Lee\",1,\"m\"");
  return SCPBR_SetATResProcess(&g_res, &g_list) == 0 && item_is(8, "1", "Lee", "m");
}
ROAD_AFTER(ask_standard, CPBW_Set) {
  static const CpbwRecord record = {5, "123", 129, "0041"}, none = {5, "", 0, ""};
  return CPBW_Set(&record) == 0 && sent("AT+CPBW=5,\"123\",129,\"0041\"") && CPBW_Set(&none) == 0 &&
         sent("AT+CPBW=5");
}
static const JcpbwRecord kVendorRecord = {6, "+1", 145, "416E", "2", "3", "m@x", "78"};
ROAD_AFTER(ask_vendor, JCPBW_Set) {
  return JCPBW_Set(&kVendorRecord) == 0 &&
         sent("AT+JCPBW=6,\"+1\",145,\"416E\",\"2\",\"3\",\"m@x\",\"78\"");
}
ROAD_AFTER(ask_vendor, SCPBW_Set) {
  return SCPBW_Set(&kVendorRecord) == 0 &&
         strncmp(modem_last_line(), "AT^SCPBW=6,\"+1\",145,", 20) == 0;
}
ROAD_AFTER(ask_standard, CSCS_Set) {
  CharsetName name = {"UCS2"};
  return CSCS_Set(name) == 0 && sent("AT+CSCS=\"UCS2\"");
}
