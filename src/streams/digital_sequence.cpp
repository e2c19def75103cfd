// Point stepping, blocks of eight points, leapfrog and skip-ahead of the
// base-2 digital sequences (see digital_sequence.hpp).
#include "streams/digital_sequence.hpp"

#include <immintrin.h>

#include <algorithm>

#include "streams/word_scaling.hpp"

namespace oxa::streams {
namespace {

inline uint32_t active_count(const DigitalState& s) {
  return s.component == kAllComponents ? s.dim : 1u;
}
inline uint32_t first_active(const DigitalState& s) {
  return s.component == kAllComponents ? 0u : s.component;
}

// out[j] = a[j] ^ b[j] for j < m; out may be a.
inline void xor_words(uint32_t* out, const uint32_t* a, const uint32_t* b, uint32_t m) {
  uint32_t j = 0;
  for (; j + 8 <= m; j += 8) {
    const __m256i va = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + j));
    const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + j));
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + j), _mm256_xor_si256(va, vb));
  }
  for (; j < m; ++j) out[j] = a[j] ^ b[j];
}

// All coordinates of point i: the XOR of the V rows over the bits of i's Gray code.
void set_point(DigitalState& s, const uint32_t* v, uint32_t i) {
  const uint32_t d = s.dim;
  std::fill(s.x, s.x + d, 0u);
  for (uint32_t g = i ^ (i >> 1), b = 0; g != 0; g >>= 1, ++b) {
    if (g & 1) xor_words(s.x, s.x, v + std::size_t{b} * d, d);
  }
}

// Block rows for the active coordinates: row r = row r-1 ^ V[ctz(r)], since
// the Gray codes of r - 1 and r differ in bit ctz(r).
void fill_blocks(const DigitalState& s, const DigitalTables& t) {
  const uint32_t m = active_count(s), k0 = first_active(s);
  std::fill(t.blocks, t.blocks + m, 0u);
  for (uint32_t r = 1; r < kBlockPoints; ++r) {
    const uint32_t* row = t.v + std::size_t{static_cast<uint32_t>(__builtin_ctz(r))} * s.dim + k0;
    xor_words(t.blocks + r * m, t.blocks + (r - 1) * m, row, m);
  }
}

// Largest point size written as one flat 8m-word XOR (its copy is on the stack).
constexpr uint32_t kTiledMax = 1024;

// Last point number at which eight points fit before 2^32 - 1.
constexpr uint32_t kLastBlockStart = 0xFFFFFFF7u;

}  // namespace

void* find_chunk(StreamState* stream, uint32_t id, std::size_t size) {
  for (StreamChunk* c = stream->chunks; c; c = c->next) {
    if (c->id == id && c->size == size) return c->data;
  }
  return nullptr;
}

void digital_start(DigitalState& s, uint32_t dim, const DigitalTables& t) {
  s.dim = dim;
  s.index = 1;
  s.coord = 0;
  s.component = kAllComponents;
  set_point(s, t.v, 1);
  fill_blocks(s, t);
}

int32_t digital_leapfrog(DigitalState& s, const DigitalTables& t, int32_t nstreams, uint32_t k) {
  if (nstreams != 0x7FFFFFFF || k >= s.dim) return VSL_RNG_ERROR_NO_LEAPFROG;
  // The component stream starts with the point that holds the next value.
  s.component = k;
  s.coord = 0;
  set_point(s, t.v, s.index);
  fill_blocks(s, t);
  return 0;
}

int32_t digital_skip(DigitalState& s, const DigitalTables& t, uint64_t nskip) {
  const uint64_t m = active_count(s);
  const uint64_t pos = uint64_t{s.index - 1} * m + s.coord;  // values handed out so far
  if (nskip < 1 || nskip > ~uint64_t{0} - pos) return VSL_RNG_ERROR_NO_SKIPAHEAD;
  const uint64_t p = pos + nskip;
  if (p / m + 1 > 0xFFFFFFFFu) return VSL_RNG_ERROR_NO_SKIPAHEAD;
  s.index = static_cast<uint32_t>(p / m + 1);
  s.coord = static_cast<uint32_t>(p % m);
  set_point(s, t.v, s.index);
  return 0;
}

