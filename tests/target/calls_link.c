/* The link, with a report through the callback, and the AT commands: the line that went out, and
 * what came back. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "call.h"

static int version_is(const char* text, int major, int minor, int patch) {
  sprintf(g.line, "%d.%d.%d", major, minor, patch);
  return same(text, g.line);
}
CALL(QALT_AT_Version, () != NULL && version_is(QALT_AT_Version(), QALT_AT_VERSION_MAJOR,
                                               QALT_AT_VERSION_MINOR, QALT_AT_VERSION_PATCH));

static void fill_line(void) {
  memset(&g.answer, 'x', sizeof g.answer);
  memset(g.text, 'A', sizeof g.text - 1);
}
CALL_AFTER(fill_line, ClientSendCmd,
           (g.text, &g.answer, 5000) == 0 && sent(g.text) &&
               same(g.answer.aucDataBuf, "\r\nOK\r\n"));
CALL(send_message, ("AT+EUSIM?", &g.answer, 5000) == 0 && sent("AT+EUSIM?"));
CALL(qalt_at_create_client_socket,
     (private_path("server"), &g.number) == 1 && close(g.number) == 0);
static const struct sockaddr_un kNobody = {AF_UNIX, "/nowhere/nobody"};
CALL(qalt_at_socket_connect_rety,
     (socket(AF_UNIX, SOCK_STREAM, 0), (const struct sockaddr*)&kNobody, sizeof kNobody) == -1 &&
         g_sleeps == 300);
CALL(qalt_at_close_client_socket, (socket(AF_UNIX, SOCK_STREAM, 0)) == 1);

static int g_listening, g_arrived;
static char g_path[64];
CALL(qalt_at_create_server_socket, (private_path("own"), &g.number) == 1 && close(g.number) == 0);
static void knock(void) {
  if (qalt_at_create_server_socket(private_path("own"), &g_listening) != 1) abort();
  deliver_report((void*)private_path("own"));
}
CALL_AFTER(knock, qalt_at_accept_client_request,
           (g_listening, &g.number) == 1 &&
               recv(g.number, &g.answer, sizeof g.answer, MSG_WAITALL) == sizeof g.answer &&
               close(g.number) == 0 && close(g_listening) == 0);

static int on_report(AtMsg* pMsg) {
  return __sync_add_and_fetch(&g_arrived, same(pMsg->aucDataBuf, "\r\nRING\r\n"));
}
static int arrived(void) {
  while (__sync_add_and_fetch(&g_arrived, 0) == 0) sched_yield();
  return 1;
}
static void set_callback(void) {
  g_arrived = 0;
  SetClientProcRecvCallback(on_report);
  strcpy(g.answer.aucDataBuf, "\r\nRING\r\n");
}
CALL(SetClientProcRecvCallback, (on_report) == 0 && pCallBackFun == on_report);
STEP_AFTER(set_callback, parse_msg, (&g.answer), arrived());
CALL_AFTER(set_callback, ClientInit,
           (NULL) == 1 && ClientInit(private_path("reports")) == 0 && ClientInit("") == 0 &&
               deliver_report((void*)private_path("reports")) == NULL && arrived());
/* Its second accept fails, which ends the receiver. */
static void send_one_report(void) {
  pthread_t sender;
  set_callback();
  strcpy(g_path, private_path("own"));
  if (pthread_create(&sender, NULL, deliver_report, g_path) != 0) abort();
}
static char* once(char* path) {
  g_accepts_left = 1;
  return path;
}
CALL_AFTER(send_one_report, receive_thread, (once(g_path)) == NULL && arrived());

static int values_are(int32_t first, int32_t second, int32_t third, int32_t fourth) {
  const int32_t values[] = {first, second, third, fourth};
  return memcmp(g.values, values, sizeof values) == 0;
}
static int item_is(int32_t index, const char* number, const char* text, const char* email) {
  const PbItem* item = &g.list.items[0];
  return g.list.count == 1 && item->storageIndex == index && same(item->number, number) &&
         same(item->text, text) && same(item->email, email);
}
static AtRes* payload(const char* text) {
  strcpy(g.res.Paras, text);
  return &g.res;
}
static const CpbwRecord kRecord = {5, "123", 129, "0041"};
static const JcpbwRecord kVendorRecord = {6, "+1", 145, "416E", "2", "3", "m@x", "78"};

CALL(CPBS_Set, ("SM") == 0 && sent("AT+CPBS=\"SM\"") && CPBS_Set("S\"M") == 1);
CALL(CPBS_Read, (g.values, g.values + 1) == 0 && values_are(12, 250, 0, 0));
CALL(CPBR_Test, (g.values) == 0 && values_are(1, 250, 40, 18));
CALL(JCPBR_Test, (&g.number, g.values) == 0 && g.number == 1 && values_are(1, 250, 40, 60));
CALL(SCPBR_Test, (&g.number, g.values) == 0 && g.number == 1 && values_are(1, 250, 40, 18));
CALL(JCPBQ_Set, (3, g.values) == 0 && sent("AT+CPBR=3"));
CALL(JUSIM_Test, (g.values) == 0 && g.values[0] == 1);
CALL(CARDMODE_Test, (g.values) == 0 && g.values[0] == 1);
CALL(EUSIM_Read, (g.values) == 0 && g.values[0] == 1);
CALL(JCPBM_Test, () == 1);
CALL(CPBR_Set, (3, 3, &g.list) == 0 && sent("AT+CPBR=3,3") && item_is(3, "+4930", "0041", ""));
CALL(JCPBR_Set, (7, 7, &g.list) == 0 && item_is(7, "123", "Ann A", "a@b"));
CALL(SCPBR_Set, (8, 8, &g.list) == 0 && item_is(8, "1", "Lee B", "mail"));
STEP(CPBR_SetATResProcess, (payload("1,\"\",129,\"Zed\""), &g.list), item_is(1, "", "Zed", ""));
STEP(JCPBR_SetATResProcess, (payload("9,\"1\",\"T\",\"2\",\"3\",\"m\",\"x\""), &g.list),
     item_is(9, "1", "T", "m"));
STEP(SCPBR_SetATResProcess, (payload("8,\"1\",9,\"2\",9,\"3\",9,\"\",9,\"Lee\",1,\"m\""), &g.list),
     item_is(8, "1", "Lee", "m"));
CALL(CPBW_Set, (&kRecord) == 0 && sent("AT+CPBW=5,\"123\",129,\"0041\""));
CALL(JCPBW_Set,
     (&kVendorRecord) == 0 && sent("AT+JCPBW=6,\"+1\",145,\"416E\",\"2\",\"3\",\"m@x\",\"78\""));
CALL(SCPBW_Set, (&kVendorRecord) == 0 &&
                    sent("AT^SCPBW=6,\"+1\",145,\"3\",129,\"2\",129,\"2\",129,\"416E\",1,\"m@x\""));
CALL(CSCS_Set, ((CharsetName){"UCS2"}) == 0 && sent("AT+CSCS=\"UCS2\""));
