// Pieces shared by the Sin, Cos, SinCos and Tan kernels: the coefficient
// record, the exact reduction, and the one-element routine that settles the
// lanes the vector formula leaves out.
#pragma once

#include <cstdint>

namespace oxa::vml {

// sin r = r + r z S(z) and cos r = 1 - z/2 + z^2 C(z), z = r^2, |r| <= 0.786.
// S(0) is carried as s[0] + s0_lo.
struct TrigPoly {
  int n_sin;
  double s[8];
  double s0_lo;
  int n_cos;
  double c[8];
};

// The output a kernel family wants from the common evaluation.
enum class TrigOut { Sin, Cos, Tan, SinCos };

// One element outside the vector formula's range (zeros, inputs whose high
// word is zero, |x| >= 2^30, infinities, NaN), at full accuracy for every
// level: writes the result(s) and returns the status (1 for an infinite x).
template <class T>
int32_t trig_rare(TrigOut out, const T* x, T* r1, T* r2);

}  // namespace oxa::vml

// x - k pi/2 = r[0] + r[1] with |r| <= pi/4, exact to about 2^-100 relative
// for every finite x; returns k mod 4.
extern "C" int32_t oxa_vml_kernel_reduce_pio2d(double x, double* r);
