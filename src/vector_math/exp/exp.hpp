// Exp: r = e^a.
// Method: a = k ln2/N + r, 2^(j/N) from a table (with its relative tail for
//   HA), e^r - 1 a Taylor polynomial on |r| <= ln2/2N (exp_core.hpp). Double:
//   N = 128, degree 5. Single, in float lanes: N = 8 with the table in a
//   register, degree 4 (EP 2). The scalar routine works in double.
// Accuracy: d HA 0.51 ulp (0.75 on subnormal results), LA 1.0 ulp; s HA
//   0.59 ulp, LA 0.88 ulp (all floats), EP 2^-16 rel (measured by
//   tests/vector_math/accuracy.txt).
// Special: +inf -> +inf; -inf -> +0; NaN -> NaN quietly; overflow (d a >
//   709.78, s a > 88.72) -> +inf, status 3; result below the smallest normal
//   (subnormal or 0) -> that result, status 4. The fast path takes |a| < 704
//   (d) or |a| < 87 (s); the rest goes to the scalar routine.
// Tables: exp_table.inc, made by tools/fit/exp.py.
#pragma once

#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "vector_math/exp/exp_core.hpp"
#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {

namespace fam {
struct Exp {
  static constexpr const char* kName = "Exp";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Exp, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  // The double core of each level: the kernels of d, and the scalar routine
  // of s (which works in double).
  using Core = std::conditional_t<
      kDouble, expc::Exp<5, A == Acc::HA, false>,
      std::conditional_t<A == Acc::HA, expc::Exp<3, false, false>,
                         std::conditional_t<A == Acc::LA, expc::Exp<2, false, false>, expc::Exp<1, false, false>>>>;

  // Fast when |a| < 704 (d, high word below 0x40860000) or |a| < 87 (s).
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    if constexpr (kDouble) {
      using VH = simd::Vec<int32_t, simd::Half<Isa>>;
      return simd::widen((simd::high_words(x) & VH(0x7FFFFFFF)) > VH(0x4085FFFF));
    } else {
      using VI = simd::Vec<int32_t, Isa>;
      return simd::mask_cast<float>((simd::bits(x) & VI(0x7FFFFFFF)) > VI(0x42ADFFFF));
    }
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    if constexpr (kDouble) {
      return Core::eval(x, simd::Vec<T, Isa>(0.0));
    } else {
      // HA keeps the table tail; LA drops it (0.5 ulp); EP uses a quadratic.
      return expc::ExpSingle<A == Acc::EP ? 2 : 4, A == Acc::HA>::eval(x);
    }
  }

  // One element outside the fast range.
  static int32_t scalar(const T* a, T* r) {
    const T x = *a;
    if (std::isnan(x)) {
      *r = x + x;
      return VML_ERR_NONE;
    }
    if (std::isinf(x)) {
      *r = x > 0 ? x : T(0);
      return VML_ERR_NONE;
    }
    int32_t status;
    const double y = expc::exp_wide<Core>(static_cast<double>(x), 0.0, &status);
    if constexpr (kDouble) {
      *r = y;
      return status;
    } else {
      const float f = static_cast<float>(y);
      *r = f;
      if (std::isinf(f)) return VML_ERR_OVERFLOW;
      if (f < std::numeric_limits<float>::min()) return VML_ERR_UNDERFLOW;
      return VML_ERR_NONE;
    }
  }
};

}  // namespace oxa::vml
