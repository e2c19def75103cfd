// The common evaluation of the Sin, Cos, SinCos and Tan kernels, and the
// kernel policy the four families share.
//
// Vector formulas, for 2^-27 <= |x| < 2^30 (single: 2^-12 <= |x| < 2^30):
//   * by pi/2 (evaluate): k = nearest integer to x 2/pi, r = x - k pi/2 with
//     pi/2 = P1 + P2 + P3; x - k P1 is exact (fma), so r keeps full relative
//     precision where x is close to a multiple of pi/2 (|r| >= 2^-61 for every
//     double). Quadrant k mod 4 picks +-sin r or +-cos r; tan is sin/cos or
//     -cos/sin. SinCos at every level, Tan at HA; HA carries r, sin r and
//     cos r in two parts.
//   * by pi (sin_by_pi, sin_by_pi_ha): Sin and Cos, one odd polynomial.
//   * rational (tan_rational): Tan below HA, one division.
//   Single HA runs in double on each half of the vector; single LA and EP stay
//   in float while every |x| < 2^12, else run in double.
// Everything else goes to trig_rare (trig_rare.cpp), which reduces huge
// arguments exactly (reduce_pio2d.cpp).
#pragma once

#include <cstdint>
#include <type_traits>

#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/kernel.hpp"
#include "vector_math/frame/poly.hpp"
#include "vector_math/frame/simd.hpp"
#include "vector_math/trig/trig.hpp"

