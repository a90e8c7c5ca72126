// The codec table records, their selector, and the accessors and look-ups offered to clients.
#include "codec/table_access.h"

#include <pthread.h>

#include <atomic>

// The record is part of the binary interface.
static_assert(sizeof(CodecPair) == 8);
static_assert(offsetof(CodecTable, pUcs2ToGsm7AlphabetAsc) == 1 * sizeof(void*));
static_assert(offsetof(CodecTable, pGsm7ToUcs2Extend) == 2 * sizeof(void*));
static_assert(offsetof(CodecTable, pUcs2ToGsm7AlphabetUcs2) == 3 * sizeof(void*));
static_assert(offsetof(CodecTable, pUcs2ToGsm7ExtendAsc) == 4 * sizeof(void*));
static_assert(offsetof(CodecTable, pUcs2ToGsm7ExtendUcs2) == 5 * sizeof(void*));
static_assert(offsetof(CodecTable, nGsm7ToUcs2AlphabetSize) == 6 * sizeof(void*));
static_assert(offsetof(CodecTable, nAlphabetAscSize) == 6 * sizeof(void*) + 4);
static_assert(offsetof(CodecTable, nAlphabetUcs2Size) == 6 * sizeof(void*) + 8);
static_assert(offsetof(CodecTable, nExtendSize) == 6 * sizeof(void*) + 12);
static_assert(sizeof(CodecTable) == 6 * sizeof(void*) + 16);

namespace {

CodecTable default_record;
CodecTable spanish_record;
CodecTable portuguese_record;

// The records are read without the lock once the flag is seen; the lock keeps two first calls from
// filling them at the same time.
constinit std::atomic<bool> records_filled{false};
pthread_mutex_t fill_mutex = PTHREAD_MUTEX_INITIALIZER;

template <typename T, uint32_t N>
const T* counted(const T (&table)[N], uint32_t* count) {
  if (count != nullptr) *count = N;
  return table;
}

void fill_default(CodecTable& record) {
  record.pGsm7ToUcs2Alphabet = Get_GsmToUcs2_DefaultAlphabet(&record.nGsm7ToUcs2AlphabetSize);
  record.pUcs2ToGsm7AlphabetAsc = Get_Ucs2_To_Gsm7_Alphabet_ASC(&record.nAlphabetAscSize);
  record.pUcs2ToGsm7AlphabetUcs2 = Get_Ucs2_To_Gsm7_Alphabet_UCS2(&record.nAlphabetUcs2Size);
  record.pUcs2ToGsm7ExtendAsc = Get_Ucs2_To_Gsm7_Extend(&record.nExtendSize);
}

void fill_spanish(CodecTable& record) {
  record.pGsm7ToUcs2Alphabet = Get_Spanish_Gsm7_To_Ucs2_Alphabet(&record.nGsm7ToUcs2AlphabetSize);
  record.pUcs2ToGsm7AlphabetAsc = Get_Spanish_Ucs2_To_Gsm7_Alphabet_ASC(&record.nAlphabetAscSize);
  record.pUcs2ToGsm7AlphabetUcs2 =
      Get_Spanish_Ucs2_To_Gsm7_Alphabet_UCS2(&record.nAlphabetUcs2Size);
  record.pUcs2ToGsm7ExtendAsc = Get_Spanish_Ucs2_To_Gsm7_Extend(&record.nExtendSize);
}

void fill_portuguese(CodecTable& record) {
  record.pGsm7ToUcs2Alphabet =
      Get_Portuguese_Gsm7_To_Ucs2_Alphabet(&record.nGsm7ToUcs2AlphabetSize);
  record.pUcs2ToGsm7AlphabetAsc =
      Get_Portuguese_Ucs2_To_Gsm7_Alphabet_ASC(&record.nAlphabetAscSize);
  record.pGsm7ToUcs2Extend = Get_Portuguese_Gsm7_To_Ucs2_Extend(&record.nExtendSize);
  record.pUcs2ToGsm7AlphabetUcs2 =
      Get_Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2(&record.nAlphabetUcs2Size);
  record.pUcs2ToGsm7ExtendAsc = Get_Portuguese_Ucs2_To_Gsm7_Extend_ASC(nullptr);
  record.pUcs2ToGsm7ExtendUcs2 = Get_Portuguese_Ucs2_To_Gsm7_Extend_UCS2(nullptr);
}

}  // namespace

