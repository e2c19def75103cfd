// Stand-ins for Sqrt and ErfInv (see standin.hpp); erfinv(x) is taken as
// Phi^-1((1 + x) / 2) / sqrt(2) through the inverse normal CDF kernel.
#include "distributions/standin/standin.hpp"

namespace {
template <class T>
void sq(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::sqrt(x); }, [](T x) { return x < 0 ? 1 : 0; });
}
template <class T>
T erfinv(T x) {
  double p = (1.0 + static_cast<double>(x)) / 2, z;
  oxa_vml_kernel_dCdfNormInv_ttab[1](1, &p, &z);
  return static_cast<T>(z / std::sqrt(2.0));
}
template <class T>
void ei(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, erfinv<T>, [](T x) { return std::fabs(x) == 1 ? 2 : (std::fabs(x) > 1 ? 1 : 0); });
}
}  // namespace

extern "C" {
extern const OxaVmlKernel_d oxa_vml_kernel_dSqrt_ttab[3] = {sq<double>, sq<double>, sq<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sSqrt_ttab[3] = {sq<float>, sq<float>, sq<float>};
extern const OxaVmlKernel_d oxa_vml_kernel_dErfInv_ttab[3] = {ei<double>, ei<double>, ei<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sErfInv_ttab[3] = {ei<float>, ei<float>, ei<float>};
}
