// SIM alpha identifiers of any bytes, also as hex texts, into buffers of any size.
#include "qalt_at/text.h"
#include "tests/fuzz/property.h"

namespace {

using Decoder = uint16_t (*)(uint16_t*, uint16_t, const uint8_t*, uint16_t);

// A decoder stays within its room and the data, and a smaller room gives the start of the same.
void check_decoder(Decoder decode, const uint8_t* id, uint16_t length, uint16_t room) {
  const auto enough = static_cast<uint16_t>(length + 1);
  fuzz::Guarded<uint16_t> some(room), all(enough);
  const uint16_t count = decode(some.data(), room, id, length);
  const uint16_t whole = decode(all.data(), enough, id, length);
  FUZZ_CHECK(whole <= length && count == std::min(room, whole));
  FUZZ_CHECK(std::equal(some.begin(), some.begin() + count, all.begin()));
}

void check_identifier(const uint8_t* bytes, uint16_t length, uint16_t room) {
  fuzz::Guarded<uint8_t> id(length);
  std::copy_n(bytes, length, id.data());
  for (const Decoder decode : {CODE_utAlphaIdGsmToUcs2, CODE_utAlphaId80ToUcs2,
                               CODE_utAlphaId81ToUcs2, CODE_utAlphaId82ToUcs2}) {
    check_decoder(decode, id.data(), length, room);
  }
  fuzz::Guarded<uint16_t> out(room);
  FUZZ_CHECK(CODE_utAlphaIdToUcs2(out.data(), room, id.data(), length) == 1);
  FUZZ_CHECK(out.untouched(160));
}

// The same bytes as hex text: the identifier's characters up to its first U+0000.
void check_as_hex(const uint8_t* bytes, uint16_t length) {
  fuzz::Guarded<char> hex(2u * length + 1);
  fuzz::Guarded<wchar_t> out(length + 1u);
  CODE_Bytes2String(bytes, hex.data(), length);
  const int32_t result = CODE_Usc2orGsm7ToAscDecode(hex.data(), out.data(), CODEC_LANG_DEFAULT);
  FUZZ_CHECK(result == (length != 0 && length <= 256));
  if (result == 0 || bytes[0] < 0x80 || bytes[0] > 0x82) return;
  const std::wstring text = out.data();
  int32_t estimate = 0;
  CODE_PreDecodeGsmUcs(hex.data(), &estimate);
  FUZZ_CHECK(text.size() <= static_cast<size_t>(std::max(estimate, 0)));
  fuzz::Guarded<uint16_t> characters(160);
  characters.clear();
  CODE_utAlphaIdToUcs2(characters.data(), 160, bytes, length);
  FUZZ_CHECK(std::equal(text.begin(), text.end(), characters.begin()));
  FUZZ_CHECK(text.size() == 160 || characters[text.size()] == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const uint8_t* bytes, size_t size) {
  fuzz::Input input(bytes, size);
  const uint16_t room = input.byte() % 200;
  const auto length = static_cast<uint16_t>(std::min<size_t>(input.size(), 600));
  check_identifier(input.data(), length, room);
  check_as_hex(input.data(), length);
  return 0;
}
