// ErfInv: r = erfinv(a), the inverse of the error function.
// Method: erfinv(x) = Phi^-1((1 + x)/2) / sqrt(2) = x R(1 - |x|) / sqrt(2),
//   with R the smooth factor of the inverse normal CDF and its piecewise
//   polynomials (cdfnorminv/cdfnorminv_rows.hpp); the factor x is exact, so
//   nothing is lost near 0, and 1 - |x| is exact for |x| >= 1/2, so nothing is
//   lost near +-1 either: the largest double below 1 gives y = 2^-53, still a
//   table row. Below 1/2, the rounding of 1 - |x| moves R by less than 2^-58.
//   HA carries R/sqrt(2) in double-double up to one final rounding by x; LA
//   uses the same rows with plain roundings; single precision is evaluated in
//   double on the single tables.
// Accuracy: d HA 0.79 ulp (at results below 2^-1020, where x g.lo rounds on
//   the subnormal grid), LA 2.3 ulp, EP 2^-27 rel; s HA 0.53 ulp, LA 1.5 ulp,
//   EP 2^-15 rel (measured by tests/vector_math/accuracy.txt).
// Special: +-1 -> +-inf, status 2; |a| > 1 (including +-inf) -> NaN, status 1;
//   NaN -> NaN quietly; +-0 -> +-0. Tiny arguments give subnormal results,
//   flushed to zero when the mode flushes denormals.
#include <cstdint>
#include <limits>
#include <type_traits>

#include "vector_math/cdfnorminv/cdfnorminv_rows.hpp"
#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/opaque.hpp"

namespace oxa::vml {
namespace fam {
struct ErfInv {
  static constexpr const char* kName = "ErfInv";
};
}  // namespace fam

namespace {

using norm_rows::Layout;

constexpr double kRootHalfHi = 0x1.6a09e667f3bcdp-1;  // 1/sqrt(2) = hi + lo
constexpr double kRootHalfLo = -0x1.bdd3413b26456p-55;

// x R(1 - |x|) / sqrt(2) for four x with |x| < 1.
template <const Layout& L, Acc A, class VD>
[[gnu::always_inline]] inline VD bulk(VD x) {
  const VD ax = simd::abs(x);
  // |x| < 2^-54 rounds y to 1, past the top of row 0; the largest double
  // below 1 stands in for it, as R is flat there (R'(1) = 0).
  const VD y = simd::min(VD(1.0) - ax, VD(0x1.fffffffffffffp-1));
  const dd::DD<VD> R = norm_rows::evaluate<L>(y);
  if constexpr (!L.split) {
    return R.hi * (x * VD(kRootHalfHi));
  } else if constexpr (A == Acc::LA) {
    // The split rows with two plain roundings: within 1.5 ulp.
    return (R.hi + R.lo) * (x * VD(kRootHalfHi));
  } else {
    // g = R/sqrt(2) in double-double, then x g with one rounding; x comes
    // last so that subnormal results are rounded only once too.
    // R.lo may be far above an ulp of R.hi, so g is renormalised: then x g.lo
    // is below 2^-53 of the result and its own rounding is negligible.
    const dd::DD<VD> p = dd::two_prod(R.hi, VD(kRootHalfHi));
    const VD lo = simd::fma(R.hi, VD(kRootHalfLo), simd::fma(R.lo, VD(kRootHalfHi), p.lo));
    // Computed for |x| and given x's sign afterwards, so that -0 stays -0.
    const dd::DD<VD> g = dd::fast_two_sum(p.hi, lo);
    const VD r = simd::fma(ax, g.hi, ax * g.lo);
    return r | simd::sign_bit(x);
  }
}

// The LA level reads the split (HA) rows: the plain LA rows of the inverse
// normal CDF come within 4 ulp of erfinv only barely, as erfinv results near
// 2^-4 have the smallest relative ulp.
template <class T, Acc A>
constexpr const Layout& rows() {
  return norm_rows::layout<T, std::is_same_v<T, double> && A == Acc::LA ? Acc::HA : A>();
}

}  // namespace

template <class T, Acc A>
struct Policy<fam::ErfInv, T, A> {
  static constexpr T kSafeInput = T(0.5);

  // |x| >= 1, infinities and NaN: the magnitude bits at or above those of 1.
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> x) {
    using I = simd::IntOf<T>;
    using VI = simd::Vec<I, Isa>;
    constexpr I kAbs = std::numeric_limits<I>::max();  // all but the sign bit
    constexpr I kBelowOne = sizeof(T) == 8 ? I(0x3FEFFFFFFFFFFFFF) : I(0x3F7FFFFF);
    return simd::mask_cast<T>((simd::bits(x) & VI(kAbs)) > VI(kBelowOne));
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<T, Isa> vector(simd::Vec<T, Isa> x) {
    constexpr const Layout& L = rows<T, A>();
    if constexpr (std::is_same_v<T, double>)
      return bulk<L, A>(x);
    else
      return simd::narrow(bulk<L, A>(simd::widen_low(x)), bulk<L, A>(simd::widen_high(x)));
  }

  // One element with |x| >= 1 or NaN.
  static int32_t scalar(const T* a, T* r) {
    const T x = *a;
    if (x != x) {  // NaN: quiet it
      *r = x * x;
      return VML_ERR_NONE;
    }
    if (x == T(1) || x == T(-1)) {
      *r = x / opaque(T(0));
      return VML_ERR_SINGULARITY;
    }
    *r = opaque(std::numeric_limits<T>::infinity()) * opaque(T(0));
    return VML_ERR_DOMAIN;
  }
};

}  // namespace oxa::vml

#include "vector_math/erfinv/erfinv_kernels.inc"
