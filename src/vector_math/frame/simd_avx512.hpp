// The Avx512 member of the vector layer (see simd.hpp for the list). Only
// translation units compiled with -mavx512f -mavx512dq -mavx512bw
// -mavx512vl see it; the library itself is built for AVX2. Masks live in
// mask registers; table rows come through hardware gathers.
#pragma once

namespace oxa::vml::simd {

using VZd = Vec<double, Avx512>;
using VZf = Vec<float, Avx512>;
using VZl = Vec<int64_t, Avx512>;
using VZi = Vec<int32_t, Avx512>;
using MZd = Mask<double, Avx512>;
using MZf = Mask<float, Avx512>;

template <> inline VZd::Vec(double x) : v(_mm512_set1_pd(x)) {}
template <> inline VZf::Vec(float x) : v(_mm512_set1_ps(x)) {}
template <> inline VZl::Vec(int64_t x) : v(_mm512_set1_epi64(x)) {}
template <> inline VZi::Vec(int32_t x) : v(_mm512_set1_epi32(x)) {}

template <> inline VZd load<Avx512, double>(const double* p) { return {_mm512_loadu_pd(p)}; }
template <> inline VZf load<Avx512, float>(const float* p) { return {_mm512_loadu_ps(p)}; }
inline void store(double* p, VZd x) { _mm512_storeu_pd(p, x.v); }
inline void store(float* p, VZf x) { _mm512_storeu_ps(p, x.v); }

inline VZd operator+(VZd a, VZd b) { return {_mm512_add_pd(a.v, b.v)}; }
inline VZd operator-(VZd a, VZd b) { return {_mm512_sub_pd(a.v, b.v)}; }
inline VZd operator*(VZd a, VZd b) { return {_mm512_mul_pd(a.v, b.v)}; }
inline VZd operator/(VZd a, VZd b) { return {_mm512_div_pd(a.v, b.v)}; }
inline VZf operator+(VZf a, VZf b) { return {_mm512_add_ps(a.v, b.v)}; }
inline VZf operator-(VZf a, VZf b) { return {_mm512_sub_ps(a.v, b.v)}; }
inline VZf operator*(VZf a, VZf b) { return {_mm512_mul_ps(a.v, b.v)}; }
inline VZf operator/(VZf a, VZf b) { return {_mm512_div_ps(a.v, b.v)}; }
inline VZd fma(VZd a, VZd b, VZd c) { return {_mm512_fmadd_pd(a.v, b.v, c.v)}; }
inline VZd fms(VZd a, VZd b, VZd c) { return {_mm512_fmsub_pd(a.v, b.v, c.v)}; }
inline VZd fnma(VZd a, VZd b, VZd c) { return {_mm512_fnmadd_pd(a.v, b.v, c.v)}; }
inline VZf fma(VZf a, VZf b, VZf c) { return {_mm512_fmadd_ps(a.v, b.v, c.v)}; }
inline VZf fms(VZf a, VZf b, VZf c) { return {_mm512_fmsub_ps(a.v, b.v, c.v)}; }
inline VZf fnma(VZf a, VZf b, VZf c) { return {_mm512_fnmadd_ps(a.v, b.v, c.v)}; }
inline VZd sqrt(VZd a) { return {_mm512_sqrt_pd(a.v)}; }
inline VZf sqrt(VZf a) { return {_mm512_sqrt_ps(a.v)}; }
inline VZd min(VZd a, VZd b) { return {_mm512_min_pd(a.v, b.v)}; }
inline VZd max(VZd a, VZd b) { return {_mm512_max_pd(a.v, b.v)}; }
inline VZf min(VZf a, VZf b) { return {_mm512_min_ps(a.v, b.v)}; }
inline VZf max(VZf a, VZf b) { return {_mm512_max_ps(a.v, b.v)}; }

inline VZd round_even(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)}; }
inline VZf round_even(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)}; }
inline VZd floor(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)}; }
inline VZf floor(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)}; }
inline VZd ceil(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC)}; }
inline VZf ceil(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC)}; }
inline VZd trunc(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC)}; }
inline VZf trunc(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC)}; }
inline VZd rint(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_CUR_DIRECTION)}; }
inline VZf rint(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_CUR_DIRECTION)}; }
inline VZd nearbyint(VZd a) { return {_mm512_roundscale_pd(a.v, _MM_FROUND_CUR_DIRECTION | _MM_FROUND_NO_EXC)}; }
inline VZf nearbyint(VZf a) { return {_mm512_roundscale_ps(a.v, _MM_FROUND_CUR_DIRECTION | _MM_FROUND_NO_EXC)}; }

