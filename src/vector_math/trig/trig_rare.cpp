// The lanes the trigonometric vector formula leaves out, one at a time:
//   NaN -> NaN quietly; +-inf -> NaN (inf - inf, raising invalid), status 1;
//   |x| < 2^-27 -> sin, tan x * 1 (so the sign of zero stays and a flushed
//   denormal gives +-0), cos 1; these are the correctly rounded values;
//   other finite x (the kernels send |x| >= 2^30, and single precision
//   2^-27 <= |x| < 2^-12) -> exact reduction, then the two-part evaluation
//   of SinCos and Tan at HA, so every level is within about 0.6 ulp there.
// Single precision goes through the same double routine and rounds once more.
#include <bit>
#include <cstdint>

#include "oxa/vector_math.h"
#include "vector_math/trig/trig_core.hpp"

namespace oxa::vml {
namespace {

// Values the optimiser must not fold (x * 1 must meet the denormals-are-zero
// bit, inf - inf must raise invalid at run time).
inline double opaque(double v) {
  asm("" : "+x"(v));
  return v;
}

struct Pair {
  double r1, r2;
};

// Huge finite x: quadrant and remainder from the exact reduction.
Pair huge(TrigOut out, double x) {
  double rr[2];
  const int32_t q = oxa_vml_kernel_reduce_pio2d(x, rr);
  const trig::SinCosDD<double> sc = trig::sincos_dd<trig::kPolyDoubleHA>(rr[0], rr[1]);
  const auto sin_q = [&](int32_t k) {
    const double v = (k & 1) ? sc.c.hi : sc.s.hi;
    return (k & 2) ? -v : v;
  };
  switch (out) {
    case TrigOut::Sin: return {sin_q(q), 0.0};
    case TrigOut::Cos: return {sin_q(q + 1), 0.0};
    case TrigOut::SinCos: return {sin_q(q), sin_q(q + 1)};
    case TrigOut::Tan: break;
  }
  const bool odd = q & 1;
  const dd::DD<double> num = odd ? sc.c : sc.s, den = odd ? sc.s : sc.c;
  double quot = num.hi / den.hi;
  quot += (std::fma(-quot, den.hi, num.hi) + std::fma(-quot, den.lo, num.lo)) / den.hi;
  return {odd ? -quot : quot, 0.0};
}

Pair settle(TrigOut out, double x, int32_t& status) {
  const uint64_t b = std::bit_cast<uint64_t>(x);
  const uint64_t mag = b & 0x7FFFFFFFFFFFFFFFull;
  status = VML_ERR_NONE;
  if (mag > 0x7FF0000000000000ull) return {x + x, x + x};
  if (mag == 0x7FF0000000000000ull) {
    status = VML_ERR_DOMAIN;
    const double nan = opaque(x) - opaque(x);
    return {nan, nan};
  }
  if (mag < 0x3E40000000000000ull) {  // |x| < 2^-27: sin x = tan x = x, cos x = 1 after rounding
    const double y = opaque(x) * opaque(1.0);
    return out == TrigOut::Cos ? Pair{1.0, 0.0} : Pair{y, 1.0};
  }
  return huge(out, x);
}

}  // namespace

template <class T>
int32_t trig_rare(TrigOut out, const T* x, T* r1, T* r2) {
  int32_t status;
  const Pair p = settle(out, static_cast<double>(*x), status);
  *r1 = static_cast<T>(p.r1);
  if (out == TrigOut::SinCos) *r2 = static_cast<T>(p.r2);
  return status;
}

template int32_t trig_rare<double>(TrigOut, const double*, double*, double*);
template int32_t trig_rare<float>(TrigOut, const float*, float*, float*);

}  // namespace oxa::vml
