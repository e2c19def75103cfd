// A thin AVX2 + FMA wrapper over one vector of doubles or floats, so that the
// basic estimator's vector loops are written once for both precisions.
#pragma once

#include <immintrin.h>

namespace oxa::ss {

template <class T>
struct Lanes;

template <>
struct Lanes<double> {
  using V = __m256d;
  static constexpr int kWidth = 4;  // lanes per vector
  static constexpr int kRows = 4;   // cross tiles: 4 x 2 vectors = 8 accumulators
  static V zero() { return _mm256_setzero_pd(); }
  static V set1(double x) { return _mm256_set1_pd(x); }
  static V add(V a, V b) { return _mm256_add_pd(a, b); }
  static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
  static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
  static void store(double* p, V v) { _mm256_storeu_pd(p, v); }
  static V load(const double* p) { return _mm256_loadu_pd(p); }
  static V broadcast(const double* p) { return _mm256_broadcast_sd(p); }
  static V fma(V a, V b, V c) { return _mm256_fmadd_pd(a, b, c); }
  static void add_to(double* p, V v) { _mm256_storeu_pd(p, _mm256_add_pd(_mm256_loadu_pd(p), v)); }
};

template <>
struct Lanes<float> {
  using V = __m256;
  static constexpr int kWidth = 8;
  static constexpr int kRows = 8;  // 8 x 1 vector = 8 accumulators
  static V zero() { return _mm256_setzero_ps(); }
  static V set1(float x) { return _mm256_set1_ps(x); }
  static V add(V a, V b) { return _mm256_add_ps(a, b); }
  static V sub(V a, V b) { return _mm256_sub_ps(a, b); }
  static V mul(V a, V b) { return _mm256_mul_ps(a, b); }
  static void store(float* p, V v) { _mm256_storeu_ps(p, v); }
  static V load(const float* p) { return _mm256_loadu_ps(p); }
  static V broadcast(const float* p) { return _mm256_broadcast_ss(p); }
  static V fma(V a, V b, V c) { return _mm256_fmadd_ps(a, b, c); }
  static void add_to(float* p, V v) { _mm256_storeu_ps(p, _mm256_add_ps(_mm256_loadu_ps(p), v)); }
};

}  // namespace oxa::ss
