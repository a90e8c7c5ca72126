// How much stack the phonebook calls use: each runs on a painted thread stack, against a link that
// answers inside this program.
#include <pthread.h>
#include <sys/mman.h>
#include <sys/socket.h>

#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <string>

#include "qalt_at/link.h"
#include "qalt_at/phonebook.h"

namespace {

constexpr size_t kStack = 1 << 20;
constexpr unsigned char kPaint = 0xA5;

AtMsg g_answer;

void answer(const char* command) {
  std::string text;
  if (std::strncmp(command, "AT+CPBR=1,", 10) == 0) {
    for (int i = 1; i <= 100; ++i) {
      text += "\r\n+CPBR: " + std::to_string(i) + ",\"+49301234567890\",145,\"0041006E006E0061\"";
    }
    text += "\r\n";
  } else if (std::strcmp(command, "AT+CPBR=?") == 0) {
    text = "\r\n+CPBR: (1-250),40,18\r\n";
  } else if (std::strcmp(command, "AT+CPBS?") == 0) {
    text = "\r\n+CPBS: \"SM\",12,250\r\n";
  }
  text += std::strncmp(command, "AT+J", 4) == 0 ? "\r\nERROR\r\n" : "\r\nOK\r\n";
  std::memset(&g_answer, 0, sizeof g_answer);
  text.copy(g_answer.aucDataBuf, sizeof g_answer.aucDataBuf - 1);
}

PbField g_fields[PB_READ_MAX][PB_FIELD_TYPES];
PhonebookEntry g_entries[PB_READ_MAX];

void* discover(void*) {
  PbParam param;
  return QL_getPhonebookInfo(0, &param) == PB_OK ? nullptr : &g_answer;
}
void* read_range(void*) {
  return QL_getPhonebookEntry(0, 1, PB_READ_MAX, g_entries) == PB_OK ? nullptr : &g_answer;
}
void* write_one(void*) {
  return QL_setPhonebookEntry(0, &g_entries[4]) == PB_OK ? nullptr : &g_answer;
}
void* delete_one(void*) {
  return QL_deletePhonebookEntry(0, 5) == PB_OK ? nullptr : &g_answer;
}
void* nothing(void*) {
  return nullptr;
}

// Bytes of the stack that `body` touched.
size_t mark_of(void* (*body)(void*)) {
  void* stack = mmap(nullptr, kStack, PROT_READ | PROT_WRITE, MAP_PRIVATE | MAP_ANONYMOUS, -1, 0);
  if (stack == MAP_FAILED) std::abort();
  std::memset(stack, kPaint, kStack);
  pthread_attr_t attributes;
  pthread_attr_init(&attributes);
  pthread_attr_setstack(&attributes, stack, kStack);
  pthread_t thread;
  void* failed = nullptr;
  if (pthread_create(&thread, &attributes, body, nullptr) != 0) std::abort();
  pthread_join(thread, &failed);
  if (failed != nullptr) std::abort();
  size_t untouched = 0;
  while (untouched != kStack && static_cast<unsigned char*>(stack)[untouched] == kPaint)
    ++untouched;
  munmap(stack, kStack);
  return kStack - untouched;
}

}  // namespace

extern "C" {
int connect(int, const sockaddr*, socklen_t) {
  return 0;
}
ssize_t send(int, const void* bytes, size_t size, int) {
  answer(static_cast<const AtMsg*>(bytes)->aucDataBuf);
  return static_cast<ssize_t>(size);
}
ssize_t recv(int, void* bytes, size_t size, int) {
  std::memcpy(bytes, &g_answer, size);
  return static_cast<ssize_t>(size);
}
}

int main() {
  for (int i = 0; i != PB_READ_MAX; ++i) g_entries[i].pFieldList = g_fields[i];
  const struct {
    const char* name;
    void* (*body)(void*);
  } rows[] = {{"QL_getPhonebookInfo", discover},
              {"QL_getPhonebookEntry", read_range},
              {"QL_setPhonebookEntry", write_one},
              {"QL_deletePhonebookEntry", delete_one}};
  const size_t thread_itself = mark_of(nothing);
  std::printf("stack high-water marks, bytes (a bare thread's %zu taken off)\n", thread_itself);
  for (const auto& row : rows) {
    std::printf("  %-24s %zu\n", row.name, mark_of(row.body) - thread_itself);
  }
}
