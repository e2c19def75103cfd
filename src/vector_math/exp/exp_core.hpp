// The vector core of e^x shared by the Exp and Powx kernels, and its scalar
// wide-range wrapper used by their special-case routines.
//
// e^x = 2^(k/N) * e^r, k = round(x N / ln2), N = 128, |r| <= ln2/256; the
// table gives 2^(j/N) = hi_j (1 + tail_j) (j = k mod N) and k div N goes
// straight into the exponent bits of hi_j. e^r - 1 is its Taylor polynomial
// of degree Deg: the truncation error r^(Deg+1)/(Deg+1)! is 2^-60.7 for
// Deg = 5, 2^-38.7 for 3, 2^-28.2 for 2, 2^-18 for 1 (relative).
#pragma once

#include <bit>
#include <cmath>
#include <cstdint>

#include "oxa/vector_math.h"
#include "vector_math/frame/runtime_value.hpp"
#include "vector_math/frame/simd.hpp"

namespace oxa::vml::expc {

#include "vector_math/exp/exp_table.inc"

using simd::Vec;

// Taylor coefficients 1/n! of e^r - r - 1, from n = 2.
inline constexpr double kInvFact[] = {0x1p-1, 0x1.5555555555555p-3, 0x1.5555555555555p-5,
                                      0x1.1111111111111p-7, 0x1.6c16c16c16c17p-10};

// e^r - 1 = r + r^2 (1/2 + r/6 + ...), Deg >= 1.
template <int Deg, class VD>
[[gnu::always_inline]] inline VD expm1_small(VD r) {
  if constexpr (Deg == 1) {
    return r;
  } else {
    VD q(kInvFact[Deg - 2]);
#pragma GCC unroll 8
    for (int j = Deg - 3; j >= 0; --j) q = simd::fma(q, r, VD(kInvFact[j]));
    return simd::fma(r * r, q, r);
  }
}

// Options: the polynomial degree; whether the table's tail is added (0.5 ulp
// better); whether the argument carries a low part x_lo (|x_lo| << ulp(x)).
template <int Deg, bool kTail, bool kHasLo>
struct Exp {
  // e^(x + x_lo) * 2^adjust for |x| <= 746, provided the result's exponent
  // stays inside the normal range (|x| < 704 for adjust = 0). Rounded once at
  // the end: 0.5 ulp + about 0.01 ulp with the tail and Deg = 5.
  template <class Isa>
  [[gnu::always_inline]] static Vec<double, Isa> eval(Vec<double, Isa> x, Vec<double, Isa> x_lo, int64_t adjust = 0) {
    using VD = Vec<double, Isa>;
    using VL = Vec<int64_t, Isa>;
    const VD shift(0x1.8p52);
    const VD kd_shifted = simd::fma(x, VD(kInvLn2N), shift);
    const VL ki = simd::bits(kd_shifted);
    const VD kd = kd_shifted - shift;
    // r = x - kd ln2/N: kd * head is exact and cancels exactly against x.
    VD r = simd::fnma(kd, VD(kLn2NHead), x);
    r = simd::fnma(kd, VD(kLn2NTail), r);
    if constexpr (kHasLo) r = r + x_lo;

    const VL j = ki & VL(kN - 1);
    // (k div N) into the exponent field, wrapping modulo 2^64 like the bits.
    const VL top = simd::shl<45>(simd::and_not(ki, VL(kN - 1))) + VL(adjust << 52);
    VD hi, tail;
    simd::load_pairs(kExp2, j, hi, tail);
    const VD scale = simd::from_bits(simd::bits(hi) + top);
    VD p = expm1_small<Deg>(r);
    if constexpr (kTail) p = p + tail;
    return simd::fma(scale, p, scale);
  }
  static constexpr int kN = 128;
};

// Single precision, eight float lanes: N = 8 and the table of 2^(j/8) (with
// its tails) lives in one register each, fetched by a lane permutation.
// |r| <= ln2/16; e^r - 1 of degree Deg in float (truncation 2^-29.6 for
// Deg = 4, 2^-16.2 for 2). The table tail is worth 0.5 ulp; float roundings
// in r and the polynomial add about 0.1 ulp.
template <int Deg, bool kTail>
struct ExpSingle {
  // e^x for |x| < 87 (the result is then a normal float).
  template <class Isa>
  [[gnu::always_inline]] static Vec<float, Isa> eval(Vec<float, Isa> x) {
    using VF = Vec<float, Isa>;
    using VI = Vec<int32_t, Isa>;
    const VF kf = simd::round_even(x * VF(kInvLn2N8f));
    VF r = simd::fnma(kf, VF(kLn2N8Headf), x);  // exact
    r = simd::fnma(kf, VF(kLn2N8Tailf), r);
    const VI ki = simd::to_int_nearest(kf);
    const VI j = ki & VI(7);
    const VI top = simd::shl<23>(simd::sar<3>(ki));
    const VF scale = simd::from_bits(simd::bits(simd::lookup8(kExp2N8Hif, j)) + top);
    VF q(static_cast<float>(kInvFact[Deg - 2]));
#pragma GCC unroll 4
    for (int n = Deg - 3; n >= 0; --n) q = simd::fma(q, r, VF(static_cast<float>(kInvFact[n])));
    VF p = simd::fma(r * r, q, r);
    if constexpr (kTail) p = p + simd::lookup8(kExp2N8Tailf, j);
    return simd::fma(scale, p, scale);
  }
};

// e^(x + x_lo) for any finite x, one lane at a time, with its status:
// VML_ERR_OVERFLOW when the result is +inf, VML_ERR_UNDERFLOW when it is
// below the smallest normal double (subnormal or zero).
template <class E>
double exp_wide(double x, double x_lo, int32_t* status) {
  *status = VML_ERR_NONE;
  double y;
  if (x > 710.0) {
    y = runtime_value(0x1p1023) * runtime_value(0x1p1023);
  } else if (x < -746.0) {
    y = runtime_value(0x1p-1022) * runtime_value(0x1p-1022);
  } else if (x > 0) {  // scale by 2^-1 inside, 2 outside: the last step alone may overflow
    double lanes[4];
    simd::store(lanes, E::eval(simd::broadcast(x), simd::broadcast(x_lo), -1));
    y = lanes[0] * 2.0;
  } else {  // scale by 2^64 inside; the last step rounds once into the subnormals
    double lanes[4];
    simd::store(lanes, E::eval(simd::broadcast(x), simd::broadcast(x_lo), 64));
    y = lanes[0] * 0x1p-64;
  }
  if (std::isinf(y)) *status = VML_ERR_OVERFLOW;
  else if (y < 0x1p-1022) *status = VML_ERR_UNDERFLOW;
  return y;
}

}  // namespace oxa::vml::expc
