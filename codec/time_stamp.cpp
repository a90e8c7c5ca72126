// The service centre time stamp (3GPP TS 23.040, 9.2.3.11).
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "common/text.h"
#include "qalt_at/text_bytes.h"

static_assert(sizeof(QaltTime) == 20);
static_assert(offsetof(QaltTime, second) == 10);
static_assert(offsetof(QaltTime, reserved) == 12);
static_assert(offsetof(QaltTime, timeZone) == 16);

namespace {

constexpr size_t kMaxLength = 39;
constexpr size_t kDateDigits = 12;
constexpr size_t kStampDigits = 14;
constexpr size_t kMaxZoneDigits = 9;
constexpr int32_t kMaxZone = 48;  // quarters of an hour

// Reads the six numbers of a stamp whose digits have been swapped back.
void read_date(const char* digits, size_t length, QaltTime* time) {
  char spaced[kStampDigits + kStampDigits / 2];
  size_t position = 0;
  for (size_t i = 0; i < length; ++i) {
    if (i != 0 && i % 2 == 0) spaced[position++] = ' ';
    spaced[position++] = digits[i];
  }
  spaced[position] = '\0';
  int parts[6] = {};
  // What cannot be read leaves its part and the following at 0; two characters cannot overflow.
  // NOLINTNEXTLINE(cert-err34-c)
  static_cast<void>(std::sscanf(spaced, "%d %d %d %d %d %d", &parts[0], &parts[1], &parts[2],
                                &parts[3], &parts[4], &parts[5]));
  time->year = static_cast<uint16_t>(parts[0] + 2000);
  time->month = static_cast<uint16_t>(parts[1]);
  time->day = static_cast<uint16_t>(parts[2]);
  time->hour = static_cast<uint16_t>(parts[3]);
  time->minute = static_cast<uint16_t>(parts[4]);
  time->second = static_cast<uint16_t>(parts[5]);
}

// The zone of the stamp's last octet as written: the low semi-octet has the tens and, in its bit 3,
// the sign; the high one has the units.
int32_t zone_of(uint32_t octet) {
  const auto units = static_cast<int32_t>((octet & 0xF0) >> 4);
  const bool west = (octet & 0x08) != 0;
  const auto tens = static_cast<int32_t>(octet & (west ? 0x07 : 0x0F));
  const int32_t zone = west ? -(10 * tens + units) : 10 * tens + units;
  return zone < -kMaxZone || zone > kMaxZone ? 0 : zone;
}

}  // namespace

QaltTime CODE_DecodePduTimeToQaltTime(const char* pDigits) {
  QaltTime time{};
  if (pDigits == nullptr) return time;
  const size_t length = qalt::bounded_length(pDigits, kMaxLength + 1);
  if (length > kMaxLength) return time;

  char zone[kMaxZoneDigits + 1] = "";
  if (length > kDateDigits + 1) {
    qalt::copy_text(zone, sizeof zone, pDigits + kDateDigits,
                    std::min(length - kDateDigits, kMaxZoneDigits));
  }
  std::printf("timezone str %s\n", zone);

  if (length >= kDateDigits) {
    char digits[kStampDigits + 1];
    const int32_t count =
        CODE_InvertNumbers(pDigits, digits, static_cast<int32_t>(std::min(length, kStampDigits)));
    read_date(digits, static_cast<size_t>(count), &time);
  }

  // A value of more than eight digits keeps its low 32 bits, whatever the width of long.
  const auto octet = static_cast<uint32_t>(std::strtoull(zone, nullptr, 16));
  std::printf("timezone %x\n", octet);
  time.timeZone = zone_of(octet);
  return time;
}
