/*
 * road.h - a test program for any C library, in C99: every exported function is taken once or more,
 * each on a painted thread stack of 512 KB, against an AT server inside the program.
 *
 * A road is a function that returns 1 when the library did what it should. Its name is the name of
 * the exported function that it takes. ROAD_AFTER runs a preparation first, outside the paint.
 */
#ifndef QALT_TESTS_TARGET_ROAD_H
#define QALT_TESTS_TARGET_ROAD_H

#include <stddef.h>
#include <string.h>
#include <wchar.h>

#include "qalt_at/qalt_at.h"

void road_add(const char* name, int (*body)(void), void (*preparation)(void));

#define ROAD_AFTER(preparation, name)                              \
  static int road_to_##name(void);                                 \
  __attribute__((constructor)) static void road_add_##name(void) { \
    road_add(#name, road_to_##name, preparation);                  \
  }                                                                \
  static int road_to_##name(void)
#define ROAD(name) ROAD_AFTER(NULL, name)

/* The AT server's answers to what begins with "AT+J" and the like; ERROR to what it does not know.
 */
enum ModemKind { MODEM_STANDARD, MODEM_VENDOR, MODEM_BUSY };
void modem_become(enum ModemKind kind);
void modem_start(void);
const char* modem_last_line(void);                     /* the command it got last */
int modem_deliver(const char* path, const char* text); /* sends one report frame; 1 when sent */
const char* modem_private_path(const char* name);      /* a path in the program's own folder */

extern int g_sleeps;                /* seconds that the library wanted to sleep */
extern int g_errors_logged;         /* lines at priority 3 */
extern __thread int g_accepts_left; /* accepts of this thread that still succeed; negative: all */

#endif
