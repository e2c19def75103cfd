// MT19937: the 32-bit Mersenne twister of period 2^19937 - 1.
//
// State after the stream header: the 624-word block mt, the number of its words
// already handed out (pos, 624 = block used up) and one spare word that is
// copied with the state and never read. The stream hands out the tempered
// words of each block in index order; every entry point (integer, single,
// double) consumes one word per value, so they interleave on one sequence.
#pragma once

#include <cstddef>
#include <cstdint>

namespace oxa::streams {

inline constexpr int kMtWords = 624;
inline constexpr int kMtShift = 397;  // middle distance of the recurrence

struct Mt19937State {
  uint32_t mt[kMtWords];
  int32_t pos;
  uint32_t spare;
};
static_assert(sizeof(Mt19937State) == 2504, "MT19937 state area is 2520 - 16 bytes");

// One step of the recurrence: the word that replaces `current`, from it, the
// word after it and the word 397 places on.
inline uint32_t mt19937_next_word(uint32_t current, uint32_t next, uint32_t far) {
  const uint32_t y = (current & 0x80000000u) | (next & 0x7FFFFFFFu);
  return far ^ (y >> 1) ^ ((y & 1u) ? 0x9908B0DFu : 0u);
}

// Seeds from n words (n <= 0 seeds as the single word 1); pos becomes 624.
void mt19937_seed(Mt19937State& s, int32_t n, const uint32_t seed[]);

// Replaces mt[0..623] by the next block of the recurrence (vectorised).
void mt19937_regenerate(uint32_t mt[kMtWords]);

// out[i] = temper(in[i]) for i < n (vectorised); in and out may be equal.
void mt19937_temper(const uint32_t* in, uint32_t* out, std::size_t n);

// The next n tempered words of the stream.
void mt19937_words(Mt19937State& s, std::size_t n, uint32_t* out);

// Leaves the stream as it would be after n more words were handed out.
void mt19937_skip(Mt19937State& s, uint64_t n);

// Test hook: true makes the skip-ahead use 128-bit carry-less products even
// where 256-bit ones exist, so tests reach both forms on any machine.
void mt19937_skip_narrow_products(bool narrow);

}  // namespace oxa::streams
