/* The AT server with a scripted modem, and the C library's calls that the program takes over: the
 * fixed path of the AT server leads to a private one, nothing sleeps, nothing reaches syslog. */
#define _GNU_SOURCE
#include <errno.h>
#include <pthread.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/socket.h>
#include <sys/syscall.h>
#include <sys/un.h>
#include <unistd.h>

#include "call.h"

int g_busy, g_sleeps;
__thread int g_accepts_left = -1;

static char g_folder[] = "/tmp/qalt-target-XXXXXX";
static AtMsg g_request, g_answer, g_report = {.aucDataBuf = "\r\nRING\r\n"};

/* What a command begins with, and the line in front of its OK. */
static const char* const kRules[][2] = {
    {"AT+CPBS?", "\r\n+CPBS: \"SM\",12,250\r\n"},
    {"AT+CPBR=?", "\r\n+CPBR: (1-250),40,18\r\n"},
    {"AT+CPBR=3", "\r\n+CPBR: 3,\"+4930\",145,\"0041\"\r\n"},
    {"AT+JCPBR=?", "\r\n+JCPBR: (1-250),40,60,41,42,128,61\r\n"},
    {"AT+JUSIM=?", "\r\n1\r\n"},
    {"AT+JCPBR=", "\r\n+JCPBR: 7,\"123\",\"Ann A\",\"456\",\"789\",\"a@b\",\"x y\"\r\n"},
    {"AT^SCPBR=", "\r\n^SCPBR: 8,\"1\",129,\"2\",129,\"3\",129,\"\",129,\"Lee B\",1,\"mail\"\r\n"},
    {"AT^CARDMODE=?", "\r\n^CARDMODE: 1\r\n"},
    {"AT+EUSIM?", "\r\n1\r\n"},
    {"", ""},
};

static void answer(const char* line) {
  char* end = g_answer.aucDataBuf;
  size_t i = 0;
  memset(&g_answer, 0, sizeof g_answer);
  if (g_busy) {
    strcpy(end, "\r\nERROR\r\n");
  } else if (same(line, "AT+CPBR=1,100")) {
    /* The most that one read brings: 100 entries, with the longest texts that a frame carries. */
    for (int k = 1; k <= 100; ++k) {
      end +=
          sprintf(end, "\r\n+CPBR: %d,\"+4930123456789\",145,\"0041006E006E006100%02X0042\"", k, k);
    }
    strcpy(end, "\r\n\r\nOK\r\n");
  } else {
    while (strncmp(line, kRules[i][0], strlen(kRules[i][0])) != 0) ++i;
    sprintf(end, "%s\r\nOK\r\n", kRules[i][1]);
  }
}

/* Calls that stand for themselves, since the program has its own connect and accept. */
int connect(int fd, const struct sockaddr* address, socklen_t size) {
  struct sockaddr_un real = *(const struct sockaddr_un*)address;
  if (same(real.sun_path, QALT_AT_SERVER_PATH)) strcpy(real.sun_path, private_path("server"));
  return (int)syscall(SYS_connect, fd, &real, size);
}
int accept(int fd, struct sockaddr* address, socklen_t* size) {
  errno = EINVAL;
  return g_accepts_left-- == 0 ? -1 : (int)syscall(SYS_accept4, fd, address, size, 0);
}

unsigned sleep(unsigned seconds) {
  g_sleeps += (int)seconds;
  return 0;
}

/* Every argument of a log line is read. */
#define FORMAT(format)                   \
  va_list arguments;                     \
  va_start(arguments, format);           \
  vsnprintf(NULL, 0, format, arguments); \
  va_end(arguments)
__attribute__((format(printf, 2, 3))) void syslog(int priority, const char* format, ...) {
  (void)priority;
  FORMAT(format);
}
__attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int flag, const char* format,
                                                        ...) {
  (void)(priority + flag);
  FORMAT(format);
}

static void* serve(void* listening) {
  for (;;) {
    const int fd = accept(*(int*)listening, NULL, NULL);
    if (fd < 0) return NULL;
    if (recv(fd, &g_request, sizeof g_request, MSG_WAITALL) == (ssize_t)sizeof g_request &&
        strlen(g_request.aucDataBuf) == g_request.usParaLen) {
      answer(g_request.aucDataBuf);
      send(fd, &g_answer, sizeof g_answer, MSG_NOSIGNAL);
    }
    close(fd);
  }
}

static void clean_up(void) {
  unlink(private_path("server"));
  unlink(private_path("own"));
  unlink(private_path("reports"));
  rmdir(g_folder);
}

void modem_start(void) {
  static int listening;
  pthread_t thread;
  if (mkdtemp(g_folder) == NULL || atexit(clean_up) != 0 ||
      qalt_at_create_server_socket(private_path("server"), &listening) != 1 ||
      pthread_create(&thread, NULL, serve, &listening) != 0) {
    abort();
  }
}

int sent(const char* line) {
  return same(g_request.aucDataBuf, line);
}

const char* private_path(const char* name) {
  static __thread char path[64];
  snprintf(path, sizeof path, "%s/%s", g_folder, name);
  return path;
}

void* deliver_report(void* path) {
  int fd;
  while (qalt_at_create_client_socket(path, &fd) != 1) sched_yield();
  send(fd, &g_report, sizeof g_report, MSG_NOSIGNAL);
  close(fd);
  return NULL;
}
