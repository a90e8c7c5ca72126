// quoted_search.h - the quote-aware substring search that the response parser and the parameter
// codec share.
#ifndef QALT_COMMON_QUOTED_SEARCH_H_
#define QALT_COMMON_QUOTED_SEARCH_H_

#include <cstddef>
#include <cstring>

namespace qalt {

inline bool has_odd_quotes(const char* begin, const char* end) {
  bool odd = false;
  while (const void* quote = std::memchr(begin, '"', static_cast<size_t>(end - begin))) {
    odd = !odd;
    begin = static_cast<const char*>(quote) + 1;
  }
  return odd;
}

// First occurrence of `needle` in front of which, from the start of the text, stands an even number
// of double quotes; null if there is none. An occurrence inside quotes is passed over, and counting
// goes on one character behind its first (which itself is not counted, even if it is a quote).
// An empty needle occurs at the start. Quotes are few: hopping from one to the next counts them
// faster than looking at each character.
inline const char* find_unquoted(const char* text, const char* needle) {
  bool quoted = false;
  const char* position = text;
  for (;;) {
    const char* found = std::strstr(position, needle);
    if (found == nullptr) return nullptr;
    quoted ^= has_odd_quotes(position, found);
    if (!quoted) return found;
    if (*found == '\0') return nullptr;
    position = found + 1;
  }
}

}  // namespace qalt

#endif  // QALT_COMMON_QUOTED_SEARCH_H_
