// Ln: r = ln a.
// Method: a = 2^k z, z in [0.707, 1.414), 128 rows of (1/c, ln c); ln a =
//   k ln2 + ln c + ln1p(z/c - 1), ln1p a Taylor polynomial on |r| < 2^-7.6
//   (ln_core.hpp). d HA sums the leading terms without rounding, LA and EP
//   round three times. Single precision, in float lanes: 16 rows in
//   registers, |r| < 2^-5, HA again with an exact leading sum. The scalar
//   routine works in double.
// Accuracy: d HA 0.50 ulp, LA 1.22 ulp, EP 2^-32 rel; s HA 0.58 ulp, LA 1.49
//   ulp (all floats), EP 2^-17 rel (measured by tests/vector_math/accuracy.txt).
// Special: +-0 -> -inf, status 2; a < 0 (and -inf) -> NaN, status 1; +inf ->
//   +inf; NaN -> NaN quietly; 1 -> +0. Subnormal inputs (taken as zero when
//   the mode treats denormals as zero) and all the above go to the scalar
//   routine; the fast path takes the positive normal numbers.
// Tables: ln_table.inc, made by tools/fit/ln.py.
#pragma once

#include <cmath>
#include <cstdint>
#include <type_traits>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/runtime_value.hpp"
#include "vector_math/ln/ln_core.hpp"

namespace oxa::vml {

namespace fam {
struct Ln {
  static constexpr const char* kName = "Ln";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Ln, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;

  // ln of positive normal doubles (after any scaling, k_adjust added to k):
  // the double kernels, and the scalar routine of both types.
  template <class VD>
  [[gnu::always_inline]] static VD ln_of(VD x, VD k_adjust) {
    if constexpr (kDouble && A == Acc::HA) {
      const dd::DD<VD> l = lnc::ln_hilo<8, false>(x, k_adjust);
      return l.hi + l.lo;
    } else if constexpr (kDouble) {
      return lnc::ln_plain<A == Acc::LA ? 7 : 4>(x, k_adjust);
    } else {
      return lnc::ln_plain<A == Acc::HA ? 4 : A == Acc::LA ? 3 : 2>(x, k_adjust);
    }
  }

  // Fast for positive normal inputs: (high word - smallest normal's) taken
  // unsigned below (inf's - smallest normal's); one signed compare after
  // flipping the sign bit.
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    constexpr int32_t kSign = static_cast<int32_t>(0x80000000u);
    if constexpr (kDouble) {
      using VH = simd::Vec<int32_t, simd::Half<Isa>>;
      const VH d = (simd::high_words(x) - VH(0x00100000)) ^ VH(kSign);
      return simd::widen(d > VH(static_cast<int32_t>(0xFFDFFFFFu)));
    } else {
      using VI = simd::Vec<int32_t, Isa>;
      const VI d = (simd::bits(x) - VI(0x00800000)) ^ VI(kSign);
      return simd::mask_cast<float>(d > VI(static_cast<int32_t>(0xFEFFFFFFu)));
    }
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    if constexpr (kDouble)
      return ln_of(x, simd::Vec<T, Isa>(0.0));
    else
      return lnc::LnSingle<A == Acc::EP ? 3 : 5, A == Acc::HA>::eval(x);
  }

  // One element outside the fast range.
  static int32_t scalar(const T* a, T* r) {
    const T x = *a;
    if (std::isnan(x)) {
      *r = x + x;
      return VML_ERR_NONE;
    }
    if (x == 0) {  // also a subnormal when denormals are taken as zero
      *r = static_cast<T>(runtime_value(-1.0) / runtime_value(0.0));
      return VML_ERR_SINGULARITY;
    }
    if (x < 0) {
      *r = static_cast<T>(runtime_value(HUGE_VAL) * runtime_value(0.0));
      return VML_ERR_DOMAIN;
    }
    if (std::isinf(x)) {
      *r = x;
      return VML_ERR_NONE;
    }
    // Positive subnormal (or, for float, anything positive: double holds it
    // as a normal number). A double subnormal is scaled by 2^64 first.
    double xd = static_cast<double>(x);
    double k_adjust = 0.0;
    if (xd < 0x1p-1022) {
      xd *= 0x1p64;
      k_adjust = -64.0;
    }
    double lanes[4];
    simd::store(lanes, ln_of(simd::broadcast(xd), simd::broadcast(k_adjust)));
    *r = static_cast<T>(lanes[0]);
    return VML_ERR_NONE;
  }
};

}  // namespace oxa::vml
