// Cos: r = cos(a).
// Method: |a| = (n + 1/2) pi + r, |r| <= pi/2, cos a = -(-1)^n sin r with the
//   sine of Sin (trig/trig_core.hpp); HA forms |a| - n P1 - P1/2 exactly in
//   two parts.
// Accuracy: d HA 0.82 ulp, LA 1.9 ulp, EP 2^-33 rel; s HA 0.50 ulp, LA 2.7 ulp,
//   EP 2^-17.6 rel (measured by tests/vector_math/accuracy.txt).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; |a| < 2^-27 (s: 2^-12)
//   -> 1; |a| >= 2^30 reduced exactly (trig/reduce_pio2d.cpp) and evaluated as
//   HA in every level (trig/trig_rare.cpp).
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct Cos {
  static constexpr const char* kName = "Cos";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Cos, T, A> : trig::TrigPolicy<TrigOut::Cos, T, A> {
  static int32_t scalar(const T* a, T* r) { return trig_rare<T>(TrigOut::Cos, a, r, r); }
};

}  // namespace oxa::vml

#include "vector_math/cos/cos_kernels.inc"
