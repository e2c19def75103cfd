// Stand-ins for Sin, Cos, SinCos and Tan (see standin.hpp).
#include "distributions/standin/standin.hpp"

namespace {
template <class T>
void sn(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::sin(x); }, standin::none);
}
template <class T>
void cs(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::cos(x); }, standin::none);
}
template <class T>
void tn(int64_t n, const T* a, T* r) {
  standin::apply(n, a, r, [](T x) { return std::tan(x); }, standin::none);
}
template <class T>
void sincos(int64_t n, const T* a, T* s, T* c) {
  for (int64_t i = 0; i < n; ++i) {
    const T x = a[i];
    s[i] = std::sin(x);
    c[i] = std::cos(x);
  }
}
}  // namespace

extern "C" {
extern const OxaVmlKernel_d oxa_vml_kernel_dSin_ttab[3] = {sn<double>, sn<double>, sn<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sSin_ttab[3] = {sn<float>, sn<float>, sn<float>};
extern const OxaVmlKernel_d oxa_vml_kernel_dCos_ttab[3] = {cs<double>, cs<double>, cs<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sCos_ttab[3] = {cs<float>, cs<float>, cs<float>};
extern const OxaVmlKernel_d oxa_vml_kernel_dTan_ttab[3] = {tn<double>, tn<double>, tn<double>};
extern const OxaVmlKernel_s oxa_vml_kernel_sTan_ttab[3] = {tn<float>, tn<float>, tn<float>};
extern void (*const oxa_vml_kernel_dSinCos_ttab[3])(int64_t, const double*, double*, double*) = {
    sincos<double>, sincos<double>, sincos<double>};
extern void (*const oxa_vml_kernel_sSinCos_ttab[3])(int64_t, const float*, float*, float*) = {
    sincos<float>, sincos<float>, sincos<float>};
}
