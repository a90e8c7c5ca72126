// The answer processors of the three entry reads: one PbItem for each line of the payload.
#include <algorithm>
#include <array>
#include <cstring>

#include "AtCodec/pieces.h"
#include "AtCodec/scanner.h"
#include "common/text.h"
#include "pb/engine.h"
#include "qalt_at/parameters.h"

namespace qalt {
namespace {

// Longest texts that the answer lines of each family are read for.
constexpr size_t kNumberLength = 40;
constexpr size_t kPlatform1NumberLength = 80;
constexpr size_t kPlatform1TextLength = 128;
constexpr size_t kVendorTextLength = 60;
constexpr size_t kEmailLength = 128;
constexpr size_t kScratchSize = 101;
// How far into a rewritten line its separators are looked for.
constexpr size_t kStandardSearch = 399;
constexpr size_t kScpbrSearch = 512;

// Fills one item from one line; sets *cut when a text is wider than its member.
using LineReader = void (*)(char* line, PbItem& item, bool* cut);

template <size_t kSize>
TextMember member(char (&text)[kSize], bool* cut) {
  return {text, kSize, cut};
}

void rewrite(char* line) {
  ATCodec_PreProc_Res_ParaLine(reinterpret_cast<unsigned char*>(line));
}

template <size_t... kSizes>
void restore(char (&... members)[kSizes]) {
  (ATCodec_Restore_String_Para(members), ...);
}

// Reads each piece of a payload into the next item. The pieces pass through one line buffer: a list
// of all of them would be 100 KB to clear and to fill.
class Items {
 public:
  Items(PbItemList& list, LineReader read) : list_(list), read_(read) {}

  bool full() const { return count_ == ATCODEC_MAX_PARAS; }
  int32_t count() const { return count_; }

  void store_piece(const char* piece, size_t length) {
    char line[ATCODEC_PARA_LEN];
    copy_text(line, sizeof line, piece, length);
    PbItem& item = list_.items[count_++];
    bool cut = false;
    read_(line, item, &cut);
    if (cut) {
      QALT_LOG_ERROR("entry %d has a text longer than its record, the text is cut\n",
                     item.storageIndex);
    }
  }
  void store_last(const char* piece, size_t length) { store_piece(piece, length); }

 private:
  static_assert(int{ATCODEC_MAX_PARAS} == int{PB_READ_MAX});
  PbItemList& list_;
  LineReader read_;
  int32_t count_ = 0;
};

void process(const AtRes& answer, PbItemList& list, LineReader read) {
  Items items(list, read);
  split(answer.Paras, {";", 1}, items);
  list.count = items.count();
}

// A quoted parameter without its quotes; shorter than the two of them it is empty.
void fill_unquoted(const TextMember& member, const char* quoted) {
  const size_t length = std::strlen(quoted);
  if (length >= 2) fill(member, quoted + 1, length - 2);
}

// Platform 8: the line is read as it comes. The scan knows no quotes, so a comma inside a quoted
// parameter ends it there.
void read_unrewritten(char* line, PbItem& item, bool* cut) {
  char number[kScratchSize] = "";
  char text[kScratchSize] = "";
  Scanner scan(line);
  if (scan.integer(item.storageIndex) && scan.literal(',') &&
      scan.until_comma(member(number, cut)) && scan.literal(',') && scan.integer(item.numberType) &&
      scan.literal(',')) {
    scan.until_comma(member(text, cut));
  }
  fill_unquoted(member(item.number, cut), number);
  fill_unquoted(member(item.text, cut), text);
}

void read_platform_1(char* line, PbItem& item, bool* cut) {
  rewrite(line);
  Scanner scan(line);
  if (scan.integer(item.storageIndex) &&
      scan.word(kPlatform1NumberLength, member(item.number, cut)) &&
      scan.integer(item.numberType)) {
    scan.word(kPlatform1TextLength, member(item.text, cut));
  }
  restore(item.number, item.text);
}

// The text is everything behind the third separator, so what a modem sends behind its text stays
// with it.
void read_standard(char* line, PbItem& item, bool* cut) {
  rewrite(line);
  Scanner scan(line);
  if (scan.integer(item.storageIndex) && scan.word(kNumberLength, member(item.number, cut))) {
    scan.integer(item.numberType);
  }
  const char* end = line + bounded_length(line, kStandardSearch);
  const char* space = std::find<const char*>(line, end, ' ');
  for (int n = 1; n != 3 && space != end; ++n) space = std::find(space + 1, end, ' ');
  if (space != end) fill(member(item.text, cut), space + 1, std::strlen(space + 1));
  restore(item.number, item.text);
}

// index,number,text,number2,number3,email,extraText
void read_jcpbr(char* line, PbItem& item, bool* cut) {
  rewrite(line);
  Scanner scan(line);
  if (scan.integer(item.storageIndex) && scan.word(kNumberLength, member(item.number, cut)) &&
      scan.word(kVendorTextLength, member(item.text, cut)) &&
      scan.word(kNumberLength, member(item.number2, cut)) &&
      scan.word(kNumberLength, member(item.number3, cut)) &&
      scan.word(kEmailLength, member(item.email, cut))) {
    scan.word(kVendorTextLength, member(item.extraText, cut));
  }
  restore(item.number, item.text, item.number2, item.number3, item.email, item.extraText);
}

// The separating spaces of a rewritten ^SCPBR line, counted from 1; a member whose separators the
// line does not have stays empty.
class Separators {
 public:
  explicit Separators(const char* line) {
    const char* end = line + bounded_length(line, kScpbrSearch);
    for (const char* c = line; c != end && count_ != positions_.size(); ++c) {
      if (*c == ' ') positions_[count_++] = c;
    }
  }

