// peers.h - the functions that libGammu exports and that the codec is measured against. Its
// installed headers declare them not at all, or together with what its own build provides. Texts
// are UCS2 bytes there, high byte first, ended by two zeros.
#ifndef QALT_BENCH_PEERS_H_
#define QALT_BENCH_PEERS_H_

#include <cstddef>

extern "C" {
int GSM_PackSevenBitsToEight(size_t offset, const unsigned char* septets, unsigned char* out,
                             size_t count);
int GSM_UnpackEightBitsToSeven(size_t offset, size_t bytes, size_t septets,
                               const unsigned char* packed, unsigned char* out);
void DecodeDefault(unsigned char* out, const unsigned char* codes, size_t count, int extensions,
                   unsigned char* extra_alphabet);
void EncodeDefault(unsigned char* out, const unsigned char* text, size_t* count, int extensions,
                   unsigned char* extra_alphabet);
void EncodeHexBin(char* out, const unsigned char* bytes, size_t count);
int DecodeHexBin(unsigned char* out, const unsigned char* digits, size_t count);
}

#endif  // QALT_BENCH_PEERS_H_