void CODE_InitCodecTable(void) {
  pthread_mutex_lock(&fill_mutex);
  if (!records_filled.load(std::memory_order_relaxed)) {
    fill_default(default_record);
    fill_spanish(spanish_record);
    fill_portuguese(portuguese_record);
    records_filled.store(true, std::memory_order_release);
  }
  pthread_mutex_unlock(&fill_mutex);
}

const CodecTable* CODE_GetCodecTable(int32_t language) {
  if (!records_filled.load(std::memory_order_acquire)) CODE_InitCodecTable();
  switch (language) {
    case CODEC_LANG_SPANISH:
      return &spanish_record;
    case CODEC_LANG_PORTUGUESE:
      return &portuguese_record;
    default:
      return &default_record;
  }
}

uint32_t CODE_GetAlphabetTableValue(const uint16_t* pTable, uint32_t nCode, uint32_t nSize) {
  return pTable == nullptr || nCode >= nSize ? nCode : pTable[nCode];
}

int32_t CODE_GetCodecTableValue(const CodecPair* pTable, int32_t nMode, uint32_t nItem,
                                int32_t nCount) {
  if (pTable == nullptr || (nMode != 0 && nMode != 1)) return -1;
  for (int32_t i = 0; i < nCount; ++i) {
    if (nMode == 0 && pTable[i].key == nItem) return static_cast<int32_t>(pTable[i].value);
    if (pTable[i].value == nItem) return static_cast<int32_t>(pTable[i].key);
  }
  return -1;
}

// clang-format off
#define QALT_ACCESSOR(type, table) \
  const type* Get_##table(uint32_t* pCount) { return counted(table, pCount); }

QALT_ACCESSOR(uint16_t,  GsmToUcs2_DefaultAlphabet)
QALT_ACCESSOR(uint8_t,   Ucs2_To_Gsm7_Alphabet_ASC)
QALT_ACCESSOR(CodecPair, Ucs2_To_Gsm7_Alphabet_UCS2)
QALT_ACCESSOR(CodecPair, Ucs2_To_Gsm7_Extend)
QALT_ACCESSOR(uint16_t,  Spanish_Gsm7_To_Ucs2_Alphabet)
QALT_ACCESSOR(CodecPair, Spanish_Gsm7_To_Ucs2_Extend)
QALT_ACCESSOR(uint8_t,   Spanish_Ucs2_To_Gsm7_Alphabet_ASC)
QALT_ACCESSOR(CodecPair, Spanish_Ucs2_To_Gsm7_Alphabet_UCS2)
QALT_ACCESSOR(CodecPair, Spanish_Ucs2_To_Gsm7_Extend)
QALT_ACCESSOR(uint16_t,  Portuguese_Gsm7_To_Ucs2_Alphabet)
QALT_ACCESSOR(uint16_t,  Portuguese_Gsm7_To_Ucs2_Extend)
QALT_ACCESSOR(uint8_t,   Portuguese_Ucs2_To_Gsm7_Alphabet_ASC)
QALT_ACCESSOR(CodecPair, Portuguese_Ucs2_To_Gsm7_Alphabet_UCS2)
QALT_ACCESSOR(CodecPair, Portuguese_Ucs2_To_Gsm7_Extend_ASC)
QALT_ACCESSOR(CodecPair, Portuguese_Ucs2_To_Gsm7_Extend_UCS2)
// clang-format on
