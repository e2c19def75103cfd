// Stand-ins for Ln, Exp and Powx (see standin.hpp).
#include "distributions/standin/standin.hpp"

namespace {
template <class T>
void ln(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::log(x); },
                 [](T x) { return x == 0 ? 2 : (x < 0 ? 1 : 0); });
}
template <class T>
void ex(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::exp(x); }, standin::none);
}
template <class T>
void powx(int64_t n, const T* a, T b, T* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = std::pow(a[i], b);
}
}  // namespace

extern "C" {
extern const OxaVmlKernel_d oxa_vml_kernel_dLn_ttab[3] = {ln<double>, ln<double>, ln<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sLn_ttab[3] = {ln<float>, ln<float>, ln<float>};
extern const OxaVmlKernel_d oxa_vml_kernel_dExp_ttab[3] = {ex<double>, ex<double>, ex<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sExp_ttab[3] = {ex<float>, ex<float>, ex<float>};
extern void (*const oxa_vml_kernel_dPowx_ttab[3])(int64_t, const double*, double, double*) = {
    powx<double>, powx<double>, powx<double>};
extern void (*const oxa_vml_kernel_sPowx_ttab[3])(int64_t, const float*, float, float*) = {
    powx<float>, powx<float>, powx<float>};
}
