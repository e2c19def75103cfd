// Thin AVX2 wrapper: one vector type per element type, with the arithmetic the
// kernel frame and the families need. Vec<double> holds 4 lanes, Vec<float> 8.
// fma/fms/fnma are always fused (the library is built without contraction, so
// a*b+c written with operators rounds twice).
#pragma once

#include <immintrin.h>

#include <cmath>
#include <cstdint>

namespace oxa::vml::simd {

template <class T>
struct Vec;

template <>
struct Vec<double> {
  static constexpr int kLanes = 4;
  __m256d v;
};

template <>
struct Vec<float> {
  static constexpr int kLanes = 8;
  __m256 v;
};

inline Vec<double> load(const double* p) { return {_mm256_loadu_pd(p)}; }
inline Vec<float> load(const float* p) { return {_mm256_loadu_ps(p)}; }
inline void store(double* p, Vec<double> x) { _mm256_storeu_pd(p, x.v); }
inline void store(float* p, Vec<float> x) { _mm256_storeu_ps(p, x.v); }

inline Vec<double> broadcast(double x) { return {_mm256_set1_pd(x)}; }
inline Vec<float> broadcast(float x) { return {_mm256_set1_ps(x)}; }

inline Vec<double> operator+(Vec<double> a, Vec<double> b) { return {_mm256_add_pd(a.v, b.v)}; }
inline Vec<double> operator-(Vec<double> a, Vec<double> b) { return {_mm256_sub_pd(a.v, b.v)}; }
inline Vec<double> operator*(Vec<double> a, Vec<double> b) { return {_mm256_mul_pd(a.v, b.v)}; }
inline Vec<double> operator/(Vec<double> a, Vec<double> b) { return {_mm256_div_pd(a.v, b.v)}; }
inline Vec<float> operator+(Vec<float> a, Vec<float> b) { return {_mm256_add_ps(a.v, b.v)}; }
inline Vec<float> operator-(Vec<float> a, Vec<float> b) { return {_mm256_sub_ps(a.v, b.v)}; }
inline Vec<float> operator*(Vec<float> a, Vec<float> b) { return {_mm256_mul_ps(a.v, b.v)}; }
inline Vec<float> operator/(Vec<float> a, Vec<float> b) { return {_mm256_div_ps(a.v, b.v)}; }

// a*b + c, a*b - c and c - a*b, each rounded once.
inline Vec<double> fma(Vec<double> a, Vec<double> b, Vec<double> c) { return {_mm256_fmadd_pd(a.v, b.v, c.v)}; }
inline Vec<double> fms(Vec<double> a, Vec<double> b, Vec<double> c) { return {_mm256_fmsub_pd(a.v, b.v, c.v)}; }
inline Vec<double> fnma(Vec<double> a, Vec<double> b, Vec<double> c) { return {_mm256_fnmadd_pd(a.v, b.v, c.v)}; }
inline Vec<float> fma(Vec<float> a, Vec<float> b, Vec<float> c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
inline Vec<float> fms(Vec<float> a, Vec<float> b, Vec<float> c) { return {_mm256_fmsub_ps(a.v, b.v, c.v)}; }
inline Vec<float> fnma(Vec<float> a, Vec<float> b, Vec<float> c) { return {_mm256_fnmadd_ps(a.v, b.v, c.v)}; }

// Scalar versions so that templates over "double or Vec<double>" read alike.
inline double fma(double a, double b, double c) { return std::fma(a, b, c); }
inline double fms(double a, double b, double c) { return std::fma(a, b, -c); }
inline double fnma(double a, double b, double c) { return std::fma(-a, b, c); }
inline float fma(float a, float b, float c) { return std::fma(a, b, c); }
inline float fms(float a, float b, float c) { return std::fma(a, b, -c); }
inline float fnma(float a, float b, float c) { return std::fma(-a, b, c); }

// Comparisons give lane masks (ordered: false for NaN lanes).
inline Vec<double> operator<(Vec<double> a, Vec<double> b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline Vec<float> operator<(Vec<float> a, Vec<float> b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }

// Lane masks are vectors whose lanes are all ones (set) or all zeros.
// select(m, a, b): lanes of b where m is set, else a.
inline Vec<double> select(Vec<double> m, Vec<double> a, Vec<double> b) { return {_mm256_blendv_pd(a.v, b.v, m.v)}; }
inline Vec<float> select(Vec<float> m, Vec<float> a, Vec<float> b) { return {_mm256_blendv_ps(a.v, b.v, m.v)}; }
inline unsigned lane_bits(Vec<double> m) { return static_cast<unsigned>(_mm256_movemask_pd(m.v)); }
inline unsigned lane_bits(Vec<float> m) { return static_cast<unsigned>(_mm256_movemask_ps(m.v)); }

// Raw bits.
inline __m256i bits(Vec<double> x) { return _mm256_castpd_si256(x.v); }
inline __m256i bits(Vec<float> x) { return _mm256_castps_si256(x.v); }
inline Vec<double> from_bits_d(__m256i b) { return {_mm256_castsi256_pd(b)}; }
inline Vec<float> from_bits_f(__m256i b) { return {_mm256_castsi256_ps(b)}; }

// The high 32-bit words of the four doubles, as four int32 lanes.
inline __m128i high_words(Vec<double> x) {
  const __m256 f = _mm256_castpd_ps(x.v);
  const __m128 lo = _mm256_castps256_ps128(f), hi = _mm256_extractf128_ps(f, 1);
  return _mm_castps_si128(_mm_shuffle_ps(lo, hi, _MM_SHUFFLE(3, 1, 3, 1)));
}

// A mask of four int32 lanes (0 or -1) widened to a mask of four doubles.
inline Vec<double> widen_mask(__m128i m) { return from_bits_d(_mm256_cvtepi32_epi64(m)); }

// Float <-> double conversion of half a float vector.
inline Vec<double> widen_low(Vec<float> x) { return {_mm256_cvtps_pd(_mm256_castps256_ps128(x.v))}; }
inline Vec<double> widen_high(Vec<float> x) { return {_mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1))}; }
inline Vec<float> narrow(Vec<double> lo, Vec<double> hi) {
  return {_mm256_set_m128(_mm256_cvtpd_ps(hi.v), _mm256_cvtpd_ps(lo.v))};
}

}  // namespace oxa::vml::simd

