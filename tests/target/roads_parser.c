/* The response parser with its steps, and the parameter codec. */
#include "road.h"

static AtRes g_res;
static AtParseBuf g_work;
static ParasList g_list;
static char g_text[103000];

static char* fresh(const char* text) {
  memset(&g_res, 0, sizeof g_res);
  memset(&g_work, 0, sizeof g_work);
  strcpy(g_text, text);
  return g_text;
}

ROAD(Bk_Parse_At_Res) {
  char* text =
      fresh("AT\r\n+CPBR: 1,\"a;b\"\r\n+CPBR: 2,\"c\"\r\n\r\nOK\r\n\r\n+CME ERROR: 22\r\nrest");
  return Bk_Parse_At_Res(text, &g_res) == 0 && g_res.ResType == AT_RES_OK &&
         strcmp(g_res.Paras, "1,\"a;b\";2,\"c\"") == 0 && Bk_Parse_At_Res(text, &g_res) == 0 &&
         g_res.ResType == AT_RES_CME_ERROR && strcmp(g_res.Paras, "22") == 0 &&
         strcmp(text, "rest") == 0 && Bk_Parse_At_Res(text, &g_res) == 19 &&
         Bk_Parse_At_Res(NULL, &g_res) == 20;
}
ROAD(Bk_Parse_At_COPS5_Res) {
  return Bk_Parse_At_COPS5_Res(fresh("\r\n+COPS: 1\r\n\r\nOK\r\n"), &g_res) == 0 &&
         strcmp(g_res.Paras, g_text) == 0;
}
ROAD(_Find_Cmd_By_ID) {
  int32_t row = -1;
  return _Find_Cmd_By_ID(&row, QaltWcdma_AtCmdTable[292].CmdId) == 0 && row >= 0 &&
         _Find_Cmd_By_ID(&row, 0x10000) == 19;
}
ROAD(_Find_Cmd_By_Name) {
  int32_t row = -1;
  return _Find_Cmd_By_Name(&row, "+CPBR") == 0 &&
         strcmp(QaltWcdma_AtCmdTable[row].CmdName, "+CPBR") == 0 &&
         _Find_Cmd_By_Name(&row, "+NONE") == 19;
}
ROAD(_Find_Sub_Str) {
  return _Find_Sub_Str(fresh("\"OK\" OK"), "OK") == g_text + 5 &&
         _Find_Sub_Str(g_text, "no") == NULL;
}
ROAD(_Parse_At_PreProcess) {
  char* head = NULL;
  int row = -1;
  return _Parse_At_PreProcess(fresh("AT\r\n1\r\n\r\nOK\r\n"), &head, &row) == 0 &&
         strcmp(head, "\r\nOK\r\n") == 0 && QaltWcdma_AtEndFlgTable[row].ResType == AT_RES_OK;
}
ROAD(_Parse_At_End_Flag) {
  char* head = fresh("\r\n+CREG: 1,2\r\n");
  g_iProcDataLen = 9;
  return _Parse_At_End_Flag(g_text, &g_res, &head, &g_work, 1) == 0 &&
         strcmp(g_res.Paras, "1,2") == 0 && g_res.ParaLen == 3 &&
         _Parse_At_End_Flag(g_text, &g_res, &head, &g_work, 2) == 19;
}
ROAD(_Parse_At_End_Flag_NoPara) {
  char* head = fresh("\r\n+A: 1\r\n\r\nOK\r\n") + 9;
  g_res.ResType = AT_RES_OK;
  g_iProcDataLen = 6;
  return _Parse_At_End_Flag_NoPara(g_text, &g_res, &head, &g_work) == 0 && head == g_text &&
         strcmp(g_res.Paras, "1") == 0;
}
ROAD(_Parse_At_End_Flag_HavePara) {
  char* head = fresh("\r\n+CME ERROR: 14\r\n");
  g_iProcDataLen = 14;
  return _Parse_At_End_Flag_HavePara(g_text, &g_res, &head, &g_work) == 0 &&
         strcmp(g_res.Paras, "14") == 0;
}
ROAD(_Parse_At_ParaOfTheEndColon) {
  fresh("abcdef");
  return _Parse_At_ParaOfTheEndColon(g_text, g_text + 1, g_text + 4, &g_res) == 0 &&
         strcmp(g_res.Paras, "bcd") == 0 && g_res.ParaLen == 3;
}
ROAD(_Parse_At_Ok_Res) {
  fresh("");
  strcpy(g_res.Paras, "\r\n+A: 1\r\n+A: 2\r\n");
  return _Parse_At_Ok_Res(&g_res, &g_work) == 0 && strcmp(g_work.ParaBuf, "1;2") == 0;
}
ROAD(_First_Parse_At_OK_Res) {
  static char line[1024];
  return _First_Parse_At_OK_Res(fresh("+A: 1\r\n+B: 2\r\n"), line, &g_work) == 19 &&
         strcmp(g_work.ParaBuf, "1") == 0;
}
ROAD(ParseCmdLineWithCmdName) {
  fresh("+A: 7");
  return ParseCmdLineWithCmdName(&g_work, g_text, g_text + 2) == 1 &&
         strcmp(g_work.ParaBuf, "7") == 0;
}
ROAD(ParseCmdLineWithoutCmdName) {
  ParseCmdLineWithoutCmdName(&g_work, fresh("alone"), "alone\r\n");
  return strcmp(g_work.ParaBuf, "alone") == 0;
}
ROAD(ProcessClipCmd) {
  fresh("\r\n+CLIP: 1,0\r\n\r\nOK\r\n");
  g_res.CmdId = 89;
  return ProcessClipCmd(g_text + 9, g_text + 12, &g_res, &g_work) == 1 &&
         g_res.ResType == AT_RES_OK && strcmp(g_res.Paras, "1,0") == 0;
}

