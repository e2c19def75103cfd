// SFMT19937: seeding, block regeneration and the four registry entry points.
// Recurrence (128-bit words, i over one block, r1 r2 the two newest words):
//   w[i] <- a ^ (a <<128 8) ^ ((b >>32 11) & MSK) ^ (r1 >>128 8) ^ (r2 <<32 18)
//   with a = w[i], b = w[i + 122] (wrapping into the new block), <<128 and
//   >>128 shifts of the whole 128-bit word, <<32 >>32 of each 32-bit lane.
//   Each word needs the previous one: the parts without r1 and r2 are formed
//   two lanes per AVX2 operation, the rest is a chain of SSE steps.
// Seeding:   one word: w[i] = 1812433253 (w[i-1] ^ w[i-1] >> 30) + i; an
//            array: the published mixing over a 0x8b8b8b8b-filled state. Both
//            end with the period certification by the parity vector.
// Words:     whole blocks are regenerated straight into the caller's array.
// Reals:     a + (b - a) 2^-32 u on [a, b), the unsigned word scaling, from
//            the state block by block.
// Skip-ahead: by stepping whole blocks, for counts up to 2^30 words; larger
//            counts are refused (-1003). Leapfrog: -1002.
#include "streams/sfmt19937.hpp"

#include <immintrin.h>

#include <algorithm>
#include <cstring>

#include "streams/registry.hpp"
#include "streams/stream_state.hpp"
#include "streams/word_scaling.hpp"

namespace oxa::streams {

namespace {

constexpr uint32_t kMask[4] = {0xdfffffefu, 0xddfecb7fu, 0xbffaffffu, 0xbffffff6u};
constexpr uint32_t kParity[4] = {0x00000001u, 0x00000000u, 0x00000000u, 0x13c9e684u};
constexpr uint64_t kSkipByStepping = uint64_t{1} << 30;

inline __m128i load(const uint32_t* w, int lane) {
  return _mm_loadu_si128(reinterpret_cast<const __m128i*>(w + 4 * lane));
}
inline void store(uint32_t* w, int lane, __m128i v) {
  _mm_storeu_si128(reinterpret_cast<__m128i*>(w + 4 * lane), v);
}

void certify_period(uint32_t w[kSfmtWords]) {
  uint32_t inner = 0;
  for (int i = 0; i < 4; ++i) inner ^= w[i] & kParity[i];
  for (int i = 16; i > 0; i >>= 1) inner ^= inner >> i;
  if (inner & 1) return;
  // Odd parity is missing: flip the lowest parity bit.
  for (int i = 0; i < 4; ++i) {
    if (kParity[i] != 0) {
      w[i] ^= kParity[i] & (~kParity[i] + 1);
      return;
    }
  }
}

inline uint32_t mix1(uint32_t x) { return (x ^ (x >> 27)) * 1664525u; }
inline uint32_t mix2(uint32_t x) { return (x ^ (x >> 27)) * 1566083941u; }

void seed_array(uint32_t w[kSfmtWords], int32_t len, const uint32_t key[]) {
  constexpr uint32_t size = kSfmtWords, lag = 11, mid = (size - lag) / 2;
  std::memset(w, 0x8b, sizeof(uint32_t) * size);
  const uint32_t n = static_cast<uint32_t>(len);
  const uint32_t count = std::max(n + 1, size);
  uint32_t r = mix1(w[0] ^ w[mid] ^ w[size - 1]);
  w[mid] += r;
  r += n;
  w[mid + lag] += r;
  w[0] = r;
  uint32_t i = 1, j = 0;
  for (; j + 1 < count; ++j) {
    r = mix1(w[i] ^ w[(i + mid) % size] ^ w[(i + size - 1) % size]);
    w[(i + mid) % size] += r;
    r += (j < n ? key[j] : 0u) + i;
    w[(i + mid + lag) % size] += r;
    w[i] = r;
    i = (i + 1) % size;
  }
  for (j = 0; j < size; ++j) {
    r = mix2(w[i] + w[(i + mid) % size] + w[(i + size - 1) % size]);
    w[(i + mid) % size] ^= r;
    r -= i;
    w[(i + mid + lag) % size] ^= r;
    w[i] = r;
    i = (i + 1) % size;
  }
}

}  // namespace

void sfmt19937_seed(Sfmt19937State& s, int32_t n, const uint32_t seed[]) {
  if (n == 1 || n <= 0) {
    uint32_t* w = s.w;
    w[0] = n == 1 ? seed[0] : 1u;
    for (uint32_t i = 1; i < kSfmtWords; ++i) w[i] = 1812433253u * (w[i - 1] ^ (w[i - 1] >> 30)) + i;
  } else {
    seed_array(s.w, n, seed);
  }
  certify_period(s.w);
  s.pos = kSfmtWords;
  std::memset(s.spare, 0, sizeof s.spare);
}

namespace {

// dst <- the block after src (dst may equal src). Lane i reads b = src[i +
// 122] below lane 34 and b = dst[i - 34] (already new) from there on, so the
// block goes in runs of at most 34 lanes: first the part of each step that
// does not involve r1 and r2, t = a ^ (a <<128 8) ^ ((b >>32 11) & MSK), two
// lanes per AVX2 operation; then the serial chain v = t ^ (r1 >>128 8) ^
// (r2 <<32 18), one lane per step.
inline void regenerate_from(const uint32_t* src, uint32_t* dst) {
  constexpr int kRun = kSfmtLanes - kSfmtPos1;  // 34
  const __m256i mask = _mm256_broadcastsi128_si256(
      _mm_loadu_si128(reinterpret_cast<const __m128i*>(kMask)));
  alignas(32) uint32_t t[4 * kRun];
  __m128i r1 = load(src, kSfmtLanes - 2), r2 = load(src, kSfmtLanes - 1);
  for (int first = 0; first < kSfmtLanes; first += kRun) {
    const int lanes = std::min(kRun, kSfmtLanes - first);
    const uint32_t* b = first == 0 ? src + 4 * kSfmtPos1 : dst + 4 * (first - kRun);
    const uint32_t* a = src + 4 * first;
    for (int j = 0; j < lanes; j += 2) {  // lanes is even: 34 or 20
      const __m256i va = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(a + 4 * j));
      const __m256i vb = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(b + 4 * j));
      const __m256i y = _mm256_and_si256(_mm256_srli_epi32(vb, 11), mask);
      _mm256_store_si256(reinterpret_cast<__m256i*>(t + 4 * j),
                         _mm256_xor_si256(_mm256_xor_si256(va, _mm256_slli_si256(va, 1)), y));
    }
    for (int j = 0; j < lanes; ++j) {
      __m128i u = _mm_xor_si128(load(t, j), _mm_srli_si128(r1, 1));
      asm("" : "+x"(u));  // keeps r2 last: one shift and one XOR per step
      const __m128i v = _mm_xor_si128(u, _mm_slli_epi32(r2, 18));
      store(dst, first + j, v);
      r1 = r2;
      r2 = v;
    }
  }
}

}  // namespace

