// The vector core of ln x shared by the Ln and Powx kernels.
//
// x = 2^k z, z in [OFF, 2 OFF) (OFF about 1/sqrt 2), row i of the table from
// the bits below the exponent; ln x = k ln2 + ln c + ln1p(r), r = z/c - 1,
// |r| < 2^-7.6, 1/c and ln c from the table (the row of 1.0 has c = 1 so that
// ln x near 1 keeps its relative precision). ln1p(r) is its Taylor polynomial
// of degree Deg: truncation r^(Deg+1)/(Deg+1) relative to r is 2^-72 for
// Deg = 9, 2^-64 for 8, 2^-56 for 7, 2^-32.7 for 4, 2^-24.8 for 3, 2^-16.8 for 2.
#pragma once

#include <cstdint>

#include <type_traits>

#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/poly.hpp"
#include "vector_math/frame/simd.hpp"

namespace oxa::vml::lnc {

#include "vector_math/ln/ln_table.inc"

using simd::Vec;

// Coefficients (-1)^(n+1)/n of ln1p(r), from n = 2.
inline constexpr double kInvN[] = {-0x1p-1, 0x1.5555555555555p-2, -0x1p-2, 0x1.999999999999ap-3,
                                   -0x1.5555555555555p-3, 0x1.2492492492492p-3, -0x1p-3,
                                   0x1.c71c71c71c71cp-4};

// c_From + c_(From+1) r + ... + c_Deg r^(Deg-From).
// Estrin's scheme: the chain of a long Horner scheme bounds the speed.
template <int From, int Deg, class V>
[[gnu::always_inline]] inline V ln1p_coeffs(V r) {
  using E = typename V::Elem;
  V c[Deg - From + 1];
#pragma GCC unroll 8
  for (int n = From; n <= Deg; ++n) c[n - From] = V(static_cast<E>(kInvN[n - 2]));
  return poly::estrin<Deg - From + 1>(c, r);
}

// Reduction of normal positive x: k (as double, plus k_adjust), the row's
// values and z.
template <class VD>
struct Reduced {
  VD kd, z, invc, logc_hi, logc_lo;
};

template <class Isa>
[[gnu::always_inline]] inline Reduced<Vec<double, Isa>> reduce(Vec<double, Isa> x, Vec<double, Isa> k_adjust) {
  using VD = Vec<double, Isa>;
  using VL = Vec<int64_t, Isa>;
  using VH = Vec<int32_t, simd::Half<Isa>>;
  const VL ix = simd::bits(x);
  const VL t = ix - VL(static_cast<int64_t>(kLnOffset));
  // k = t >> 52 (arithmetic) and the row i = (t >> 45) mod 128, from the
  // high words as 32-bit lanes.
  const VH th = simd::high_words(simd::from_bits(t));
  const VH k = simd::sar<20>(th);
  const VH row = simd::shl<2>(simd::shr<13>(th) & VH(127));
  const VL iz = ix - (t & VL(static_cast<int64_t>(0xFFF0000000000000u)));
  Reduced<VD> out;
  out.kd = simd::to_double(k) + k_adjust;
  out.z = simd::from_bits(iz);
  VD c[4];
  simd::gather_columns(simd::row_pointers(kLnRows, row), 0, c);
  out.invc = c[0];
  out.logc_hi = c[1];
  out.logc_lo = c[2];
  return out;
}

// ln x for normal positive x, rounded to double: at most about 2 ulp for
// Deg >= 7 (r = z/c - 1 rounded, then two roundings).
template <int Deg, class VD>
[[gnu::always_inline]] inline VD ln_plain(VD x, VD k_adjust) {
  const Reduced<VD> d = reduce(x, k_adjust);
  const VD r = simd::fma(d.z, d.invc, VD(-1.0));
  const VD w = simd::fma(d.kd, VD(kLn2Head), d.logc_hi);  // exact
  const VD c = simd::fma(d.kd, VD(kLn2Tail), d.logc_lo);  // below 2^-33
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
template <int Deg, bool kExactSquare, class VD>
[[gnu::always_inline]] inline dd::DD<VD> ln_hilo(VD x, VD k_adjust) {
  const Reduced<VD> d = reduce(x, k_adjust);
  const dd::DD<VD> zc = dd::two_prod(d.z, d.invc);  // z/c exactly; zc.hi - 1 is exact
  const VD r = zc.hi - VD(1.0);
  const VD w = simd::fma(d.kd, VD(kLn2Head), d.logc_hi);  // exact: both on the 2^-43 grid
  const dd::DD<VD> t = dd::fast_two_sum(w, r);  // |w| >= |r| unless w = 0
  // ln1p(r + e) = ln1p(r) + e (1 - r) + O(e r^2), e = zc.lo.
  VD lo = simd::fma(d.kd, VD(kLn2Tail), d.logc_lo) + t.lo;
  lo = simd::fnma(zc.lo, r, lo + zc.lo);
  if constexpr (!kExactSquare) {
    return {t.hi, simd::fma(r * r, ln1p_coeffs<2, Deg>(r), lo)};
  } else {
    const dd::DD<VD> r2 = dd::two_prod(r, VD(-0.5) * r);  // -r^2/2 exactly
    const dd::DD<VD> h = dd::fast_two_sum(t.hi, r2.hi);
    lo = lo + (h.lo + r2.lo);
    lo = simd::fma(r2.hi * r, ln1p_coeffs<3, Deg>(r) * VD(-2.0), lo);  // r^3 (1/3 - r/4 ...)
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
  // ln x for normal positive floats.
  template <class Isa>
  [[gnu::always_inline]] static Vec<float, Isa> eval(Vec<float, Isa> x) {
    using VF = Vec<float, Isa>;
    using VI = Vec<int32_t, Isa>;
    const VI ix = simd::bits(x);
    const VI t = ix - VI(static_cast<int32_t>(kLnOffsetf));
    const VI row = simd::shr<19>(t) & VI(15);
    const VF kf = simd::to_float(simd::sar<23>(t));
    const VF z = simd::from_bits(ix - (t & VI(static_cast<int32_t>(0xFF800000u))));
    const VF invc = simd::lookup16(kLnInvCf, row), logc_hi = simd::lookup16(kLnLogCHeadf, row),
             logc_lo = simd::lookup16(kLnLogCTailf, row);
    const VF w = simd::fma(kf, VF(kLn2Headf), logc_hi);  // exact
    const VF c = simd::fma(kf, VF(kLn2Tailf), logc_lo);
    if constexpr (kTwoSum) {
      const VF p = z * invc;
      const VF pl = simd::fms(z, invc, p);  // z/c = p + pl exactly
      const VF r = p - VF(1.0f);  // exact
      const dd::DD<VF> h = dd::fast_two_sum(w, r);  // |w| >= |r| unless w = 0
      VF lo = simd::fnma(pl, r, (h.lo + c) + pl);  // ln1p(r + pl) = ln1p(r) + pl (1 - r) + ...
      lo = simd::fma(r * r, poly(r), lo);
      return h.hi + lo;
    } else {
      const VF r = simd::fma(z, invc, VF(-1.0f));
      return w + (simd::fma(r * r, poly(r), r) + c);
    }
  }

  // -1/2 + r/3 - ... up to r^(Deg-2).
  template <class VF>
  [[gnu::always_inline]] static VF poly(VF r) { return ln1p_coeffs<2, Deg>(r); }
};

}  // namespace oxa::vml::lnc