static int list_is(const char* first, const char* second) {
  return g_list.nCount == (second == NULL ? 1 : 2) && strcmp(g_list.Para[0], first) == 0 &&
         (second == NULL || strcmp(g_list.Para[1], second) == 0);
}
#define SPLIT_ROAD(name, text, first, second) \
  ROAD(name) {                                \
    memset(&g_list, 0, sizeof g_list);        \
    name(&g_list, text);                      \
    return list_is(first, second);            \
  }
SPLIT_ROAD(ATCodec_PreProc_Res_ParaList, "1,\"a;b\";2", "1,\"a;b\"", "2")
SPLIT_ROAD(ATCodec_PreProc_Res_ParaList_Special, "\"a,b\",2", "\"a,b\"", "2")
SPLIT_ROAD(ATCodec_PreProc_Res_Icera_ParaList, "x*STGC:7", "7", NULL)
SPLIT_ROAD(ATCodec_PreProc_Res_COPS5_ParaList, "\r\n+COPS: 1\r\n\r\nOK\r\n", "+COPS: 1", "OK")
ROAD(ATCodec_PreProc_Res_ParaList_Ex) {
  memset(&g_list, 0, sizeof g_list);
  ATCodec_PreProc_Res_ParaList_Ex(&g_list, "a|b", "|");
  return list_is("a", "b");
}
ROAD(ATCodec_PreProc_Res_ParaList_Entend) {
  int32_t count = -7;
  ATCodec_PreProc_Res_ParaList_Entend("a,\"b,c\",d", &count);
  return count == 2;
}
ROAD(ATCodec_GetSubStrCountByToken) {
  return ATCodec_GetSubStrCountByToken("a,b,c", ",") == 3 &&
         ATCodec_GetSubStrCountByToken(NULL, ",") == 0;
}
ROAD(ATCodec_FindSubStrByIndex) {
  static char out[1024];
  return ATCodec_FindSubStrByIndex("a,b,c", out, 2, ",") == out && strcmp(out, "b") == 0;
}
ROAD(ATCodec_Find_Sub_Str) {
  static const unsigned char text[] = "\",\",";
  return ATCodec_Find_Sub_Str(text, ",") == text + 3;
}
#define REWRITE_ROAD(name, before, after) \
  ROAD(name) {                            \
    static char line[1024];               \
    strcpy(line, before);                 \
    name((void*)line);                    \
    return strcmp(line, after) == 0;      \
  }
REWRITE_ROAD(ATCodec_PreProc_Res_ParaLine, "1,\"a b\",,2",
             "1 a\xFE"
             "b \xFD 2")
REWRITE_ROAD(ATCodec_PreProc_Res_ParaLine_Special, "1,\"a\r\nb\"",
             "1 a\xFA\xFB"
             "b")
REWRITE_ROAD(ATCodec_Restore_String_Para,
             "a\xFE"
             "b\xFC"
             "c",
             "a b\tc")
REWRITE_ROAD(ATCodec_Restore_String_Para_Special,
             "a\xFA\xFB"
             "b",
             "a\r\nb")
REWRITE_ROAD(ATCodec_ProcRes_ParaLineEx, "(1-2),(3)", "1-2;3")
ROAD(ATCodec_TranslateToCmdPara) {
  static char line[32];
  return ATCodec_TranslateToCmdPara(line, "%d,\"%s\"", 5, "x") == 0 && strcmp(line, "5,\"x\"") == 0;
}