void sfmt19937_regenerate(uint32_t w[kSfmtWords]) { regenerate_from(w, w); }

void sfmt19937_words(Sfmt19937State& s, std::size_t n, uint32_t* out) {
  // Any pos outside 0..623 (a loaded image may hold one) means "used up".
  if (static_cast<uint32_t>(s.pos) > kSfmtWords) s.pos = kSfmtWords;
  std::size_t m = std::min<std::size_t>(n, std::size_t(kSfmtWords - s.pos));
  std::memcpy(out, s.w + s.pos, m * sizeof(uint32_t));
  s.pos += static_cast<int32_t>(m);
  out += m;
  n -= m;
  if (n >= kSfmtWords) {
    // Whole blocks go straight to the output, each from the one before it;
    // the last becomes the state.
    regenerate_from(s.w, out);
    for (n -= kSfmtWords, out += kSfmtWords; n >= kSfmtWords; n -= kSfmtWords, out += kSfmtWords) {
      regenerate_from(out - kSfmtWords, out);
    }
    std::memcpy(s.w, out - kSfmtWords, sizeof s.w);
  }
  if (n > 0) {
    sfmt19937_regenerate(s.w);
    std::memcpy(out, s.w, n * sizeof(uint32_t));
    s.pos = static_cast<int32_t>(n);
  }
}

namespace {

int32_t skip(Sfmt19937State& s, uint64_t n) {
  if (n > kSkipByStepping) return VSL_RNG_ERROR_NO_SKIPAHEAD;
  if (static_cast<uint32_t>(s.pos) > kSfmtWords) s.pos = kSfmtWords;
  const uint64_t left = uint64_t(kSfmtWords - s.pos);
  if (n <= left) {
    s.pos += static_cast<int32_t>(n);
    return VSL_STATUS_OK;
  }
  n -= left;
  for (uint64_t blocks = (n - 1) / kSfmtWords; blocks > 0; --blocks) sfmt19937_regenerate(s.w);
  sfmt19937_regenerate(s.w);
  s.pos = static_cast<int32_t>(n - (n - 1) / kSfmtWords * kSfmtWords);
  return VSL_STATUS_OK;
}

// Reals straight from the state block by block, one pass over the output.
template <class T>
void reals(StreamState* stream, int32_t n, T r[], T a, T b) {
  Sfmt19937State& s = *generator_state<Sfmt19937State>(stream);
  if (static_cast<uint32_t>(s.pos) > kSfmtWords) s.pos = kSfmtWords;
  std::size_t left = n > 0 ? static_cast<std::size_t>(n) : 0;
  while (left > 0) {
    if (s.pos == kSfmtWords) {
      sfmt19937_regenerate(s.w);
      s.pos = 0;
    }
    const std::size_t m = std::min<std::size_t>(left, std::size_t(kSfmtWords - s.pos));
    scale_words<WordMapping::kUnsigned>(s.w + s.pos, r, m, a, b);
    s.pos += static_cast<int32_t>(m);
    r += m;
    left -= m;
  }
}

}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngSFMT19937InitStream(int32_t method, StreamState* stream, int32_t n,
                                    const uint32_t params[]) {
  Sfmt19937State& s = *generator_state<Sfmt19937State>(stream);
  switch (method) {
    case OXA_INIT_SEED:
      sfmt19937_seed(s, n, params);
      return VSL_STATUS_OK;
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD:
      return skip(s, read_skip_count(params));
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vsldBRngSFMT19937(StreamState* stream, int32_t n, double r[], double a, double b) {
  reals(stream, n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vslsBRngSFMT19937(StreamState* stream, int32_t n, float r[], float a, float b) {
  reals(stream, n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vsliBRngSFMT19937(StreamState* stream, int32_t n, uint32_t r[]) {
  if (n > 0) sfmt19937_words(*generator_state<Sfmt19937State>(stream), std::size_t(n), r);
  return VSL_STATUS_OK;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntrySFMT19937 = {
    _vslBRngSFMT19937InitStream, _vslsBRngSFMT19937, _vsldBRngSFMT19937, _vsliBRngSFMT19937};
}  // namespace oxa::streams
