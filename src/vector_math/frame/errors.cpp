// Error routines of the four element types, one template.
#include "vector_math/frame/errors.hpp"

#include <cerrno>
#include <cstring>
#include <type_traits>

#include "oxa/service.h"
#include "vector_math/frame/thread_state.hpp"

namespace oxa::vml {
namespace {

// Real or complex element widened to the record's double fields.
struct Wide {
  double re = 0.0, im = 0.0;
};

Wide widen(float x) { return {x, 0.0}; }
Wide widen(double x) { return {x, 0.0}; }
Wide widen(const OxaComplex8& x) { return {x.real, x.imag}; }
Wide widen(const OxaComplex16& x) { return {x.real, x.imag}; }

template <class T>
T narrow(double re, double im) {
  if constexpr (std::is_same_v<T, OxaComplex8>)
    return {static_cast<float>(re), static_cast<float>(im)};
  else if constexpr (std::is_same_v<T, OxaComplex16>)
    return {re, im};
  else
    return static_cast<T>(re);
}

int errno_of(int32_t code) {
  switch (code) {
    case VML_ERR_NONE: return 0;
    case VML_ERR_DOMAIN: return EDOM;
    case VML_ERR_SINGULARITY:
    case VML_ERR_OVERFLOW:
    case VML_ERR_UNDERFLOW: return ERANGE;
    case VML_ERR_INVALID: return EINVAL;
    case VML_ERR_NOACCESS: return EACCES;
    default: return EFAULT;
  }
}

// The first line names the function and the kind of error; the element lines
// follow in one of four forms (one or two arguments, one or two results).
// Complex values are reported by their real parts.
void print_report(const VmlErrorContext& c) {
  const char* name = c.func_name;
  const int64_t i = c.index;
  switch (c.code) {
    case VML_ERR_NONE: return;
    case VML_ERR_NOACCESS: oxa_serv_print(1, 736, 1, name); return;
    case VML_ERR_INVALID: oxa_serv_print(1, 735, 2, name, i); return;
    case VML_ERR_DOMAIN:
    case VML_ERR_SINGULARITY:
    case VML_ERR_OVERFLOW:
    case VML_ERR_UNDERFLOW: oxa_serv_print(1, 736 + c.code, 1, name); break;
    default: oxa_serv_print(1, 741, 1, name); break;
  }
  const bool one_arg = c.arg1 == c.arg2 || c.arg2 == 0.0;
  const bool two_res = c.res1 != c.res2 && c.res2 != 0.0;
  if (one_arg && !two_res) {
    oxa_serv_print(1, 742, 2, i, c.arg1);
    oxa_serv_print(1, 743, 2, i, c.res1);
  } else if (one_arg) {
    oxa_serv_print(1, 744, 2, i, c.arg1);
    oxa_serv_print(1, 745, 2, i, c.res1);
    oxa_serv_print(1, 746, 2, i, c.res2);
  } else if (!two_res) {
    oxa_serv_print(1, 747, 2, i, c.arg1);
    oxa_serv_print(1, 748, 2, i, c.arg2);
    oxa_serv_print(1, 749, 2, i, c.res1);
  } else {
    oxa_serv_print(1, 750, 2, i, c.arg1);
    oxa_serv_print(1, 751, 2, i, c.arg2);
    oxa_serv_print(1, 752, 2, i, c.res1);
    oxa_serv_print(1, 753, 2, i, c.res2);
  }
}

}  // namespace

template <class T>
void report_error_site(const ErrorSite<T>& site) {
  *status_slot() = site.code;  // replaces, never ORs
  const uint32_t mode = current_mode();
  if ((mode & OXA_VML_ERRMODE_MASK) == OXA_VML_ERRMODE_IGNORE) return;

  VmlErrorContext c{};
  c.code = site.code;
  int64_t index = site.index;
  if (const void* whole = *input_vector_slot(); whole != nullptr && site.base != nullptr) {
    const auto offset = reinterpret_cast<intptr_t>(site.base) - reinterpret_cast<intptr_t>(whole);
    index += offset / static_cast<intptr_t>(sizeof(T));
  }
  c.index = static_cast<int32_t>(index);
  if (site.name != nullptr) {
    const size_t len = strnlen(site.name, sizeof c.func_name);
    std::memcpy(c.func_name, site.name, len);
    if (len < sizeof c.func_name) c.func_name[len] = '\0';
    c.func_name_len = static_cast<int32_t>(len);
  }
  const bool has_values = site.code != VML_ERR_INVALID && site.code != VML_ERR_NOACCESS;
  if (has_values) {
    const Wide a1 = widen(site.arg1), a2 = widen(site.arg2);
    const Wide s1 = widen(site.r1[site.index]), s2 = widen(site.r2[site.index]);
    c.arg1 = a1.re, c.arg1_im = a1.im;
    c.arg2 = a2.re, c.arg2_im = a2.im;
    c.res1 = s1.re, c.res1_im = s1.im;
    c.res2 = s2.re, c.res2_im = s2.im;
  }

  if (mode & 0xF000u) {
    const VmlErrorCallBack callback = *callback_slot();
    if (callback != nullptr && callback(&c) != 0) return;
  }
  if (mode & 0x0F00u) {
    if (mode & OXA_VML_ERRMODE_ERRNO) errno = errno_of(site.code);
    if (mode & OXA_VML_ERRMODE_STDERR) print_report(c);
    // The except bit needs nothing here: the kernel's arithmetic has already
    // raised the processor's exception flags.
  }
  if (has_values) {
    site.r2[site.index] = narrow<T>(c.res2, c.res2_im);
    site.r1[site.index] = narrow<T>(c.res1, c.res1_im);
  }
}

template <class T>
void report_error(int32_t code, int32_t i, const T* a, const T* b, T* r1, T* r2, const char* name) {
  const bool has_values = code != VML_ERR_INVALID && code != VML_ERR_NOACCESS;
  report_error_site<T>({code, i, a, has_values ? a[i] : T{}, has_values ? b[i] : T{}, r1, r2, name});
}

template void report_error_site<float>(const ErrorSite<float>&);
template void report_error_site<double>(const ErrorSite<double>&);
template void report_error_site<OxaComplex8>(const ErrorSite<OxaComplex8>&);
template void report_error_site<OxaComplex16>(const ErrorSite<OxaComplex16>&);
template void report_error<float>(int32_t, int32_t, const float*, const float*, float*, float*,
                                  const char*);
template void report_error<double>(int32_t, int32_t, const double*, const double*, double*,
                                   double*, const char*);
template void report_error<OxaComplex8>(int32_t, int32_t, const OxaComplex8*, const OxaComplex8*,
                                        OxaComplex8*, OxaComplex8*, const char*);
template void report_error<OxaComplex16>(int32_t, int32_t, const OxaComplex16*,
                                         const OxaComplex16*, OxaComplex16*, OxaComplex16*,
                                         const char*);

}  // namespace oxa::vml

extern "C" {

void oxa_vml_kernel_sError(int32_t code, int32_t i, const float* a, const float* b, float* r1,
                           float* r2, const char* name) {
  oxa::vml::report_error(code, i, a, b, r1, r2, name);
}
void oxa_vml_kernel_dError(int32_t code, int32_t i, const double* a, const double* b, double* r1,
                           double* r2, const char* name) {
  oxa::vml::report_error(code, i, a, b, r1, r2, name);
}
void oxa_vml_kernel_cError(int32_t code, int32_t i, const OxaComplex8* a, const OxaComplex8* b,
                           OxaComplex8* r1, OxaComplex8* r2, const char* name) {
  oxa::vml::report_error(code, i, a, b, r1, r2, name);
}
void oxa_vml_kernel_zError(int32_t code, int32_t i, const OxaComplex16* a, const OxaComplex16* b,
                           OxaComplex16* r1, OxaComplex16* r2, const char* name) {
  oxa::vml::report_error(code, i, a, b, r1, r2, name);
}

}  // extern "C"
