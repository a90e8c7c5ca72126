// Cutting a text into pieces at a separator that stands outside quotes.
#include <cstddef>
#include <cstring>

#include "AtCodec/pieces.h"
#include "common/text.h"
#include "qalt_at/parameters.h"

static_assert(sizeof(ParasList) == 102404);
static_assert(offsetof(ParasList, Para) == 4);

namespace {

constexpr size_t kLongestLines = 102400;  // characters of a text that is split into its lines

// The slots of a list in order, as long as the list takes pieces.
class Slots {
 public:
  explicit Slots(ParasList* list) : list_(list) {}

  bool full() const { return list_->nCount >= ATCODEC_MAX_PARAS || next_ == ATCODEC_MAX_PARAS; }

  // A piece at a separator: the cleared slot supplies its terminator.
  void store_piece(const char* piece, size_t length) {
    std::memcpy(list_->Para[next_], piece, length);
    advance();
  }
  void store_last(const char* piece, size_t length) {
    qalt::copy_text(list_->Para[next_], ATCODEC_PARA_LEN, piece, length);
    advance();
  }

 private:
  void advance() {
    ++next_;
    ++list_->nCount;
  }

  ParasList* list_;
  int32_t next_ = 0;
};

void split(ParasList* list, const char* text, const qalt::SplitRules& rules) {
  if (list == nullptr || text == nullptr) return;
  Slots slots(list);
  qalt::split(text, rules, slots);
}

}  // namespace

void ATCodec_PreProc_Res_ParaList(ParasList* pList, const char* pText) {
  split(pList, pText, {";", 1});
}

void ATCodec_PreProc_Res_ParaList_Ex(ParasList* pList, const char* pText, const char* pSeparator) {
  split(pList, pText, {pSeparator, 1});
}

void ATCodec_PreProc_Res_ParaList_Special(ParasList* pList, const char* pText) {
  split(pList, pText, {",", 1});
}

void ATCodec_PreProc_Res_Icera_ParaList(ParasList* pList, const char* pText) {
  constexpr char kMarker[] = "*STGC:";
  split(pList, pText, {kMarker, sizeof kMarker - 1, true});
}

void ATCodec_PreProc_Res_COPS5_ParaList(ParasList* pList, const char* pText) {
  if (pList == nullptr) return;
  if (pText == nullptr || *pText == '\0' ||
      qalt::bounded_length(pText, kLongestLines + 1) > kLongestLines) {
    std::memset(pList, 0, sizeof *pList);
    return;
  }
  split(pList, pText, {"\r\n", 2, false, true});
}

void ATCodec_PreProc_Res_ParaList_Entend(const char* pText, int32_t* pCount) {
  if (pText == nullptr || pCount == nullptr) return;
  int32_t separators = 0;
  while (const char* separator = qalt::find_separator(pText, ",")) {
    if (static_cast<size_t>(separator - pText) > qalt::kLongestPiece) return;
    if (++separators >= ATCODEC_MAX_PARAS) return;
    pText = separator + 1;
  }
  if (*pText != '\0') *pCount = separators;
}

int32_t ATCodec_GetSubStrCountByToken(const char* pText, const char* pToken) {
  if (pText == nullptr || pToken == nullptr) return 0;
  int32_t pieces = 0;
  if (*pToken != '\0') {
    while (const char* occurrence = std::strstr(pText, pToken)) {
      ++pieces;
      pText = occurrence + 1;
    }
  }
  return *pText != '\0' ? pieces + 1 : pieces;
}

char* ATCodec_FindSubStrByIndex(const char* pText, char* pOut, int32_t nIndex, const char* pToken) {
  if (pText == nullptr || pOut == nullptr) return const_cast<char*>(pText);
  int32_t piece = 0;
  while (const char* separator = qalt::find_separator(pText, pToken)) {
    const size_t length = static_cast<size_t>(separator - pText);
    if (nIndex >= ATCODEC_MAX_PARAS || length > qalt::kLongestPiece)
      return const_cast<char*>(separator);
    if (++piece == nIndex) {
      std::memcpy(pOut, pText, length);
      return pOut;
    }
    pText = separator + 1;
  }
  if (*pText == '\0') return nullptr;
  const size_t length = std::strlen(pText);
  qalt::copy_text(pOut, length + 1, pText, length);
  return pOut;
}

unsigned char* ATCodec_Find_Sub_Str(const unsigned char* pText, const char* pToken) {
  if (pText == nullptr) return nullptr;
  const char* found = qalt::find_separator(reinterpret_cast<const char*>(pText), pToken);
  return reinterpret_cast<unsigned char*>(const_cast<char*>(found));
}