inline VZd operator&(VZd a, VZd b) { return {_mm512_and_pd(a.v, b.v)}; }
inline VZd operator|(VZd a, VZd b) { return {_mm512_or_pd(a.v, b.v)}; }
inline VZd operator^(VZd a, VZd b) { return {_mm512_xor_pd(a.v, b.v)}; }
inline VZd and_not(VZd a, VZd b) { return {_mm512_andnot_pd(b.v, a.v)}; }
inline VZf operator&(VZf a, VZf b) { return {_mm512_and_ps(a.v, b.v)}; }
inline VZf operator|(VZf a, VZf b) { return {_mm512_or_ps(a.v, b.v)}; }
inline VZf operator^(VZf a, VZf b) { return {_mm512_xor_ps(a.v, b.v)}; }
inline VZf and_not(VZf a, VZf b) { return {_mm512_andnot_ps(b.v, a.v)}; }
template <class T>
inline Vec<T, Avx512> operator&(Vec<T, Avx512> a, Vec<T, Avx512> b) requires std::is_integral_v<T> { return {_mm512_and_si512(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx512> operator|(Vec<T, Avx512> a, Vec<T, Avx512> b) requires std::is_integral_v<T> { return {_mm512_or_si512(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx512> operator^(Vec<T, Avx512> a, Vec<T, Avx512> b) requires std::is_integral_v<T> { return {_mm512_xor_si512(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx512> and_not(Vec<T, Avx512> a, Vec<T, Avx512> b) requires std::is_integral_v<T> { return {_mm512_andnot_si512(b.v, a.v)}; }

inline VZl operator+(VZl a, VZl b) { return {_mm512_add_epi64(a.v, b.v)}; }
inline VZl operator-(VZl a, VZl b) { return {_mm512_sub_epi64(a.v, b.v)}; }
inline VZi operator+(VZi a, VZi b) { return {_mm512_add_epi32(a.v, b.v)}; }
inline VZi operator-(VZi a, VZi b) { return {_mm512_sub_epi32(a.v, b.v)}; }
template <int N> inline VZl shl(VZl a) { return {_mm512_slli_epi64(a.v, N)}; }
template <int N> inline VZl shr(VZl a) { return {_mm512_srli_epi64(a.v, N)}; }
template <int N> inline VZi shl(VZi a) { return {_mm512_slli_epi32(a.v, N)}; }
template <int N> inline VZi shr(VZi a) { return {_mm512_srli_epi32(a.v, N)}; }
template <int N> inline VZi sar(VZi a) { return {_mm512_srai_epi32(a.v, N)}; }
inline VZl shr(VZl a, int n) { return {_mm512_srli_epi64(a.v, static_cast<unsigned>(n))}; }
inline VZi shr(VZi a, int n) { return {_mm512_srli_epi32(a.v, static_cast<unsigned>(n))}; }
inline VZi min(VZi a, VZi b) { return {_mm512_min_epi32(a.v, b.v)}; }
inline VZi max(VZi a, VZi b) { return {_mm512_max_epi32(a.v, b.v)}; }
inline VZi mullo(VZi a, VZi b) { return {_mm512_mullo_epi32(a.v, b.v)}; }

inline MZd operator<(VZd a, VZd b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_LT_OQ)}; }
inline MZd operator<=(VZd a, VZd b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_LE_OQ)}; }
inline MZd operator==(VZd a, VZd b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_EQ_OQ)}; }
inline MZd operator!=(VZd a, VZd b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_NEQ_UQ)}; }
inline MZd nlt(VZd a, VZd b) { return {_mm512_cmp_pd_mask(a.v, b.v, _CMP_NLT_UQ)}; }
inline MZd is_nan(VZd a) { return {_mm512_cmp_pd_mask(a.v, a.v, _CMP_UNORD_Q)}; }
inline MZf operator<(VZf a, VZf b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LT_OQ)}; }
inline MZf operator<=(VZf a, VZf b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_LE_OQ)}; }
inline MZf operator==(VZf a, VZf b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_EQ_OQ)}; }
inline MZf operator!=(VZf a, VZf b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_NEQ_UQ)}; }
inline MZf nlt(VZf a, VZf b) { return {_mm512_cmp_ps_mask(a.v, b.v, _CMP_NLT_UQ)}; }
inline MZf is_nan(VZf a) { return {_mm512_cmp_ps_mask(a.v, a.v, _CMP_UNORD_Q)}; }
inline Mask<int64_t, Avx512> operator>(VZl a, VZl b) { return {_mm512_cmpgt_epi64_mask(a.v, b.v)}; }
inline Mask<int64_t, Avx512> operator==(VZl a, VZl b) { return {_mm512_cmpeq_epi64_mask(a.v, b.v)}; }
inline Mask<int32_t, Avx512> operator>(VZi a, VZi b) { return {_mm512_cmpgt_epi32_mask(a.v, b.v)}; }
inline Mask<int32_t, Avx512> operator==(VZi a, VZi b) { return {_mm512_cmpeq_epi32_mask(a.v, b.v)}; }

