// Inverse square roots of the cross-product diagonal.
//
// To be switched to the vector-math InvSqrt kernel through its dispatch table
// (oxa_vml_kernel_dInvSqrt_ttab / sInvSqrt) once that family exists; until
// then a plain loop. Either way: +0 -> +inf, negative -> NaN, +inf -> +0.
#include "summary_stats/inv_sqrt.hpp"

#include <cmath>

namespace oxa::ss {

template <class T>
void inv_sqrt_block(int64_t n, const T* a, T* r) {
  for (int64_t i = 0; i < n; ++i) r[i] = T(1) / std::sqrt(a[i]);
}

template void inv_sqrt_block<double>(int64_t, const double*, double*);
template void inv_sqrt_block<float>(int64_t, const float*, float*);

}  // namespace oxa::ss
