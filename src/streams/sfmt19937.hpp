// SFMT19937: the SIMD-oriented fast Mersenne twister with the 19937-bit
// parameter set (period a multiple of 2^19937 - 1).
//
// State after the stream header: 156 128-bit words (624 32-bit words, word 0
// the low 32 bits of 128-bit word 0), the number of 32-bit words already
// handed out (pos, 624 = block used up) and spare bytes copied with the state
// and never read. Outputs are the 32-bit words of each regenerated block in
// order; every entry point consumes one word per value.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oxa::streams {

inline constexpr int kSfmtWords = 624;    // 32-bit words of the state
inline constexpr int kSfmtLanes = 156;    // 128-bit words of the state
inline constexpr int kSfmtPos1 = 122;     // middle distance, in 128-bit words

struct Sfmt19937State {
  uint32_t w[kSfmtWords];
  int32_t pos;
  uint32_t spare[5];
};
static_assert(sizeof(Sfmt19937State) == 2520, "SFMT19937 state area is 2536 - 16 bytes");

// Seeds from n words: n = 1 the one-word initialisation, otherwise the array
// initialisation over the n words (n <= 0: the one word 1). Then the period
// certification; pos becomes 624.
void sfmt19937_seed(Sfmt19937State& s, int32_t n, const uint32_t seed[]);

// Replaces the 624 words by the next block of the recurrence.
void sfmt19937_regenerate(uint32_t w[kSfmtWords]);

// The next n words of the stream.
void sfmt19937_words(Sfmt19937State& s, std::size_t n, uint32_t* out);

}  // namespace oxa::streams
