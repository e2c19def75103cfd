// Polynomial evaluation over double, float or simd vectors. horner() has the
// smallest rounding error; estrin() has a dependency chain of about log2(N)
// fused multiply-adds instead of N, for kernels that are latency bound. For
// |t| well below 1 their results differ by an ulp at most.
#pragma once

#include "vector_math/frame/simd.hpp"

namespace oxa::vml::poly {

// c[0] + t (c[1] + t (... c[N-1])).
template <int N, class V>
[[gnu::always_inline]] inline V horner(const V* c, V t) {
  V r = c[N - 1];
#pragma GCC unroll 32
  for (int j = N - 2; j >= 0; --j) r = simd::fma(r, t, c[j]);
  return r;
}

// The same polynomial as sum over pairs: (c0 + c1 t) + t^2 ((c2 + c3 t) + t^2 ...),
// the pairs combined level by level with t^2, t^4, t^8, ...
template <int N, class V>
[[gnu::always_inline]] inline V estrin(const V* c, V t) {
  if constexpr (N == 1) {
    return c[0];
  } else {
    constexpr int kHalf = (N + 1) / 2;
    V pairs[kHalf];
#pragma GCC unroll 16
    for (int j = 0; j < N / 2; ++j) pairs[j] = simd::fma(c[2 * j + 1], t, c[2 * j]);
    if constexpr (N % 2 == 1) pairs[kHalf - 1] = c[N - 1];
    return estrin<kHalf>(pairs, t * t);
  }
}

}  // namespace oxa::vml::poly
