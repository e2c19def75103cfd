// Weibull: r = max(a, a + beta·(-ln u)^(1/alpha)), u uniform on [0, 1).
// Method: inversion in place: Ln, sign flip, Powx with the scalar exponent
//         1/alpha (skipped for alpha = 1, which makes the variate exactly the
//         exponential one), then the scale-and-shift pass floored at a.
// Special: u = 0 gives ln 0 -> -744.44 (float -103.28) through the callback.
#include "distributions/callbacks.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"

namespace oxa::distributions {
namespace {

template <class T>
int32_t weibull(StreamState* stream, int32_t n, T* r, T alpha, T a, T beta) {
  if (n < 1) return 0;
  ErrorFrame frame(kLnCallBack<T>);
  const int32_t status = draw_log_uniform(stream, n, r);
  if (status < 0) return status;
  final_pass(r, n, Negate<T>{});
  if (alpha != T(1)) call_kernel(Vml<T>::powx[kSlotEP], n, r, T(1) / alpha, r);
  final_pass(r, n, AffineFloor<T>{a, beta});
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngWeibull(uint32_t, StreamState* stream, int32_t n, double r[], double alpha,
                        double a, double beta) {
  return oxa::distributions::weibull(stream, n, r, alpha, a, beta);
}
int32_t _vslsRngWeibull(uint32_t, StreamState* stream, int32_t n, float r[], float alpha, float a,
                        float beta) {
  return oxa::distributions::weibull(stream, n, r, alpha, a, beta);
}

}  // extern "C"