namespace oxa::vml::simd {

// Table rows of four lanes, from row numbers in 64-bit lanes. They leave the
// vector through 64-bit moves rather than through memory: a vector store
// reloaded as scalars stalls store forwarding on some processors.
struct Rows4 {
  const double *p0, *p1, *p2, *p3;
};

// Rows given as four 32-bit element offsets into the table (row · length).
inline Rows4 rows4(const double* table, __m128i offsets) {
  const uint64_t lo = static_cast<uint64_t>(_mm_cvtsi128_si64(offsets));
  const uint64_t hi = static_cast<uint64_t>(_mm_extract_epi64(offsets, 1));
  return {table + static_cast<uint32_t>(lo), table + (lo >> 32), table + static_cast<uint32_t>(hi),
          table + (hi >> 32)};
}

// Rows given as four 64-bit row numbers.
inline Rows4 rows4(const double* table, __m256i rows, int row_length) {
  const __m128i lo = _mm256_castsi256_si128(rows), hi = _mm256_extracti128_si256(rows, 1);
  return {table + _mm_cvtsi128_si64(lo) * row_length, table + _mm_extract_epi64(lo, 1) * row_length,
          table + _mm_cvtsi128_si64(hi) * row_length, table + _mm_extract_epi64(hi, 1) * row_length};
}

// Coefficients j..j+3 of the four rows as four vectors: out[c] holds
// coefficient j+c of every lane. Reads 4 doubles from each row, so rows need
// 3 doubles of padding after them.
inline void gather_rows4(const Rows4& rows, int j, Vec<double> out[4]) {
  // Two coefficients at a time: rows 0 and 2 in one vector, rows 1 and 3 in
  // another, then one unpack each; no cross-lane permutes.
  for (int h = 0; h < 4; h += 2) {
    const __m256d a = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(rows.p0 + j + h)),
                                           _mm_loadu_pd(rows.p2 + j + h), 1);
    const __m256d b = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(rows.p1 + j + h)),
                                           _mm_loadu_pd(rows.p3 + j + h), 1);
    out[h].v = _mm256_unpacklo_pd(a, b);
    out[h + 1].v = _mm256_unpackhi_pd(a, b);
  }
}

// The float version: eight rows at table + offsets (in elements),
// coefficients 0..3 of each. The offsets are taken as scalars one by one (an
// array here gets vectorised through memory and stalls store forwarding).
inline void gather_rows8(const float* table, __m256i offsets, Vec<float> out[4]) {
  const __m128i lo = _mm256_castsi256_si128(offsets), hi = _mm256_extracti128_si256(offsets, 1);
  const uint64_t q0 = static_cast<uint64_t>(_mm_cvtsi128_si64(lo));
  const uint64_t q1 = static_cast<uint64_t>(_mm_extract_epi64(lo, 1));
  const uint64_t q2 = static_cast<uint64_t>(_mm_cvtsi128_si64(hi));
  const uint64_t q3 = static_cast<uint64_t>(_mm_extract_epi64(hi, 1));
  auto pair = [table](uint64_t first, uint64_t second) {  // rows l and l + 4
    return _mm256_insertf128_ps(_mm256_castps128_ps256(_mm_loadu_ps(table + first)),
                                _mm_loadu_ps(table + second), 1);
  };
  const __m256 a = pair(static_cast<uint32_t>(q0), static_cast<uint32_t>(q2));
  const __m256 b = pair(q0 >> 32, q2 >> 32);
  const __m256 c = pair(static_cast<uint32_t>(q1), static_cast<uint32_t>(q3));
  const __m256 d = pair(q1 >> 32, q3 >> 32);
  const __m256 t0 = _mm256_unpacklo_ps(a, b), t1 = _mm256_unpackhi_ps(a, b);
  const __m256 t2 = _mm256_unpacklo_ps(c, d), t3 = _mm256_unpackhi_ps(c, d);
  out[0].v = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(1, 0, 1, 0));
  out[1].v = _mm256_shuffle_ps(t0, t2, _MM_SHUFFLE(3, 2, 3, 2));
  out[2].v = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(1, 0, 1, 0));
  out[3].v = _mm256_shuffle_ps(t1, t3, _MM_SHUFFLE(3, 2, 3, 2));
}

}  // namespace oxa::vml::simd
