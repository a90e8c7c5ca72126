// The public text functions of the phonebook: the steps of text_encoding, logged.
#include "qalt_at/text_items.h"

#include "common/log.h"
#include "pb/text_encoding.h"
#include "qalt_at/text.h"

namespace {

constexpr char kLogModule[] = "lib_pb";

// Arguments are logged before they are judged. A wide text is logged as the bytes that it is: its
// terminator ends it at the latest.
const char* printable(const void* text) {
  return text == nullptr ? "(null)" : static_cast<const char*>(text);
}

// What is left of a buffer size that cannot hold anything is 0.
size_t capacity(int size) {
  return size > 0 ? static_cast<size_t>(size) : 0;
}

}  // namespace

int QL_encodePBItem(const wchar_t* pSrcPbItem, char* pDstEncodeItem, int DstBufSize,
                    int* pbPureGsm7, int bIsQaltExtendContact) {
  QALT_LOG_DEBUG("QL_encodePBItem input para pSrcPbItem is %s\n", printable(pSrcPbItem));
  QALT_LOG_DEBUG("QL_encodePBItem input para DstBufSize is %d\n", DstBufSize);
  QALT_LOG_DEBUG("QL_encodePBItem input para bIsQaltExtendContact is %d\n", bIsQaltExtendContact);
  int result = 1;
  if (pSrcPbItem != nullptr && pDstEncodeItem != nullptr && pbPureGsm7 != nullptr) {
    uint32_t estimate = 0;
    CODE_PreEncodeGsmUcs(pSrcPbItem, &estimate);
    int is_default = 0;
    *pbPureGsm7 = CODE_IsPureGsm7Code(pSrcPbItem, CODEC_LANG_DEFAULT, &is_default);
    const size_t size = capacity(DstBufSize);
    if (estimate <= size &&
        qalt::encode_item(pSrcPbItem, pDstEncodeItem, size, bIsQaltExtendContact != 0)) {
      QALT_LOG_DEBUG("QL_encodePBItem output para *pbPureGsm7 is %d\n", *pbPureGsm7);
      QALT_LOG_DEBUG("QL_encodePBItem output para pDstEncodeItem is %s\n", pDstEncodeItem);
      result = 0;
    }
  }
  QALT_LOG_DEBUG("QL_encodePBItem output para result is %d\n", result);
  return result;
}

int QL_decodePBItem(const char* pSrEncodeItem, wchar_t* pDstPbItem, int DstBufSize,
                    int bIsQaltExtendContact) {
  QALT_LOG_DEBUG("QL_decodePBItem input para pSrEncodeItem is %s\n", printable(pSrEncodeItem));
  QALT_LOG_DEBUG("QL_decodePBItem input para DstBufSize is %d\n", DstBufSize);
  QALT_LOG_DEBUG("QL_decodePBItem input para bIsQaltExtendContact is %d\n", bIsQaltExtendContact);
  int32_t count = 0;
  if (pDstPbItem != nullptr && CODE_PreDecodeGsmUcs(pSrEncodeItem, &count) != 0 &&
      count <= DstBufSize &&
      qalt::decode_item(pSrEncodeItem, pDstPbItem, capacity(DstBufSize),
                        bIsQaltExtendContact == 1)) {
    QALT_LOG_DEBUG("QL_decodePBItem output para pDstPbItem is %s\n", printable(pDstPbItem));
    return 0;
  }
  QALT_LOG_DEBUG("QL_decodePBItem output para result is %d\n", 1);
  return 1;
}

int QL_preEncodePBItem(const wchar_t* pSrcPbItem, int* pEncodeBufSize) {
  QALT_LOG_DEBUG("QL_preEncodePBItem input para pSrcPbItem is %s\n", printable(pSrcPbItem));
  const int result = PB_PreEncodeItem(pSrcPbItem, pEncodeBufSize);
  if (result == 0) {
    QALT_LOG_DEBUG("QL_preEncodePBItem output para pEncodeBufSize is %d\n", *pEncodeBufSize);
  }
  QALT_LOG_DEBUG("QL_preEncodePBItem output para result is %d\n", result);
  return result;
}

int QL_preDecodePBItem(const char* pSrEncodeItem, int* pDecodeBufSize) {
  QALT_LOG_DEBUG("QL_preDecodePBItem input para pSrEncodeItem is %s\n", printable(pSrEncodeItem));
  const int result = PB_PreDecodeItem(pSrEncodeItem, pDecodeBufSize);
  if (result == 0) {
    QALT_LOG_DEBUG("QL_preDecodePBItem output para pDecodeBufSize is %d\n", *pDecodeBufSize);
  } else {
    QALT_LOG_DEBUG("QL_preDecodePBItem output para result is %d\n", result);
  }
  return result;
}

void QL_808182CodeSupportSet(int32_t value) {
  QALT_LOG_DEBUG("QL_808182CodeSupportSet input para value is %d\n", value);
  if (value == 0 || value == 1) {
    is808182CodeSupport = value;
  } else {
    QALT_LOG_DEBUG("QL_808182CodeSupportSet input para  is out of range\n");
  }
}
