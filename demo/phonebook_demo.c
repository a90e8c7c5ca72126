/*
 * phonebook_demo.c - a client of libqalt_at in plain C, with nothing but the public headers: it
 * discovers the SIM phonebook, lists it, writes a contact to the first free index, reads it back,
 * deletes it, and receives a pushed report.
 *
 * usage: phonebook_demo REPORT_SOCKET
 * Exit status 0 only when every step gave what it should.
 */
#include <pthread.h>
#include <qalt_at/qalt_at.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <time.h>
#include <wchar.h>

/* As many entries as surely fit one answer frame. */
enum { STEP = 20, NAME_CHARACTERS = 256, REPORT_SECONDS = 10 };

static const wchar_t kName[] = L"\x0395\x03BB\x03AD\x03BD\x03B7 \x738B"; /* Greek and Chinese */
static const char kNumber[] = "+302101234567";

/* One contact with room for all its fields. */
typedef struct Contact {
  PhonebookEntry entry;
  PbField fields[PB_FIELD_TYPES];
} Contact;

static int g_failures = 0;

static int step(const char* what, int good) {
  printf("%s %s\n", good ? "  ok  " : "FAILED", what);
  if (!good) ++g_failures;
  return good;
}

/* The first report, handed from the receiver thread to main. */
static pthread_mutex_t g_lock = PTHREAD_MUTEX_INITIALIZER;
static pthread_cond_t g_arrived = PTHREAD_COND_INITIALIZER;
static char g_report[QALT_AT_TEXT_SIZE];

static int on_report(AtMsg* msg) {
  pthread_mutex_lock(&g_lock);
  if (g_report[0] == '\0') memcpy(g_report, msg->aucDataBuf, sizeof g_report);
  pthread_cond_signal(&g_arrived);
  pthread_mutex_unlock(&g_lock);
  return 0;
}

static int wait_for_report(void) {
  struct timespec end;
  int waiting = 0;
  clock_gettime(CLOCK_REALTIME, &end);
  end.tv_sec += REPORT_SECONDS;
  pthread_mutex_lock(&g_lock);
  while (g_report[0] == '\0' && waiting == 0) {
    waiting = pthread_cond_timedwait(&g_arrived, &g_lock, &end);
  }
  pthread_mutex_unlock(&g_lock);
  return g_report[0] != '\0';
}

/* Wide text, one UCS2 code point each, to UTF-8. */
static void to_utf8(const wchar_t* wide, char* out, size_t size) {
  size_t n = 0;
  for (; *wide != 0 && n + 4 < size; ++wide) {
    const unsigned long c = (unsigned long)*wide;
    if (c < 0x80) {
      out[n++] = (char)c;
    } else if (c < 0x800) {
      out[n++] = (char)(0xC0 | (c >> 6));
      out[n++] = (char)(0x80 | (c & 0x3F));
    } else {
      out[n++] = (char)(0xE0 | ((c >> 12) & 0x0F));
      out[n++] = (char)(0x80 | ((c >> 6) & 0x3F));
      out[n++] = (char)(0x80 | (c & 0x3F));
    }
  }
  out[n] = '\0';
}

/* The library does not select UCS2 on every modem. Vendor texts are in a coding of their own. */
static int begin_texts(int extended) {
  return extended || _SetPbCharactorSet(1);
}

static void end_texts(int extended) {
  if (!extended) _SetPbCharactorSet(0);
}

/* Reads first to last; the contacts that came stand in front, the others keep index 0. */
static int read_range(int first, int last, Contact* contacts, int extended) {
  PhonebookEntry entries[STEP];
  int i, result, count = 0;
  for (i = 0; i != STEP; ++i) {
    memset(&contacts[i], 0, sizeof contacts[i]);
    memset(&entries[i], 0, sizeof entries[i]);
    entries[i].storageIndex = -1;
    entries[i].pFieldList = contacts[i].fields;
  }
  if (!begin_texts(extended)) return -1;
  result = QL_getPhonebookEntry(0, first, last, entries);
  end_texts(extended);
  if (result != PB_OK) return -1;
  for (i = 0; i != STEP && entries[i].storageIndex != -1; ++i, ++count) {
    contacts[i].entry = entries[i];
  }
  return count;
}

