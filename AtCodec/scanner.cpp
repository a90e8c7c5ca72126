#include "AtCodec/scanner.h"

#include <algorithm>
#include <limits>

#include "common/text.h"

namespace qalt {
namespace {

constexpr int64_t kMost = std::numeric_limits<int32_t>::max();
constexpr int64_t kLeast = std::numeric_limits<int32_t>::min();

bool is_digit(char c) {
  return c >= '0' && c <= '9';
}
bool is_blank(char c) {
  return c == ' ' || (c >= '\t' && c <= '\r');
}

}  // namespace

void fill(const TextMember& member, const char* start, size_t length) {
  if (copy_text(member.text, member.size, start, length) != length) *member.cut = true;
}

bool Scanner::integer(int32_t& value) {
  skip_blanks();
  const bool negative = *next_ == '-';
  const char* digit = next_ + (negative || *next_ == '+');
  if (!is_digit(*digit)) return false;
  int64_t sum = 0;
  for (; is_digit(*digit); ++digit) {
    if (sum <= kMost) sum = sum * 10 + (*digit - '0');
  }
  next_ = digit;
  value = static_cast<int32_t>(std::clamp(negative ? -sum : sum, kLeast, kMost));
  return true;
}

bool Scanner::word(size_t width, const TextMember& member) {
  skip_blanks();
  const char* start = next_;
  while (*next_ != '\0' && !is_blank(*next_) && next_ != start + width) ++next_;
  return store(start, member);
}

bool Scanner::until_comma(const TextMember& member) {
  const char* start = next_;
  while (*next_ != '\0' && *next_ != ',') ++next_;
  return store(start, member);
}

bool Scanner::literal(char c) {
  if (*next_ != c || c == '\0') return false;
  ++next_;
  return true;
}

void Scanner::skip_blanks() {
  while (is_blank(*next_)) ++next_;
}

bool Scanner::store(const char* start, const TextMember& member) {
  const size_t length = static_cast<size_t>(next_ - start);
  if (length == 0) return false;
  fill(member, start, length);
  return true;
}

}  // namespace qalt