namespace oxa::vml::trig {

#include "vector_math/trig/trig_tables.inc"

using simd::Mask;
using simd::Vec;

template <class V>
[[gnu::always_inline]] inline V splat(double c) {
  if constexpr (std::is_same_v<V, double>)
    return c;
  else
    return V(c);
}

template <int N, class V>
[[gnu::always_inline]] inline V poly_at(const double* c, V z) {
  V k[N];
#pragma GCC unroll 8
  for (int j = 0; j < N; ++j) k[j] = splat<V>(c[j]);
  return poly::horner<N>(k, z);
}

template <class V>
struct SinCosDD {
  dd::DD<V> s, c;
};

// sin and cos of r = rh + rl (|rl| <= ulp(rh)/2) as double-doubles; relative
// error about 2^-58, so that the rounded heads are within about 0.6 ulp.
template <const TrigPoly& P, class V>
[[gnu::always_inline]] inline SinCosDD<V> sincos_dd(V rh, V rl) {
  const dd::DD<V> z = dd::two_prod(rh, rh);
  // sin: rh + rh z S(z) + rl cos rh, with rh z and S(0) kept in two parts.
  const dd::DD<V> p = dd::two_prod(rh, z.hi);
  const V s_rest = poly_at<P.n_sin - 1>(P.s + 1, z.hi);
  const V s0 = splat<V>(P.s[0]);
  V small = p.hi * z.hi * s_rest;
  small = simd::fma(rl, simd::fnma(splat<V>(0.5), z.hi, splat<V>(1.0)), small);
  small = simd::fma(simd::fma(rh, z.lo, p.lo), s0, small);
  small = simd::fma(p.hi, splat<V>(P.s0_lo), small);
  const dd::DD<V> s = dd::fast_two_sum(rh, simd::fma(p.hi, s0, small));
  // cos: 1 - z/2 (head exact as w + corr) + z^2 C(z) - z.lo/2 - rh rl.
  const V hz = splat<V>(0.5) * z.hi;
  const V w = splat<V>(1.0) - hz;
  const V corr = (splat<V>(1.0) - w) - hz;
  const V c_tail = simd::fms(z.hi * z.hi, poly_at<P.n_cos>(P.c, z.hi),
                             simd::fma(splat<V>(0.5), z.lo, rh * rl));
  const dd::DD<V> c = dd::fast_two_sum(w, corr + c_tail);
  return {s, c};
}

// base - m (p2 + p3) in two parts, base being x - m P1 (exact) in two parts.
// base.hi - rh is exact while |m p2| <= |rh|/2, which holds for |rh| >= 2^-23
// when m < 2^29 and p2 < 2^-52; vectors with a smaller |rh| (arguments within
// 2^-23 of a multiple of pi/2, rare) take the exact sums instead.
template <class VD>
[[gnu::always_inline]] inline dd::DD<VD> reduce_dd(VD m, dd::DD<VD> base, VD p2, VD p3) {
  const VD rh = simd::fnma(m, p2, base.hi);
  const VD rl = simd::fnma(m, p3, simd::fnma(m, p2, base.hi - rh) + base.lo);
  if (simd::any(simd::abs(rh) < VD(0x1p-23))) [[unlikely]] {
    const dd::DD<VD> mp2 = dd::two_prod(m, p2);
    const dd::DD<VD> d = dd::two_sum(base.hi, VD(0.0) - mp2.hi);
    return dd::fast_two_sum(d.hi, simd::fnma(m, p3, (d.lo - mp2.lo) + base.lo));
  }
  return {rh, rl};
}

template <class V>
struct SinCos1 {
  V s, c;
};

// sin and cos of a double r, within about 1 ulp each.
template <const TrigPoly& P, class V>
[[gnu::always_inline]] inline SinCos1<V> sincos_1(V r) {
  const V z = r * r;
  const V s = simd::fma(r * z, poly_at<P.n_sin>(P.s, z), r);
  const V hz = splat<V>(0.5) * z;
  const V w = splat<V>(1.0) - hz;
  const V c = w + (((splat<V>(1.0) - w) - hz) + z * z * poly_at<P.n_cos>(P.c, z));
  return {s, c};
}

template <class T, Acc A>
constexpr const TrigPoly& poly_of() {
  if constexpr (std::is_same_v<T, double>)
    return A == Acc::HA ? kPolyDoubleHA : A == Acc::LA ? kPolyDoubleLA : kPolyDoubleEP;
  else
    return A == Acc::EP ? kPolySingleEP : kPolySingleHA;
}

// The sign of x flipped where `sign` has its sign bit set.
template <class V, class VI>
[[gnu::always_inline]] inline V flip(V x, VI sign) { return simd::from_bits(simd::bits(x) ^ sign); }
template <class VL>
[[gnu::always_inline]] inline VL odd_mask(VL q) { return simd::shl<63>(q); }  // sign bit = k odd
template <class VL>
[[gnu::always_inline]] inline VL sign_of(VL q) { return simd::shl<63>(simd::shr<1>(q)); }  // k & 2

// The outputs of four doubles (o2 only for SinCos). HA is the only level
// that carries the remainder and the results in two parts.
template <TrigOut Out, class T, Acc A, class Isa>
[[gnu::always_inline]] inline void evaluate(Vec<double, Isa> x, Vec<double, Isa>& o1, Vec<double, Isa>& o2) {
  using VD = Vec<double, Isa>;
  using VL = Vec<int64_t, Isa>;
  constexpr const TrigPoly& P = poly_of<T, A>();
  constexpr bool kTwoPart = std::is_same_v<T, double> && A == Acc::HA;
  const VD magic(0x1.8p52);
  const VD t = simd::fma(x, VD(kTwoOverPi), magic);
  const VD k = t - magic;
  const VL q = simd::bits(t);  // low bits: k mod 2^51, two's complement
  const VL q1 = q + VL(1);  // cos x = sin(x + pi/2)

  VD s, c, sl, cl;
  if constexpr (kTwoPart) {
    const VD r1 = simd::fnma(k, VD(kPio2_1), x);  // exact
    const dd::DD<VD> r = reduce_dd(k, {r1, VD(0.0)}, VD(kPio2_2), VD(kPio2_3));
    const SinCosDD<VD> sc = sincos_dd<P>(r.hi, r.lo);
    s = sc.s.hi, sl = sc.s.lo, c = sc.c.hi, cl = sc.c.lo;
  } else {
    const VD r = simd::fnma(k, VD(kPio2_3), simd::fnma(k, VD(kPio2_2), simd::fnma(k, VD(kPio2_1), x)));
    const SinCos1<VD> sc = sincos_1<P>(r);
    s = sc.s, c = sc.c;
  }

  if constexpr (Out == TrigOut::Sin || Out == TrigOut::SinCos) {
    const Mask<double, Isa> odd = simd::sign_mask(simd::from_bits(odd_mask(q)));
    o1 = flip(simd::select(odd, s, c), sign_of(q));
  }
  if constexpr (Out == TrigOut::Cos) {
    const Mask<double, Isa> odd = simd::sign_mask(simd::from_bits(odd_mask(q1)));
    o1 = flip(simd::select(odd, s, c), sign_of(q1));
  }
  if constexpr (Out == TrigOut::SinCos) {
    const Mask<double, Isa> odd = simd::sign_mask(simd::from_bits(odd_mask(q1)));
    o2 = flip(simd::select(odd, s, c), sign_of(q1));
  }
  if constexpr (Out == TrigOut::Tan) {
    // Even k: sin r / cos r; odd k: -cos r / sin r.
    const Mask<double, Isa> odd = simd::sign_mask(simd::from_bits(odd_mask(q)));
    const VD num = simd::select(odd, s, c), den = simd::select(odd, c, s);
    VD quot = num / den;
    if constexpr (kTwoPart) {
      // One correction step with the low parts: error about 0.5 ulp + 2^-55 rel.
      const VD num_lo = simd::select(odd, sl, cl), den_lo = simd::select(odd, cl, sl);
      const VD e = simd::fnma(quot, den, num) + simd::fnma(quot, den_lo, num_lo);
      // The correction needs only a few bits of 1/den: a float reciprocal.
      const VD inv = simd::promote(simd::rcp_estimate(simd::demote(den)));
      quot = simd::fma(e, inv, quot);
    }
    o1 = flip(quot, odd_mask(q));
  }
}

// Sin and Cos by reduction modulo pi and one odd polynomial (the LA and EP
// levels, and single HA in double): x = n pi + r, sin x = (-1)^n sin r; for
// cos, x = (n + 1/2) pi + r and cos x = -(-1)^n sin r. |r| <= pi/2, so
// sin r = r + r z S(z) has a tail of up to 0.41 r: about 1.5 ulp in double.
template <class E>
struct PiSteps;
template <>
struct PiSteps<double> {
  static constexpr double kMagic = 0x1.8p52, kInv = kInvPi;
  static constexpr double kP1 = 2 * kPio2_1, kP2 = 2 * kPio2_2, kP3 = 2 * kPio2_3;
};
template <>
struct PiSteps<float> {
  static constexpr float kMagic = 0x1.8p23f, kInv = kInvPiF;
  static constexpr float kP1 = kPiF_1, kP2 = kPiF_2, kP3 = kPiF_3;
};

// Sign bit set where the integer in the low bits of t (plus `add`) is odd.
template <class V>
[[gnu::always_inline]] inline auto parity(V t, int add) {
  using VI = decltype(simd::bits(t));
  using I = typename VI::Elem;
  return simd::shl<8 * sizeof(I) - 1>(simd::bits(t) + VI(static_cast<I>(add)));
}

// t = magic + n, n the nearest integer to x/pi (cos: to x/pi - 1/2); the low
// bits of t hold n for the sign.
template <bool kCos, class V>
[[gnu::always_inline]] inline V round_by_pi(V x) {
  using E = typename V::Elem;
  using S = PiSteps<E>;
  if constexpr (kCos)
    return simd::fms(x, V(S::kInv), V(E(0.5))) + V(S::kMagic);
  else
    return simd::fma(x, V(S::kInv), V(S::kMagic));
}

template <bool kCos, int N, class V, class C>
[[gnu::always_inline]] inline V sin_by_pi(V x, const C* coef) {
  using E = typename V::Elem;
  using S = PiSteps<E>;
  const V t = round_by_pi<kCos>(x);
  V n = t - V(S::kMagic);
  if constexpr (kCos) n = n + V(E(0.5));
  // x - n P1 is exact; the later steps round once each.
  const V r = simd::fnma(n, V(S::kP3), simd::fnma(n, V(S::kP2), simd::fnma(n, V(S::kP1), x)));
  const V z = r * r;
  V k[N];
#pragma GCC unroll 12
  for (int j = 0; j < N; ++j) k[j] = V(static_cast<E>(coef[j]));
  const V s = simd::fma(r * z, poly::horner<N>(k, z), r);
  return flip(s, parity(t, kCos ? 1 : 0));
}

// Sin and Cos at HA by reduction modulo pi: r = rh + rl carried in two parts,
// sin r = r + r z S(z) with r z S(0) formed exactly and added to rh in two
// parts; the rest of the tail (up to 0.08 near |r| = pi/2) rounds a few
// times: within 0.83 ulp where the result is close to +-1, 0.6 elsewhere.
// Cos works on |x|, so that x - n P1 stays exact where n = 0.
template <bool kCos, class VD>
[[gnu::always_inline]] inline VD sin_by_pi_ha(VD x) {
  using S = PiSteps<double>;
  if constexpr (kCos) x = simd::abs(x);
  const VD t = round_by_pi<kCos>(x);
  const VD n = t - VD(S::kMagic);
  const VD m = kCos ? n + VD(0.5) : n;  // x = m pi + r
  // base = x - n P1 - (cos: P1/2), exactly, in two parts.
  const VD a = simd::fnma(n, VD(S::kP1), x);
  dd::DD<VD> base{a, VD(0.0)};
  if constexpr (kCos) base = dd::two_sum(a, VD(-kPio2_1));
  const dd::DD<VD> r = reduce_dd(m, base, VD(S::kP2), VD(S::kP3));
  const VD rh = r.hi, rl = r.lo;

  const dd::DD<VD> z = dd::two_prod(rh, rh);
  const dd::DD<VD> p = dd::two_prod(rh, z.hi);
  const VD s0(kSinPiDoubleHA[0]);
  VD k[9];
#pragma GCC unroll 9
  for (int j = 0; j < 9; ++j) k[j] = VD(kSinPiDoubleHA[j + 1]);
  // rl cos rh, with cos rh ~ 1 - z/2 + z^2/24 (enough: rl is below ulp(rh)).
  const VD cos_rh = simd::fma(z.hi, simd::fma(z.hi, VD(1.0 / 24), VD(-0.5)), VD(1.0));
  VD small = p.hi * z.hi * poly::horner<9>(k, z.hi);
  small = simd::fma(simd::fma(rh, z.lo, p.lo), s0, small);
  small = simd::fma(p.hi, VD(kSinPiDoubleHAS0Lo), small);
  small = simd::fma(rl, cos_rh, small);
  const dd::DD<VD> lead = dd::two_prod(p.hi, s0);
  const dd::DD<VD> sum = dd::fast_two_sum(rh, lead.hi);
  const VD sv = sum.hi + (sum.lo + (lead.lo + small));
  return flip(sv, parity(t, kCos ? 1 : 0));
}

// Tan below HA: x = k pi/2 + r, tan r = r P(z) / Q(z) (rational fit), and
// for odd k, tan x = -1/tan r = -Q / (r P): one division either way.
template <int M, int N, class V, class C>
[[gnu::always_inline]] inline V tan_rational(V x, const C* p, const C* q) {
  using E = typename V::Elem;
  using S = PiSteps<E>;
  const V magic(S::kMagic);
  const V t = simd::fma(x, V(E(2 * S::kInv)), magic);
  const V k = t - magic;
  const V r = simd::fnma(k, V(E(S::kP3 / 2)), simd::fnma(k, V(E(S::kP2 / 2)), simd::fnma(k, V(E(S::kP1 / 2)), x)));
  const V z = r * r;
  V pk[M], qk[N];
#pragma GCC unroll 8
  for (int j = 0; j < M; ++j) pk[j] = V(static_cast<E>(p[j]));
#pragma GCC unroll 8
  for (int j = 0; j < N; ++j) qk[j] = V(static_cast<E>(q[j]));
  // r P(z) as r p0 + r z P'(z): one rounding where p0 = 1.
  const V num = simd::fma(r * z, poly::horner<M - 1>(pk + 1, z), r * pk[0]);
  const V den = poly::horner<N>(qk, z);
  const auto odd = parity(t, 0);
  const auto m = simd::sign_mask(simd::from_bits(odd));
  return flip(simd::select(m, num, den) / simd::select(m, den, num), odd);
}

// Single SinCos below HA, in float (|x| < 2^12): reduction by pi/2 and both
// polynomials, as the double formula of sincos_1.
template <int NS, int NC, class VF>
[[gnu::always_inline]] inline void sincos_float(VF x, const float* sc, const float* cc, VF& sin_out, VF& cos_out) {
  using S = PiSteps<float>;
  using VI = decltype(simd::bits(x));
  const VF magic(S::kMagic);
  const VF t = simd::fma(x, VF(2 * S::kInv), magic);
  const VF k = t - magic;
  const VF r = simd::fnma(k, VF(S::kP3 / 2), simd::fnma(k, VF(S::kP2 / 2), simd::fnma(k, VF(S::kP1 / 2), x)));
  const VF z = r * r;
  VF ks[NS], kc[NC];
#pragma GCC unroll 4
  for (int j = 0; j < NS; ++j) ks[j] = VF(sc[j]);
#pragma GCC unroll 4
  for (int j = 0; j < NC; ++j) kc[j] = VF(cc[j]);
  const VF s = simd::fma(r * z, poly::horner<NS>(ks, z), r);
  const VF hz = VF(0.5f) * z;
  const VF w = VF(1.0f) - hz;
  const VF c = w + (((VF(1.0f) - w) - hz) + z * z * poly::horner<NC>(kc, z));
  const VI odd = parity(t, 0), odd1 = parity(t, 1);
  const VI neg = simd::shl<31>(simd::shr<1>(simd::bits(t)));
  const VI neg1 = simd::shl<31>(simd::shr<1>(simd::bits(t) + VI(1)));
  sin_out = flip(simd::select(simd::sign_mask(simd::from_bits(odd)), s, c), neg);
  cos_out = flip(simd::select(simd::sign_mask(simd::from_bits(odd1)), s, c), neg1);
}

// The policy of the four families; a family adds only its scalar routine.
template <TrigOut Out, class T, Acc A>
struct TrigPolicy {
  static constexpr T kSafeInput = T(0.5);
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr bool kByPi = Out == TrigOut::Sin || Out == TrigOut::Cos;
  static constexpr bool kCos = Out == TrigOut::Cos;
  static constexpr bool kTan = Out == TrigOut::Tan;

