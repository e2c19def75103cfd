// Breakpoints of a uniform partition given by its two ends x0 and x1:
// b(k) = x0 + k·(x1 − x0)/(nx − 1) for k < nx − 1, evaluated left to right in
// the partition's precision, and b(nx − 1) = x1. Everything in the library
// that needs such a breakpoint takes it from here (the four-lane form gives
// the same bits as the scalar one), so that a cell found by arithmetic on the
// site agrees with the cell rule applied to these very values.
#pragma once

#include <immintrin.h>

#include <cstdint>

#include "data_fitting/task.hpp"

namespace oxa::df {

// (nx − 1)/(x1 − x0): cells per unit length, for guesses and slopes.
template <Real T>
inline T uniform_inverse_step(T x0, T x1, int64_t nx) {
  return static_cast<T>(nx - 1) / (x1 - x0);
}

template <Real T>
inline T uniform_breakpoint(T x0, T x1, int64_t nx, int64_t k) {
  return k == nx - 1 ? x1 : x0 + static_cast<T>(k) * (x1 - x0) / static_cast<T>(nx - 1);
}

// b(k) for four whole numbers k in [0, 2^52) held as doubles, widened to
// double lanes (exactly, for float partitions).
template <Real T>
struct UniformBreakpoints4;

template <>
struct UniformBreakpoints4<double> {
  __m256d x0, x1, d, m, last;
  UniformBreakpoints4(double lo, double hi, int64_t nx)
      : x0(_mm256_set1_pd(lo)),
        x1(_mm256_set1_pd(hi)),
        d(_mm256_set1_pd(hi - lo)),
        m(_mm256_set1_pd(static_cast<double>(nx - 1))),
        last(m) {}
  __m256d operator()(__m256d k) const {
    const __m256d b = _mm256_add_pd(x0, _mm256_div_pd(_mm256_mul_pd(k, d), m));
    return _mm256_blendv_pd(b, x1, _mm256_cmp_pd(k, last, _CMP_EQ_OQ));
  }
};

template <>
struct UniformBreakpoints4<float> {
  __m128 x0, x1, d, m;
  __m256d last;
  UniformBreakpoints4(float lo, float hi, int64_t nx)
      : x0(_mm_set1_ps(lo)),
        x1(_mm_set1_ps(hi)),
        d(_mm_set1_ps(hi - lo)),
        m(_mm_set1_ps(static_cast<float>(nx - 1))),
        last(_mm256_set1_pd(static_cast<double>(nx - 1))) {}
  __m256d operator()(__m256d k) const {
    // k to float rounds as the scalar conversion of the integer does.
    const __m128 b = _mm_add_ps(x0, _mm_div_ps(_mm_mul_ps(_mm256_cvtpd_ps(k), d), m));
    return _mm256_blendv_pd(_mm256_cvtps_pd(b), _mm256_cvtps_pd(x1),
                            _mm256_cmp_pd(k, last, _CMP_EQ_OQ));
  }
};

}  // namespace oxa::df
