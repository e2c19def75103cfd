// Element-wise passes of the distribution generators over float or double
// arrays, written once for scalars and AVX2 vectors (vector_math's Vec<T>).
// An operation is a generic callable that works on T and on Vec<T> alike;
// lift<V>(x) turns a scalar parameter into either. Every path evaluates the
// same operations in the same order, so a result does not depend on where an
// element falls (vector body, alignment prologue or tail).
#pragma once

#include <algorithm>
#include <cstdint>

#include "vector_math/frame/simd.hpp"

namespace oxa::distributions {

using oxa::vml::simd::Vec;

template <class V, class T>
V lift(T x) {
  if constexpr (std::is_same_v<V, T>) {
    return x;
  } else {
    return oxa::vml::simd::broadcast(x);
  }
}

// max(a, x) with a's value when x is a NaN, like the vector instruction.
inline double max_of(double a, double x) { return x > a ? x : a; }
inline float max_of(float a, float x) { return x > a ? x : a; }
inline Vec<double> max_of(Vec<double> a, Vec<double> x) { return {_mm256_max_pd(x.v, a.v)}; }
inline Vec<float> max_of(Vec<float> a, Vec<float> x) { return {_mm256_max_ps(x.v, a.v)}; }

// out[i] = op(in[i]) for the scale-and-shift passes that finish a generator
// (in may be out): single elements until out is 32-byte aligned (when out is
// element-aligned at all), then 16 elements a step, then one vector at a
// time, then singles.
template <class T, class Op>
void map_pass(int32_t n, const T* in, T* out, Op op) {
  constexpr int32_t kLanes = Vec<T>::kLanes;
  int32_t i = 0;
  if (reinterpret_cast<uintptr_t>(out) % sizeof(T) == 0) {
    for (; i < n && reinterpret_cast<uintptr_t>(out + i) % 32 != 0; ++i) out[i] = op(in[i]);
  }
  for (; i + 16 <= n; i += 16) {
    for (int32_t k = 0; k < 16; k += kLanes)
      store(out + i + k, op(oxa::vml::simd::load(in + i + k)));
  }
  for (; i + kLanes <= n; i += kLanes) store(out + i, op(oxa::vml::simd::load(in + i)));
  for (; i < n; ++i) out[i] = op(in[i]);
}

// r[i] = op(r[i]).
template <class T, class Op>
void final_pass(T* r, int32_t n, Op op) {
  map_pass(n, r, r, op);
}

// Blocks of at most 1024 elements of r: transform(m, r + i, t) computes the
// block into a stack buffer t, then r[i + k] = finish(t[k]). Kernels are thus
// never called in place: a kernel's scalar special-case path reads its input
// again after the vector path has stored the block's results.
template <class T, class Transform, class Finish>
void through_block(T* r, int32_t n, Transform transform, Finish finish) {
  constexpr int32_t kBlock = 1024;
  alignas(32) T t[kBlock];
  for (int32_t done = 0; done < n; done += kBlock) {
    const int32_t m = std::min(kBlock, n - done);
    transform(m, static_cast<const T*>(r + done), t);
    map_pass(m, t, r + done, finish);
  }
}

// x <= y ? if_le : otherwise.
inline double select_le(double x, double y, double if_le, double otherwise) {
  return x <= y ? if_le : otherwise;
}
inline float select_le(float x, float y, float if_le, float otherwise) {
  return x <= y ? if_le : otherwise;
}
inline Vec<double> select_le(Vec<double> x, Vec<double> y, Vec<double> if_le, Vec<double> otherwise) {
  return {_mm256_blendv_pd(otherwise.v, if_le.v, _mm256_cmp_pd(x.v, y.v, _CMP_LE_OQ))};
}
inline Vec<float> select_le(Vec<float> x, Vec<float> y, Vec<float> if_le, Vec<float> otherwise) {
  return {_mm256_blendv_ps(otherwise.v, if_le.v, _mm256_cmp_ps(x.v, y.v, _CMP_LE_OQ))};
}

// out[i] = op(x[i], y[i]).
template <class T, class Op>
void zip_pass(int32_t n, const T* x, const T* y, T* out, Op op) {
  constexpr int32_t kLanes = Vec<T>::kLanes;
  int32_t i = 0;
  for (; i + kLanes <= n; i += kLanes)
    store(out + i, op(oxa::vml::simd::load(x + i), oxa::vml::simd::load(y + i)));
  for (; i < n; ++i) out[i] = op(x[i], y[i]);
}

// even[k] = u[2k], odd[k] = scale·u[2k+1] for k < m.
template <class T>
void split_pairs(int32_t m, const T* u, T* even, T* odd, T scale) {
  int32_t k = 0;
  if constexpr (std::is_same_v<T, double>) {
    const __m256d s = _mm256_set1_pd(scale);
    for (; k + 4 <= m; k += 4) {
      const __m256d a = _mm256_loadu_pd(u + 2 * k), b = _mm256_loadu_pd(u + 2 * k + 4);
      // unpack gives (a0 b0 a2 b2); the permute restores element order.
      const __m256d lo = _mm256_permute4x64_pd(_mm256_unpacklo_pd(a, b), 0xD8);
      const __m256d hi = _mm256_permute4x64_pd(_mm256_unpackhi_pd(a, b), 0xD8);
      _mm256_storeu_pd(even + k, lo);
      _mm256_storeu_pd(odd + k, _mm256_mul_pd(s, hi));
    }
  } else {
    const __m256 s = _mm256_set1_ps(scale);
    const __m256i order = _mm256_setr_epi32(0, 1, 4, 5, 2, 3, 6, 7);
    for (; k + 8 <= m; k += 8) {
      const __m256 a = _mm256_loadu_ps(u + 2 * k), b = _mm256_loadu_ps(u + 2 * k + 8);
      const __m256 lo = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(2, 0, 2, 0));
      const __m256 hi = _mm256_shuffle_ps(a, b, _MM_SHUFFLE(3, 1, 3, 1));
      _mm256_storeu_ps(even + k, _mm256_permutevar8x32_ps(lo, order));
      _mm256_storeu_ps(odd + k, _mm256_mul_ps(s, _mm256_permutevar8x32_ps(hi, order)));
    }
  }
  for (; k < m; ++k) {
    even[k] = u[2 * k];
    odd[k] = scale * u[2 * k + 1];
  }
}

