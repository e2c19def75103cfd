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

[[gnu::always_inline]] inline Reduced reduce(VD x, VD k_adjust) {
  const __m256i ix = simd::bits(x);
  const __m256i t = _mm256_sub_epi64(ix, _mm256_set1_epi64x(static_cast<int64_t>(kLnOffset)));
  // k = t >> 52 (arithmetic) and the row i = (t >> 45) mod 128, from the
  // high words as 32-bit lanes.
  const __m128i th = simd::high_words(simd::from_bits_d(t));
  const __m128i k = _mm_srai_epi32(th, 20);
  const __m128i row = _mm_slli_epi32(_mm_and_si128(_mm_srli_epi32(th, 13), _mm_set1_epi32(127)), 2);
  const __m256i iz = _mm256_sub_epi64(ix, _mm256_and_si256(t, _mm256_set1_epi64x(static_cast<int64_t>(0xFFF0000000000000u))));
  Reduced out;
  out.kd = VD{_mm256_cvtepi32_pd(k)} + k_adjust;
  out.z = simd::from_bits_d(iz);
  VD c[4];
  simd::gather_rows4(simd::rows4(kLnRows, row), 0, c);
  out.invc = c[0];
  out.logc_hi = c[1];
  out.logc_lo = c[2];
  return out;
}

// ln x for normal positive x, rounded to double: at most about 2 ulp for
// Deg >= 7 (r = z/c - 1 rounded, then two roundings).
template <int Deg>
[[gnu::always_inline]] inline VD ln_plain(VD x, VD k_adjust) {
  const Reduced d = reduce(x, k_adjust);
  const VD r = simd::fma(d.z, d.invc, simd::broadcast(-1.0));
  const VD w = simd::fma(d.kd, simd::broadcast(kLn2Head), d.logc_hi);  // exact
  const VD c = simd::fma(d.kd, simd::broadcast(kLn2Tail), d.logc_lo);  // below 2^-33
  const VD q = simd::fma(r * r, ln1p_coeffs<2, Deg>(r), r);
  return w + (q + c);
}

// ln x for normal positive x as hi + lo. z/c is kept exactly (two products)
// and k ln2 + ln c + r is summed without rounding, so only the terms below r
// round. kExactSquare = false: lo holds -r^2/2 + ... rounded, enough for ln
// itself (the rounding is below 2^-61 of the result), and hi + lo is not
// normalised. kExactSquare = true: -r^2/2 is split exactly as well and the
// result is normalised (|lo| <= ulp(hi)/2) with about 2^-68 relative error,
// for uses that multiply ln x by up to 709 / |ln x|.
template <int Deg, bool kExactSquare>
[[gnu::always_inline]] inline dd::DD<VD> ln_hilo(VD x, VD k_adjust) {
  const Reduced d = reduce(x, k_adjust);
  const dd::DD<VD> zc = dd::two_prod(d.z, d.invc);  // z/c exactly; zc.hi - 1 is exact
  const VD r = zc.hi - simd::broadcast(1.0);
  const VD w = simd::fma(d.kd, simd::broadcast(kLn2Head), d.logc_hi);  // exact: both on the 2^-43 grid
  const dd::DD<VD> t = dd::fast_two_sum(w, r);  // |w| >= |r| unless w = 0
  // ln1p(r + e) = ln1p(r) + e (1 - r) + O(e r^2), e = zc.lo.
  VD lo = simd::fma(d.kd, simd::broadcast(kLn2Tail), d.logc_lo) + t.lo;
  lo = simd::fnma(zc.lo, r, lo + zc.lo);
  if constexpr (!kExactSquare) {
    return {t.hi, simd::fma(r * r, ln1p_coeffs<2, Deg>(r), lo)};
  } else {
    const dd::DD<VD> r2 = dd::two_prod(r, simd::broadcast(-0.5) * r);  // -r^2/2 exactly
    const dd::DD<VD> h = dd::fast_two_sum(t.hi, r2.hi);
    lo = lo + (h.lo + r2.lo);
    lo = simd::fma(r2.hi * r, ln1p_coeffs<3, Deg>(r) * simd::broadcast(-2.0), lo);  // r^3 (1/3 - r/4 ...)
    return dd::fast_two_sum(h.hi, lo);
  }
}

// Single precision, eight float lanes: 16 rows held in registers (two lane
// permutations and a blend per column), |r| < 2^-5. z/c is kept exactly
// (p + pl) and k ln2 + ln c on the grid of 2^-12 is exact, so with
// kTwoSum the sum with r is exact too and only terms below r round: about
// 0.52 ulp. Without it (LA, EP) ln c + r rounds once more. ln1p(r) - r is
// Taylor of degree Deg: truncation 2^-29.6 relative for Deg = 5, 2^-24.5 for
// 4, 2^-17.2 for 3.
template <int Deg, bool kTwoSum>
struct LnSingle {
  using VF = simd::Vec<float>;

  [[gnu::always_inline]] static VF column(const float* t, __m256i row) {
    const __m256 lo = _mm256_permutevar8x32_ps(_mm256_load_ps(t), row);
    const __m256 hi = _mm256_permutevar8x32_ps(_mm256_load_ps(t + 8), row);
    return {_mm256_blendv_ps(lo, hi, _mm256_castsi256_ps(_mm256_slli_epi32(row, 28)))};
  }

  // ln x for normal positive floats.
  [[gnu::always_inline]] static VF eval(VF x) {
    const __m256i ix = simd::bits(x);
    const __m256i t = _mm256_sub_epi32(ix, _mm256_set1_epi32(static_cast<int32_t>(kLnOffsetf)));
    const __m256i row = _mm256_and_si256(_mm256_srli_epi32(t, 19), _mm256_set1_epi32(15));
    const VF kf{_mm256_cvtepi32_ps(_mm256_srai_epi32(t, 23))};
    const VF z = simd::from_bits_f(_mm256_sub_epi32(ix, _mm256_and_si256(t, _mm256_set1_epi32(static_cast<int32_t>(0xFF800000u)))));
    const VF invc = column(kLnInvCf, row), logc_hi = column(kLnLogCHeadf, row), logc_lo = column(kLnLogCTailf, row);
    const VF w = simd::fma(kf, simd::broadcast(kLn2Headf), logc_hi);  // exact
    const VF c = simd::fma(kf, simd::broadcast(kLn2Tailf), logc_lo);
    if constexpr (kTwoSum) {
      const VF p = z * invc;
      const VF pl = simd::fms(z, invc, p);  // z/c = p + pl exactly
      const VF r = p - simd::broadcast(1.0f);  // exact
      const dd::DD<VF> h = dd::fast_two_sum(w, r);  // |w| >= |r| unless w = 0
      VF lo = simd::fnma(pl, r, (h.lo + c) + pl);  // ln1p(r + pl) = ln1p(r) + pl (1 - r) + ...
      lo = simd::fma(r * r, poly(r), lo);
      return h.hi + lo;
    } else {
      const VF r = simd::fma(z, invc, simd::broadcast(-1.0f));
      return w + (simd::fma(r * r, poly(r), r) + c);
    }
  }

  // -1/2 + r/3 - ... up to r^(Deg-2).
  [[gnu::always_inline]] static VF poly(VF r) {
    VF q = simd::broadcast(static_cast<float>(kInvN[Deg - 2]));
#pragma GCC unroll 4
    for (int n = Deg - 1; n >= 2; --n) q = simd::fma(q, r, simd::broadcast(static_cast<float>(kInvN[n - 2])));
    return q;
  }
};

}  // namespace oxa::vml::lnc
