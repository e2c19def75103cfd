// Gaussian: r = a + sigma·z, z standard normal, by one of three methods.
// Method: 0 Box-Muller, one variate per pair of uniforms (u1, u2):
//           z = sqrt(-2 ln u1)·sin(2π u2), blocks of 1024 results;
//         1 Box-Muller2, two variates per pair: the sine one at the even
//           index, the cosine one after it; blocks of 512 pairs; an odd count
//           ends with one cosine variate from a pair of its own; nothing is
//           kept between calls;
//         2 inverse CDF, z = √2·erfinv(u), u uniform on [-1, 1).
// Uniforms: Box-Muller 2n; Box-Muller2 n rounded up to even; inverse CDF n.
// Special: u1 = 0 gives ln 0 -> -744.44 (float -103.28) through the callback,
//          so z ≈ ±38.6 (float ±14.4) stays finite; erfinv(-1) -> -5.8636
//          (float -3.8325).
// Kernels: Sin, Ln, Sqrt, SinCos, Cos, ErfInv, all from the EP slot, each
//          called with denormals kept; no heap (block buffers on the stack).
#include <algorithm>
#include <utility>

#include "distributions/callbacks.hpp"
#include "distributions/gaussian.hpp"
#include "distributions/lanes.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

template <class T>
struct Consts;
template <>
struct Consts<double> {
  static constexpr double kTwoPi = 0x1.921fb54442d18p+2;
  static constexpr double kSqrt2 = 0x1.6a09e667f3bcdp+0;
};
template <>
struct Consts<float> {
  static constexpr float kTwoPi = 0x1.921fb6p+2f;
  static constexpr float kSqrt2 = 0x1.6a09e6p+0f;
};

// q[k] = sqrt(-2 ln u1[k]), through the scratch t. No kernel runs in place:
// the callback tells ln 0 from the other singularities by the argument.
template <class T>
void radius(int32_t m, const T* u1, T* t, T* q) {
  call_kernel(Vml<T>::ln[kSlotEP], m, u1, t);
  final_pass(t, m, [](auto x) { return lift<decltype(x)>(T(0)) - (x + x); });
  call_kernel(Vml<T>::sqrt[kSlotEP], m, static_cast<const T*>(t), q);
}

template <class T>
int32_t box_muller(StreamState* stream, int32_t n, T* r, T a, T sigma) {
  constexpr int32_t kBlock = 1024;
  alignas(32) T u[2 * kBlock];  // uniforms; then sines (first half), radii (second)
  alignas(32) T u1[kBlock];
  alignas(32) T theta[kBlock];
  int32_t status = 0;
  for (int32_t done = 0; done < n; done += kBlock) {
    const int32_t m = std::min(kBlock, n - done);
    status = draw_uniform<T>(stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    split_pairs(m, u, u1, theta, Consts<T>::kTwoPi);
    T* s = u;
    T* q = u + kBlock;
    call_kernel(Vml<T>::sin[kSlotEP], m, static_cast<const T*>(theta), s);
    radius(m, static_cast<const T*>(u1), theta, q);
    zip_pass(m, static_cast<const T*>(q), static_cast<const T*>(s), r + done,
             [a, sigma](auto x, auto y) {
               using V = decltype(x);
               return lift<V>(a) + lift<V>(sigma) * x * y;
             });
  }
  return status;
}

template <class T>
int32_t box_muller2(StreamState* stream, int32_t n, T* r, T a, T sigma) {
  constexpr int32_t kPairs = 512;
  alignas(32) T u[2 * kPairs];  // uniforms; then sines (first half), cosines (second)
  alignas(32) T u1[kPairs];
  alignas(32) T theta[kPairs];
  alignas(32) T q[kPairs];
  T* s = u;
  T* c = u + kPairs;
  int32_t status = 0;
  int32_t done = 0;
  while (n - done >= 2) {
    const int32_t m = std::min(kPairs, (n - done) / 2);
    status = draw_uniform<T>(stream, 2 * m, u, T(0), T(1));
    if (status < 0) return status;
    split_pairs(m, u, u1, theta, Consts<T>::kTwoPi);
    call_kernel(Vml<T>::sincos[kSlotEP], m, static_cast<const T*>(theta), s, c);
    radius(m, static_cast<const T*>(u1), theta, q);
    pair_pass(m, static_cast<const T*>(q), static_cast<const T*>(s), static_cast<const T*>(c),
              r + done, [a, sigma](auto qk, auto sk, auto ck) {
                using V = decltype(qk);
                const V scaled = lift<V>(sigma) * qk;
                return std::pair{lift<V>(a) + scaled * sk, lift<V>(a) + scaled * ck};
              });
    done += 2 * m;
  }
  if (done < n) {
    status = draw_uniform<T>(stream, 2, u, T(0), T(1));
    if (status < 0) return status;
    split_pairs(1, u, u1, theta, Consts<T>::kTwoPi);
    call_kernel(Vml<T>::cos[kSlotEP], 1, static_cast<const T*>(theta), c);
    radius(1, static_cast<const T*>(u1), theta, q);
    r[done] = a + sigma * q[0] * c[0];
  }
  return status;
}

template <class T>
int32_t icdf(StreamState* stream, int32_t n, T* r, T a, T sigma) {
  const int32_t status = draw_uniform<T>(stream, n, r, T(-1), T(1));
  if (status < 0 || n < 1) return status;
  through_block(
      r, n, [](int32_t m, const T* u, T* t) { call_kernel(Vml<T>::erfinv[kSlotEP], m, u, t); },
      Affine<T>{a, Consts<T>::kSqrt2 * sigma});
  return status;
}

template <class T>
using Method = int32_t (*)(StreamState*, int32_t, T*, T, T);

template <class T>
constexpr Method<T> kMethods[3] = {box_muller<T>, box_muller2<T>, icdf<T>};

}  // namespace

