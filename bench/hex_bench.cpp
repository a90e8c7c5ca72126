// 160 bytes to hex text and back, and 80 characters to the 160 bytes' digits.
extern "C" {
#include <osmocom/core/utils.h>
}
#include <strings.h>

#include <cstring>

#include "bench/floors.h"
#include "bench/peers.h"
#include "bench/rows.h"
#include "qalt_at/text.h"

namespace {

constexpr int kBytes = 160;
constexpr int kDigits = 2 * kBytes;
constexpr int kCharacters = kBytes / 2;

uint8_t g_bytes[kBytes + 2];  // two zeros behind: a text for libGammu
wchar_t g_wide[kCharacters + 1];
char g_hex[kDigits + 1];
char g_text[kDigits + 1];
uint8_t g_out[kBytes + 2];

void fill() {
  for (int i = 0; i < kBytes; ++i) g_bytes[i] = static_cast<uint8_t>(i * 37 + 11);
  for (int i = 0; i < kCharacters; ++i) g_wide[i] = g_bytes[2 * i] << 8 | g_bytes[2 * i + 1];
  bench::require(CODE_Bytes2String(g_bytes, g_hex, kBytes) == kDigits, "write");
}

// libosmocore's digits are lower-case, all else is the same.
void require_digits(const char* text, const char* work) {
  bench::require(strcasecmp(text, g_hex) == 0, work);
  g_text[0] = '\0';
}

void osmo_write() {
  osmo_hexdump_nospc(g_bytes, kBytes);
}
void gammu_write() {
  EncodeHexBin(g_text, g_bytes, kBytes);
}

template <typename Ours>
void write(const char* work, Ours ours) {
  g_text[0] = '\0';
  ours();
  require_digits(g_text, work);
  bench::side(work, "ours", kBytes, ours, "peer<=1");
  bench::side(work, "libosmocore", kBytes, osmo_write);
  bench::side(work, "libGammu", kBytes, gammu_write);
  bench::side(work, "floor", kBytes, [] { floors::write_digits(g_bytes, g_text, kBytes); });
}

template <typename Ours>
void read(const char* work, Ours ours) {
  const auto osmo = [] { osmo_hexparse(g_hex, g_out, kBytes); };
  const auto gammu = [] { DecodeHexBin(g_out, reinterpret_cast<const uint8_t*>(g_hex), kDigits); };
  const auto check = [work](auto side) {
    std::memset(g_out, 0, sizeof g_out);
    side();
    bench::require(std::memcmp(g_out, g_bytes, kBytes) == 0, work);
  };
  check(ours);
  check(osmo);
  check(gammu);
  bench::side(work, "ours", kBytes, ours, "peer<=1");
  bench::side(work, "libosmocore", kBytes, osmo);
  bench::side(work, "libGammu", kBytes, gammu);
  bench::side(work, "floor", kBytes, [] { floors::read_digits(g_hex, g_out, kBytes); });
}

}  // namespace

int main(int argc, char** argv) {
  fill();
  require_digits(osmo_hexdump_nospc(g_bytes, kBytes), "write");
  gammu_write();
  require_digits(g_text, "write");
  write("160 bytes to hex: CODE_Bytes2String", [] { CODE_Bytes2String(g_bytes, g_text, kBytes); });
  write("160 bytes to hex: CODE_StringtoHex", [] {
    g_text[0] = '\0';
    CODE_StringtoHex(g_bytes, g_text, kBytes);
  });
  write("80 characters to hex: CODE_Stringto2Bytes", [] {
    g_text[0] = '\0';
    CODE_Stringto2Bytes(g_wide, g_text, kBytes);
  });
  write("80 characters to hex: CODE_UCS2toASC", [] { CODE_UCS2toASC(g_text, g_wide); });
  read("hex to 160 bytes: CODE_String2Bytes", [] { CODE_String2Bytes(g_hex, g_out, kDigits); });
  read("hex to 160 bytes: CODE_AscToHex", [] {
    std::memset(g_out, 0, kBytes);  // the caller's part
    CODE_AscToHex(g_out, g_hex, kDigits);
  });
  return bench::measure(argc, argv);
}
