// Error callbacks of the distribution generators.
//   Gaussian (_vdCallBack, _vsCallBack): a singularity at argument 0 is ln 0
//   and becomes ln of the smallest subnormal; any other singularity (erfinv
//   ±1) and a domain error become ±erfinv of the largest value below 1, the
//   sign of the argument. Other statuses are left alone.
//   Logarithm (_vdLnCallBack): only the singularity, ln 0. The single
//   precision one (_vsLnCallBack) sets ln 0's stand-in whatever the status:
//   the logarithm reports nothing else.
// All return 0 so that the error routine writes the replaced results back.
#include "distributions/callbacks.hpp"

namespace oxa::distributions {
namespace {

void set_results(VmlErrorContext* context, double value) {
  context->res1 = value;
  context->res2 = value;
}

template <class T>
int32_t gaussian_callback(VmlErrorContext* context) {
  const double x = context->arg1;
  const double tail = x < 0.0 ? -Stand<T>::kErfInvOne : Stand<T>::kErfInvOne;
  if (context->code == VML_ERR_SINGULARITY) {
    set_results(context, x == 0.0 ? Stand<T>::kLnZero : tail);
  } else if (context->code == VML_ERR_DOMAIN) {
    set_results(context, tail);
  }
  return 0;
}

}  // namespace
}  // namespace oxa::distributions

using namespace oxa::distributions;

extern "C" {

int32_t _vdCallBack(VmlErrorContext* context) { return gaussian_callback<double>(context); }
int32_t _vsCallBack(VmlErrorContext* context) { return gaussian_callback<float>(context); }

int32_t _vdLnCallBack(VmlErrorContext* context) {
  if (context->code == VML_ERR_SINGULARITY) set_results(context, Stand<double>::kLnZero);
  return 0;
}

int32_t _vsLnCallBack(VmlErrorContext* context) {
  set_results(context, Stand<float>::kLnZero);
  return 0;
}

}  // extern "C"
