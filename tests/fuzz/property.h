// property.h - what the fuzz targets share: the check of a property, the fuzzer's bytes taken
// apart, and buffers that notice a byte written or read outside them.
#ifndef QALT_FUZZ_PROPERTY_H_
#define QALT_FUZZ_PROPERTY_H_

#include <algorithm>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <string>
#include <utility>

// Ends the program with the property that does not hold; a fuzzer keeps the input.
#define FUZZ_CHECK(condition)                                                                     \
  ((condition) ? static_cast<void>(0)                                                             \
               : (std::fprintf(stderr, "%s:%d: property does not hold: %s\n", __FILE__, __LINE__, \
                               #condition),                                                       \
                  std::abort()))

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace fuzz {

// The input, taken from the front; what is not there counts as zero.
class Input {
 public:
  Input(const uint8_t* bytes, size_t size) : bytes_(bytes), end_(bytes + size) {}

  const uint8_t* data() const { return bytes_; }
  size_t size() const { return static_cast<size_t>(end_ - bytes_); }

  uint8_t byte() { return bytes_ == end_ ? 0 : *bytes_++; }
  uint16_t word() {
    const int high = byte() << 8;
    return static_cast<uint16_t>(high | byte());
  }
  // All that is left.
  std::string rest() { return {std::exchange(bytes_, end_), end_}; }
  // What stands in front of the next NUL, or all that is left: a text as C has it.
  std::string text() {
    const uint8_t* end = std::find(bytes_, end_, 0);
    const std::string text(std::exchange(bytes_, end), end);
    byte();
    return text;
  }
  // Two bytes a character, all that is left; without terminators.
  std::wstring wide(size_t most) {
    std::wstring text;
    while (size() >= 2 && text.size() < most) {
      if (const uint16_t character = word(); character != 0) text += character;
    }
    return text;
  }

 private:
  const uint8_t *bytes_, *end_;
};

// An array of exactly `count` elements at the end of its memory, so that AddressSanitizer sees the
// first byte behind it. Guard elements in front, and behind without a sanitizer, show what was
// written there to everybody else.
template <typename Element>
class Guarded {
 public:
  explicit Guarded(size_t count) : count_(count), memory_(new Element[kGuards + count + kBehind]) {
    std::memset(static_cast<void*>(memory_.get()), kPattern,
                (kGuards + count + kBehind) * sizeof(Element));
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() { FUZZ_CHECK(is_pattern(memory_.get(), kGuards) && is_pattern(end(), kBehind)); }

  Element* data() { return memory_.get() + kGuards; }
  Element* begin() { return data(); }
  Element* end() { return data() + count_; }
  size_t size() const { return count_; }
  Element& operator[](size_t i) { return data()[i]; }
  void clear() { std::memset(static_cast<void*>(data()), 0, count_ * sizeof(Element)); }
  // Whether what stands from element `from` on is as it was made.
  bool untouched(size_t from = 0) {
    return from >= count_ || is_pattern(&data()[from], count_ - from);
  }
  // Whether it holds a whole text.
  bool terminated() { return std::find(begin(), end(), Element{}) != end(); }

 private:
  static constexpr size_t kBehind = FUZZ_GUARDS_BEHIND;  // none under AddressSanitizer
  static constexpr size_t kGuards = 8;
  static constexpr unsigned char kPattern = 0xA5;

  static bool is_pattern(const Element* from, size_t count) {
    const auto* byte = reinterpret_cast<const unsigned char*>(from);
    return std::count(byte, byte + count * sizeof(Element), kPattern) ==
           static_cast<std::ptrdiff_t>(count * sizeof(Element));
  }

  size_t count_;
  std::unique_ptr<Element[]> memory_;
};

// A terminated text at the start of a buffer of exactly its size, or a larger one.
class GuardedText : public Guarded<char> {
 public:
  explicit GuardedText(const std::string& text, size_t least = 0)
      : Guarded(std::max(text.size() + 1, least)) {
    std::memcpy(data(), text.c_str(), text.size() + 1);
  }
  std::string str() {
    FUZZ_CHECK(terminated());
    return data();
  }
};

template <typename Record>
bool same_bytes(const Record& a, const Record& b) {
  return std::memcmp(&a, &b, sizeof a) == 0;
}

// Whether a member holds a whole text.
template <size_t kSize>
bool terminated(const char (&member)[kSize]) {
  return std::memchr(member, '\0', kSize) != nullptr;
}

}  // namespace fuzz

#endif  // QALT_FUZZ_PROPERTY_H_
