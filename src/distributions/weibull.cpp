// Weibull: r = max(a, a + beta·(-ln u)^(1/alpha)), u uniform on [0, 1).
// Method: inversion in blocks: Ln, sign flip, Powx with the scalar exponent
//         1/alpha (skipped for alpha = 1, which makes the variate exactly the
//         exponential one), then the scale-and-shift pass floored at a.
// Special: u = 0 gives ln 0 -> -744.44 (float -103.28) through the callback.
#include "distributions/callbacks.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
int32_t weibull(StreamState* stream, int32_t n, T* r, T alpha, T a, T beta) {
  if (n < 1) return 0;
  ErrorFrame frame(kLnCallBack<T>);
  const int32_t status = draw_uniform<T>(stream, n, r, T(0), T(1));
  if (status < 0) return status;
  const T exponent = T(1) / alpha;
  through_block(
      r, n,
      [alpha, exponent](int32_t m, const T* u, T* t) {
        if (alpha == T(1)) {
          call_kernel(Vml<T>::ln[kSlotEP], m, u, t);
          final_pass(t, m, Negate<T>{});
          return;
        }
        alignas(32) T e[1024];
        call_kernel(Vml<T>::ln[kSlotEP], m, u, e);
        final_pass(e, m, Negate<T>{});
        call_kernel(Vml<T>::powx[kSlotEP], m, static_cast<const T*>(e), exponent, t);
      },
      AffineFloor<T>{a, beta});
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
