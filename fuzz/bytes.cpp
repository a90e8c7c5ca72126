// Bytes, hex digits, septets, semi-octets, UCS2 and time stamps: every conversion undone by its
// counterpart, and nothing outside its buffer.
#include <string>

#include "fuzz/property.h"
#include "qalt_at/text_bytes.h"

namespace {

int32_t count_of(size_t size) {
  return static_cast<int32_t>(size);
}

void check_hex(const std::string& bytes) {
  const auto* source = reinterpret_cast<const uint8_t*>(bytes.data());
  fuzz::Guarded<char> hex(2 * bytes.size() + 1), appended(2 * bytes.size() + 2);
  FUZZ_CHECK(CODE_Bytes2String(source, hex.data(), count_of(bytes.size())) ==
             count_of(2 * bytes.size()));
  fuzz::Guarded<uint8_t> back(bytes.size()), ored(bytes.size());
  ored.clear();
  FUZZ_CHECK(CODE_String2Bytes(hex.data(), back.data(), count_of(2 * bytes.size())) ==
             count_of(bytes.size()));
  CODE_AscToHex(ored.data(), hex.data(), count_of(2 * bytes.size()));
  FUZZ_CHECK(std::equal(back.data(), back.data() + back.size(), source));
  FUZZ_CHECK(std::equal(ored.data(), ored.data() + ored.size(), source));
  std::memcpy(appended.data(), "-", 2);
  CODE_StringtoHex(source, appended.data(), count_of(bytes.size()));
  FUZZ_CHECK(appended.data() == std::string("-") + hex.data());
}

// Any characters in place of digits.
void check_malformed_hex(const std::string& text) {
  fuzz::Guarded<uint8_t> read(text.size() / 2), ored((text.size() + 1) / 2);
  ored.clear();
  FUZZ_CHECK(CODE_String2Bytes(text.data(), read.data(), count_of(text.size())) ==
             count_of(text.size() / 2));
  CODE_AscToHex(ored.data(), text.data(), count_of(text.size()));
}

void check_septets(const std::string& bytes) {
  fuzz::Guarded<uint32_t> septets(bytes.size());
  for (size_t i = 0; i < bytes.size(); ++i) septets[i] = bytes[i] & 0x7F;
  const size_t packed_size = (7 * bytes.size() + 7) / 8;
  fuzz::Guarded<uint8_t> packed(packed_size);
  FUZZ_CHECK(CODE_Encode7bit(septets.data(), packed.data(), count_of(bytes.size())) ==
             count_of(packed_size));
  const size_t unpacked_size = packed_size + packed_size / 7;
  fuzz::Guarded<uint8_t> unpacked(unpacked_size + 1);
  FUZZ_CHECK(CODE_Decode7bit(packed.data(), unpacked.data(), count_of(packed_size)) ==
             count_of(unpacked_size));
  FUZZ_CHECK(unpacked_size >= bytes.size());
  FUZZ_CHECK(std::equal(septets.data(), septets.data() + bytes.size(), unpacked.data()));
}

void check_semi_octets(const std::string& digits) {
  const int32_t count = count_of(digits.size());
  fuzz::Guarded<char> swapped(digits.size() + 2), back(digits.size() + 2);
  const int32_t written = CODE_InvertNumbers(digits.data(), swapped.data(), count);
  FUZZ_CHECK(written == count + count % 2);
  const int32_t kept = CODE_SerializeNumbers(swapped.data(), back.data(), written);
  const bool ends_with_filler = count % 2 == 0 && count != 0 && digits.back() == 'F';
  FUZZ_CHECK(kept == count - ends_with_filler);
  FUZZ_CHECK(std::equal(back.data(), back.data() + kept, digits.data()) && back[kept] == '\0');
  // In place, too.
  fuzz::Guarded<char> same(digits.size() + 2);
  digits.copy(same.data(), digits.size());
  CODE_InvertNumbers(same.data(), same.data(), count);
  FUZZ_CHECK(std::equal(same.data(), same.data() + written + 1, swapped.data()));
}

void check_ucs2(const std::wstring& text) {
  fuzz::Guarded<uint8_t> bytes(2 * text.size());
  FUZZ_CHECK(CODE_EncodeUcs2(text.c_str(), bytes.data(), 0) == count_of(2 * text.size()));
  const size_t most = std::min<size_t>(text.size(), 255);
  fuzz::Guarded<wchar_t> back(most + 1);
  FUZZ_CHECK(CODE_DecodeUcs2(bytes.data(), back.data(), count_of(2 * text.size())) ==
             count_of(most));
  FUZZ_CHECK(back.data() == text.substr(0, most));
  fuzz::Guarded<char> hex(4 * text.size() + 1), appended(4 * text.size() + 1);
  CODE_UCS2toASC(hex.data(), text.c_str());
  appended[0] = '\0';
  CODE_Stringto2Bytes(text.c_str(), appended.data(), count_of(2 * text.size()));
  FUZZ_CHECK(std::strcmp(hex.data(), appended.data()) == 0);
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
  const std::string all(reinterpret_cast<const char*>(bytes), size);
  check_hex(all);
  check_malformed_hex(all);
  check_septets(all);
  check_semi_octets(all);
  check_ucs2(fuzz::Input(bytes, size).wide(1000));
  check_stamp(fuzz::Input(bytes, size).text());
  return 0;
}
