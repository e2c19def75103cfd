// Inverse square roots of the cross-product diagonal, by the vector-math
// InvSqrt kernel (high-accuracy slot of its dispatch table).
//
// A zero diagonal element (a constant component) gives +inf, which is the
// kernel's singularity case: the correlation row becomes NaN/inf, which is
// the answer, not an error of this call. So the thread's vector-math error
// mode is set to "ignore" around the call and the mode and error status are
// put back afterwards; the caller's vector-math state is unchanged.
#include "summary_stats/inv_sqrt.hpp"

#include <type_traits>

#include "oxa/vector_math.h"
#include "vector_math/frame/thread_state.hpp"

namespace oxa::ss {

template <class T>
void inv_sqrt_block(int64_t n, const T* a, T* r) {
  if (n <= 0) return;
  const int32_t saved_status = oxa_vml_kernel_GetErrStatus();
  const uint32_t saved_mode = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  if constexpr (std::is_same_v<T, double>)
    oxa_vml_kernel_dInvSqrt_ttab[1](n, a, r);
  else
    oxa_vml_kernel_sInvSqrt_ttab[1](n, a, r);
  oxa::vml::restore_mode(saved_mode);
  oxa_vml_kernel_SetErrStatus(saved_status);
}

template void inv_sqrt_block<double>(int64_t, const double*, double*);
template void inv_sqrt_block<float>(int64_t, const float*, float*);

}  // namespace oxa::ss