void digital_words(DigitalState& s, const DigitalTables& t, int32_t n, uint32_t* r) {
  const uint32_t m = active_count(s), d = s.dim;
  uint32_t* x = s.x + first_active(s);
  const uint32_t* v = t.v + first_active(s);
  const uint32_t* blocks = t.blocks;
  uint32_t idx = s.index, c = s.coord;
  const uint64_t block_values = uint64_t{kBlockPoints} * m;
  int32_t i = 0;
  while (i < n) {
    if (c == 0 && (idx & 7) == 0 && idx <= kLastBlockStart &&
        static_cast<uint64_t>(n - i) >= block_values) {
      // Whole blocks of eight points, then one step of eight to the next block.
      do {
        if (m == 1) {
          const __m256i w = _mm256_xor_si256(
              _mm256_set1_epi32(static_cast<int>(x[0])),
              _mm256_loadu_si256(reinterpret_cast<const __m256i*>(blocks)));
          _mm256_storeu_si256(reinterpret_cast<__m256i*>(r + i), w);
          i += kBlockPoints;
        } else if (m <= kTiledMax) {
          // The block is 8m words, a whole number of vectors: the point x
          // repeated eight times (read from a copy extended by 8 words, so
          // any 8 consecutive repeated words are one load) XOR the table.
          alignas(32) uint32_t xx[kTiledMax + 8];
          std::copy(x, x + m, xx);
          for (uint32_t j = m; j < m + 8; ++j) xx[j] = xx[j - m];
          for (uint32_t k = 0, off = 0; k < 8 * m; k += 8) {
            const __m256i vx = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(xx + off));
            const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(blocks + k));
            _mm256_storeu_si256(reinterpret_cast<__m256i*>(r + i + k), _mm256_xor_si256(vx, vb));
            for (off += 8; off >= m;) off -= m;
          }
          i += static_cast<int32_t>(8 * m);
        } else {
          for (uint32_t q = 0; q < kBlockPoints; ++q, i += static_cast<int32_t>(m)) {
            xor_words(r + i, x, blocks + q * m, m);
          }
        }
        // Point 8q + 7 is x ^ V[2] (Gray code 4); the step to 8q + 8 flips bit
        // ctz(8q + 8) = 3 + ctz(q + 1).
        const uint32_t b = 3 + static_cast<uint32_t>(__builtin_ctz((idx >> 3) + 1));
        xor_words(x, x, v + std::size_t{2} * d, m);
        xor_words(x, x, v + std::size_t{b} * d, m);
        idx += kBlockPoints;
      } while (idx <= kLastBlockStart && static_cast<uint64_t>(n - i) >= block_values);
      continue;
    }
    r[i++] = x[c];
    if (++c == m) {
      c = 0;
      const uint32_t next = idx + 1;
      if (next == 0) {  // after point 2^32 - 1 comes point 1 again
        for (uint32_t j = 0; j < m; ++j) x[j] = v[j];
        idx = 1;
      } else {
        xor_words(x, x, v + std::size_t{static_cast<uint32_t>(__builtin_ctz(next))} * d, m);
        idx = next;
      }
    }
  }
  s.index = idx;
  s.coord = c;
}

namespace {

// Values to hand out before the stream is at the start of an eight-point
// block (point number a multiple of 8, coordinate 0).
int64_t values_to_block_start(const DigitalState& s) {
  const uint32_t m = active_count(s);
  if (s.coord == 0) return int64_t{m} * ((8 - (s.index & 7)) & 7);
  return int64_t{m - s.coord} + int64_t{m} * ((8 - ((s.index + 1) & 7)) & 7);
}

// Words are produced block-wise into the output itself (for doubles in the
// upper half of the block's bytes) and scaled in place. The block is a whole
// number of eight-point blocks so that aligned streams stay on the fast path.
template <class T>
void reals(DigitalState& s, const DigitalTables& t, int32_t n, T* r, T a, T b) {
  const uint32_t unit = kBlockPoints * active_count(s);
  const int64_t block = int64_t{unit} * std::max<uint32_t>(1, 1024 / unit);
  for (int64_t i = 0, c; i < n; i += c) {
    const int64_t head = i == 0 ? values_to_block_start(s) : 0;
    c = std::min<int64_t>(head > 0 ? std::min(head, block) : block, n - i);
    uint32_t* w = reinterpret_cast<uint32_t*>(r + i) + (sizeof(T) == 8 ? c : 0);
    digital_words(s, t, static_cast<int32_t>(c), w);
    scale_words<WordMapping::kUnsigned>(w, r + i, static_cast<std::size_t>(c), a, b);
  }
}

// Large double outputs: words into a buffer that stays in L1, doubles to
// memory with streaming stores (no read of the destination lines first).
// Same values as scale_words: a + ((b - a) 2^-32) u, u exact in double.
constexpr int64_t kStreamingValues = int64_t{1} << 18;
constexpr uint32_t kBufferWords = 2048;

void reals_streaming(DigitalState& s, const DigitalTables& t, int32_t n, double* r, double a,
                     double b) {
  alignas(32) uint32_t w[kBufferWords];
  const WordScale<WordMapping::kUnsigned, double> map(a, b);
  const __m256d vo = _mm256_set1_pd(map.offset), vs = _mm256_set1_pd(map.scale);
  const uint32_t unit = kBlockPoints * active_count(s);
  const int32_t block = static_cast<int32_t>(unit * (kBufferWords / unit));
  int32_t i = 0;
  while (i < n) {
    const int64_t head = values_to_block_start(s);
    const int32_t first = head > 0 ? static_cast<int32_t>(std::min<int64_t>(head, block)) : block;
    const int32_t c = std::min(first, n - i);
    digital_words(s, t, c, w);
    int32_t j = 0;
    for (; j < c && (reinterpret_cast<uintptr_t>(r + i + j) & 31) != 0; ++j) r[i + j] = map(w[j]);
    for (; j + 4 <= c; j += 4) {
      const __m128i u = _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + j));
      const __m256d x = _mm256_add_pd(
          _mm256_cvtepi32_pd(_mm_xor_si128(u, _mm_set1_epi32(INT32_MIN))), _mm256_set1_pd(0x1p31));
      _mm256_stream_pd(r + i + j, _mm256_add_pd(vo, _mm256_mul_pd(vs, x)));
    }
    for (; j < c; ++j) r[i + j] = map(w[j]);
    i += c;
  }
  _mm_sfence();
}

}  // namespace

void digital_reals(DigitalState& s, const DigitalTables& t, int32_t n, double* r, double a,
                   double b) {
  if (n >= kStreamingValues && kBlockPoints * active_count(s) <= kBufferWords) {
    reals_streaming(s, t, n, r, a, b);
  } else {
    reals(s, t, n, r, a, b);
  }
}
void digital_reals(DigitalState& s, const DigitalTables& t, int32_t n, float* r, float a,
                   float b) {
  reals(s, t, n, r, a, b);
}

}  // namespace oxa::streams
