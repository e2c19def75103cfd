// Uniform: continuous values on [a, b) and integers on [a, b - 1].
// Method: the stream's generator scales its own output (GenDouble/GenSingle);
// the accurate method then clamps each value to [a, b] (max with a, then min
// with b). Integers are floor(u) of doubles drawn on [a, b) in blocks of 1024
// on the stack, always with the standard method. A double that rounded up to
// b itself (possible for wide intervals) is taken as b - 1, so integers stay
// below b.
#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>

#include "oxa/distributions.h"
#include "streams/registry.hpp"

namespace oxa::distributions {
namespace {

using streams::BrngRef;
using streams::decode_brng;

template <class T>
struct Lanes;
template <>
struct Lanes<double> {
  using V = __m256d;
  static constexpr int kWidth = 4;
  static V set1(double v) { return _mm256_set1_pd(v); }
  static V load(const double* p) { return _mm256_load_pd(p); }
  static void store(double* p, V v) { _mm256_store_pd(p, v); }
  static V clamp(V x, V lo, V hi) { return _mm256_min_pd(hi, _mm256_max_pd(lo, x)); }
};
template <>
struct Lanes<float> {
  using V = __m256;
  static constexpr int kWidth = 8;
  static V set1(float v) { return _mm256_set1_ps(v); }
  static V load(const float* p) { return _mm256_load_ps(p); }
  static void store(float* p, V v) { _mm256_store_ps(p, v); }
  static V clamp(V x, V lo, V hi) { return _mm256_min_ps(hi, _mm256_max_ps(lo, x)); }
};

// r[i] = min(b, max(a, r[i])): singles up to a 32-byte boundary, then 16 a
// step, then the rest one by one (the same result whatever the alignment).
template <class T>
void clamp(T* r, int32_t n, T a, T b) {
  using L = Lanes<T>;
  int32_t i = 0;
  auto one = [&](int32_t k) { r[k] = std::min(b, std::max(a, r[k])); };
  if (n >= 16) {
    for (; i < n && reinterpret_cast<uintptr_t>(r + i) % 32 != 0; ++i) one(i);
    const typename L::V lo = L::set1(a), hi = L::set1(b);
    for (; i + 16 <= n; i += 16) {
      for (int k = 0; k < 16; k += L::kWidth) L::store(r + i + k, L::clamp(L::load(r + i + k), lo, hi));
    }
  }
  for (; i < n; ++i) one(i);
}

template <class T>
int32_t uniform(uint32_t method, StreamState* stream, int32_t n, T* r, T a, T b) {
  const BrngRef ref = decode_brng(stream->brng);
  if (!streams::is_usable(ref)) return VSL_RNG_ERROR_BAD_BRNG;
  int32_t status;
  if constexpr (sizeof(T) == sizeof(double)) {
    status = ref.props().GenDouble(stream, n, r, a, b);
  } else {
    status = ref.props().GenSingle(stream, n, r, a, b);
  }
  if (status < 0 || (method & OXA_RNG_METHOD_ACCURATE) == 0 || n < 1) return status;
  clamp(r, n, a, b);
  return status;
}

}  // namespace
}  // namespace oxa::distributions

using namespace oxa::distributions;

extern "C" {

int32_t _vsldRngUniform(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                        double b) {
  return uniform(method, stream, n, r, a, b);
}

int32_t _vslsRngUniform(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                        float b) {
  return uniform(method, stream, n, r, a, b);
}

int32_t _vsliRngUniform(uint32_t, StreamState* stream, int32_t n, int32_t r[], int32_t a,
                        int32_t b) {
  if (n < 1) return 0;
  constexpr int32_t kBlock = 1024;
  alignas(32) double u[kBlock];
  const double da = a, db = b;
  const double top = b > a ? db - 1.0 : HUGE_VAL;
  const __m256d vtop = _mm256_set1_pd(top);
  int32_t status = 0;
  for (int32_t done = 0; done < n; done += kBlock) {
    const int32_t m = std::min(kBlock, n - done);
    status = _vsldRngUniform(OXA_RNG_METHOD_STANDARD, stream, m, u, da, db);
    if (status < 0) return status;
    int32_t* out = r + done;
    int32_t i = 0;
    for (; i + 8 <= m; i += 8) {
      const __m128i lo =
          _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_floor_pd(_mm256_load_pd(u + i)), vtop));
      const __m128i hi =
          _mm256_cvttpd_epi32(_mm256_min_pd(_mm256_floor_pd(_mm256_load_pd(u + i + 4)), vtop));
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i), lo);
      _mm_storeu_si128(reinterpret_cast<__m128i*>(out + i + 4), hi);
    }
    for (; i < m; ++i) out[i] = static_cast<int32_t>(std::min(std::floor(u[i]), top));
  }
  return status;
}

}  // extern "C"
