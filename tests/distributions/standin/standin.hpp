// Temporary scalar stand-ins for vector-math kernels that are not in this
// tree yet, so the generators can be tested before the kernels land. Each
// reports ln 0, erfinv(±1) and negative arguments through the error routine
// like the real kernels. Removed when the real kernels are merged.
#pragma once

#include <cmath>
#include <cstdint>

#include "oxa/vector_math.h"

namespace standin {

inline void report(int32_t code, int64_t i, const double* a, double* r) {
  oxa_vml_kernel_dError(code, static_cast<int32_t>(i), a, a, r, r, "standin");
}
inline void report(int32_t code, int64_t i, const float* a, float* r) {
  oxa_vml_kernel_sError(code, static_cast<int32_t>(i), a, a, r, r, "standin");
}

// r[i] = f(a[i]); status(a[i]) nonzero reports the element.
template <class T, class F, class S>
void apply(int64_t n, const T* a, T* r, F f, S status) {
  for (int64_t i = 0; i < n; ++i) {
    const T x = a[i];
    r[i] = f(x);
    if (const int32_t code = status(x)) report(code, i, a, r);
  }
}

inline int32_t none(double) { return 0; }

}  // namespace standin
