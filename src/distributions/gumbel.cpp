// Gumbel: r = a + beta·ln e, e a standard exponential variate.
// Method: n standard exponentials in r, then in blocks their Ln and a
//         scale-and-shift pass
//         (no floor: the variate is unbounded below).
// Special: an exponential variate of 0 gives ln 0 -> -744.44 (float -103.28)
//          through the callback, so r stays finite.
#include "distributions/callbacks.hpp"
#include "distributions/continuous.hpp"
#include "distributions/lanes.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
int32_t gumbel(StreamState* stream, int32_t n, T* r, T a, T beta) {
  if (n < 1) return 0;
  ErrorFrame frame(kLnCallBack<T>);
  const int32_t status = exponential<T>(stream, n, r, T(0), T(1));
  if (status < 0) return status;
  through_block(
      r, n, [](int32_t m, const T* e, T* t) { call_kernel(Vml<T>::ln[kSlotEP], m, e, t); },
      Affine<T>{a, beta});
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngGumbel(uint32_t, StreamState* stream, int32_t n, double r[], double a,
                       double beta) {
  return oxa::distributions::gumbel(stream, n, r, a, beta);
}
int32_t _vslsRngGumbel(uint32_t, StreamState* stream, int32_t n, float r[], float a, float beta) {
  return oxa::distributions::gumbel(stream, n, r, a, beta);
}

}  // extern "C"
