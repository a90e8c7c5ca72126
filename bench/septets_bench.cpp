// Packing and unpacking 160 septets.
extern "C" {
#include <osmocom/gsm/gsm_utils.h>
}

#include <cstring>

#include "bench/floors.h"
#include "bench/peers.h"
#include "bench/rows.h"
#include "qalt_at/text.h"

namespace {

constexpr int kSeptets = 160;
constexpr int kBytes = 140;

uint8_t g_septets[kSeptets];
uint32_t g_elements[kSeptets];
uint8_t g_packed[kBytes];
uint8_t g_bytes[kBytes + 1];
uint8_t g_out[kSeptets + 1];
char g_text[kSeptets + 1];

// Letters only: libosmogsm also maps what it unpacks to characters, and these stay what they are.
void fill() {
  for (int i = 0; i < kSeptets; ++i) {
    g_septets[i] = static_cast<uint8_t>((i % 3 == 0 ? 'A' : 'a') + i * 7 % 26);
    g_elements[i] = g_septets[i];
  }
  bench::require(CODE_Encode7bit(g_elements, g_packed, kSeptets) == kBytes, "pack");
}

void pack() {
  const char* work = "pack 160 septets";
  const auto ours = [] { CODE_Encode7bit(g_elements, g_bytes, kSeptets); };
  const auto osmo = [] { gsm_septet_pack(g_bytes, g_septets, kSeptets, 0); };
  const auto gammu = [] { GSM_PackSevenBitsToEight(0, g_septets, g_bytes, kSeptets); };
  osmo();
  bench::require(std::memcmp(g_bytes, g_packed, kBytes) == 0, work);
  gammu();
  bench::require(std::memcmp(g_bytes, g_packed, kBytes) == 0, work);
  bench::side(work, "ours", kSeptets, ours, "peer<=1");
  bench::side(work, "libosmogsm", kSeptets, osmo);
  bench::side(work, "libGammu", kSeptets, gammu);
  bench::side(work, "floor", kSeptets, [] { floors::store_bytes(g_bytes, kBytes); });
}

void unpack() {
  const char* work = "unpack 160 septets";
  const auto ours = [] { CODE_Decode7bit(g_packed, g_out, kBytes); };
  const auto osmo = [] { gsm_7bit_decode_n(g_text, sizeof g_text, g_packed, kSeptets); };
  const auto gammu = [] { GSM_UnpackEightBitsToSeven(0, kBytes, kSeptets, g_packed, g_out); };
  ours();
  bench::require(std::memcmp(g_out, g_septets, kSeptets) == 0, work);
  osmo();
  bench::require(std::memcmp(g_text, g_septets, kSeptets) == 0, work);
  std::memset(g_out, 0, sizeof g_out);
  gammu();
  bench::require(std::memcmp(g_out, g_septets, kSeptets) == 0, work);
  bench::side(work, "ours", kSeptets, ours, "peer<=1");
  bench::side(work, "libosmogsm", kSeptets, osmo);
  bench::side(work, "libGammu", kSeptets, gammu);
  bench::side(work, "floor", kSeptets, [] { floors::store_bytes(g_out, kSeptets); });
}

}  // namespace

int main(int argc, char** argv) {
  fill();
  pack();
  unpack();
  return bench::measure(argc, argv);
}
