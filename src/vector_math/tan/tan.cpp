// Tan: r = tan(a).
// Method: a = k pi/2 + r, |r| <= pi/4 (trig/trig_core.hpp). HA divides the
//   two-part sine by the two-part cosine (odd k: -cos/sin) and corrects the
//   quotient with the division's exact residual; LA and EP use a rational
//   tan r = r P(z)/Q(z), odd k -Q/(r P), single LA/EP in float while |a| < 2^12.
// Accuracy: d HA 0.66 ulp, LA 3.0 ulp, EP 2^-35 rel; s HA 0.50 ulp, LA 2.7 ulp,
//   EP 2^-17 rel (measured by tests/vector_math/accuracy.txt).
// Special: +-inf -> NaN, status 1; NaN -> NaN quietly; |a| < 2^-27 (s: 2^-12)
//   -> a, signed zeros kept; |a| >= 2^30 reduced exactly (trig/reduce_pio2d.cpp)
//   and evaluated as HA in every level. The kernels report under the names
//   "dTan_HA", "dTan_LA", "dTan_A11" (EP) and the s ones.
// Tables: trig/trig_tables.inc, made by tools/fit/trig.py.
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {

namespace fam {
struct Tan;
}  // namespace fam

template <class T, Acc A>
inline constexpr const char* kErrorName<fam::Tan, T, A> =
    A == Acc::HA ? (std::is_same_v<T, double> ? "dTan_HA" : "sTan_HA")
    : A == Acc::LA ? (std::is_same_v<T, double> ? "dTan_LA" : "sTan_LA")
                   : (std::is_same_v<T, double> ? "dTan_A11" : "sTan_A11");

template <class T, Acc A>
struct Policy<fam::Tan, T, A> : trig::TrigPolicy<TrigOut::Tan, T, A> {
  static int32_t scalar(const T* a, T* r) { return trig_rare<T>(TrigOut::Tan, a, r, r); }
};

}  // namespace oxa::vml

#include "vector_math/tan/tan_kernels.inc"
