// parse_state.h - what the steps of one parse share: the count of characters to cut out of the
// text.
#ifndef QALT_ATPREPROCESS_PARSE_STATE_H_
#define QALT_ATPREPROCESS_PARSE_STATE_H_

#include <climits>
#include <cstddef>

#include "common/text.h"
#include "qalt_at/parser.h"

namespace qalt {

// Adds to the characters that the running call will cut out, as far as the counter reaches.
inline void consume(size_t count) {
  const size_t room = static_cast<size_t>(INT_MAX - (g_iProcDataLen > 0 ? g_iProcDataLen : 0));
  g_iProcDataLen += static_cast<int>(count < room ? count : room);
}

// Where the text goes on behind the characters counted so far; never behind its end.
inline char* behind_consumed(char* block_head) {
  const size_t count = g_iProcDataLen > 0 ? static_cast<size_t>(g_iProcDataLen) : 0;
  return block_head + bounded_length(block_head, count);
}

}  // namespace qalt

#endif  // QALT_ATPREPROCESS_PARSE_STATE_H_
