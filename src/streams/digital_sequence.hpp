// Shared frame of the two base-2 quasi-random generators (Sobol and
// Niederreiter). Both are digital sequences: coordinate j of point i is the
// XOR of the direction words V[b][j] over the set bits b of the Gray code
// i ^ (i >> 1), so consecutive points differ by one row, V[ctz(i + 1)].
//
// Stream state: the dimension, the number of the current point (1 .. 2^32 - 1;
// point 0, the origin, is never handed out, so no output is zero), the next
// coordinate of the current point to hand out, the leapfrog component (or
// kAllComponents) and the current point's coordinates. Values go out point by
// point: a stream of dimension d hands out x_1[0..d), x_2[0..d), ...; after
// point 2^32 - 1 the sequence starts again at point 1.
//
// Tables (held in chunks by the generators): V, 32 rows of d words (row b is
// bit b of the point number); and the block table, 8 rows of m words (m = d,
// or 1 for a single component): row r is the XOR of the V rows over the bits
// of the Gray code of r, so points 8q .. 8q + 7 are x_8q ^ row r (the Gray
// code of 8q + r is that of 8q XOR that of r), written without a serial
// dependence from one point to the next.
#pragma once

#include <cstddef>
#include <cstdint>

#include "oxa/streams.h"

namespace oxa::streams {

inline constexpr uint32_t kAllComponents = 0xFFFFFFFFu;
inline constexpr int kDigitBits = 32;
inline constexpr int kBlockPoints = 8;

struct DigitalState {
  uint32_t dim;
  uint32_t index;
  uint32_t coord;
  uint32_t component;
  uint32_t x[1];  // dim words in the stream block (the row bounds the dimension)
};

// Largest dimension whose state fits in the first seed_words words of the
// state area (the part a state copy carries).
constexpr uint32_t max_dimension(int32_t seed_words) {
  return static_cast<uint32_t>(seed_words) - offsetof(DigitalState, x) / 4;
}

inline DigitalState* digital_state(StreamState* s) {
  return reinterpret_cast<DigitalState*>(reinterpret_cast<unsigned char*>(s) + sizeof(StreamState));
}

// Tables of one stream: v (kDigitBits rows of dim words) and blocks
// (kBlockPoints rows of m words, m the number of active coordinates).
struct DigitalTables {
  const uint32_t* v;
  uint32_t* blocks;
};

// Data of the stream's first chunk (from the head) with this id and size, or
// null: a chunk of another size with the same id is not the generator's.
void* find_chunk(StreamState* stream, uint32_t id, std::size_t size);

// Puts the stream on point 1, all components, and fills blocks for m = dim.
void digital_start(DigitalState& s, uint32_t dim, const DigitalTables& t);

// Method 1 (leapfrog) and 2 (skip-ahead) of InitStream; see the generators.
int32_t digital_leapfrog(DigitalState& s, const DigitalTables& t, int32_t nstreams,
                         uint32_t k);
int32_t digital_skip(DigitalState& s, const DigitalTables& t, uint64_t nskip);

// The next n output words.
void digital_words(DigitalState& s, const DigitalTables& t, int32_t n, uint32_t* r);

// The next n values on [a, b): the words scaled by (b - a) 2^-32.
void digital_reals(DigitalState& s, const DigitalTables& t, int32_t n, double* r, double a,
                   double b);
void digital_reals(DigitalState& s, const DigitalTables& t, int32_t n, float* r, float a,
                   float b);

}  // namespace oxa::streams
