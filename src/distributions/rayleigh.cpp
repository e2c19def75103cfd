// Rayleigh: r = max(a, a + beta·sqrt(-ln u)), u uniform on [0, 1).
// Method: inversion in blocks: Ln, sign flip, Sqrt, then the scale-and-shift
//         pass floored at a.
// Special: u = 0 gives ln 0 -> -744.44 through the callback, so
//          r = a + beta·sqrt(744.44) (float: sqrt(103.28)).
#include "distributions/callbacks.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
int32_t rayleigh(StreamState* stream, int32_t n, T* r, T a, T beta) {
  if (n < 1) return 0;
  ErrorFrame frame(kLnCallBack<T>);
  const int32_t status = draw_uniform<T>(stream, n, r, T(0), T(1));
  if (status < 0) return status;
  through_block(
      r, n,
      [](int32_t m, const T* u, T* t) {
        alignas(32) T e[1024];
        call_kernel(Vml<T>::ln[kSlotEP], m, u, e);
        final_pass(e, m, Negate<T>{});
        call_kernel(Vml<T>::sqrt[kSlotEP], m, static_cast<const T*>(e), t);
      },
      AffineFloor<T>{a, beta});
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngRayleigh(uint32_t, StreamState* stream, int32_t n, double r[], double a,
                         double beta) {
  return oxa::distributions::rayleigh(stream, n, r, a, beta);
}
int32_t _vslsRngRayleigh(uint32_t, StreamState* stream, int32_t n, float r[], float a,
                         float beta) {
  return oxa::distributions::rayleigh(stream, n, r, a, beta);
}

}  // extern "C"
