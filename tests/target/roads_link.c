/* The link: exchanges, the sockets, and a report through the callback. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>

#include "road.h"

static AtMsg g_answer;
static pthread_mutex_t g_mutex = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t g_arrived = PTHREAD_COND_INITIALIZER;
static char g_report[64];

static int on_report(AtMsg* pMsg) {
  pthread_mutex_lock(&g_mutex);
  snprintf(g_report, sizeof g_report, "%.*s", (int)sizeof g_report - 1, pMsg->aucDataBuf);
  pthread_cond_signal(&g_arrived);
  pthread_mutex_unlock(&g_mutex);
  return 0;
}

static int arrived(const char* text) {
  int same;
  pthread_mutex_lock(&g_mutex);
  while (g_report[0] == '\0') pthread_cond_wait(&g_arrived, &g_mutex);
  same = strcmp(g_report, text) == 0;
  g_report[0] = '\0';
  pthread_mutex_unlock(&g_mutex);
  return same;
}

ROAD(QALT_AT_Version) {
  char version[32];
  snprintf(version, sizeof version, "%d.%d.%d", QALT_AT_VERSION_MAJOR, QALT_AT_VERSION_MINOR,
           QALT_AT_VERSION_PATCH);
  return strcmp(QALT_AT_Version(), version) == 0;
}

ROAD(ClientSendCmd) {
  static char longest[10240];
  memset(&g_answer, 'x', sizeof g_answer);
  memset(longest, 'A', sizeof longest - 1);
  return ClientSendCmd("AT+CPBS?", &g_answer, 5000) == 0 &&
         strcmp(g_answer.aucDataBuf, "\r\n+CPBS: \"SM\",12,250\r\n\r\nOK\r\n") == 0 &&
         ClientSendCmd(longest, &g_answer, 1) == 0 && strcmp(modem_last_line(), longest) == 0 &&
         ClientSendCmd(NULL, &g_answer, 1) == 1;
}

ROAD(send_message) {
  return send_message("AT+EUSIM?", &g_answer, 5000) == 0 && send_message(NULL, &g_answer, 1) == -1;
}

ROAD(qalt_at_create_client_socket) {
  int fd = -1;
  const int made = qalt_at_create_client_socket(modem_private_path("server"), &fd);
  return made == 1 && fd >= 0 && close(fd) == 0 && qalt_at_create_client_socket(NULL, &fd) == -1;
}

ROAD(qalt_at_socket_connect_rety) {
  struct sockaddr_un address;
  const int fd = socket(AF_UNIX, SOCK_STREAM, 0);
  int refused, before = g_sleeps;
  memset(&address, 0, sizeof address);
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", modem_private_path("nobody"));
  refused = qalt_at_socket_connect_rety(fd, (struct sockaddr*)&address, sizeof address);
  close(fd);
  return refused == -1 && g_sleeps - before == 300;
}

ROAD(qalt_at_close_client_socket) {
  return qalt_at_close_client_socket(socket(AF_UNIX, SOCK_STREAM, 0)) == 1 &&
         qalt_at_close_client_socket(-1) == -1;
}

static int g_listening = -1;
ROAD(qalt_at_create_server_socket) {
  return qalt_at_create_server_socket(modem_private_path("own"), &g_listening) == 1;
}

static void listen_and_call(void) {
  if (qalt_at_create_server_socket(modem_private_path("own"), &g_listening) != 1 ||
      !modem_deliver(modem_private_path("own"), "waiting")) {
    abort();
  }
}
ROAD_AFTER(listen_and_call, qalt_at_accept_client_request) {
  int fd = -1;
  const int accepted = qalt_at_accept_client_request(g_listening, &fd);
  const int received =
      recv(fd, &g_answer, sizeof g_answer, MSG_WAITALL) == (ssize_t)sizeof g_answer;
  close(fd);
  close(g_listening);
  return accepted == 1 && received && strcmp(g_answer.aucDataBuf, "waiting") == 0 &&
         qalt_at_accept_client_request(-1, &fd) == -1;
}

ROAD(SetClientProcRecvCallback) {
  return SetClientProcRecvCallback(on_report) == 0 && pCallBackFun == on_report;
}

static void set_callback(void) {
  SetClientProcRecvCallback(on_report);
}
ROAD_AFTER(set_callback, parse_msg) {
  memset(&g_answer, 0, sizeof g_answer);
  strcpy(g_answer.aucDataBuf, "\r\n+CMTI: \"SM\",3\r\n");
  parse_msg(NULL);
  parse_msg(&g_answer);
  return arrived(g_answer.aucDataBuf);
}

/* The receiver's thread listens on its own: a report may have to be sent again until it does. */
static int report_arrives(const char* path, const char* text) {
  while (!modem_deliver(path, text)) sched_yield();
  return arrived(text);
}

ROAD_AFTER(set_callback, ClientInit) {
  static char too_long[120];
  memset(too_long, 'p', sizeof too_long - 1);
  return ClientInit(too_long) == 1 && ClientInit(modem_private_path("reports")) == 0 &&
         report_arrives(modem_private_path("reports"), "\r\nRING\r\n") &&
         ClientInit(modem_private_path("reports")) == 0 &&
         strcmp(g_ModuleID, modem_private_path("reports")) == 0 && recv_thread_id != 0;
}

static void* send_report(void* path) {
  while (!modem_deliver(path, "\r\n+CREG: 1\r\n")) sched_yield();
  return NULL;
}
static pthread_t g_sender;
static void send_one_report(void) {
  static char path[64];
  set_callback();
  strcpy(path, modem_private_path("own"));
  unlink(path);
  if (pthread_create(&g_sender, NULL, send_report, path) != 0) abort();
}
ROAD_AFTER(send_one_report, receive_thread) {
  static char path[64];
  void* result;
  strcpy(path, modem_private_path("own"));
  g_accepts_left = 1; /* the second fails, which ends the receiver */
  result = receive_thread(path);
  g_accepts_left = -1;
  pthread_join(g_sender, NULL);
  return result == NULL && arrived("\r\n+CREG: 1\r\n");
}
