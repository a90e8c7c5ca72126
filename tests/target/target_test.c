/* Takes the roads one after the other and prints the stack that each needed:
 *   mark NAME BYTES
 * A bare thread's own use of its stack is taken off. Exit status 0 when every road was right. */
#define _GNU_SOURCE
#include <pthread.h>
#include <stdio.h>
#include <stdlib.h>
#include <sys/mman.h>

#include "road.h"

enum {
  kStack = 512 * 1024,
  kGuard = 64 * 1024,
  kMostRoads = 256,
  kPaint = 0xA5,
  kLimit = 400 * 1024
};

static struct Road {
  const char* name;
  int (*body)(void);
  void (*preparation)(void);
} g_roads[kMostRoads];
static int g_count;

void road_add(const char* name, int (*body)(void), void (*preparation)(void)) {
  const struct Road road = {name, body, preparation};
  if (g_count == kMostRoads) abort();
  g_roads[g_count++] = road;
}

static int nothing(void) {
  return 1;
}

static unsigned char* g_stack;
static size_t g_mark;

/* The marks are read before the thread ends: a C library may give a dead thread's stack back. */
static void* take(void* road) {
  const int right = ((const struct Road*)road)->body();
  size_t untouched = 0;
  while (untouched < kStack && g_stack[untouched] == kPaint) ++untouched;
  g_mark = kStack - untouched;
  return right ? road : NULL;
}

/* Runs a road on a painted stack, with a guard below, and leaves the bytes it touched in g_mark. */
static int run(const struct Road* road) {
  pthread_attr_t attributes;
  pthread_t thread;
  void* result = NULL;
  if (g_stack == NULL) {
    unsigned char* map = mmap(NULL, kGuard + kStack, PROT_NONE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
    if (map == MAP_FAILED || mprotect(map + kGuard, kStack, PROT_READ | PROT_WRITE) != 0) abort();
    g_stack = map + kGuard;
  }
  memset(g_stack, kPaint, kStack);
  if (pthread_attr_init(&attributes) != 0 ||
      pthread_attr_setstack(&attributes, g_stack, kStack) != 0 ||
      pthread_create(&thread, &attributes, take, (void*)road) != 0 ||
      pthread_join(thread, &result) != 0) {
    abort();
  }
  return result != NULL;
}

int main(void) {
  const struct Road bare = {"nothing", nothing, NULL};
  int failed = 0;
  size_t own;
  setvbuf(stdout, NULL, _IOLBF, 0);
  modem_start();
  run(&bare);
  own = g_mark;
  for (int i = 0; i < g_count; ++i) {
    int right;
    size_t mark;
    if (g_roads[i].preparation != NULL) g_roads[i].preparation();
    right = run(&g_roads[i]);
    mark = g_mark > own ? g_mark - own : 0;
    printf("mark %s %lu\n", g_roads[i].name, (unsigned long)mark);
    if (!right || mark >= kLimit) {
      printf("FAILED: %s, %s\n", g_roads[i].name, right ? "over 400 KB of stack" : "wrong result");
      ++failed;
    }
  }
  printf("%d of %d roads failed, a bare thread takes %lu bytes of its stack\n", failed, g_count,
         (unsigned long)own);
  return failed != 0;
}