// Masks in mask registers: integer logic on the lane bits.
template <class T>
inline Mask<T, Avx512> operator&(Mask<T, Avx512> a, Mask<T, Avx512> b) { return {static_cast<typename Mask<T, Avx512>::native>(a.m & b.m)}; }
template <class T>
inline Mask<T, Avx512> operator|(Mask<T, Avx512> a, Mask<T, Avx512> b) { return {static_cast<typename Mask<T, Avx512>::native>(a.m | b.m)}; }
template <class T>
inline Mask<T, Avx512> operator^(Mask<T, Avx512> a, Mask<T, Avx512> b) { return {static_cast<typename Mask<T, Avx512>::native>(a.m ^ b.m)}; }
template <class T>
inline Mask<T, Avx512> and_not(Mask<T, Avx512> a, Mask<T, Avx512> b) { return {static_cast<typename Mask<T, Avx512>::native>(a.m & ~b.m)}; }
template <class T>
inline Mask<T, Avx512> operator~(Mask<T, Avx512> a) { return {static_cast<typename Mask<T, Avx512>::native>(~a.m)}; }
template <class T>
inline unsigned lane_bits(Mask<T, Avx512> m) { return static_cast<unsigned>(m.m); }

inline VZd select(MZd m, VZd a, VZd b) { return {_mm512_mask_blend_pd(m.m, a.v, b.v)}; }
inline VZf select(MZf m, VZf a, VZf b) { return {_mm512_mask_blend_ps(m.m, a.v, b.v)}; }
inline VZl select(Mask<int64_t, Avx512> m, VZl a, VZl b) { return {_mm512_mask_blend_epi64(m.m, a.v, b.v)}; }
inline VZi select(Mask<int32_t, Avx512> m, VZi a, VZi b) { return {_mm512_mask_blend_epi32(m.m, a.v, b.v)}; }
template <class T>
inline Vec<T, Avx512> keep_where(Mask<T, Avx512> m, Vec<T, Avx512> x) { return select(m, Vec<T, Avx512>(T(0)), x); }
template <class T>
inline Vec<T, Avx512> zero_where(Mask<T, Avx512> m, Vec<T, Avx512> x) { return select(m, x, Vec<T, Avx512>(T(0))); }

