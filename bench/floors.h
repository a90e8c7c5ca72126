// floors.h - the least that each codec work costs: one store, or one look-up, for each item.
#ifndef QALT_BENCH_FLOORS_H_
#define QALT_BENCH_FLOORS_H_

#include <cstddef>
#include <cstdint>

namespace floors {

void store_bytes(uint8_t* out, size_t count);
void decode(const uint16_t (&table)[128], const uint8_t* codes, wchar_t* out, size_t count);
void encode(const uint8_t (&table)[256], const wchar_t* text, uint8_t* out, size_t count);
void write_digits(const uint8_t* bytes, char* out, size_t count);
void read_digits(const char* digits, uint8_t* out, size_t count);

}  // namespace floors

#endif  // QALT_BENCH_FLOORS_H_
