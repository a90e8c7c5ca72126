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

// Ends the program with the property that does not hold; a fuzzer keeps the input.
#define FUZZ_CHECK(condition) \
  ((condition) ? static_cast<void>(0) : fuzz::broken(#condition, __FILE__, __LINE__))

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size);

namespace fuzz {

[[noreturn]] inline void broken(const char* condition, const char* file, int line) {
  std::fprintf(stderr, "%s:%d: property does not hold: %s\n", file, line, condition);
  std::abort();
}

// The input, taken from the front; what is not there counts as zero.
class Input {
 public:
  Input(const uint8_t* bytes, size_t size) : bytes_(bytes), size_(size) {}

  uint8_t byte() {
    if (size_ == 0) return 0;
    --size_;
    return *bytes_++;
  }
  uint16_t word() {
    const auto high = static_cast<uint16_t>(byte() << 8);
    return static_cast<uint16_t>(high | byte());
  }
  size_t size() const { return size_; }
  const uint8_t* data() const { return bytes_; }

  // All that is left.
  std::string rest() {
    std::string text(reinterpret_cast<const char*>(bytes_), size_);
    bytes_ += size_;
    size_ = 0;
    return text;
  }
  // What stands in front of the next NUL, or all that is left: a text as C has it.
  std::string text() {
    const uint8_t* end = std::find(bytes_, bytes_ + size_, 0);
    std::string text(bytes_, end);
    size_ -= text.size();
    bytes_ = end;
    byte();
    return text;
  }
  // Two bytes a character, all that is left; without terminators.
  std::wstring wide(size_t most) {
    std::wstring text;
    while (size_ >= 2 && text.size() < most) {
      if (const uint16_t character = word(); character != 0) text += character;
    }
    return text;
  }

 private:
  const uint8_t* bytes_;
  size_t size_;
};

// An array of exactly `count` elements at the end of its memory, so that AddressSanitizer sees the
// first byte behind it. Guard elements in front, and behind without a sanitizer, show what was
// written there to everybody else.
template <typename Element>
class Guarded {
 public:
  explicit Guarded(size_t count) : count_(count), memory_(new Element[kGuards + count + kBehind]) {
    std::memset(static_cast<void*>(memory_.get()), kPattern, bytes());
  }
  Guarded(const Guarded&) = delete;
  Guarded& operator=(const Guarded&) = delete;
  ~Guarded() {
    check(memory_.get(), kGuards);
    check(data() + count_, kBehind);
  }

  Element* data() { return memory_.get() + kGuards; }
  size_t size() const { return count_; }
  Element& operator[](size_t i) { return data()[i]; }
  void clear() { std::memset(static_cast<void*>(data()), 0, count_ * sizeof(Element)); }
  // Whether the element is as it was made.
  bool untouched(size_t i) { return is_pattern(data() + i, 1); }

 private:
#if defined(__SANITIZE_ADDRESS__)
  static constexpr size_t kBehind = 0;
#elif defined(__has_feature)
#if __has_feature(address_sanitizer)
  static constexpr size_t kBehind = 0;
#else
  static constexpr size_t kBehind = 8;
#endif
#else
  static constexpr size_t kBehind = 8;
#endif
  static constexpr size_t kGuards = 8;
  static constexpr unsigned char kPattern = 0xA5;

  size_t bytes() const {
    return (kGuards + count_ + kBehind) * sizeof(Element);
  }
  static bool is_pattern(const Element* from, size_t count) {
    const auto* byte = reinterpret_cast<const unsigned char*>(from);
    return std::all_of(byte, byte + count * sizeof(Element),
                       [](unsigned char b) { return b == kPattern; });
  }
  static void check(const Element* from, size_t count) {
    FUZZ_CHECK(is_pattern(from, count));
  }

  size_t count_;
  std::unique_ptr<Element[]> memory_;
};

// A terminated text in a buffer of exactly its size.
class GuardedText : public Guarded<char> {
 public:
  explicit GuardedText(const std::string& text) : Guarded(text.size() + 1) {
    std::memcpy(data(), text.c_str(), text.size() + 1);
  }
  std::string str() { return data(); }
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
