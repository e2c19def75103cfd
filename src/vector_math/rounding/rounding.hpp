// Formulas the rounding families share (Round, Frac, Modf).
#pragma once

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::rounding {

// 2^52 (double), 2^23 (float): every number of at least this magnitude is an
// integer.
template <class T>
inline constexpr T kAllIntegral = sizeof(T) == 8 ? T(0x1p52) : T(0x1p23);

// a with the lanes of magnitude >= kAllIntegral (infinities included) set to
// zero: their discarded part is zero, and zeroing them avoids inf - inf.
template <class V>
[[gnu::always_inline]] inline V fraction_input(V a) {
  using T = typename V::Elem;
  return simd::zero_where(V(kAllIntegral<T>) <= simd::abs(a), a);
}

// a - Trunc(a) with the sign of a (exact).
template <class V>
[[gnu::always_inline]] inline V frac(V a) {
  const V x = fraction_input(a);
  return (x - simd::trunc(x)) | simd::sign_bit(a);
}

// Trunc(a) + (1 or 0, with the sign of a): 1 where the discarded part is at
// least one half.
template <class V>
[[gnu::always_inline]] inline V round_half_away(V a) {
  using T = typename V::Elem;
  const V x = fraction_input(a);
  const V one = simd::keep_where(V(T(0.5)) <= simd::abs(x - simd::trunc(x)), V(T(1)));
  return simd::trunc(a) + (one | simd::sign_bit(a));
}

}  // namespace oxa::vml::rounding
