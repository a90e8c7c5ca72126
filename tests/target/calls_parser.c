/* The response parser with its steps, and the parameter codec. */
#include "call.h"

static char* fresh(const char* text) {
  return strcpy(g.text, text);
}
/* A block with its end flag at `head`, as a step of the parser gets it. */
static char* block(const char* text, size_t head, int flag_length) {
  g.head = fresh(text) + head;
  g_iProcDataLen = flag_length;
  return g.text;
}
static int paras_are(const char* text) {
  return same(g.res.Paras, text);
}
static void before_ok(void) {
  g.res.ResType = AT_RES_OK;
  strcpy(g.res.Paras, "\r\n+A: 1\r\n+A: 2\r\n");
}
static void behind_clip(void) {
  g.res.CmdId = 89;
}

CALL(Bk_Parse_At_Res, (fresh("AT\r\n+A: 1,\"a;b\"\r\n+A: 2\r\n\r\nOK\r\nrest"), &g.res) == 0 &&
                          g.res.ResType == AT_RES_OK && paras_are("1,\"a;b\";2") &&
                          same(g.text, "rest") && Bk_Parse_At_Res(g.text, &g.res) == 19);
CALL(Bk_Parse_At_COPS5_Res, ("\r\n+A: 1\r\n\r\nOK\r\n", &g.res) == 0 && g.res.Paras[2] == '+');
CALL(_Find_Cmd_By_ID, (&g.number, QaltWcdma_AtCmdTable[292].CmdId) == 0 && g.number > 0);
CALL(_Find_Cmd_By_Name,
     (&g.number, "+CPBR") == 0 && same(QaltWcdma_AtCmdTable[g.number].CmdName, "+CPBR"));
CALL(_Find_Sub_Str, (fresh("\"OK\" OK"), "OK") == g.text + 5);
CALL(_Parse_At_PreProcess,
     (fresh("AT\r\n1\r\n\r\nOK\r\n"), &g.head, &g.number) == 0 && same(g.head, "\r\nOK\r\n"));
CALL(_Parse_At_End_Flag,
     (block("\r\n+CREG: 1,2\r\n", 0, 9), &g.res, &g.head, &g.work, 1) == 0 && paras_are("1,2"));
CALL_AFTER(before_ok, _Parse_At_End_Flag_NoPara,
           (block("\r\n+A: 1\r\n\r\nOK\r\n", 9, 6), &g.res, &g.head, &g.work) == 0 &&
               g.head == g.text && paras_are("1"));
CALL(_Parse_At_End_Flag_HavePara,
     (block("\r\n+CME ERROR: 14\r\n", 0, 14), &g.res, &g.head, &g.work) == 0 && paras_are("14"));
CALL(_Parse_At_ParaOfTheEndColon,
     (fresh("abcdef"), g.text + 1, g.text + 4, &g.res) == 0 && paras_are("bcd"));
CALL_AFTER(before_ok, _Parse_At_Ok_Res, (&g.res, &g.work) == 0 && same(g.work.ParaBuf, "1;2"));
CALL(_First_Parse_At_OK_Res,
     (fresh("+A: 1\r\n+B: 2\r\n"), g.line, &g.work) == 19 && same(g.work.ParaBuf, "1"));
CALL(ParseCmdLineWithCmdName,
     (&g.work, fresh("+A: 7"), g.text + 2) == 1 && same(g.work.ParaBuf, "7"));
STEP(ParseCmdLineWithoutCmdName, (&g.work, "one", "one\r\n"), same(g.work.ParaBuf, "one"));
CALL_AFTER(behind_clip, ProcessClipCmd,
           (fresh("1,0\r\n\r\nOK\r\n"), g.text + 3, &g.res, &g.work) == 1 && paras_are("1,0"));

#define SPLIT_CALL(name, text, count, last) \
  STEP(name, (&g.paras, text), g.paras.nCount == count && same(g.paras.Para[count - 1], last))
SPLIT_CALL(ATCodec_PreProc_Res_ParaList, "1,\"a;b\";2", 2, "2");
SPLIT_CALL(ATCodec_PreProc_Res_ParaList_Special, "\"a,b\",2", 2, "2");
SPLIT_CALL(ATCodec_PreProc_Res_Icera_ParaList, "x*STGC:7", 1, "7");
SPLIT_CALL(ATCodec_PreProc_Res_COPS5_ParaList, "\r\n+COPS: 1\r\n\r\nOK\r\n", 2, "OK");
STEP(ATCodec_PreProc_Res_ParaList_Ex, (&g.paras, "a|b", "|"), same(g.paras.Para[1], "b"));
STEP(ATCodec_PreProc_Res_ParaList_Entend, ("a,\"b,c\",d", &g.number), g.number == 2);
CALL(ATCodec_GetSubStrCountByToken, ("a,b,c", ",") == 3);
CALL(ATCodec_FindSubStrByIndex, ("a,b,c", g.line, 2, ",") == g.line && same(g.line, "b"));
CALL(ATCodec_Find_Sub_Str, (memcpy(g.bytes, "\",\",x", 5), ",") == g.bytes + 3);

#define REWRITE_CALL(name, before, after) \
  STEP(name, ((void*)strcpy(g.line, before)), same(g.line, after))
REWRITE_CALL(ATCodec_PreProc_Res_ParaLine, "1,\"a b\",,2", "1 a\376b \375 2");
REWRITE_CALL(ATCodec_PreProc_Res_ParaLine_Special, "1,\"a\r\nb\"", "1 a\372\373b");
REWRITE_CALL(ATCodec_Restore_String_Para, "a\376b\374c", "a b\tc");
REWRITE_CALL(ATCodec_Restore_String_Para_Special, "a\372\373b", "a\r\nb");
REWRITE_CALL(ATCodec_ProcRes_ParaLineEx, "(1-2),(3)", "1-2;3");
CALL(ATCodec_TranslateToCmdPara, (g.line, "%d,\"%s\"", 5, "x") == 0 && same(g.line, "5,\"x\""));
