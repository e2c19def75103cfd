// Tan: r = tan(a).
// Method: a = k pi/2 + r, |r| <= pi/4 (trig/trig_core.hpp). HA divides the
//   two-part sine by the two-part cosine (odd k: -cos/sin) and corrects the
//   quotient with the division's exact residual; LA and EP use a rational
//   tan r = r P(z)/Q(z), odd k -Q/(r P), single LA/EP in float while |a| < 2^12.
// Accuracy: d HA 0.66 ulp, LA 3.0 ulp, EP 2^-35 rel; s HA 0.50 ulp, LA 2.7 ulp,
//   EP 2^-17 rel (measured by tests/vector_math/trig_accuracy).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; |a| < 2^-27 (s: 2^-12)
//   -> a, signed zeros kept; |a| >= 2^30 reduced exactly (trig/reduce_pio2d.cpp)
//   and evaluated as HA in every level. The scalar routines
//   oxa_vml_kernel_<t>Tan_SC_<level> settle those lanes; the kernels report
//   under the names "dTan_HA", "dTan_LA", "dTan_A11" (EP) and the s ones.
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

}  // namespace oxa::vml

#include "vector_math/tan/tan_kernels.inc"
