/* Takes the calls one after the other and prints the stack that each needed:
 *   mark NAME BYTES
 * A bare thread's own use of its stack is taken off. Exit status 0 when every call was right. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>

#include "call.h"

enum { kStack = 512 * 1024, kGuard = 64 * 1024, kPaint = 0xA5, kLimit = 400 * 1024 };

struct Records g;

static struct Call {
  const char* name;
  int (*body)(void);
  void (*preparation)(void);
} g_calls[256];
static int g_count;

void call_add(const char* name, int (*body)(void), void (*preparation)(void)) {
  const struct Call call = {name, body, preparation};
  g_calls[g_count++] = call;
}

static unsigned char* g_stack;
static size_t g_mark;

/* The marks are read before the thread ends: a C library may give a dead thread's stack back. */
static void* take(void* call) {
  const int right = call == NULL || ((const struct Call*)call)->body();
  size_t untouched = 0;
  while (untouched < kStack && g_stack[untouched] == kPaint) ++untouched;
  g_mark = kStack - untouched;
  return right ? &g_mark : NULL;
}

static void prepare(const struct Call* call) {
  memset(&g, 0, sizeof g);
  for (int i = 0; i < PB_READ_MAX; ++i) g.entries[i].pFieldList = g.fields[i];
  g_busy = g_sleeps = is808182CodeSupport = 0;
  QL_setCurrentPlatform(PB_PLATFORM_7);
  QL_getPhonebookInfo(0, &g.param);
  if (call->preparation != NULL) call->preparation();
}

/* Runs a call, or none, on the painted stack, and leaves the bytes it touched in g_mark. */
static int run(struct Call* call) {
  pthread_attr_t attributes;
  pthread_t thread;
  void* result = NULL;
  memset(g_stack, kPaint, kStack);
  if (pthread_attr_init(&attributes) != 0 ||
      pthread_attr_setstack(&attributes, g_stack, kStack) != 0 ||
      pthread_create(&thread, &attributes, take, call) != 0 || pthread_join(thread, &result) != 0) {
    abort();
  }
  return result != NULL;
}

int main(void) {
  const int flags = MAP_PRIVATE | MAP_ANONYMOUS;
  int failed = 0;
  size_t own;
  setvbuf(stdout, NULL, _IOLBF, 0);
  /* With a guard below. */
  g_stack = (unsigned char*)mmap(NULL, kGuard + kStack, PROT_NONE, flags, -1, 0) + kGuard;
  if (mprotect(g_stack, kStack, PROT_READ | PROT_WRITE) != 0) abort();
  modem_start();
  run(NULL);
  own = g_mark;
  for (struct Call* call = g_calls; call != g_calls + g_count; ++call) {
    prepare(call);
    const int right = run(call);
    const size_t mark = g_mark > own ? g_mark - own : 0;
    printf("mark %s %lu\n", call->name, (unsigned long)mark);
    if (right && mark < kLimit) continue;
    printf("FAILED: %s, %s\n", call->name, right ? "over 400 KB of stack" : "wrong result");
    ++failed;
  }
  printf("%d of %d calls failed, a bare thread takes %lu bytes of its stack\n", failed, g_count,
         (unsigned long)own);
  return failed != 0;
}