// The dispatcher shared by _vsldRngGaussian and _vslsRngGaussian (and the
// lognormal and multivariate generators).
template <class T>
int32_t gaussian(uint32_t method, StreamState* stream, int32_t n, T* r, T a, T sigma) {
  if (method >= 3) return VSL_ERROR_BAD_ARGUMENT;
  if (n < 1) return 0;
  ErrorFrame frame(kGaussianCallBack<T>);
  return kMethods<T>[method](stream, n, r, a, sigma);
}

template int32_t gaussian<double>(uint32_t, StreamState*, int32_t, double*, double, double);
template int32_t gaussian<float>(uint32_t, StreamState*, int32_t, float*, float, float);

}  // namespace oxa::distributions

using namespace oxa::distributions;

extern "C" {

int32_t _vsldRngGaussian(uint32_t method, StreamState* stream, int32_t n, double r[], double a,
                         double sigma) {
  return gaussian(method, stream, n, r, a, sigma);
}
int32_t _vslsRngGaussian(uint32_t method, StreamState* stream, int32_t n, float r[], float a,
                         float sigma) {
  return gaussian(method, stream, n, r, a, sigma);
}

int32_t _vdRngGaussianBoxMuller(StreamState* stream, int32_t n, double r[], double a, double sigma) {
  return box_muller(stream, n, r, a, sigma);
}
int32_t _vdRngGaussianBoxMuller2(StreamState* stream, int32_t n, double r[], double a, double sigma) {
  return box_muller2(stream, n, r, a, sigma);
}
int32_t _vdRngGaussianICDF(StreamState* stream, int32_t n, double r[], double a, double sigma) {
  return icdf(stream, n, r, a, sigma);
}
int32_t _vsRngGaussianBoxMuller(StreamState* stream, int32_t n, float r[], float a, float sigma) {
  return box_muller(stream, n, r, a, sigma);
}
int32_t _vsRngGaussianBoxMuller2(StreamState* stream, int32_t n, float r[], float a, float sigma) {
  return box_muller2(stream, n, r, a, sigma);
}
int32_t _vsRngGaussianICDF(StreamState* stream, int32_t n, float r[], float a, float sigma) {
  return icdf(stream, n, r, a, sigma);
}

}  // extern "C"
