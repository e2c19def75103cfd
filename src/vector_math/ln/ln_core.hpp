// The vector core of ln x shared by the Ln and Powx kernels.
//
// x = 2^k z, z in [OFF, 2 OFF) (OFF about 1/sqrt 2), row i of the table from
// the bits below the exponent; ln x = k ln2 + ln c + ln1p(r), r = z/c - 1,
// |r| < 2^-7.6, 1/c and ln c from the table (the row of 1.0 has c = 1 so that
// ln x near 1 keeps its relative precision). ln1p(r) is its Taylor polynomial
// of degree Deg: truncation r^(Deg+1)/(Deg+1) relative to r is 2^-72 for
// Deg = 9, 2^-64 for 8, 2^-56 for 7, 2^-32.7 for 4, 2^-24.8 for 3, 2^-16.8 for 2.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/simd.hpp"

namespace oxa::vml::lnc {

#include "vector_math/ln/ln_table.inc"

using VD = simd::Vec<double>;

// Coefficients (-1)^(n+1)/n of ln1p(r), from n = 2.
inline constexpr double kInvN[] = {-0x1p-1, 0x1.5555555555555p-2, -0x1p-2, 0x1.999999999999ap-3,
                                   -0x1.5555555555555p-3, 0x1.2492492492492p-3, -0x1p-3,
                                   0x1.c71c71c71c71cp-4};

// c_From + c_(From+1) r + ... + c_Deg r^(Deg-From).
template <int From, int Deg>
[[gnu::always_inline]] inline VD ln1p_coeffs(VD r) {
  VD q = simd::broadcast(kInvN[Deg - 2]);
#pragma GCC unroll 8
  for (int n = Deg - 1; n >= From; --n) q = simd::fma(q, r, simd::broadcast(kInvN[n - 2]));
  return q;
}

// Reduction of normal positive x: k (as double, plus k_adjust), the row's
// values and z.
struct Reduced {
  VD kd, z, invc, logc_hi, logc_lo;
};

template <bool kNeedTail>
[[gnu::always_inline]] inline Reduced reduce(VD x, VD k_adjust) {
  const __m256i ix = simd::bits(x);
  const __m256i t = _mm256_sub_epi64(ix, _mm256_set1_epi64x(static_cast<int64_t>(kLnOffset)));
  const __m256i i = _mm256_and_si256(_mm256_srli_epi64(t, 45), _mm256_set1_epi64x(127));
  // k = t >> 52 (arithmetic): from the high words, as 32-bit lanes.
  const __m128i k = _mm_srai_epi32(simd::high_words(simd::from_bits_d(t)), 20);
  const __m256i iz = _mm256_sub_epi64(ix, _mm256_and_si256(t, _mm256_set1_epi64x(static_cast<int64_t>(0xFFF0000000000000u))));
  Reduced out;
  out.kd = VD{_mm256_cvtepi32_pd(k)} + k_adjust;
  out.z = simd::from_bits_d(iz);
  out.invc = VD{_mm256_i64gather_pd(kLnInvC, i, 8)};
  out.logc_hi = VD{_mm256_i64gather_pd(kLnLogCHead, i, 8)};
  if constexpr (kNeedTail) out.logc_lo = VD{_mm256_i64gather_pd(kLnLogCTail, i, 8)};
  return out;
}

// ln x for normal positive x, rounded to double: at most about 2 ulp for
// Deg >= 7 (three roundings and a small polynomial error).
template <int Deg>
[[gnu::always_inline]] inline VD ln_plain(VD x, VD k_adjust) {
  const Reduced d = reduce<false>(x, k_adjust);
  const VD r = simd::fma(d.z, d.invc, simd::broadcast(-1.0));
  const VD w = simd::fma(d.kd, simd::broadcast(kLn2Head + kLn2Tail), d.logc_hi);
  const VD q = simd::fma(r * r, ln1p_coeffs<2, Deg>(r), r);
  return w + q;
}

// ln x for normal positive x as a double-double hi + lo, |lo| <= ulp(hi)/2,
// with about 2^-66 relative error: z/c is kept exactly (two products), the
// leading terms k ln2 + ln c + r - r^2/2 are summed without rounding, only
// r^3 (1/3 - r/4 + ...) and the low parts are rounded.
template <int Deg>
[[gnu::always_inline]] inline dd::DD<VD> ln_dd(VD x, VD k_adjust) {
  const Reduced d = reduce<true>(x, k_adjust);
  const dd::DD<VD> zc = dd::two_prod(d.z, d.invc);  // z/c exactly; zc.hi - 1 is exact
  const VD r = zc.hi - simd::broadcast(1.0);
  const dd::DD<VD> w = dd::two_sum(d.kd * simd::broadcast(kLn2Head), d.logc_hi);  // k * head exact
  const dd::DD<VD> t = dd::fast_two_sum(w.hi, r);  // |w.hi| >= |r| unless w.hi = 0
  const VD ar = simd::broadcast(-0.5) * r;
  const dd::DD<VD> r2 = dd::two_prod(r, ar);  // -r^2/2 exactly
  const dd::DD<VD> h = dd::fast_two_sum(t.hi, r2.hi);
  // ln1p(r + e) = ln1p(r) + e (1 - r) + O(e r^2), e = zc.lo.
  VD lo = simd::fma(d.kd, simd::broadcast(kLn2Tail), d.logc_lo + w.lo);
  lo = lo + (t.lo + h.lo + r2.lo);
  lo = simd::fnma(zc.lo, r, lo + zc.lo);
  lo = simd::fma(r2.hi * r, ln1p_coeffs<3, Deg>(r) * simd::broadcast(-2.0), lo);
  return dd::fast_two_sum(h.hi, lo);
}

}  // namespace oxa::vml::lnc
