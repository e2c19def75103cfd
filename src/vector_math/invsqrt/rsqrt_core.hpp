// Reciprocal square root without the divider: the vector formulas of the
// InvSqrt kernels, also used by the EP square root (sqrt x = x / sqrt x).
//
// Every step is a correction of an estimate y of 1/sqrt(x) through its
// residual e = 1 - x y^2: exactly 1/sqrt(x) = y (1 - e)^(-1/2)
//   = y (1 + e/2 + 3e^2/8 + 5e^3/16 + 35e^4/128 + 63e^5/256 + 231e^6/1024 + ...),
// so a series truncated after e^N leaves a relative error of about
// a_{N+1} e^(N+1). The coefficients are exact binary fractions.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::rsqrt {

template <class T>
using V = simd::Vec<T>;

// 1/2 + 3e/8 + ... : the series after its leading 1, divided by e, N terms.
template <int N, class T>
[[gnu::always_inline]] inline V<T> series(V<T> e) {
  constexpr double kA[] = {0x1p-1, 0x3p-3, 0x5p-4, 0x23p-7, 0x3fp-8, 0xe7p-10};
  static_assert(N >= 1 && N <= 6);
  V<T> p = simd::broadcast(T(kA[N - 1]));
#pragma GCC unroll 8
  for (int k = N - 2; k >= 0; --k) p = simd::fma(p, e, simd::broadcast(T(kA[k])));
  return p;
}

// y + y e p(e): one rounding at the end, so a correct y comes out within
// 0.5 ulp plus the truncation error.
template <int N, class T>
[[gnu::always_inline]] inline V<T> correct(V<T> y, V<T> e) {
  return simd::fma(y * e, series<N, T>(e), y);
}

// Lane mask of the x whose high word (double) or bits (float) h lies outside
// [lo, hi) as unsigned numbers: one signed compare after moving lo to the
// bottom of the signed range. Negative x, zeros, subnormals, infinities and
// NaN fall outside any range of positive normal numbers.
template <class T>
inline V<T> outside(V<T> x, uint32_t lo, uint32_t hi) {
  const int32_t shift = static_cast<int32_t>(0x80000000u - lo);
  const int32_t last = static_cast<int32_t>(hi - lo - 1u + 0x80000000u);
  if constexpr (sizeof(T) == 8) {
    const __m128i biased = _mm_add_epi32(simd::high_words(x), _mm_set1_epi32(shift));
    return simd::widen_mask(_mm_cmpgt_epi32(biased, _mm_set1_epi32(last)));
  } else {
    const __m256i biased = _mm256_add_epi32(simd::bits(x), _mm256_set1_epi32(shift));
    return simd::from_bits_f(_mm256_cmpgt_epi32(biased, _mm256_set1_epi32(last)));
  }
}

// Fast ranges of the formulas below: double [2^-1022, 2^1022), where y^2 of
// the last step stays normal; float [2^-126, 2^125), likewise.
template <class T>
constexpr uint32_t kLow = sizeof(T) == 8 ? 0x00100000u : 0x00800000u;
template <class T>
constexpr uint32_t kHigh = sizeof(T) == 8 ? 0x7FD00000u : 0x7E000000u;

// First estimate of 1/sqrt(x). Double: from the bits, K - bits(x)/2, which
// halves and negates the exponent and is within 3.5% (|e| < 0.07). Float: the
// processor's estimate, within 1.5 * 2^-12 (|e| < 2^-10.4).
inline V<double> start(V<double> x) {
  const __m256i k = _mm256_set1_epi64x(0x5FE6EB50C7B537A9);
  return simd::from_bits_d(_mm256_sub_epi64(k, _mm256_srli_epi64(simd::bits(x), 1)));
}
inline V<float> start(V<float> x) { return {_mm256_rsqrt_ps(x.v)}; }

// y with its low `bits` significand bits cleared, so that y * y is exact.
template <class T>
inline V<T> truncate(V<T> y, int bits) {
  if constexpr (sizeof(T) == 8) {
    return simd::from_bits_d(_mm256_and_si256(simd::bits(y), _mm256_set1_epi64x(~((int64_t{1} << bits) - 1))));
  } else {
    return simd::from_bits_f(_mm256_and_si256(simd::bits(y), _mm256_set1_epi32(~((1 << bits) - 1))));
  }
}

// 1/sqrt(x) within 0.5 ulp + 2^-9 ulp, for x in the fast range.
//   double: e < 0.07 -> series to e^4 leaves 2^-21.2; cut to 26 bits; the
//     residual of the cut estimate is exact up to 2^-74 (y^2 exact, one fused
//     rounding), and the series to e^2 leaves 2^-62.
//   float: the estimate cut to 12 bits (|e| < 2^-9.2), then the same exact
//     residual and the series to e^2, leaving 2^-29.
template <class T>
[[gnu::always_inline]] inline V<T> accurate(V<T> x) {
  const V<T> one = simd::broadcast(T(1));
  V<T> y = start(x);
  if constexpr (sizeof(T) == 8) {
    const V<double> e0 = simd::fnma(x * y, y, one);
    y = truncate<double>(correct<4, double>(y, e0), 27);
  } else {
    y = truncate<float>(y, 12);
  }
  const V<T> e = simd::fnma(x, y * y, one);
  return correct<2, T>(y, e);
}

// 1/sqrt(x) within a relative 2^-28 (double) or 1.5 * 2^-12 (float).
//   double: one step with the series to e^6 leaves 0.21 e^7 < 2^-29.
template <class T>
[[gnu::always_inline]] inline V<T> fast(V<T> x) {
  const V<T> y = start(x);
  if constexpr (sizeof(T) == 8) {
    const V<double> e = simd::fnma(x * y, y, simd::broadcast(1.0));
    return correct<6, double>(y, e);
  } else {
    return y;
  }
}

}  // namespace oxa::vml::rsqrt
