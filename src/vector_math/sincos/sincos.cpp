// SinCos: r1 = sin(a), r2 = cos(a), from one reduction.
// Method: a = k pi/2 + r, |r| <= pi/4 (x - k P1 exact by fma), sin and cos
//   polynomials in z = r^2; quadrant k mod 4 gives the sine, k + 1 the cosine.
//   HA carries r, sin r and cos r in two parts; single HA runs in double,
//   single LA/EP in float while |a| < 2^12 (trig/trig_core.hpp).
// Accuracy: d HA 0.58 ulp, LA 1.5 ulp, EP 2^-35 rel; s HA 0.50 ulp, LA 1.5 ulp,
//   EP 2^-17 rel, both outputs (measured by tests/vector_math/accuracy.txt).
// Special: +-inf -> NaN, NaN, status 1; NaN -> NaN, NaN quietly; |a| < 2^-27
//   (s: 2^-12) -> a, 1; |a| >= 2^30 reduced exactly (trig/reduce_pio2d.cpp).
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct SinCos {
  static constexpr const char* kName = "SinCos";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::SinCos, T, A> : trig::TrigPolicy<TrigOut::SinCos, T, A> {
  static int32_t scalar(const T* a, T* r1, T* r2) { return trig_rare<T>(TrigOut::SinCos, a, r1, r2); }
};

}  // namespace oxa::vml

#include "vector_math/sincos/sincos_kernels.inc"