  // Special: |x| >= 2^30, infinities, NaN, and |x| below 2^-27 (single:
  // 2^-12), where sin x = tan x = x and cos x = 1 after rounding and the
  // sign of a zero (also a flushed denormal) must be kept. Two compares on
  // |x|; NaN fails "less than" and so is special.
  template <class Isa>
  static Mask<T, Isa> special(Vec<T, Isa> x) {
    using V = Vec<T, Isa>;
    const V ax = simd::abs(x);
    return simd::nlt(ax, V(T(0x1p30))) | (ax < V(kDouble ? T(0x1p-27) : T(0x1p-12)));
  }

  // Single precision, one half of the vector at a time in double.
  template <class Isa>
  [[gnu::always_inline]] static void halves(Vec<float, Isa> x, Vec<float, Isa>& r1, Vec<float, Isa>& r2) {
    Vec<double, Isa> lo1, lo2, hi1, hi2;
    const Vec<double, Isa> lo = simd::widen_low(x), hi = simd::widen_high(x);
    if constexpr (kByPi) {
      lo1 = sin_by_pi<kCos, 5>(lo, kSinPiSingleHA);
      hi1 = sin_by_pi<kCos, 5>(hi, kSinPiSingleHA);
    } else if constexpr (kTan) {
      lo1 = tan_rational<3, 3>(lo, kTanSingleHAP, kTanSingleHAQ);
      hi1 = tan_rational<3, 3>(hi, kTanSingleHAP, kTanSingleHAQ);
    } else {
      evaluate<Out, T, A>(lo, lo1, lo2);
      evaluate<Out, T, A>(hi, hi1, hi2);
    }
    r1 = simd::narrow(lo1, hi1);
    if constexpr (Out == TrigOut::SinCos) r2 = simd::narrow(lo2, hi2);
  }

