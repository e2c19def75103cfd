// Pieces shared by the generators' floating-point kernels. A generator's
// single and double entry points are one template over the output type T:
// values are computed in double as fma(u, (b - a) * c, a) for the generator's
// raw integer u and scale c, and single results are those doubles rounded to
// float (so rounding may give b itself; the accurate uniform method clamps).
#pragma once

#include <immintrin.h>

#include <cmath>
#include <cstdint>

namespace oxa::streams {

// Stores four doubles as four T values (unaligned).
template <class T>
inline void store4(T* p, __m256d v) {
  if constexpr (sizeof(T) == sizeof(double)) {
    _mm256_storeu_pd(reinterpret_cast<double*>(p), v);
  } else {
    _mm_storeu_ps(reinterpret_cast<float*>(p), _mm256_cvtpd_ps(v));
  }
}

// Integers below 2^52 held in 64-bit lanes -> doubles, exactly (2^52 trick).
inline __m256d u52_to_pd(__m256i v) {
  const __m256i magic = _mm256_set1_epi64x(0x4330000000000000);
  return _mm256_sub_pd(_mm256_castsi256_pd(_mm256_or_si256(v, magic)),
                       _mm256_set1_pd(0x1p52));
}

// Four 32-bit unsigned integers -> four doubles, exactly.
inline __m256d u32x4_to_pd(const uint32_t* p) {
  return u52_to_pd(_mm256_cvtepu32_epi64(_mm_loadu_si128(reinterpret_cast<const __m128i*>(p))));
}

// Scalar twin of the vector scaling: fma(u, scale, a), then rounded to T.
template <class T>
inline T scale_one(double u, double scale, double a) {
  return static_cast<T>(std::fma(u, scale, a));
}

// Converts n raw 32-bit words to T on [a, b) as fma(w, (b - a) * c, a), four
// at a time; the tail uses the same formula one by one.
template <class T>
inline void words_to_uniform(const uint32_t* w, int32_t n, T* r, double a, double scale) {
  const __m256d va = _mm256_set1_pd(a), vs = _mm256_set1_pd(scale);
  int32_t i = 0;
  for (; i + 4 <= n; i += 4) store4(r + i, _mm256_fmadd_pd(u32x4_to_pd(w + i), vs, va));
  for (; i < n; ++i) r[i] = scale_one<T>(w[i], scale, a);
}

}  // namespace oxa::streams