inline VZl bits(VZd x) { return {_mm512_castpd_si512(x.v)}; }
inline VZi bits(VZf x) { return {_mm512_castps_si512(x.v)}; }
inline VZl bits(VZl x) { return x; }
inline VZi bits(VZi x) { return x; }
inline VZd from_bits(VZl b) { return {_mm512_castsi512_pd(b.v)}; }
inline VZf from_bits(VZi b) { return {_mm512_castsi512_ps(b.v)}; }
template <class U, class T>
inline Mask<U, Avx512> mask_cast(Mask<T, Avx512> m) requires(sizeof(U) == sizeof(T)) { return {m.m}; }
// Lanes whose sign bit is set.
inline MZd sign_mask(VZd x) { return {_mm512_movepi64_mask(_mm512_castpd_si512(x.v))}; }
inline MZf sign_mask(VZf x) { return {_mm512_movepi32_mask(_mm512_castps_si512(x.v))}; }
inline MZd widen(Mask<int32_t, Avx2> m) { return {_mm256_movepi32_mask(m.m)}; }

inline VZd to_double(VAi x) { return {_mm512_cvtepi32_pd(x.v)}; }
inline VZf to_float(VZi x) { return {_mm512_cvtepi32_ps(x.v)}; }
inline VZi to_int_nearest(VZf x) { return {_mm512_cvtps_epi32(x.v)}; }
inline VAi high_words(VZd x) { return {_mm512_cvtepi64_epi32(_mm512_srli_epi64(_mm512_castpd_si512(x.v), 32))}; }
inline VZd widen_low(VZf x) { return {_mm512_cvtps_pd(_mm512_castps512_ps256(x.v))}; }
inline VZd widen_high(VZf x) { return {_mm512_cvtps_pd(_mm512_extractf32x8_ps(x.v, 1))}; }
inline VZf narrow(VZd lo, VZd hi) {
  return {_mm512_insertf32x8(_mm512_castps256_ps512(_mm512_cvtpd_ps(lo.v)), _mm512_cvtpd_ps(hi.v), 1)};
}
inline VAf demote(VZd x) { return {_mm512_cvtpd_ps(x.v)}; }
inline VZd promote(VAf x) { return {_mm512_cvtps_pd(x.v)}; }

// Estimates within 2^-14 relative.
inline VZf rsqrt_estimate(VZf x) { return {_mm512_rsqrt14_ps(x.v)}; }
inline VZf rcp_estimate(VZf x) { return {_mm512_rcp14_ps(x.v)}; }

inline void load_pairs(const double* t, VZl j, VZd& first, VZd& second) {
  const __m512i i2 = _mm512_slli_epi64(j.v, 1);
  first.v = _mm512_i64gather_pd(i2, t, 8);
  second.v = _mm512_i64gather_pd(i2, t + 1, 8);
}

template <>
struct RowPointers<Avx512> {
  const double* table;
  __m512i offsets;  // in elements
};
inline RowPointers<Avx512> row_pointers(const double* table, VAi offsets) {
  return {table, _mm512_cvtepu32_epi64(offsets.v)};
}
inline RowPointers<Avx512> row_pointers(const double* table, VZl rows, int row_length) {
  return {table, _mm512_mullo_epi64(rows.v, _mm512_set1_epi64(row_length))};
}
inline void gather_columns(const RowPointers<Avx512>& rows, int j, VZd out[4]) {
  for (int c = 0; c < 4; ++c) out[c].v = _mm512_i64gather_pd(rows.offsets, rows.table + j + c, 8);
}
inline void gather_rows(const float* table, VZi offsets, VZf out[4]) {
  for (int c = 0; c < 4; ++c) out[c].v = _mm512_i32gather_ps(offsets.v, table + c, 4);
}

inline VZf lookup8(const float* t, VZi idx) {
  return {_mm512_permutexvar_ps(idx.v, _mm512_broadcast_f32x8(_mm256_loadu_ps(t)))};
}
inline VZf lookup16(const float* t, VZi idx) { return {_mm512_permutexvar_ps(idx.v, _mm512_loadu_ps(t))}; }

}  // namespace oxa::vml::simd
