// InvSqrt: r = 1/sqrt(a).
// Method: no division. An estimate of 1/sqrt(x) corrected through its
//   residual e = 1 - x y^2 by the series of (1 - e)^(-1/2)
//   (invsqrt/rsqrt_core.hpp). HA and LA: double starts from the bit pattern,
//   float from the processor's 12-bit estimate; the last estimate is cut so
//   that its square, and so the residual, is exact, and the result is within
//   0.5 ulp plus a tiny truncation error. EP: the processor's estimate (of
//   the nearest float, for double) with one second-order correction in
//   double, or as it stands in float.
// Accuracy: HA and LA d 0.50 ulp, s 0.51 ulp; EP d 2^-34.47 rel, s 2^-11.9 rel
//   (measured by tests/vector_math/accuracy.txt).
// Special: +-0 -> +-inf, status 2; a < 0 (including -inf) -> NaN, status 1;
//   +inf -> +0; NaN -> NaN quietly. Inputs outside the fast range (subnormal;
//   double >= 2^1022, float >= 2^125; double EP outside [2^-126, 2^126)) are
//   scaled by an even power of two in the scalar routine; subnormal inputs
//   count as zero when the mode flushes denormals.
#include <cstdint>
#include <limits>
#include <type_traits>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/opaque.hpp"
#include "vector_math/invsqrt/rsqrt_core.hpp"

namespace oxa::vml {
namespace fam {
struct InvSqrt {
  static constexpr const char* kName = "InvSqrt";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::InvSqrt, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;

  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    if constexpr (A == Acc::EP)
      return rsqrt::outside(x, rsqrt::kFastLow<T>, rsqrt::kFastHigh<T>);
    else
      return rsqrt::outside(x, rsqrt::kAccurateLow<T>, rsqrt::kAccurateHigh<T>);
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    if constexpr (A == Acc::EP)
      return rsqrt::fast(x);
    else
      return rsqrt::accurate(x);
  }

  // One element outside the fast range.
  static int32_t scalar(const T* a, T* r) {
    const T x = *a;
    if (x != x) {  // NaN: quiet it
      *r = x * x;
      return VML_ERR_NONE;
    }
    if (x == T(0)) {  // also a subnormal under denormals-are-zero
      *r = opaque(T(1)) / x;
      return VML_ERR_SINGULARITY;
    }
    if (x < T(0)) {
      *r = opaque(std::numeric_limits<T>::infinity()) * opaque(T(0));
      return VML_ERR_DOMAIN;
    }
    if (x == std::numeric_limits<T>::infinity()) {
      *r = T(0);
      return VML_ERR_NONE;
    }
    // Subnormal or huge: 1/sqrt(x) = 2^k / sqrt(x 2^2k), both scalings exact.
    constexpr T kUp = kDouble ? T(0x1p200) : T(0x1p64), kUpRoot = kDouble ? T(0x1p100) : T(0x1p32);
    constexpr T kDown = kDouble ? T(0x1p-200) : T(0x1p-64), kDownRoot = kDouble ? T(0x1p-100) : T(0x1p-32);
    const bool small = x < T(1);
    const T scaled = x * (small ? kUp : kDown);
    T lanes[simd::Vec<T>::kLanes];
    simd::store(lanes, rsqrt::accurate(simd::broadcast(scaled)));
    *r = lanes[0] * (small ? kUpRoot : kDownRoot);
    return VML_ERR_NONE;
  }
};

}  // namespace oxa::vml

#include "vector_math/invsqrt/invsqrt_kernels.inc"
