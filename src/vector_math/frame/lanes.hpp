// Lane-mask logic and comparisons over simd::Vec, for families that build
// their special-lane masks or sign fix-ups from floating-point tests. Masks
// are vectors whose lanes are all ones or all zeros, as in simd.hpp.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::lanes {

using simd::Vec;

inline Vec<double> bit_or(Vec<double> a, Vec<double> b) { return {_mm256_or_pd(a.v, b.v)}; }
inline Vec<float> bit_or(Vec<float> a, Vec<float> b) { return {_mm256_or_ps(a.v, b.v)}; }
inline Vec<double> bit_and(Vec<double> a, Vec<double> b) { return {_mm256_and_pd(a.v, b.v)}; }
inline Vec<float> bit_and(Vec<float> a, Vec<float> b) { return {_mm256_and_ps(a.v, b.v)}; }
// a AND NOT m.
inline Vec<double> and_not(Vec<double> a, Vec<double> m) { return {_mm256_andnot_pd(m.v, a.v)}; }
inline Vec<float> and_not(Vec<float> a, Vec<float> m) { return {_mm256_andnot_ps(m.v, a.v)}; }

// Ordered comparisons: false where either lane is NaN.
inline Vec<double> eq(Vec<double> a, Vec<double> b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_EQ_OQ)}; }
inline Vec<float> eq(Vec<float> a, Vec<float> b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }
inline Vec<double> lt(Vec<double> a, Vec<double> b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline Vec<float> lt(Vec<float> a, Vec<float> b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
// Unordered "not less": true where a >= b or either lane is NaN.
inline Vec<double> nlt(Vec<double> a, Vec<double> b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_NLT_UQ)}; }
inline Vec<float> nlt(Vec<float> a, Vec<float> b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NLT_UQ)}; }

// Nearest integer, ties to even, whatever the rounding mode.
inline Vec<double> round_even(Vec<double> a) {
  return {_mm256_round_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}
inline Vec<float> round_even(Vec<float> a) {
  return {_mm256_round_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)};
}

// |a| (the sign bit cleared) and the sign bit alone.
inline Vec<double> abs(Vec<double> a) { return lanes::and_not(a, simd::broadcast(-0.0)); }
inline Vec<float> abs(Vec<float> a) { return lanes::and_not(a, simd::broadcast(-0.0f)); }
inline Vec<double> sign_bit(Vec<double> a) { return lanes::bit_and(a, simd::broadcast(-0.0)); }
inline Vec<float> sign_bit(Vec<float> a) { return lanes::bit_and(a, simd::broadcast(-0.0f)); }

}  // namespace oxa::vml::lanes

namespace oxa::vml::lanes {

// Table pairs (t[2j], t[2j + 1]) for the four 64-bit indices j: one 16-byte
// load per lane and two shuffles, cheaper than two hardware gathers.
inline void load_pairs4(const double* t, __m256i j, Vec<double>& first, Vec<double>& second) {
  const __m128i lo = _mm256_castsi256_si128(j), hi = _mm256_extracti128_si256(j, 1);
  const int64_t j0 = _mm_cvtsi128_si64(lo), j1 = _mm_extract_epi64(lo, 1);
  const int64_t j2 = _mm_cvtsi128_si64(hi), j3 = _mm_extract_epi64(hi, 1);
  const __m256d a = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(t + 2 * j0)), _mm_loadu_pd(t + 2 * j2), 1);
  const __m256d b = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(t + 2 * j1)), _mm_loadu_pd(t + 2 * j3), 1);
  first.v = _mm256_unpacklo_pd(a, b);
  second.v = _mm256_unpackhi_pd(a, b);
}

}  // namespace oxa::vml::lanes
