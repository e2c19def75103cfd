// Exponential: r = max(a, a - beta·ln u), u uniform on [0, 1).
// Method: inversion; the Ln kernel and the scale-and-shift pass in blocks. The floor at a keeps rounding from putting a value below the
//         displacement.
// Special: u = 0 gives ln 0 -> -744.44 (float -103.28) through the callback,
//          so r = a + 744.44·beta stays finite.
#include "distributions/callbacks.hpp"
#include "distributions/continuous.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {

template <class T>
int32_t exponential(StreamState* stream, int32_t n, T* r, T a, T beta) {
  if (n < 1) return 0;
  ErrorFrame frame(kLnCallBack<T>);
  const int32_t status = draw_uniform<T>(stream, n, r, T(0), T(1));
  if (status < 0) return status;
  through_block(
      r, n, [](int32_t m, const T* u, T* t) { call_kernel(Vml<T>::ln[kSlotEP], m, u, t); },
      AffineFloor<T>{a, -beta});
  return status;
}

template int32_t exponential<double>(StreamState*, int32_t, double*, double, double);
template int32_t exponential<float>(StreamState*, int32_t, float*, float, float);

}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngExponential(uint32_t, StreamState* stream, int32_t n, double r[], double a,
                            double beta) {
  return oxa::distributions::exponential(stream, n, r, a, beta);
}
int32_t _vslsRngExponential(uint32_t, StreamState* stream, int32_t n, float r[], float a,
                            float beta) {
  return oxa::distributions::exponential(stream, n, r, a, beta);
}

}  // extern "C"
