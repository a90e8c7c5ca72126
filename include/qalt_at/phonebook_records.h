/*
 * phonebook_records.h - the phonebook records and codes that the AT command functions (commands.h)
 * and the phonebook interface (phonebook.h) share.
 *
 * Conventions of this header:
 *  1. Results. PB_OK to PB_ERR_FULL are the results of the QL_ phonebook functions; the command
 *     functions use PB_OK, PB_ERR_COMMAND and PB_ERR_READ_REFUSED of them.
 *  2. Ownership. No record owns memory; the caller owns every record it passes, and the array that
 *     PhonebookEntry.pFieldList points to.
 *  3. Sizes and units. Texts are NUL-terminated bytes held inline, in the modem's character set of
 *     the moment (text.h converts them). Lengths are in characters as the modem counts them.
 *  4. Threads and stack. Plain data. PbItemList has 175004 bytes: mind the stack it is put on.
 */
#ifndef QALT_AT_PHONEBOOK_RECORDS_H
#define QALT_AT_PHONEBOOK_RECORDS_H

#include <stdint.h>

/* Results. */
enum {
  PB_OK = 0,
  PB_ERR_COMMAND = 1,      /* link failure, unreadable answer, or a final result other than OK */
  PB_ERR_READ_REFUSED = 9, /* the modem answered ERROR to an entry read */
  PB_ERR_PARAM = 13,       /* bad argument, or a text that the write record cannot hold whole */
  PB_ERR_EXT_COMMAND = 31, /* a vendor write or delete command failed */
  PB_ERR_FULL = 34         /* no free index, or more entries in use than the storage has */
};

/* Field types: PbField.fieldType, and the position in PbParam.FieldAbility. */
enum {
  PB_FIELD_NUMBER = 0,
  PB_FIELD_TEXT = 1, /* the contact's name */
  PB_FIELD_NUMBER2 = 2,
  PB_FIELD_NUMBER3 = 3,
  PB_FIELD_EXTRA_TEXT = 4,
  PB_FIELD_EMAIL = 5,
  PB_FIELD_TYPES = 6
};

/* Bytes that a field's text may have in a PbItem; a longer text is cut there. */
enum {
  PB_NUMBER_SIZE = 100,
  PB_TEXT_SIZE = 128,
  PB_EMAIL_SIZE = 130,
  PB_FIELD_SIZE = 520, /* of a PbField's text */
  PB_LIST_SIZE = 250,  /* items of a PbItemList */
  PB_READ_MAX = 100    /* entries that one read can bring back */
};

/* Types of number, 3GPP TS 24.008 clause 10.5.4.7 as 3GPP TS 27.007 carries it. */
enum { PB_TYPE_NATIONAL = 129, PB_TYPE_INTERNATIONAL = 145 };

/* Platforms that are treated specially; every other code is an ordinary platform. */
enum {
  PB_PLATFORM_DEFAULT = 0,
  PB_PLATFORM_1 = 1, /* vendor commands as soon as the modem offers them */
  PB_PLATFORM_4 = 4, /* ^SCPBR and ^SCPBW */
  PB_PLATFORM_5 = 5, /* the capability flags are not probed */
  PB_PLATFORM_7 = 7, /* standard commands, nothing probed */
  PB_PLATFORM_8 = 8  /* as 7, and answer lines are read without the rewrite */
};

/* One contact as the read commands fill it and as a write starts from it. */
typedef struct PbItem {
  int32_t storageIndex;
  char number[PB_NUMBER_SIZE];
  int32_t numberType; /* 129, 145, or 0 when the answer has none */
  char text[PB_TEXT_SIZE];
  char number2[PB_NUMBER_SIZE];
  char number3[PB_NUMBER_SIZE];
  char email[PB_EMAIL_SIZE];
  char extraText[PB_TEXT_SIZE];
  int32_t coding; /* passed through; only ^SCPBR brings one */
} PbItem;

typedef struct PbItemList {
  int32_t count;
  PbItem items[PB_LIST_SIZE];
} PbItemList;

/* One field of a contact; pField is the text itself, NUL-terminated, not a pointer. */
typedef struct PbField {
  int32_t fieldType;
  char pField[PB_FIELD_SIZE];
} PbField;

/* The caller's record of one contact. */
typedef struct PhonebookEntry {
  int32_t storageIndex; /* on a write, 0 asks for the lowest free index, which is put here */
  int32_t FieldCount;   /* set by a read, obeyed by a write */
  PbField* pFieldList;  /* for a read: room for PB_FIELD_TYPES fields */
  int32_t coding;
} PhonebookEntry;

/* Capability flags, each 0 or 1. */
typedef struct PbType {
  int32_t IsSupportExtend; /* the vendor contact commands answer their test */
  int32_t IsSupportJCPBM;  /* always 0: no modem offers the facility */
  int32_t IsSupportUSim;   /* the card is a USIM */
} PbType;

/* The longest text that the modem takes in one field; 0 when it did not say. */
typedef struct PbFieldAbility {
  int32_t fieldType;
  int32_t maxLength;
} PbFieldAbility;

/* What discovery found out about the phonebook. */
typedef struct PbParam {
  int32_t EntriesUsed;
  int32_t MaxEntries;
  int32_t MinIndex;
  int32_t MaxIndex;
  struct PbType PbType;
  PbFieldAbility FieldAbility[PB_FIELD_TYPES]; /* entry k has fieldType k */
} PbParam;

/* What CPBW_Set sends. A record whose number and text are empty deletes the entry. */
typedef struct CpbwRecord {
  int32_t storageIndex; /* 0: the modem chooses */
  char number[128];
  int32_t numberType;
  char text[524];
} CpbwRecord;

/* What JCPBW_Set and SCPBW_Set send. Empty number and text delete the entry. */
typedef struct JcpbwRecord {
  int32_t storageIndex;
  char number[100];
  int32_t numberType;
  char text[64];
  char number2[100];
  char number3[100];
  char email[132];
  char extraText[64];
} JcpbwRecord;

#endif /* QALT_AT_PHONEBOOK_RECORDS_H */
