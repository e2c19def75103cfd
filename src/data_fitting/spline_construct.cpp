// Construction by the task's order: the step-wise and look-up interpolants
// (order 0), which read the function values directly and have no
// coefficients, and the front entry that hands order 2, 3 and 4 to their
// kernels.
#include "data_fitting/spline_common.hpp"

namespace oxa::df {
namespace {

// Order 0: the type, the values and the absence of conditions are checked;
// nothing is written.
oxa_status step_spline(DfTask* task, const void* extra) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  if (extra != nullptr) return DF_ERR_UNEXPECTED_ARG;
  if (task->nx < 2) return DF_ERR_BAD_NX;
  if (task->s_order != DF_ORDER_STEP) return DF_ERR_BAD_ORDER;
  if (task->s_type < DF_TYPE_LOOKUP || task->s_type > DF_TYPE_STEP_LEFT) return DF_ERR_BAD_TYPE;
  if (task->bc_type != 0) return DF_ERR_BAD_BC_TYPE;
  return check_value_pointers(*task);
}

using Kernel = oxa_status (*)(DfTask*, int64_t, const void*, const DfThreading*);

oxa_status construct(DfTask* task, int64_t method, const void* extra, const DfThreading* th,
                     Kernel linear, Kernel quadratic, Kernel cubic) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  switch (task->s_order) {
    case DF_ORDER_STEP:
      return step_spline(task, extra);
    case DF_ORDER_LINEAR:
      return linear(task, method, extra, th);
    case DF_ORDER_QUADRATIC:
      return quadratic(task, method, extra, th);
    case DF_ORDER_CUBIC:
      return cubic(task, method, extra, th);
    default:
      return DF_ERR_BAD_ORDER;
  }
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFStepSpline1D(DfTask* task, int64_t, const void* extra,
                                         const DfThreading*) {
  return oxa::df::step_spline(task, extra);
}

oxa_status oxa_df_kernel_sDFStepSpline1D(DfTask* task, int64_t, const void* extra,
                                         const DfThreading*) {
  return oxa::df::step_spline(task, extra);
}

oxa_status oxa_df_kernel_dDFConstruct1D(DfTask* task, int64_t method, const void* extra,
                                        const DfThreading* threading) {
  return oxa::df::construct(task, method, extra, threading, &oxa_df_kernel_dDFLinearSpline1D,
                            &oxa_df_kernel_dDFQuadraticSpline1D, &oxa_df_kernel_dDFCubicSpline1D);
}

oxa_status oxa_df_kernel_sDFConstruct1D(DfTask* task, int64_t method, const void* extra,
                                        const DfThreading* threading) {
  return oxa::df::construct(task, method, extra, threading, &oxa_df_kernel_sDFLinearSpline1D,
                            &oxa_df_kernel_sDFQuadraticSpline1D, &oxa_df_kernel_sDFCubicSpline1D);
}

}  // extern "C"
