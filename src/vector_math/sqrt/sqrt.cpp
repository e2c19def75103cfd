// Sqrt: r = sqrt(a).
// Method: HA and LA use the processor's correctly rounded square root. EP
//   avoids the divider: x times the processor's 12-bit reciprocal-root
//   estimate, which double corrects by the series of its residual
//   (invsqrt/rsqrt_core.hpp).
// Accuracy: HA and LA 0.5 ulp (correctly rounded); EP d 2^-34.5 rel,
//   s 2^-11.9 rel (measured by tests/vector_math/accuracy.txt).
// Special: a < 0 (including -inf) -> NaN, status 1; +-0 -> +-0; +inf -> +inf;
//   NaN -> NaN quietly. EP settles zeros, subnormals, infinities and (double)
//   a outside [2^-126, 2^126) in the scalar routine, with the correctly
//   rounded root.
//   Denormal inputs count as zero when the mode flushes denormals.
#include <cstdint>
#include <type_traits>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/invsqrt/rsqrt_core.hpp"

namespace oxa::vml {
namespace fam {
struct Sqrt {
  static constexpr const char* kName = "Sqrt";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Sqrt, T, A> {
  // HA, LA: only negative numbers (an ordered compare: -0 and NaN pass).
  // EP: everything but the positive normal numbers of the float range
  // (double: also those at or above 2^126, for the residual's sake).
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    if constexpr (A != Acc::EP)
      return x < simd::Vec<T, Isa>(T(0));
    else
      return rsqrt::outside(x, rsqrt::kFastLow<T>, sizeof(T) == 8 ? rsqrt::kFastHigh<T> : 0x7F800000u);
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    if constexpr (A != Acc::EP)
      return simd::sqrt(x);
    else
      return rsqrt::fast<true>(x);
  }

  // One element outside the fast path: the correctly rounded root, which is
  // NaN (invalid raised) for x < 0.
  static int32_t scalar(const T* a, T* r) {
    *r = simd::sqrt(*a);
    return *a < T(0) ? VML_ERR_DOMAIN : VML_ERR_NONE;
  }
};

}  // namespace oxa::vml

#include "vector_math/sqrt/sqrt_kernels.inc"
