// Sin: r = sin(a).
// Method: k = round(a 2/pi), r = a - k pi/2 by a three-part pi/2 with an exact
//   first step; sin and cos polynomials in r^2 on |r| <= 0.786, quadrant k mod 4
//   picks +-sin r or +-cos r (trig/trig_core.hpp). HA carries r and the result
//   in double-double; single precision is evaluated in double.
// Accuracy: d HA 0.51 ulp, LA 0.8 ulp, EP 2^-35 rel; s HA, LA 0.5 ulp, EP 2^-17
//   rel (measured by tests/vector_math/trig_accuracy).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; +-0 -> +-0; |a| >= 2^30
//   reduced exactly (trig/reduce_pio2d.cpp) and evaluated as HA in every level.
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct Sin;
}  // namespace fam

template <class T>
int32_t vsin_cout_rare(const T* a, T* r) {
  return trig_rare<T>(TrigOut::Sin, a, r, r);
}

template <class T, Acc A>
struct Policy<fam::Sin, T, A> : trig::TrigPolicy<TrigOut::Sin, T, A> {
  static constexpr const char* kName = std::is_same_v<T, double> ? "vdSin" : "vsSin";
  static int32_t scalar(const T* a, T* r) { return vsin_cout_rare<T>(a, r); }
};

template void kernel_in1_out1<fam::Sin, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Sin, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Sin, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
