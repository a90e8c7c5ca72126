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

#include "road.h"

int g_sleeps, g_errors_logged;
__thread int g_accepts_left = -1;

static char g_folder[] = "/tmp/qalt-target-XXXXXX";
static enum ModemKind g_kind;
static AtMsg g_request, g_answer;

static const struct Rule {
  const char* start;
  const char* answer;
} kRules[] = {
    {"AT+CPBS=", "\r\nOK\r\n"},
    {"AT+CSCS=", "\r\nOK\r\n"},
    {"AT+CPBS?", "\r\n+CPBS: \"SM\",12,250\r\n\r\nOK\r\n"},
    {"AT+CPBR=?", "\r\n+CPBR: (1-250),40,18\r\n\r\nOK\r\n"},
    {"AT+CPBR=3", "\r\n+CPBR: 3,\"+4930\",145,\"0041\"\r\n\r\nOK\r\n"},
    {"AT+CPBW=", "\r\nOK\r\n"},
    {"AT+JCPBR=?", "\r\n+JCPBR: (1-250),40,60,41,42,128,61\r\n\r\nOK\r\n"},
    {"AT+JUSIM=?", "\r\n1\r\n\r\nOK\r\n"},
    {"AT+JCPBR=", "\r\n+JCPBR: 7,\"123\",\"Ann A\",\"456\",\"789\",\"a@b\",\"x y\"\r\n\r\nOK\r\n"},
    {"AT+JCPBW=", "\r\nOK\r\n"},
    {"AT^SCPBR=",
     "\r\n^SCPBR: 8,\"111\",129,\"222\",129,\"333\",129,\"\",129,\"Lee "
     "B\",1,\"mail\"\r\n\r\nOK\r\n"},
    {"AT^SCPBW=", "\r\nOK\r\n"},
    {"AT^CARDMODE=?", "\r\n^CARDMODE: 1\r\n\r\nOK\r\n"},
    {"AT+EUSIM?", "\r\n1\r\n\r\nOK\r\n"},
};

/* The most that one read brings: 100 entries, here with the longest texts that a frame carries. */
static void answer_hundred(char* text, size_t size) {
  size_t used = 0;
  for (int i = 1; i <= 100; ++i) {
    used += (size_t)snprintf(text + used, size - used,
                             "\r\n+CPBR: %d,\"+49301234567890\",145,\"0041006E006E006100%02X0042\"",
                             i, i);
  }
  snprintf(text + used, size - used, "\r\n\r\nOK\r\n");
}

static void answer(const char* line) {
  const char* text = "\r\nERROR\r\n";
  memset(&g_answer, 0, sizeof g_answer);
  if (strcmp(line, "AT+CPBR=1,100") == 0 && g_kind != MODEM_BUSY) {
    answer_hundred(g_answer.aucDataBuf, sizeof g_answer.aucDataBuf);
    return;
  }
  for (size_t i = 0; i < sizeof kRules / sizeof *kRules; ++i) {
    if (strncmp(line, kRules[i].start, strlen(kRules[i].start)) != 0) continue;
    if (g_kind == MODEM_BUSY) break;
    text = g_kind == MODEM_STANDARD && strncmp(line, "AT+J", 4) == 0 ? "\r\nnot support\r\n"
                                                                     : kRules[i].answer;
    break;
  }
  memcpy(g_answer.aucDataBuf, text, strlen(text));
}

static struct sockaddr_un address_of(const char* path) {
  struct sockaddr_un address;
  memset(&address, 0, sizeof address);
  address.sun_family = AF_UNIX;
  snprintf(address.sun_path, sizeof address.sun_path, "%s", path);
  return address;
}

/* Both system calls stand for themselves, since the program has its own connect and accept. */
int connect(int fd, const struct sockaddr* address, socklen_t size) {
  struct sockaddr_un own;
  const struct sockaddr_un* wanted = (const struct sockaddr_un*)address;
  if (strcmp(wanted->sun_path, QALT_AT_SERVER_PATH) == 0) {
    own = address_of(modem_private_path("server"));
    address = (const struct sockaddr*)&own;
    size = sizeof own;
  }
  return (int)syscall(SYS_connect, fd, address, size);
}

int accept(int fd, struct sockaddr* address, socklen_t* size) {
  if (g_accepts_left == 0) {
    errno = EINVAL;
    return -1;
  }
  if (g_accepts_left > 0) --g_accepts_left;
  return (int)syscall(SYS_accept4, fd, address, size, 0);
}

unsigned sleep(unsigned seconds) {
  g_sleeps += (int)seconds;
  return 0;
}

__attribute__((format(printf, 2, 0))) static void count_line(int priority, const char* format,
                                                             va_list arguments) {
  vsnprintf(NULL, 0, format, arguments); /* every argument is read */
  if (priority == 3) __sync_add_and_fetch(&g_errors_logged, 1);
}
__attribute__((format(printf, 2, 3))) void syslog(int priority, const char* format, ...) {
  va_list arguments;
  va_start(arguments, format);
  count_line(priority, format, arguments);
  va_end(arguments);
}
__attribute__((format(printf, 3, 4))) void __syslog_chk(int priority, int flag, const char* format,
                                                        ...) {
  va_list arguments;
  (void)flag;
  va_start(arguments, format);
  count_line(priority, format, arguments);
  va_end(arguments);
}

static void* serve(void* listening) {
  for (;;) {
    const int fd = (int)syscall(SYS_accept4, *(int*)listening, NULL, NULL, 0);
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
  static const char* const kNames[] = {"server", "reports", "own"};
  for (size_t i = 0; i < sizeof kNames / sizeof *kNames; ++i) unlink(modem_private_path(kNames[i]));
  rmdir(g_folder);
}

void modem_start(void) {
  static int listening;
  struct sockaddr_un address;
  pthread_t thread;
  if (mkdtemp(g_folder) == NULL) abort();
  atexit(clean_up);
  listening = socket(AF_UNIX, SOCK_STREAM, 0);
  address = address_of(modem_private_path("server"));
  if (bind(listening, (struct sockaddr*)&address, sizeof address) != 0 ||
      listen(listening, 8) != 0 || pthread_create(&thread, NULL, serve, &listening) != 0) {
    perror("modem");
    exit(2);
  }
}

void modem_become(enum ModemKind kind) {
  g_kind = kind;
}

const char* modem_last_line(void) {
  return g_request.aucDataBuf;
}

const char* modem_private_path(const char* name) {
  static __thread char path[64];
  snprintf(path, sizeof path, "%s/%s", g_folder, name);
  return path;
}

int modem_deliver(const char* path, const char* text) {
  static AtMsg report;
  struct sockaddr_un address = address_of(path);
  int fd = socket(AF_UNIX, SOCK_STREAM, 0), sent;
  memset(&report, 0, sizeof report);
  report.usParaLen = (uint16_t)strlen(text);
  memcpy(report.aucDataBuf, text, strlen(text));
  sent = syscall(SYS_connect, fd, &address, sizeof address) == 0 &&
         send(fd, &report, sizeof report, MSG_NOSIGNAL) == (ssize_t)sizeof report;
  close(fd);
  return sent;
}
