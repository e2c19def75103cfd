// Reciprocal square root without the divider: the vector formulas of the
// InvSqrt kernels; the EP square root uses its estimate.
//
// Every step is a correction of an estimate y of 1/sqrt(x) through its
// residual e = 1 - x y^2: exactly 1/sqrt(x) = y (1 - e)^(-1/2)
//   = y (1 + e/2 + 3e^2/8 + 5e^3/16 + 35e^4/128 + 63e^5/256 + 231e^6/1024 + ...),
// so a series truncated after e^N leaves a relative error of about
// a_{N+1} e^(N+1). The coefficients are exact binary fractions.
#pragma once

#include <cstdint>

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::rsqrt {

// 1/2 + 3e/8 + ... : the series after its leading 1, divided by e, N terms.
template <int N, class V>
[[gnu::always_inline]] inline V series(V e) {
  using T = typename V::Elem;
  constexpr double kA[] = {0x1p-1, 0x3p-3, 0x5p-4, 0x23p-7, 0x3fp-8, 0xe7p-10};
  static_assert(N >= 1 && N <= 6);
  V p{T(kA[N - 1])};
#pragma GCC unroll 8
  for (int k = N - 2; k >= 0; --k) p = simd::fma(p, e, V(T(kA[k])));
  return p;
}

// y + y e p(e): one rounding at the end, so a correct y comes out within
// 0.5 ulp plus the truncation error.
template <int N, class V>
[[gnu::always_inline]] inline V correct(V y, V e) {
  return simd::fma(y * e, series<N>(e), y);
}

// Lane mask of the x whose high word (double) or bits (float) h lies outside
// [lo, hi) as unsigned numbers: one add moves lo to the bottom of the signed
// range, one signed compare finds the rest. Negative x, zeros, subnormals,
// infinities and NaN fall outside any range of positive normal numbers.
template <class T, class Isa>
inline simd::Mask<T, Isa> outside(simd::Vec<T, Isa> x, uint32_t lo, uint32_t hi) {
  using VI = simd::Vec<simd::IntOf<T>, Isa>;
  if constexpr (sizeof(T) == 8) {
    const uint64_t lo64 = uint64_t{lo} << 32, hi64 = uint64_t{hi} << 32, sign = uint64_t{1} << 63;
    const VI biased = simd::bits(x) + VI(static_cast<int64_t>(sign - lo64));
    return simd::mask_cast<T>(biased > VI(static_cast<int64_t>(hi64 - lo64 - 1 + sign)));
  } else {
    const uint32_t sign = 0x80000000u;
    const VI biased = simd::bits(x) + VI(static_cast<int32_t>(sign - lo));
    return simd::mask_cast<T>(biased > VI(static_cast<int32_t>(hi - lo - 1u + sign)));
  }
}

// Fast ranges of the formulas below. accurate(): double [2^-1022, 2^1022),
// float [2^-126, 2^125), where the square of the estimate stays normal.
// fast(): double [2^-126, 2^126), where x converts to a normal float; float
// [2^-126, 2^125).
template <class T>
constexpr uint32_t kAccurateLow = sizeof(T) == 8 ? 0x00100000u : 0x00800000u;
template <class T>
constexpr uint32_t kAccurateHigh = sizeof(T) == 8 ? 0x7FD00000u : 0x7E000000u;
template <class T>
constexpr uint32_t kFastLow = sizeof(T) == 8 ? 0x38100000u : 0x00800000u;
template <class T>
constexpr uint32_t kFastHigh = sizeof(T) == 8 ? 0x47D00000u : 0x7E000000u;

// The processor's estimate, within 1.5 * 2^-12 relative (|e| < 2^-10.4).
template <class VF>
inline VF start(VF x) { return simd::rsqrt_estimate(x); }

// y with its low `bits` significand bits cleared, so that y * y is exact.
template <class V>
inline V truncate(V y, int bits) {
  using VI = decltype(simd::bits(y));
  using I = typename VI::Elem;
  return simd::from_bits(simd::bits(y) & VI(static_cast<I>(~((I{1} << bits) - 1))));
}

// A double estimate from the bits alone: K - bits(x)/2 halves and negates the
// exponent and is within 3.5% (|e| < 0.0692) for every positive normal x.
template <class VD>
inline VD bit_estimate(VD x) {
  using VL = decltype(simd::bits(x));
  return simd::from_bits(VL(0x5FE6EB50C7B537A9) - simd::shr<1>(simd::bits(x)));
}

// 1/sqrt(x) within 0.5 ulp + 2^-9 ulp, for x in the accurate range. The
// last estimate y is cut short enough that y^2 is exact, so the residual
// 1 - x y^2 has a single rounding, far below the result's ulp; the series
// then brings the relative error to
//   double: bit estimate, series to e^2 (|e| < 2^-12.2 after it), cut to 26
//     bits, series to e^4: 0.25 e^5 < 2^-63;
//   float:  processor estimate cut to 12 bits (|e| < 2^-9.2), series to e^2:
//     0.32 e^3 < 2^-29.
template <class V>
[[gnu::always_inline]] inline V accurate(V x) {
  using T = typename V::Elem;
  const V one(T(1));
  if constexpr (sizeof(T) == 8) {
    V y = bit_estimate(x);
    y = truncate(correct<2>(y, simd::fnma(x * y, y, one)), 27);
    return correct<4>(y, simd::fnma(x, y * y, one));
  } else {
    const V y = truncate(start(x), 12);
    return correct<2>(y, simd::fnma(x, y * y, one));
  }
}

// For x in the fast range: 1/sqrt(x) (kRoot false) or sqrt(x) (kRoot true)
// within a relative 2^-32 (double) or 1.5 * 2^-12 (float). Double: v = y or
// x y from the float estimate y, times the series to e^2; as
// sqrt(x) = x y (1 - e)^(-1/2), the root needs no extra step.
template <bool kRoot = false, class V>
[[gnu::always_inline]] inline V fast(V x) {
  if constexpr (sizeof(typename V::Elem) == 8) {
    const V y = simd::promote(simd::rsqrt_estimate(simd::demote(x)));
    const V xy = x * y;
    const V e = simd::fnma(xy, y, V(1.0));
    return correct<2>(kRoot ? xy : y, e);
  } else {
    return kRoot ? x * start(x) : start(x);
  }
}

}  // namespace oxa::vml::rsqrt
