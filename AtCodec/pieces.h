// pieces.h - the pieces of a text between separators that stand outside quotes.
#ifndef QALT_ATCODEC_PIECES_H_
#define QALT_ATCODEC_PIECES_H_

#include <cstddef>

#include "common/quoted_search.h"
#include "common/text.h"
#include "qalt_at/parameters.h"

namespace qalt {

constexpr size_t kLongestPiece = ATCODEC_PARA_LEN - 1;

// What is between the split functions: the separator, how far behind its first character the next
// piece begins, and what is not stored.
struct SplitRules {
  const char* separator;
  size_t resume;
  bool drops_head = false;   // the piece before the first separator
  bool skips_empty = false;  // empty pieces; the last one is never stored
};

// An empty or null separator occurs in no text.
inline const char* find_separator(const char* text, const char* separator) {
  if (separator == nullptr || *separator == '\0') return nullptr;
  return find_unquoted(text, separator);
}

// Hands the pieces to `taker` in order: store_piece(text, length) for one before a separator,
// store_last(text, length) for the last one, as long as full() says no.
template <typename Taker>
void split(const char* text, const SplitRules& rules, Taker& taker) {
  bool drop = rules.drops_head;
  while (const char* separator = find_separator(text, rules.separator)) {
    const size_t length = static_cast<size_t>(separator - text);
    if (length != 0 || !rules.skips_empty) {
      if (taker.full() || length > kLongestPiece) return;
      if (!drop) taker.store_piece(text, length);
      drop = false;
    }
    text = separator + rules.resume;
  }
  if (*text != '\0' && !taker.full()) {
    taker.store_last(text, bounded_length(text, kLongestPiece));
  }
}

}  // namespace qalt

#endif  // QALT_ATCODEC_PIECES_H_
