#include "bench/literal_reader.h"

#include <cstdint>
#include <cstdio>
#include <cstring>

#include "qalt_at/parameters.h"

namespace literal {
namespace {

struct Work {
  char name[30];
  char payload[102400];
};

const char* find(const char* text, const char* needle) {
  const char* from = text;
  int quotes = 0;
  for (;;) {
    const char* found = std::strstr(from, needle);
    if (found == nullptr) return nullptr;
    for (const char* c = from; c != found; ++c) quotes += *c == '"';
    if (quotes % 2 == 0) return found;
    from = found + 1;
  }
}

void join(const char* text, Work& work) {
  char line[1024];
  const char* position = text;
  while (const char* end = find(position, "\r\n")) {
    if (end != position) {
      std::memset(line, 0, sizeof line);
      std::memcpy(line, position, static_cast<size_t>(end - position));
      const char* colon = find(line, ": ");
      if (colon != nullptr) {
        if (work.name[0] == '\0') {
          std::memcpy(work.name, line, static_cast<size_t>(colon - line));
        } else if (std::strncmp(work.name, line, static_cast<size_t>(colon - line)) == 0) {
          std::strcat(work.payload, ";");
        } else {
          return;
        }
        std::strcat(work.payload, colon + 2);
      } else if (work.name[0] != '\0') {
        std::strcat(work.payload, ",\"");
        std::strcat(work.payload, line);
        std::strcat(work.payload, "\"");
      } else if (find(position, ": ") == nullptr) {
        std::strcat(work.payload, line);
      }
    }
    position = end + 2;
  }
}

void rewrite(char* line) {
  char work[1024];
  std::memset(work, 0, sizeof work);
  const size_t length = std::strlen(line);
  size_t n = 0;
  bool quoted = false;
  for (size_t i = 0; i < length; ++i) {
    if (line[i] == '"') {
      quoted = !quoted;
      if (line[i + 1] == '"') work[n++] = static_cast<char>(ATCODEC_MARK_EMPTY);
    } else if (line[i] == ',' && !quoted) {
      work[n++] = ' ';
      if (line[i + 1] == ',' || line[i + 1] == '\0') {
        work[n++] = static_cast<char>(ATCODEC_MARK_EMPTY);
      }
    } else if (line[i] == ' ' && quoted) {
      work[n++] = static_cast<char>(ATCODEC_MARK_SPACE);
    } else if (line[i] == '\t' && quoted) {
      work[n++] = static_cast<char>(ATCODEC_MARK_TAB);
    } else {
      work[n++] = line[i];
    }
  }
  std::memcpy(line, work, n + 1);
}

void restore(char* field) {
  const size_t length = std::strlen(field);
  if (length == 1 && static_cast<uint8_t>(field[0]) == ATCODEC_MARK_EMPTY) field[0] = '\0';
  for (size_t i = 0; i < length; ++i) {
    if (static_cast<uint8_t>(field[i]) == ATCODEC_MARK_SPACE) field[i] = ' ';
    if (static_cast<uint8_t>(field[i]) == ATCODEC_MARK_TAB) field[i] = '\t';
  }
}

}  // namespace

int parse(char* text, AtRes* answer) {
  const char* start = find(text, "\r\n");
  if (start == nullptr) return 19;
  if (start != text) std::memmove(text, start, std::strlen(start) + 1);
  const char* head = text + std::strlen(text);
  int row = -1;
  for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
    const char* found = find(text, QaltWcdma_AtEndFlgTable[i].EndFlag);
    if (found != nullptr && found < head) {
      head = found;
      row = i;
    }
    if (head == text) break;
  }
  if (row != 0 || head == text) return 19;  // an OK with information is all that is measured
  answer->CmdId = 1;
  answer->ResType = 1;
  Work work;
  std::memset(&work, 0, sizeof work);
  const size_t length = static_cast<size_t>(head - text);
  std::memcpy(answer->Paras, text, length);
  answer->Paras[length] = '\0';
  join(answer->Paras + 2, work);
  std::memset(answer->Paras, 0, sizeof answer->Paras);
  std::memcpy(answer->Paras, work.payload, std::strlen(work.payload));
  const char* rest = head + 6;
  std::memmove(text, rest, std::strlen(rest) + 1);
  return 0;
}

void read_entries(AtRes* answer, PbItemList* list) {
  static ParasList pieces;
  std::memset(&pieces, 0, sizeof pieces);
  const char* position = answer->Paras;
  while (pieces.nCount < ATCODEC_MAX_PARAS && *position != '\0') {
    const char* end = find(position, ";");
    const size_t length = end ? static_cast<size_t>(end - position) : std::strlen(position);
    std::memcpy(pieces.Para[pieces.nCount++], position, length);
    if (end == nullptr) break;
    position = end + 1;
  }
  for (int32_t k = 0; k < pieces.nCount; ++k) {
    char* line = pieces.Para[k];
    PbItem& item = list->items[k];
    rewrite(line);
    std::sscanf(line, "%d %40s %d", &item.storageIndex, item.number, &item.numberType);
    int spaces = 0;
    for (size_t i = 0; i < 399 && i < std::strlen(line); ++i) {
      if (line[i] == ' ' && ++spaces == 3) {
        std::strncpy(item.text, line + i + 1, sizeof item.text - 1);
        break;
      }
    }
    restore(item.number);
    restore(item.text);
  }
  list->count = pieces.nCount;
}

}  // namespace literal
