// Tan: r = tan(a).
// Method: reduction as Sin (trig/trig_core.hpp); tan = sin r / cos r for even
//   k, -cos r / sin r for odd k. HA divides the double-double sine and cosine
//   and corrects the quotient with the division's exact residual.
// Accuracy: d HA 0.53 ulp, LA 1.6 ulp, EP 2^-35 rel; s HA, LA 0.5 ulp, EP 2^-17
//   rel (measured by tests/vector_math/trig_accuracy).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; +-0 -> +-0; |a| >= 2^30
//   reduced exactly (trig/reduce_pio2d.cpp) and evaluated as HA in every level.
//   The scalar routines oxa_vml_kernel_<t>Tan_SC_<level> settle those lanes and
//   report under the names "dTan_HA", "dTan_LA", "dTan_A11" (EP) and the s ones.
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct Tan;
}  // namespace fam

}  // namespace oxa::vml

// The scalar tangent of one element at full accuracy, and its per-level
// entries (the levels differ only in the name they report under).
extern "C" int32_t oxa_vml_kernel_dTan_SC(const double* a, double* r) {
  return oxa::vml::trig_rare<double>(oxa::vml::TrigOut::Tan, a, r, r);
}
extern "C" int32_t oxa_vml_kernel_dTan_SC_HA(const double* a, double* r) { return oxa_vml_kernel_dTan_SC(a, r); }
extern "C" int32_t oxa_vml_kernel_dTan_SC_LA(const double* a, double* r) { return oxa_vml_kernel_dTan_SC(a, r); }
extern "C" int32_t oxa_vml_kernel_dTan_SC_A11(const double* a, double* r) { return oxa_vml_kernel_dTan_SC(a, r); }
extern "C" int32_t oxa_vml_kernel_sTan_SC_HA(const float* a, float* r) {
  return oxa::vml::trig_rare<float>(oxa::vml::TrigOut::Tan, a, r, r);
}
extern "C" int32_t oxa_vml_kernel_sTan_SC_LA(const float* a, float* r) { return oxa_vml_kernel_sTan_SC_HA(a, r); }
extern "C" int32_t oxa_vml_kernel_sTan_SC_A11(const float* a, float* r) { return oxa_vml_kernel_sTan_SC_HA(a, r); }

namespace oxa::vml {

template <class T, Acc A>
struct Policy<fam::Tan, T, A> : trig::TrigPolicy<TrigOut::Tan, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr const char* kName = A == Acc::HA ? (kDouble ? "dTan_HA" : "sTan_HA")
                                       : A == Acc::LA ? (kDouble ? "dTan_LA" : "sTan_LA")
                                                      : (kDouble ? "dTan_A11" : "sTan_A11");
  static int32_t scalar(const T* a, T* r) {
    if constexpr (kDouble)
      return A == Acc::HA ? oxa_vml_kernel_dTan_SC_HA(a, r)
             : A == Acc::LA ? oxa_vml_kernel_dTan_SC_LA(a, r) : oxa_vml_kernel_dTan_SC_A11(a, r);
    else
      return A == Acc::HA ? oxa_vml_kernel_sTan_SC_HA(a, r)
             : A == Acc::LA ? oxa_vml_kernel_sTan_SC_LA(a, r) : oxa_vml_kernel_sTan_SC_A11(a, r);
  }
};

template void kernel_in1_out1<fam::Tan, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Tan, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Tan, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Tan, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Tan, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Tan, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
