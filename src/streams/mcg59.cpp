// MCG59: x <- a x mod 2^59, a = 13^13.
// Output: the stored x, then step. Words are 64-bit x values; reals are
// a + x ((b - a) 2^-59), as fma(x, (b - a) 2^-59, a) with x rounded to double
// once (the vector conversion splits x into 27 high and 32 low bits and rounds
// only in the final addition, so it agrees with the scalar conversion).
// Vector form: 16 lanes x a^0 .. x a^15, multiplied by a^16 each step; the
// 64-bit product is built from three 32x32 products.
#include <immintrin.h>

#include <cstring>

#include "streams/brng_frame.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr uint64_t kMask = (uint64_t{1} << 59) - 1;
constexpr uint64_t kA = 302875106592253u;  // 13^13

struct Mcg59State {
  uint64_t x;
  uint64_t a;
};
static_assert(sizeof(StreamState) + sizeof(Mcg59State) == 32, "StateBytes of the registry row");

inline __m256i mul_mod(__m256i x, __m256i y_lo, __m256i y_hi) {
  const __m256i ll = _mm256_mul_epu32(x, y_lo);
  const __m256i cross =
      _mm256_add_epi64(_mm256_mul_epu32(_mm256_srli_epi64(x, 32), y_lo), _mm256_mul_epu32(x, y_hi));
  return _mm256_and_si256(_mm256_add_epi64(ll, _mm256_slli_epi64(cross, 32)),
                          _mm256_set1_epi64x(kMask));
}

// 64-bit lanes below 2^59 -> nearest doubles.
inline __m256d u59_to_pd(__m256i v) {
  const __m256i hi = _mm256_or_si256(_mm256_srli_epi64(v, 32), _mm256_set1_epi64x(0x4530000000000000));
  const __m256i lo = _mm256_or_si256(_mm256_and_si256(v, _mm256_set1_epi64x(0xFFFFFFFF)),
                                     _mm256_set1_epi64x(0x4330000000000000));
  const __m256d h = _mm256_sub_pd(_mm256_castsi256_pd(hi), _mm256_set1_pd(0x1p84 + 0x1p52));
  return _mm256_add_pd(h, _mm256_castsi256_pd(lo));
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  Mcg59State& s = *generator_state<Mcg59State>(stream);
  const double scale = (b - a) * 0x1p-59;
  uint64_t x = s.x;
  int32_t i = 0;
  if (n >= 16) {
    alignas(32) uint64_t start[16];
    uint64_t a16 = 1;
    for (int k = 0; k < 16; ++k) {
      start[k] = (x * a16) & kMask;
      a16 = (a16 * s.a) & kMask;
    }
    const __m256i m_lo = _mm256_set1_epi64x(static_cast<int64_t>(a16 & 0xFFFFFFFF));
    const __m256i m_hi = _mm256_set1_epi64x(static_cast<int64_t>(a16 >> 32));
    const __m256d va = _mm256_set1_pd(a), vs = _mm256_set1_pd(scale);
    __m256i v[4];
    for (int q = 0; q < 4; ++q) v[q] = _mm256_load_si256(reinterpret_cast<const __m256i*>(start + 4 * q));
    for (; i + 16 <= n; i += 16) {
      for (int q = 0; q < 4; ++q) {
        store4(r + i + 4 * q, _mm256_fmadd_pd(u59_to_pd(v[q]), vs, va));
        v[q] = mul_mod(v[q], m_lo, m_hi);
      }
    }
    x = static_cast<uint64_t>(_mm256_extract_epi64(v[0], 0));
  }
  for (; i < n; ++i) {
    r[i] = scale_one<T>(static_cast<double>(x), scale, a);
    x = (x * s.a) & kMask;
  }
  s.x = x;
  return 0;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngMCG59InitStream(int32_t method, StreamState* stream, int32_t n,
                                const uint32_t params[]) {
  Mcg59State& s = *generator_state<Mcg59State>(stream);
  switch (method) {
    case OXA_INIT_SEED: {
      uint64_t x = 1;
      if (n == 1) x = params[0];
      if (n >= 2) x = (uint64_t{params[1]} << 32 | params[0]) & kMask;
      s.x = x == 0 ? 1 : x;
      s.a = kA;
      return 0;
    }
    case OXA_INIT_LEAPFROG:
      s.x = (s.x * _vsliPowMod2P59(s.a, params[0])) & kMask;
      s.a = _vsliPowMod2P59(s.a, static_cast<uint32_t>(n));
      return 0;
    case OXA_INIT_SKIPAHEAD:
      s.x = (s.x * _vsliPowMod2P59(s.a, read_skip_count(params))) & kMask;
      return 0;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vslsBRngMCG59(StreamState* stream, int32_t n, float r[], float a, float b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsldBRngMCG59(StreamState* stream, int32_t n, double r[], double a, double b) {
  return generate(stream, n, r, a, b);
}

// n 64-bit words, written as 2n 32-bit halves (low half first).
int32_t _vsliBRngMCG59(StreamState* stream, int32_t n, uint32_t r[]) {
  Mcg59State& s = *generator_state<Mcg59State>(stream);
  uint64_t x = s.x;
  for (int32_t i = 0; i < n; ++i) {
    std::memcpy(r + 2 * i, &x, sizeof x);
    x = (x * s.a) & kMask;
  }
  s.x = x;
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryMCG59 = {_vslBRngMCG59InitStream, _vslsBRngMCG59,
                                                   _vsldBRngMCG59, _vsliBRngMCG59};
}