  template <class Isa>
  [[gnu::always_inline]] static void both(Vec<T, Isa> x, Vec<T, Isa>& r1, Vec<T, Isa>& r2) {
    if constexpr (kDouble) {
      if constexpr (kByPi && A == Acc::HA) {
        r1 = sin_by_pi_ha<kCos>(x);
      } else if constexpr (kByPi) {
        if constexpr (A == Acc::LA)
          r1 = sin_by_pi<kCos, 9>(x, kSinPiDoubleLA);
        else
          r1 = sin_by_pi<kCos, 5>(x, kSinPiDoubleEP);
      } else if constexpr (kTan && A != Acc::HA) {
        if constexpr (A == Acc::LA)
          r1 = tan_rational<4, 4>(x, kTanDoubleLAP, kTanDoubleLAQ);
        else
          r1 = tan_rational<3, 3>(x, kTanDoubleEPP, kTanDoubleEPQ);
      } else {
        evaluate<Out, T, A>(x, r1, r2);
      }
    } else if constexpr (Out == TrigOut::SinCos && A != Acc::HA) {
      if (simd::any(simd::abs(x) >= Vec<T, Isa>(0x1p12f))) return halves(x, r1, r2);
      if constexpr (A == Acc::LA)
        sincos_float<3, 3>(x, kSinCosSingleLASin, kSinCosSingleLACos, r1, r2);
      else
        sincos_float<2, 2>(x, kSinCosSingleEPSin, kSinCosSingleEPCos, r1, r2);
    } else if constexpr ((kByPi || kTan) && A != Acc::HA) {
      // In float while every |x| < 2^12 (k < 1304: the float steps of pi keep
      // r within 2^-24 relative), else in double.
      if (simd::any(simd::abs(x) >= Vec<T, Isa>(0x1p12f))) return halves(x, r1, r2);
      if constexpr (kTan && A == Acc::LA)
        r1 = tan_rational<3, 3>(x, kTanSingleLAP, kTanSingleLAQ);
      else if constexpr (kTan)
        r1 = tan_rational<2, 2>(x, kTanSingleEPP, kTanSingleEPQ);
      else if constexpr (A == Acc::LA)
        r1 = sin_by_pi<kCos, 4>(x, kSinPiSingleLA);
      else
        r1 = sin_by_pi<kCos, 3>(x, kSinPiSingleEP);
    } else {
      halves(x, r1, r2);
    }
  }

  template <class Isa>
  [[gnu::always_inline]] static Vec<T, Isa> vector(Vec<T, Isa> x) {
    Vec<T, Isa> r1, r2;
    both(x, r1, r2);
    return r1;
  }
  template <class Isa>
  [[gnu::always_inline]] static void vector(Vec<T, Isa> x, Vec<T, Isa>& r1, Vec<T, Isa>& r2) {
    both(x, r1, r2);
  }
};

}  // namespace oxa::vml::trig
