// Nothing of the codec but CODE_SerializeNumbers allocates, and that frees what it took. The
// program counts the calls into the allocator.
#include <gtest/gtest.h>

#include "qalt_at/text.h"

namespace {
int g_taken, g_freed;
bool g_no_memory;
}  // namespace

extern "C" {
void* __libc_malloc(size_t size);
void __libc_free(void* block);

void* malloc(size_t size) {
  ++g_taken;
  return g_no_memory ? nullptr : __libc_malloc(size);
}
void free(void* block) {
  ++g_freed;
  __libc_free(block);
}
// The C library's own logging allocates.
void syslog(int, const char*, ...) {}
void __syslog_chk(int, int, const char*, ...) {}
}  // extern "C"

TEST(Allocation, OnlyTheWorkCopy) {
  char items[64];
  wchar_t wide[64];
  int pure = 0;
  g_taken = g_freed = 0;
  QL_808182CodeSupportSet(1);
  for (const wchar_t* text : {L"Aé{", L"Пр", L"ab"}) {
    for (const int extended : {0, 1}) {
      QL_encodePBItem(text, items, sizeof items, &pure, extended);
      QL_decodePBItem(items, wide, 64, extended);
    }
  }
  const int taken_for_texts = g_taken;
  const int kept = CODE_SerializeNumbers("2143F5", items, 6);
  const int taken = g_taken, freed = g_freed;
  g_no_memory = true;
  const int refused = CODE_SerializeNumbers("2143F5", items, 6);
  g_no_memory = false;
  for (const auto& [value, expected] :
       {std::pair{taken_for_texts, 0}, {kept, 5}, {taken, 1}, {freed, 1}, {refused, -1}}) {
    EXPECT_EQ(value, expected);
  }
}