  bool has(size_t n) const { return n <= count_; }
  const char* behind(size_t n) const { return positions_[n - 1] + 1; }

  // The characters between separators n and n + 1.
  void fill_between(size_t n, const TextMember& member) const {
    if (!has(n + 1)) return;
    fill(member, behind(n), static_cast<size_t>(positions_[n] - behind(n)));
  }

  // Number n is given when its type, behind the following separator, is.
  void fill_number(size_t n, const TextMember& member) const {
    int32_t type = 0;
    if (has(n + 1)) Scanner(behind(n + 1)).integer(type);
    if (type > 0) fill_between(n, member);
  }

 private:
  std::array<const char*, 11> positions_;
  size_t count_ = 0;
};

// index,number,type,number 2,type,number 3,type,number 4,type,text,coding,email. The second number
// goes to number3 and the third to number2; ^SCPBW sends them back in the same places.
void read_scpbr(char* line, PbItem& item, bool* cut) {
  rewrite(line);
  Scanner scan(line);
  if (scan.integer(item.storageIndex) && scan.word(kNumberLength, member(item.number, cut))) {
    scan.integer(item.numberType);
  }
  const Separators separators(line);
  separators.fill_number(3, member(item.number3, cut));
  separators.fill_number(5, member(item.number2, cut));
  separators.fill_between(9, member(item.text, cut));
  if (separators.has(10)) Scanner(separators.behind(10)).integer(item.coding);
  if (separators.has(11)) {
    Scanner(separators.behind(11)).word(kEmailLength, member(item.email, cut));
  }
  restore(item.number, item.text, item.number2, item.number3, item.email, item.extraText);
}

LineReader cpbr_reader() {
  switch (g_phone_book_currentPlatform) {
    case PB_PLATFORM_8:
      return read_unrewritten;
    case PB_PLATFORM_1:
      return read_platform_1;
    default:
      return read_standard;
  }
}

}  // namespace
}  // namespace qalt

using namespace qalt;

uint32_t CPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList) {
  if (pAtRes == nullptr || pList == nullptr) return PB_OK;
  process(*pAtRes, *pList, cpbr_reader());
  QALT_LOG_DEBUG("tParasList.nCount is %d\n", pList->count);
  return PB_OK;
}

uint32_t JCPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList) {
  if (pAtRes != nullptr && pList != nullptr) process(*pAtRes, *pList, read_jcpbr);
  return PB_OK;
}

uint32_t SCPBR_SetATResProcess(AtRes* pAtRes, PbItemList* pList) {
  if (pAtRes != nullptr && pList != nullptr) process(*pAtRes, *pList, read_scpbr);
  return PB_OK;
}
