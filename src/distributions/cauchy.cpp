// Cauchy: r = a + beta·tan u, u uniform on [-π/2, π/2).
// Method: inversion by the Tan kernel and a scale-and-shift pass, in blocks.
//         The error mode and callback are left as the caller set them: tan
//         has no special result on this interval. The single-precision bounds
//         are the float just below π/2 (the nearest float lies above π/2,
//         where tan changes sign).
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
struct HalfPi;
template <>
struct HalfPi<double> {
  static constexpr double kValue = 0x1.921fb54442d18p+0;  // 1.5707963267948966
};
template <>
struct HalfPi<float> {
  static constexpr float kValue = 0x1.921fb4p+0f;  // 1.5707963, below π/2
};

template <class T>
int32_t cauchy(StreamState* stream, int32_t n, T* r, T a, T beta) {
  if (n < 1) return 0;
  const int32_t status = draw_uniform<T>(stream, n, r, -HalfPi<T>::kValue, HalfPi<T>::kValue);
  if (status < 0) return status;
  through_block(
      r, n, [](int32_t m, const T* u, T* t) { call_kernel(Vml<T>::tan[kSlotEP], m, u, t); },
      Affine<T>{a, beta});
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngCauchy(uint32_t, StreamState* stream, int32_t n, double r[], double a,
                       double beta) {
  return oxa::distributions::cauchy(stream, n, r, a, beta);
}
int32_t _vslsRngCauchy(uint32_t, StreamState* stream, int32_t n, float r[], float a, float beta) {
  return oxa::distributions::cauchy(stream, n, r, a, beta);
}

}  // extern "C"
