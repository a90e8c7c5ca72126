/* A client of the library alone: reads the whole SIM phonebook and keeps it.
 * usage: phonebook_client [--empty]     with --empty it ends at once: what a process has anyway */
#include <stdio.h>
#include <string.h>

#include "qalt_at/phonebook.h"

enum { STEP = 20, MOST = 1000, FIELDS = PB_FIELD_TYPES };

static PbField fields[STEP][FIELDS];
static PhonebookEntry entries[STEP];

/* What a client keeps of a contact. */
static struct {
  int32_t index;
  char number[48];
  char name[128];
} contacts[MOST];

static void keep(int count, const PhonebookEntry* entry) {
  contacts[count].index = entry->storageIndex;
  snprintf(contacts[count].number, sizeof contacts[count].number, "%.47s",
           entry->pFieldList[PB_FIELD_NUMBER].pField);
  snprintf(contacts[count].name, sizeof contacts[count].name, "%.127s",
           entry->pFieldList[PB_FIELD_TEXT].pField);
}

int main(int argc, char** argv) {
  int count = 0;
  PbParam param;
  if (argc > 1 && strcmp(argv[1], "--empty") == 0) return 0;
  if (QL_getPhonebookInfo(0, &param) != PB_OK) return 1;
  for (int first = param.MinIndex; first <= param.MaxIndex; first += STEP) {
    const int last = first + STEP - 1 < param.MaxIndex ? first + STEP - 1 : param.MaxIndex;
    for (int i = 0; i < STEP; ++i) entries[i] = (PhonebookEntry){0, 0, fields[i], 0};
    if (QL_getPhonebookEntry(0, first, last, entries) != PB_OK) return 1;
    for (int i = 0; i < STEP && entries[i].storageIndex != 0 && count < MOST; ++i) {
      keep(count++, &entries[i]);
    }
  }
  return count == param.EntriesUsed ? 0 : 1;
}
