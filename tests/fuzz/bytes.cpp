// Bytes, hex digits, septets, semi-octets and time stamps: every conversion undone by its
// counterpart, and nothing outside its buffer.
#include "qalt_at/text_bytes.h"
#include "tests/fuzz/property.h"

namespace {

// Also as malformed hex: any characters in place of digits.
void check_hex(const uint8_t* source, int32_t count) {
  const auto size = static_cast<size_t>(count);
  fuzz::Guarded<char> hex(2 * size + 1), appended(2 * size + 2);
  fuzz::Guarded<uint8_t> back(size), ored(size), malformed(size / 2),
      malformed_ored((size + 1) / 2);
  FUZZ_CHECK(CODE_Bytes2String(source, hex.data(), count) == 2 * count);
  FUZZ_CHECK(CODE_String2Bytes(hex.data(), back.data(), 2 * count) == count);
  ored.clear();
  CODE_AscToHex(ored.data(), hex.data(), 2 * count);
  FUZZ_CHECK(std::equal(back.begin(), back.end(), source));
  FUZZ_CHECK(std::equal(ored.begin(), ored.end(), source));
  std::memcpy(appended.data(), "-", 2);
  CODE_StringtoHex(source, appended.data(), count);
  FUZZ_CHECK(appended.data() == std::string("-") + hex.data());
  const auto* text = reinterpret_cast<const char*>(source);
  FUZZ_CHECK(CODE_String2Bytes(text, malformed.data(), count) == count / 2);
  malformed_ored.clear();
  CODE_AscToHex(malformed_ored.data(), text, count);
}

void check_septets(const uint8_t* bytes, int32_t count) {
  const int32_t packed_count = (7 * count + 7) / 8;
  const int32_t unpacked_count = packed_count + packed_count / 7;
  fuzz::Guarded<uint32_t> septets(static_cast<size_t>(count));
  fuzz::Guarded<uint8_t> packed(static_cast<size_t>(packed_count));
  fuzz::Guarded<uint8_t> unpacked(static_cast<size_t>(unpacked_count) + 1);
  // What stands above a septet is of no account.
  std::transform(bytes, bytes + count, septets.begin(),
                 [](uint8_t byte) { return (byte & 0x7F) | 0xABCD00u; });
  FUZZ_CHECK(CODE_Encode7bit(septets.data(), packed.data(), count) == packed_count);
  FUZZ_CHECK(CODE_Decode7bit(packed.data(), unpacked.data(), packed_count) == unpacked_count);
  FUZZ_CHECK(std::equal(septets.begin(), septets.end(), unpacked.begin(),
                        [](uint32_t septet, uint8_t byte) { return (septet & 0x7F) == byte; }));
}

void check_semi_octets(const char* digits, int32_t count) {
  const size_t room = static_cast<size_t>(count) + 2;
  fuzz::Guarded<char> swapped(room), back(room);
  const int32_t written = CODE_InvertNumbers(digits, swapped.data(), count);
  FUZZ_CHECK(written == count + count % 2);
  const int32_t kept = CODE_SerializeNumbers(swapped.data(), back.data(), written);
  const bool ends_with_filler = count % 2 == 0 && count != 0 && digits[count - 1] == 'F';
  FUZZ_CHECK(kept == count - ends_with_filler);
  FUZZ_CHECK(std::equal(back.data(), back.data() + kept, digits) && back.data()[kept] == '\0');
  // In place, too.
  CODE_InvertNumbers(back.data(), back.data(), kept);
  FUZZ_CHECK(ends_with_filler ||
             std::equal(back.data(), back.data() + written + 1, swapped.data()));
}

void check_stamp(const std::string& digits) {
  fuzz::GuardedText text(digits);
  const QaltTime time = CODE_DecodePduTimeToQaltTime(text.data());
  FUZZ_CHECK(time.timeZone >= -48 && time.timeZone <= 48 && time.reserved == 0);
  const bool has_date = digits.size() >= 12 && digits.size() < 40;
  FUZZ_CHECK(has_date || (time.year == 0 && time.month == 0 && time.second == 0));
  FUZZ_CHECK(text.str() == digits);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  // The time stamps print; nobody reads it here.
  static FILE* const kSilence = std::freopen("/dev/null", "w", stdout);
  static_cast<void>(kSilence);
  const auto count = static_cast<int32_t>(size);
  check_hex(bytes, count);
  check_septets(bytes, count);
  check_semi_octets(reinterpret_cast<const char*>(bytes), count);
  check_stamp(fuzz::Input(bytes, size).text());
  return 0;
}
