// Sin: r = sin(a).
// Method: a = n pi + r, |r| <= pi/2, sin a = (-1)^n (r + r z S(z)), z = r^2;
//   x - n P1 exact by fma, pi in three parts. HA carries r in two parts and
//   forms r z S(0) exactly; single HA runs in double, single LA/EP in float
//   while |a| < 2^12 (trig/trig_core.hpp).
// Accuracy: d HA 0.82 ulp, LA 1.9 ulp, EP 2^-33 rel; s HA 0.50 ulp, LA 2.2 ulp,
//   EP 2^-17.6 rel (measured by tests/vector_math/accuracy.txt).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; |a| < 2^-27 (s: 2^-12)
//   -> a, signed zeros kept; |a| >= 2^30 reduced exactly (trig/reduce_pio2d.cpp)
//   and evaluated as HA in every level (trig/trig_rare.cpp).
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#pragma once

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct Sin {
  static constexpr const char* kName = "Sin";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Sin, T, A> : trig::TrigPolicy<TrigOut::Sin, T, A> {
  static int32_t scalar(const T* a, T* r) { return trig_rare<T>(TrigOut::Sin, a, r, r); }
};

}  // namespace oxa::vml
