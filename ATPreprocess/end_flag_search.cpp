// Finding the end flag that closes the first block of a text.
#include <cstdint>
#include <cstring>

#include "common/quoted_search.h"
#include "common/text.h"
#include "common/word_scan.h"
#include "qalt_at/parser.h"

namespace {

struct FoundFlag {
  const char* place = nullptr;
  int row = -1;

  // Of two flags the earlier one wins, at one place the lower row.
  bool loses_to(const char* other_place, int other_row) const {
    if (other_place == nullptr) return false;
    return place == nullptr || other_place < place || (other_place == place && other_row < row);
  }
};

size_t flag_length(const AtEndFlgEntry& row) {
  return qalt::bounded_length(row.EndFlag, sizeof row.EndFlag);
}

// The first eight characters of a text, zeros behind its end.
uint64_t head_of(const char* text) {
  char head[qalt::kWordSize] = {};
  for (size_t i = 0; i < sizeof head && text[i] != '\0'; ++i) head[i] = text[i];
  return qalt::load_word(head);
}

// Compares the rows of the table with one place of a text after the other.
class RowSearch {
 public:
  // The lowest row whose flag stands at `text`, or -1. Eight characters at once tell nearly every
  // other row; a flag that is shorter than these is compared as a text. The lines of an answer
  // begin alike, so characters that rule out all rows are remembered.
  int row_at(const char* text) {
    const uint64_t head = head_of(text);
    if (head == foreign_head_) return -1;
    bool foreign = true;
    for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
      const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[i];
      const uint64_t flag_head = qalt::load_word(row.EndFlag);
      if (flag_head != head && !qalt::has_byte_below(flag_head, 1)) continue;
      if (std::strncmp(text, row.EndFlag, flag_length(row)) == 0) return i;
      if (flag_head == head) foreign = false;  // the rows differ only behind the eighth
    }
    if (foreign) foreign_head_ = head;
    return -1;
  }

 private:
  uint64_t foreign_head_ = 0;  // what no text begins with
};

// One pass over the text, for all rows whose flag does not begin with a quote: rows are compared
// only outside quotes and where the character begins some flag. A text that is not empty.
FoundFlag find_flag(const char* text) {
  bool begins_flag[256] = {};
  for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
    begins_flag[static_cast<uint8_t>(QaltWcdma_AtEndFlgTable[i].EndFlag[0])] = true;
  }
  // An empty flag stands at the start of every text.
  begins_flag[static_cast<uint8_t>(*text)] |= begins_flag[0];
  RowSearch rows;
  for (const char* c = text; *c != '\0'; ++c) {
    if (*c == '"') {
      c = std::strchr(c + 1, '"');  // nothing inside quotes is looked at
      if (c == nullptr) break;
    } else if (begins_flag[static_cast<uint8_t>(*c)]) {
      if (const int row = rows.row_at(c); row >= 0) return {c, row};
    }
  }
  return {};
}

// Rows whose flag begins with a quote: the quote-aware search counts quotes in a way of its own
// behind each occurrence that it passes over, so such a row is searched by itself.
FoundFlag find_quote_flag(const char* text) {
  FoundFlag found;
  for (int i = 0; i < QaltWcdma_AtEndFlgTableSize; ++i) {
    const AtEndFlgEntry& row = QaltWcdma_AtEndFlgTable[i];
    if (row.EndFlag[0] != '"') continue;
    char flag[sizeof row.EndFlag + 1];
    qalt::copy_text(flag, sizeof flag, row.EndFlag, flag_length(row));
    const char* place = qalt::find_unquoted(text, flag);
    if (found.loses_to(place, i)) found = {place, i};
  }
  return found;
}

// Makes the text begin with its first line end. Without one only its last character stays.
bool drop_leading_debris(char* text) {
  const char* line_end = qalt::find_unquoted(text, "\r\n");
  const size_t length = std::strlen(text);
  if (line_end == nullptr) {
    if (length > 1) std::memmove(text, text + length - 1, 2);
    return false;
  }
  if (line_end != text) {
    std::memmove(text, line_end, length - static_cast<size_t>(line_end - text) + 1);
  }
  return true;
}

}  // namespace

char* _Find_Sub_Str(const char* pStr, const char* pNeedle) {
  if (pStr == nullptr || pNeedle == nullptr) return nullptr;
  return const_cast<char*>(qalt::find_unquoted(pStr, pNeedle));
}

int _Parse_At_PreProcess(char* pStr, char** pBlockHead, int* iFlagIndex) {
  if (pStr == nullptr || pBlockHead == nullptr || iFlagIndex == nullptr) return AT_PARSE_NOT_FOUND;
  if (!drop_leading_debris(pStr)) return AT_PARSE_NOT_FOUND;
  FoundFlag found = find_flag(pStr);
  const FoundFlag quote_flag = find_quote_flag(pStr);
  if (found.loses_to(quote_flag.place, quote_flag.row)) found = quote_flag;
  if (found.place == nullptr) {
    *pBlockHead = pStr + std::strlen(pStr);
    return AT_PARSE_NOT_FOUND;
  }
  *pBlockHead = pStr + (found.place - pStr);
  *iFlagIndex = found.row;
  return AT_PARSE_OK;
}
