// MCG31M1: x <- a x mod (2^31 - 1), a = 1132489760.
// Output: the stored x (the next value), then step. Words are x (never 0);
// reals are a + (b - a) x / (2^31 - 1), as fma(x, (b - a) c, a).
// Vector form: 16 lanes hold x a^0 .. x a^15 and each step multiplies them by
// a^16; the product is folded twice modulo 2^31 - 1 (low 31 bits + the rest).
// Leapfrog and skip-ahead by modular powers of a.
#include <immintrin.h>

#include "streams/brng_frame.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr uint32_t kM = 2147483647u;
constexpr uint32_t kA = 1132489760u;
constexpr double kInvM = 0x1.00000002p-31;  // 1/(2^31 - 1) rounded, 4.656612875245797e-10

struct Mcg31State {
  uint32_t x;
  uint32_t a;
};
static_assert(sizeof(StreamState) + sizeof(Mcg31State) == 24, "StateBytes of the registry row");

inline uint32_t mul_mod(uint32_t x, uint32_t y) {
  uint64_t p = uint64_t{x} * y;
  p = (p & kM) + (p >> 31);
  p = (p & kM) + (p >> 31);
  return static_cast<uint32_t>(p);
}

inline __m256i mul_mod(__m256i x, __m256i y) {
  const __m256i m = _mm256_set1_epi64x(kM);
  __m256i p = _mm256_mul_epu32(x, y);
  p = _mm256_add_epi64(_mm256_and_si256(p, m), _mm256_srli_epi64(p, 31));
  return _mm256_add_epi64(_mm256_and_si256(p, m), _mm256_srli_epi64(p, 31));
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  Mcg31State& s = *generator_state<Mcg31State>(stream);
  const double scale = (b - a) * kInvM;
  uint32_t x = s.x;
  int32_t i = 0;
  if (n >= 16) {
    alignas(32) uint64_t start[16];
    uint32_t p = x;
    for (int k = 0; k < 16; ++k) {
      start[k] = p;
      p = mul_mod(p, s.a);
    }
    uint32_t a16 = 1;
    for (int k = 0; k < 16; ++k) a16 = mul_mod(a16, s.a);
    const __m256i vmul = _mm256_set1_epi64x(a16);
    const __m256d va = _mm256_set1_pd(a), vs = _mm256_set1_pd(scale);
    __m256i v[4];
    for (int q = 0; q < 4; ++q) v[q] = _mm256_load_si256(reinterpret_cast<const __m256i*>(start + 4 * q));
    for (; i + 16 <= n; i += 16) {
      for (int q = 0; q < 4; ++q) {
        store4(r + i + 4 * q, _mm256_fmadd_pd(u52_to_pd(v[q]), vs, va));
        v[q] = mul_mod(v[q], vmul);
      }
    }
    x = static_cast<uint32_t>(_mm256_extract_epi64(v[0], 0));
  }
  for (; i < n; ++i) {
    r[i] = scale_one<T>(x, scale, a);
    x = mul_mod(x, s.a);
  }
  s.x = x;
  return 0;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngMCG31M1InitStream(int32_t method, StreamState* stream, int32_t n,
                                  const uint32_t params[]) {
  Mcg31State& s = *generator_state<Mcg31State>(stream);
  switch (method) {
    case OXA_INIT_SEED: {
      uint32_t x = n >= 1 ? params[0] % kM : 1;
      s.x = x == 0 ? 1 : x;
      s.a = kA;
      return 0;
    }
    case OXA_INIT_LEAPFROG:
      s.x = mul_mod(s.x, _vsliPowMod2P31M1(s.a, params[0]));
      s.a = _vsliPowMod2P31M1(s.a, static_cast<uint32_t>(n));
      return 0;
    case OXA_INIT_SKIPAHEAD:
      s.x = mul_mod(s.x, _vsliPowMod2P31M1(s.a, read_skip_count(params)));
      return 0;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vslsBRngMCG31M1(StreamState* stream, int32_t n, float r[], float a, float b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsldBRngMCG31M1(StreamState* stream, int32_t n, double r[], double a, double b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsliBRngMCG31M1(StreamState* stream, int32_t n, uint32_t r[]) {
  Mcg31State& s = *generator_state<Mcg31State>(stream);
  uint32_t x = s.x;
  for (int32_t i = 0; i < n; ++i) {
    r[i] = x;
    x = mul_mod(x, s.a);
  }
  s.x = x;
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryMCG31M1 = {
    _vslBRngMCG31M1InitStream, _vslsBRngMCG31M1, _vsldBRngMCG31M1, _vsliBRngMCG31M1};
}