static int list_contacts(const PbParam* info, int extended) {
  static Contact contacts[STEP];
  int first, shown = 0;
  printf("\n  index  number              name\n");
  for (first = info->MinIndex; first <= info->MaxIndex; first += STEP) {
    const int last = first + STEP - 1 < info->MaxIndex ? first + STEP - 1 : info->MaxIndex;
    const int count = read_range(first, last, contacts, extended);
    int i;
    if (count < 0) return -1;
    for (i = 0; i != count; ++i) {
      wchar_t wide[NAME_CHARACTERS] = {0};
      char name[4 * NAME_CHARACTERS];
      if (contacts[i].fields[PB_FIELD_TEXT].pField[0] != '\0' &&
          QL_decodePBItem(contacts[i].fields[PB_FIELD_TEXT].pField, wide, NAME_CHARACTERS,
                          extended) != 0) {
        return -1;
      }
      to_utf8(wide, name, sizeof name);
      printf("  %5d  %-18s  %s\n", contacts[i].entry.storageIndex,
             contacts[i].fields[PB_FIELD_NUMBER].pField, name);
    }
    shown += count;
  }
  printf("\n");
  return shown;
}

/* Writes the contact to the first free index and returns that, or 0. */
static int write_contact(int extended) {
  Contact contact;
  int pure = 0, result;
  memset(&contact, 0, sizeof contact);
  contact.fields[0].fieldType = PB_FIELD_NUMBER;
  memcpy(contact.fields[0].pField, kNumber, sizeof kNumber);
  contact.fields[1].fieldType = PB_FIELD_TEXT;
  if (QL_encodePBItem(kName, contact.fields[1].pField, PB_FIELD_SIZE, &pure, extended) != 0) {
    return 0;
  }
  contact.entry.FieldCount = 2;
  contact.entry.pFieldList = contact.fields;
  if (!begin_texts(extended)) return 0;
  result = QL_setPhonebookEntry(0, &contact.entry);
  end_texts(extended);
  return result == PB_OK ? contact.entry.storageIndex : 0;
}

static int reads_back(int index, int extended) {
  static Contact contacts[STEP];
  wchar_t wide[NAME_CHARACTERS] = {0};
  return read_range(index, index, contacts, extended) == 1 &&
         contacts[0].entry.storageIndex == index &&
         strcmp(contacts[0].fields[PB_FIELD_NUMBER].pField, kNumber) == 0 &&
         QL_decodePBItem(contacts[0].fields[PB_FIELD_TEXT].pField, wide, NAME_CHARACTERS,
                         extended) == 0 &&
         wcscmp(wide, kName) == 0;
}

static int is_empty(int index, int extended) {
  static Contact contacts[STEP];
  return read_range(index, index, contacts, extended) <= 0;
}

int main(int argc, char** argv) {
  PbParam info;
  char name[4 * NAME_CHARACTERS];
  int extended, shown, index;
  if (argc != 2) {
    fprintf(stderr, "usage: %s REPORT_SOCKET\n", argv[0]);
    return 2;
  }
  SetClientProcRecvCallback(on_report);
  step("report receiver started", ClientInit(argv[1]) == 0);

  QL_setCurrentPlatform(PB_PLATFORM_DEFAULT);
  memset(&info, 0, sizeof info);
  step("phonebook discovered", QL_getPhonebookInfo(0, &info) == PB_OK && info.MaxIndex > 0);
  extended = info.PbType.IsSupportExtend && info.PbType.IsSupportUSim;
  printf("       %d of %d entries used, indices %d to %d, %s commands\n", info.EntriesUsed,
         info.MaxEntries, info.MinIndex, info.MaxIndex, extended ? "vendor" : "standard");

  shown = list_contacts(&info, extended);
  step("every contact in use was listed", shown > 0 && shown == info.EntriesUsed);

  index = write_contact(extended);
  to_utf8(kName, name, sizeof name);
  printf("       %s, %s -> index %d\n", name, kNumber, index);
  step("contact written to the first free index", index != 0);
  step("contact read back as it was written", index != 0 && reads_back(index, extended));
  step("contact deleted", index != 0 && QL_deletePhonebookEntry(0, index) == PB_OK);
  step("its index is empty again", index != 0 && is_empty(index, extended));

  step("report received through the callback", wait_for_report());
  printf("       %s\n", strtok(g_report, "\r\n"));
  printf("%s\n", g_failures == 0 ? "All steps succeeded." : "Some steps failed.");
  return g_failures == 0 ? EXIT_SUCCESS : EXIT_FAILURE;
}
