// Hypot: r = sqrt(a^2 + b^2), without spurious overflow or underflow.
// Method (double): with h = max(|a|, |b|) and l = min(|a|, |b|), both scaled
//   by a power of two chosen from h (2^-600 above 2^500, 2^600 below 2^-500),
//   r = sqrt(fma(h, h, l * l)) unscaled. l * l <= h^2 carries at most half an
//   ulp of the sum, so the radicand is within 1.5 * 2^-53 and the root within
//   0.875 ulp. (float): the squares and their sum in double, one rounding to
//   float at the end.
// Accuracy: HA, LA and EP 0.875 ulp (double), 0.51 ulp (float) (measured by
//   the accuracy driver).
// Special: either operand infinite -> +inf (even beside a NaN); a NaN otherwise
//   -> NaN; a result beyond the largest finite number -> +inf, status 3
//   (overflow). Lanes with |a| or |b| at or above half the largest binade go
//   to the scalar routine, which uses the same scaled formula.
#include <cmath>
#include <cstdint>
#include <utility>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Hypot { static constexpr const char* kName = "Hypot"; };
}  // namespace fam

namespace hypot_detail {
template <class T>
inline constexpr T kLarge = sizeof(T) == 8 ? T(0x1p1023) : T(0x1p127f);

inline double scaled(double a, double b) {
  double h = std::fabs(a), l = std::fabs(b);
  if (h < l) std::swap(h, l);
  const double s = h > 0x1p500 ? 0x1p-600 : h < 0x1p-500 ? 0x1p600 : 1.0;
  h *= s, l *= s;
  return simd::sqrt(simd::fma(h, h, l * l)) * (1.0 / s);
}
inline float scaled(float a, float b) {
  const double x = a, y = b;
  return static_cast<float>(simd::sqrt(simd::fma(x, x, y * y)));
}
}  // namespace hypot_detail

template <class T, Acc A>
struct Policy<fam::Hypot, T, A> {
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> a, simd::Vec<T, Isa> b) {
    const simd::Vec<T, Isa> large(hypot_detail::kLarge<T>);
    return simd::nlt(simd::abs(a), large) | simd::nlt(simd::abs(b), large);
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<double, Isa> vector(simd::Vec<double, Isa> a,
                                                              simd::Vec<double, Isa> b) {
    using V = simd::Vec<double, Isa>;
    const V x = simd::abs(a), y = simd::abs(b);
    const V h = simd::max(x, y), l = simd::min(x, y);
    const V s = simd::select(V(0x1p500) < h, simd::select(h < V(0x1p-500), V(1.0), V(0x1p600)), V(0x1p-600));
    const V hs = h * s, ls = l * s;
    const V u = simd::select(V(0x1p500) < h, simd::select(h < V(0x1p-500), V(1.0), V(0x1p-600)), V(0x1p600));
    return simd::sqrt(simd::fma(hs, hs, ls * ls)) * u;
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<float, Isa> vector(simd::Vec<float, Isa> a,
                                                             simd::Vec<float, Isa> b) {
    using D = simd::Vec<double, Isa>;
    const D a0 = simd::widen_low(a), a1 = simd::widen_high(a);
    const D b0 = simd::widen_low(b), b1 = simd::widen_high(b);
    return simd::narrow(simd::sqrt(simd::fma(a0, a0, b0 * b0)), simd::sqrt(simd::fma(a1, a1, b1 * b1)));
  }

  static int32_t scalar(const T* a, const T* b, T* r) {
    const T x = *a, y = *b;
    if (std::isinf(x) || std::isinf(y)) {
      *r = T(INFINITY);
      return VML_ERR_NONE;
    }
    if (x != x || y != y) {
      *r = x + y;
      return VML_ERR_NONE;
    }
    *r = hypot_detail::scaled(x, y);
    return std::isinf(*r) ? VML_ERR_OVERFLOW : VML_ERR_NONE;
  }
};

}  // namespace oxa::vml

#include "vector_math/hypot/hypot_kernels.inc"
