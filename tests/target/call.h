/*
 * call.h - a test program for any C library, in C99: every exported function is taken once or more,
 * each on a painted thread stack of 512 KB, against an AT server inside the program.
 *
 * CALL(f, (x) == 0 && check) is right when f(x) == 0 && check. STEP(f, (x), check) calls f(x), then
 * checks. In front of each, outside the paint, the records in `g` are cleared and an ordinary
 * phonebook is discovered; then comes the call's own preparation. No call needs another one before
 * it: the linker sets their order, and sets another where it optimises.
 */
#ifndef QALT_TESTS_TARGET_CALL_H
#define QALT_TESTS_TARGET_CALL_H

#include <stddef.h>
#include <string.h>
#include <wchar.h>

#include "qalt_at/qalt_at.h"

void call_add(const char* name, int (*body)(void), void (*preparation)(void));

#define REGISTERED(preparation, name, ...)                         \
  static int call_of_##name(void) {                                \
    __VA_ARGS__;                                                   \
  }                                                                \
  __attribute__((constructor)) static void call_add_##name(void) { \
    call_add(#name, call_of_##name, preparation);                  \
  }                                                                \
  extern struct Records g
#define CALL_AFTER(preparation, name, ...) REGISTERED(preparation, name, return name __VA_ARGS__)
#define CALL(name, ...) CALL_AFTER(NULL, name, __VA_ARGS__)
#define STEP_AFTER(preparation, name, arguments, ...) \
  REGISTERED(preparation, name, name arguments; return __VA_ARGS__)
#define STEP(name, arguments, ...) STEP_AFTER(NULL, name, arguments, __VA_ARGS__)

extern struct Records {
  AtMsg answer;
  AtRes res;
  AtParseBuf work;
  ParasList paras;
  PbItemList list;
  PbItem item;
  PbParam param;
  PhonebookEntry entries[PB_READ_MAX]; /* each with its fields */
  PbField fields[PB_READ_MAX][PB_FIELD_TYPES];
  char text[QALT_AT_TEXT_SIZE], line[1200], *head;
  uint8_t bytes[512];
  wchar_t wide[600];
  uint16_t ucs2[200], half, used;
  int32_t values[8];
  int number;
  uint32_t size;
} g;

void modem_start(void);
int sent(const char* line);                 /* whether this command came last */
void* deliver_report(void* path);           /* sends "\r\nRING\r\n" as soon as somebody listens */
const char* private_path(const char* name); /* a path in the program's own folder */

extern int g_busy;                  /* every command is answered ERROR */
extern int g_sleeps;                /* seconds that the library wanted to sleep */
extern __thread int g_accepts_left; /* accepts of this thread that still succeed; negative: all */

static inline int same(const char* a, const char* b) {
  return strcmp(a, b) == 0;
}

#endif