// out[2k] = x[k], out[2k+1] = y[k] for the lanes of x and y.
inline void store_pairs(double* out, Vec<double> x, Vec<double> y) {
  const __m256d lo = _mm256_unpacklo_pd(x.v, y.v), hi = _mm256_unpackhi_pd(x.v, y.v);
  _mm256_storeu_pd(out, _mm256_permute2f128_pd(lo, hi, 0x20));
  _mm256_storeu_pd(out + 4, _mm256_permute2f128_pd(lo, hi, 0x31));
}
inline void store_pairs(float* out, Vec<float> x, Vec<float> y) {
  const __m256 lo = _mm256_unpacklo_ps(x.v, y.v), hi = _mm256_unpackhi_ps(x.v, y.v);
  _mm256_storeu_ps(out, _mm256_permute2f128_ps(lo, hi, 0x20));
  _mm256_storeu_ps(out + 8, _mm256_permute2f128_ps(lo, hi, 0x31));
}
inline void store_pairs(double* out, double x, double y) {
  out[0] = x;
  out[1] = y;
}
inline void store_pairs(float* out, float x, float y) {
  out[0] = x;
  out[1] = y;
}

// (out[2k], out[2k+1]) = op(q[k], s[k], c[k]) for k < m, op returning a pair.
template <class T, class Op>
void pair_pass(int32_t m, const T* q, const T* s, const T* c, T* out, Op op) {
  constexpr int32_t kLanes = Vec<T>::kLanes;
  using oxa::vml::simd::load;
  int32_t k = 0;
  for (; k + kLanes <= m; k += kLanes) {
    const auto [x, y] = op(load(q + k), load(s + k), load(c + k));
    store_pairs(out + 2 * k, x, y);
  }
  for (; k < m; ++k) {
    const auto [x, y] = op(q[k], s[k], c[k]);
    store_pairs(out + 2 * k, x, y);
  }
}

// The common finishing operations.
// a + b·x
template <class T>
struct Affine {
  T a, b;
  template <class V>
  V operator()(V x) const { return lift<V>(a) + lift<V>(b) * x; }
};
// max(a, a + b·x): the displacement a is a floor that rounding cannot pierce.
template <class T>
struct AffineFloor {
  T a, b;
  template <class V>
  V operator()(V x) const { return max_of(lift<V>(a), lift<V>(a) + lift<V>(b) * x); }
};
// -x
template <class T>
struct Negate {
  template <class V>
  V operator()(V x) const { return lift<V>(T(0)) - x; }
};

}  // namespace oxa::distributions
