// Laplace: r = a - beta·ln u1 if u2 <= 0.5, else a + beta·ln u1.
// Method: blocks of 1024 results, each from 2m uniforms on [0, 1) drawn into
//         a stack buffer: the first m are u1 (their Ln taken with one kernel call), the next m are u2, paired by position (u1[k] with
//         u2[k]). 0.5 itself takes -beta.
// Special: u1 = 0 gives ln 0 -> -744.44 (float -103.28) through the callback.
#include <algorithm>

#include "distributions/callbacks.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
int32_t laplace(StreamState* stream, int32_t n, T* r, T a, T beta) {
  if (n < 1) return 0;
  constexpr int32_t kBlock = 1024;
  alignas(32) T u[2 * kBlock];
  alignas(32) T log_u1[kBlock];
  ErrorFrame frame(kLnCallBack<T>);
  int32_t status = 0;
  for (int32_t done = 0; done < n; done += kBlock) {
    const int32_t m = std::min(kBlock, n - done);
    status = draw_uniform<T>(stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    call_kernel(Vml<T>::ln[kSlotEP], m, static_cast<const T*>(u), log_u1);
    zip_pass(m, static_cast<const T*>(log_u1), static_cast<const T*>(u + m), r + done, [a, beta](auto log_u1, auto u2) {
      using V = decltype(log_u1);
      const V coefficient = select_le(u2, lift<V>(T(0.5)), lift<V>(-beta), lift<V>(beta));
      return lift<V>(a) + coefficient * log_u1;
    });
  }
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngLaplace(uint32_t, StreamState* stream, int32_t n, double r[], double a,
                        double beta) {
  return oxa::distributions::laplace(stream, n, r, a, beta);
}
int32_t _vslsRngLaplace(uint32_t, StreamState* stream, int32_t n, float r[], float a, float beta) {
  return oxa::distributions::laplace(stream, n, r, a, beta);
}

}  // extern "C"
