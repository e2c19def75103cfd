// LinearFrac: r = (scalea * a + shifta) / (scaleb * b + shiftb), the four
// scalars the same for every element.
// Method (double): numerator and denominator as unevaluated sums hi + lo
//   (exact product by fms, exact sum by two-sum), the quotient of the high
//   parts corrected once by the residual (n - q d exact by fnma) of both
//   parts. (float): both affine terms in double (the products are exact), the
//   quotient in double, one rounding to float.
// Accuracy: HA 0.5 ulp plus a few 2^-100 relative where the quotient is well
//   conditioned (no cancellation in numerator or denominator beyond what the
//   double-length parts hold); float 0.5 ulp plus 2^-50.
// Special: none. A zero denominator gives the infinity or NaN of the
//   division; where a product or the residual is not finite the uncorrected
//   quotient stands. No status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct LinearFrac { static constexpr const char* kName = "LinearFrac"; };
}  // namespace fam

namespace linearfrac {
// x * y + z as hi + lo, exactly while nothing overflows.
template <class V>
[[gnu::always_inline]] inline void affine(V x, V y, V z, V& hi, V& lo) {
  const V p = x * y;
  const V pe = simd::fms(x, y, p);
  hi = p + z;
  const V bb = hi - p;
  lo = ((p - (hi - bb)) + (z - bb)) + pe;
}
}  // namespace linearfrac

template <class T, Acc A>
struct Policy<fam::LinearFrac, T, A> {
  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<double, Isa> vector(
      simd::Vec<double, Isa> a, simd::Vec<double, Isa> b, simd::Vec<double, Isa> scalea,
      simd::Vec<double, Isa> shifta, simd::Vec<double, Isa> scaleb, simd::Vec<double, Isa> shiftb) {
    using V = simd::Vec<double, Isa>;
    V n, nl, d, dl;
    linearfrac::affine(scalea, a, shifta, n, nl);
    linearfrac::affine(scaleb, b, shiftb, d, dl);
    const V q = n / d;
    const V rest = simd::fnma(q, dl, simd::fnma(q, d, n) + nl);
    const V fixed = q + rest / d;
    return simd::select(simd::is_nan(rest), fixed, q);
  }

  template <class Isa>
  [[gnu::always_inline]] static simd::Vec<float, Isa> vector(
      simd::Vec<float, Isa> a, simd::Vec<float, Isa> b, simd::Vec<float, Isa> scalea,
      simd::Vec<float, Isa> shifta, simd::Vec<float, Isa> scaleb, simd::Vec<float, Isa> shiftb) {
    using D = simd::Vec<double, Isa>;
    const D sa = simd::widen_low(scalea), ha = simd::widen_low(shifta);
    const D sb = simd::widen_low(scaleb), hb = simd::widen_low(shiftb);
    const D q0 = simd::fma(sa, simd::widen_low(a), ha) / simd::fma(sb, simd::widen_low(b), hb);
    const D q1 = simd::fma(sa, simd::widen_high(a), ha) / simd::fma(sb, simd::widen_high(b), hb);
    return simd::narrow(q0, q1);
  }
};

}  // namespace oxa::vml

#include "vector_math/linearfrac/linearfrac_kernels.inc"
