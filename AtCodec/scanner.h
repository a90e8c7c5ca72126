// scanner.h - reads the values of an answer line in order, with the rules of the standard formatted
// scan ("%d", "%40s", literal characters) but bounded and independent of the locale.
//
// Each step returns whether it matched; a caller chains the steps with && so that nothing behind
// the first mismatch is read and the values there keep what they had.
#ifndef QALT_ATCODEC_SCANNER_H_
#define QALT_ATCODEC_SCANNER_H_

#include <cstddef>
#include <cstdint>

namespace qalt {

// A text member that a step fills; what does not fit it with a terminator is cut, and *cut set.
struct TextMember {
  char* text;
  size_t size;
  bool* cut;
};

// Puts the `length` characters at `start` into the member.
void fill(const TextMember& member, const char* start, size_t length);

class Scanner {
 public:
  explicit Scanner(const char* text) : next_(text) {}

  // "%d": blanks, a sign, decimal digits. A value out of range becomes the nearest one in range.
  bool integer(int32_t& value);

  // "%<width>s": blanks, then at least one and at most `width` other characters.
  bool word(size_t width, const TextMember& member);

  // "%[^,]": at least one character, up to the next comma.
  bool until_comma(const TextMember& member);

  // A literal character, without skipping blanks in front of it.
  bool literal(char c);

 private:
  void skip_blanks();
  bool store(const char* start, const TextMember& member);

  const char* next_;
};

}  // namespace qalt

#endif  // QALT_ATCODEC_SCANNER_H_
