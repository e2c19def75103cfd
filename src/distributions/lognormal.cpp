// Lognormal: r = max(b, b + beta·exp(g)), g Gaussian with mean a and
// deviation sigma.
// Method: g by the Gaussian generator (Box-Muller2 for method 0, inverse CDF
//         for any other), then, in blocks, the Exp kernel and a scale-and-shift
//         pass floored at the displacement b.
#include "distributions/gaussian.hpp"
#include "distributions/lanes.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

constexpr uint32_t kGaussianBoxMuller2 = 1;
constexpr uint32_t kGaussianIcdf = 2;

template <class T>
int32_t lognormal(uint32_t method, StreamState* stream, int32_t n, T* r, T a, T sigma, T b, T beta) {
  if (n < 1) return 0;
  const uint32_t gaussian_method = method == 0 ? kGaussianBoxMuller2 : kGaussianIcdf;
  const int32_t status = gaussian<T>(gaussian_method, stream, n, r, a, sigma);
  if (status != 0) return status;
  through_block(
      r, n, [](int32_t m, const T* g, T* t) { call_kernel(Vml<T>::exp[kSlotEP], m, g, t); },
      AffineFloor<T>{b, beta});
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngLognormal(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                          double sigma, double b, double beta) {
  return oxa::distributions::lognormal(method, stream, n, r, a, sigma, b, beta);
}
int32_t _vslsRngLognormal(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                          float sigma, float b, float beta) {
  return oxa::distributions::lognormal(method, stream, n, r, a, sigma, b, beta);
}

}  // extern "C"
