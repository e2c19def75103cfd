// The Sse and Avx2 members of the vector layer (see simd.hpp for the list).
// Masks are vectors whose lanes are all ones or all zeros.
#pragma once

namespace oxa::vml::simd {

using VSd = Vec<double, Sse>;
using VSf = Vec<float, Sse>;
using VSi = Vec<int32_t, Sse>;
using VAd = Vec<double, Avx2>;
using VAf = Vec<float, Avx2>;
using VAl = Vec<int64_t, Avx2>;
using VAi = Vec<int32_t, Avx2>;

// Broadcasts.
template <> inline VSd::Vec(double x) : v(_mm_set1_pd(x)) {}
template <> inline VSf::Vec(float x) : v(_mm_set1_ps(x)) {}
template <> inline VSi::Vec(int32_t x) : v(_mm_set1_epi32(x)) {}
template <> inline Vec<int64_t, Sse>::Vec(int64_t x) : v(_mm_set1_epi64x(x)) {}
template <> inline VAd::Vec(double x) : v(_mm256_set1_pd(x)) {}
template <> inline VAf::Vec(float x) : v(_mm256_set1_ps(x)) {}
template <> inline VAl::Vec(int64_t x) : v(_mm256_set1_epi64x(x)) {}
template <> inline VAi::Vec(int32_t x) : v(_mm256_set1_epi32(x)) {}

// Loads and stores (unaligned).
template <> inline VAd load<Avx2, double>(const double* p) { return {_mm256_loadu_pd(p)}; }
template <> inline VAf load<Avx2, float>(const float* p) { return {_mm256_loadu_ps(p)}; }
inline void store(double* p, VAd x) { _mm256_storeu_pd(p, x.v); }
inline void store(float* p, VAf x) { _mm256_storeu_ps(p, x.v); }

// Floating-point arithmetic.
inline VAd operator+(VAd a, VAd b) { return {_mm256_add_pd(a.v, b.v)}; }
inline VAd operator-(VAd a, VAd b) { return {_mm256_sub_pd(a.v, b.v)}; }
inline VAd operator*(VAd a, VAd b) { return {_mm256_mul_pd(a.v, b.v)}; }
inline VAd operator/(VAd a, VAd b) { return {_mm256_div_pd(a.v, b.v)}; }
inline VAf operator+(VAf a, VAf b) { return {_mm256_add_ps(a.v, b.v)}; }
inline VAf operator-(VAf a, VAf b) { return {_mm256_sub_ps(a.v, b.v)}; }
inline VAf operator*(VAf a, VAf b) { return {_mm256_mul_ps(a.v, b.v)}; }
inline VAf operator/(VAf a, VAf b) { return {_mm256_div_ps(a.v, b.v)}; }
inline VAd fma(VAd a, VAd b, VAd c) { return {_mm256_fmadd_pd(a.v, b.v, c.v)}; }
inline VAd fms(VAd a, VAd b, VAd c) { return {_mm256_fmsub_pd(a.v, b.v, c.v)}; }
inline VAd fnma(VAd a, VAd b, VAd c) { return {_mm256_fnmadd_pd(a.v, b.v, c.v)}; }
inline VAf fma(VAf a, VAf b, VAf c) { return {_mm256_fmadd_ps(a.v, b.v, c.v)}; }
inline VAf fms(VAf a, VAf b, VAf c) { return {_mm256_fmsub_ps(a.v, b.v, c.v)}; }
inline VAf fnma(VAf a, VAf b, VAf c) { return {_mm256_fnmadd_ps(a.v, b.v, c.v)}; }
inline VAd sqrt(VAd a) { return {_mm256_sqrt_pd(a.v)}; }
inline VAf sqrt(VAf a) { return {_mm256_sqrt_ps(a.v)}; }
// min/max: the second operand where either is NaN, as the instructions do.
inline VAd min(VAd a, VAd b) { return {_mm256_min_pd(a.v, b.v)}; }
inline VAd max(VAd a, VAd b) { return {_mm256_max_pd(a.v, b.v)}; }
inline VAf min(VAf a, VAf b) { return {_mm256_min_ps(a.v, b.v)}; }
inline VAf max(VAf a, VAf b) { return {_mm256_max_ps(a.v, b.v)}; }

// Rounding to integral values without raising inexact; rint in the current mode.
inline VAd round_even(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)}; }
inline VAf round_even(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC)}; }
inline VAd floor(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)}; }
inline VAf floor(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_NEG_INF | _MM_FROUND_NO_EXC)}; }
inline VAd ceil(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC)}; }
inline VAf ceil(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_POS_INF | _MM_FROUND_NO_EXC)}; }
inline VAd trunc(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC)}; }
inline VAf trunc(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC)}; }
inline VAd rint(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_CUR_DIRECTION)}; }
inline VAf rint(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_CUR_DIRECTION)}; }
inline VAd nearbyint(VAd a) { return {_mm256_round_pd(a.v, _MM_FROUND_CUR_DIRECTION | _MM_FROUND_NO_EXC)}; }
inline VAf nearbyint(VAf a) { return {_mm256_round_ps(a.v, _MM_FROUND_CUR_DIRECTION | _MM_FROUND_NO_EXC)}; }

// Bitwise operations.
inline VAd operator&(VAd a, VAd b) { return {_mm256_and_pd(a.v, b.v)}; }
inline VAd operator|(VAd a, VAd b) { return {_mm256_or_pd(a.v, b.v)}; }
inline VAd operator^(VAd a, VAd b) { return {_mm256_xor_pd(a.v, b.v)}; }
inline VAd and_not(VAd a, VAd b) { return {_mm256_andnot_pd(b.v, a.v)}; }
inline VAf operator&(VAf a, VAf b) { return {_mm256_and_ps(a.v, b.v)}; }
inline VAf operator|(VAf a, VAf b) { return {_mm256_or_ps(a.v, b.v)}; }
inline VAf operator^(VAf a, VAf b) { return {_mm256_xor_ps(a.v, b.v)}; }
inline VAf and_not(VAf a, VAf b) { return {_mm256_andnot_ps(b.v, a.v)}; }
template <class T>
inline Vec<T, Avx2> operator&(Vec<T, Avx2> a, Vec<T, Avx2> b) requires std::is_integral_v<T> { return {_mm256_and_si256(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx2> operator|(Vec<T, Avx2> a, Vec<T, Avx2> b) requires std::is_integral_v<T> { return {_mm256_or_si256(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx2> operator^(Vec<T, Avx2> a, Vec<T, Avx2> b) requires std::is_integral_v<T> { return {_mm256_xor_si256(a.v, b.v)}; }
template <class T>
inline Vec<T, Avx2> and_not(Vec<T, Avx2> a, Vec<T, Avx2> b) requires std::is_integral_v<T> { return {_mm256_andnot_si256(b.v, a.v)}; }
inline VSi operator&(VSi a, VSi b) { return {_mm_and_si128(a.v, b.v)}; }
inline VSi operator|(VSi a, VSi b) { return {_mm_or_si128(a.v, b.v)}; }
inline VSi operator^(VSi a, VSi b) { return {_mm_xor_si128(a.v, b.v)}; }

// Integer lanes.
inline VAl operator+(VAl a, VAl b) { return {_mm256_add_epi64(a.v, b.v)}; }
inline VAl operator-(VAl a, VAl b) { return {_mm256_sub_epi64(a.v, b.v)}; }
inline VAi operator+(VAi a, VAi b) { return {_mm256_add_epi32(a.v, b.v)}; }
inline VAi operator-(VAi a, VAi b) { return {_mm256_sub_epi32(a.v, b.v)}; }
inline VSi operator+(VSi a, VSi b) { return {_mm_add_epi32(a.v, b.v)}; }
inline VSi operator-(VSi a, VSi b) { return {_mm_sub_epi32(a.v, b.v)}; }
template <int N> inline VAl shl(VAl a) { return {_mm256_slli_epi64(a.v, N)}; }
template <int N> inline VAl shr(VAl a) { return {_mm256_srli_epi64(a.v, N)}; }
template <int N> inline VAi shl(VAi a) { return {_mm256_slli_epi32(a.v, N)}; }
template <int N> inline VAi shr(VAi a) { return {_mm256_srli_epi32(a.v, N)}; }
template <int N> inline VAi sar(VAi a) { return {_mm256_srai_epi32(a.v, N)}; }
template <int N> inline VSi shl(VSi a) { return {_mm_slli_epi32(a.v, N)}; }
template <int N> inline VSi shr(VSi a) { return {_mm_srli_epi32(a.v, N)}; }
template <int N> inline VSi sar(VSi a) { return {_mm_srai_epi32(a.v, N)}; }
// Shifts by a count known only at run time.
inline VAl shr(VAl a, int n) { return {_mm256_srli_epi64(a.v, n)}; }
inline VAi shr(VAi a, int n) { return {_mm256_srli_epi32(a.v, n)}; }
inline VSi shr(VSi a, int n) { return {_mm_srli_epi32(a.v, n)}; }
inline VAi min(VAi a, VAi b) { return {_mm256_min_epi32(a.v, b.v)}; }
inline VAi max(VAi a, VAi b) { return {_mm256_max_epi32(a.v, b.v)}; }
inline VSi min(VSi a, VSi b) { return {_mm_min_epi32(a.v, b.v)}; }
inline VSi max(VSi a, VSi b) { return {_mm_max_epi32(a.v, b.v)}; }
inline VAi mullo(VAi a, VAi b) { return {_mm256_mullo_epi32(a.v, b.v)}; }
inline VSi mullo(VSi a, VSi b) { return {_mm_mullo_epi32(a.v, b.v)}; }

// Comparisons.
inline Mask<double, Avx2> operator<(VAd a, VAd b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LT_OQ)}; }
inline Mask<double, Avx2> operator<=(VAd a, VAd b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_LE_OQ)}; }
inline Mask<double, Avx2> operator==(VAd a, VAd b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_EQ_OQ)}; }
inline Mask<double, Avx2> operator!=(VAd a, VAd b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_NEQ_UQ)}; }
inline Mask<double, Avx2> nlt(VAd a, VAd b) { return {_mm256_cmp_pd(a.v, b.v, _CMP_NLT_UQ)}; }
inline Mask<double, Avx2> is_nan(VAd a) { return {_mm256_cmp_pd(a.v, a.v, _CMP_UNORD_Q)}; }
inline Mask<float, Avx2> operator<(VAf a, VAf b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LT_OQ)}; }
inline Mask<float, Avx2> operator<=(VAf a, VAf b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_LE_OQ)}; }
inline Mask<float, Avx2> operator==(VAf a, VAf b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_EQ_OQ)}; }
inline Mask<float, Avx2> operator!=(VAf a, VAf b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NEQ_UQ)}; }
inline Mask<float, Avx2> nlt(VAf a, VAf b) { return {_mm256_cmp_ps(a.v, b.v, _CMP_NLT_UQ)}; }
inline Mask<float, Avx2> is_nan(VAf a) { return {_mm256_cmp_ps(a.v, a.v, _CMP_UNORD_Q)}; }
inline Mask<int64_t, Avx2> operator>(VAl a, VAl b) { return {_mm256_cmpgt_epi64(a.v, b.v)}; }
inline Mask<int64_t, Avx2> operator==(VAl a, VAl b) { return {_mm256_cmpeq_epi64(a.v, b.v)}; }
inline Mask<int32_t, Avx2> operator>(VAi a, VAi b) { return {_mm256_cmpgt_epi32(a.v, b.v)}; }
inline Mask<int32_t, Avx2> operator==(VAi a, VAi b) { return {_mm256_cmpeq_epi32(a.v, b.v)}; }
inline Mask<int32_t, Sse> operator>(VSi a, VSi b) { return {_mm_cmpgt_epi32(a.v, b.v)}; }
inline Mask<int32_t, Sse> operator==(VSi a, VSi b) { return {_mm_cmpeq_epi32(a.v, b.v)}; }

// Masks: the same bitwise operations on their vectors.
template <class T, class Isa>
inline Vec<T, Isa> as_vec(Mask<T, Isa> m) requires(!std::is_same_v<Isa, Avx512>) { return {m.m}; }
template <class T, class Isa>
inline Mask<T, Isa> operator&(Mask<T, Isa> a, Mask<T, Isa> b) requires(!std::is_same_v<Isa, Avx512>) {
  return {(as_vec(a) & as_vec(b)).v};
}
template <class T, class Isa>
inline Mask<T, Isa> operator|(Mask<T, Isa> a, Mask<T, Isa> b) requires(!std::is_same_v<Isa, Avx512>) {
  return {(as_vec(a) | as_vec(b)).v};
}
template <class T, class Isa>
inline Mask<T, Isa> operator^(Mask<T, Isa> a, Mask<T, Isa> b) requires(!std::is_same_v<Isa, Avx512>) {
  return {(as_vec(a) ^ as_vec(b)).v};
}
template <class T, class Isa>
inline Mask<T, Isa> and_not(Mask<T, Isa> a, Mask<T, Isa> b) requires(!std::is_same_v<Isa, Avx512>) {
  return {and_not(as_vec(a), as_vec(b)).v};
}
inline unsigned lane_bits(Mask<double, Avx2> m) { return static_cast<unsigned>(_mm256_movemask_pd(m.m)); }
inline unsigned lane_bits(Mask<float, Avx2> m) { return static_cast<unsigned>(_mm256_movemask_ps(m.m)); }
inline unsigned lane_bits(Mask<int64_t, Avx2> m) { return static_cast<unsigned>(_mm256_movemask_pd(_mm256_castsi256_pd(m.m))); }
inline unsigned lane_bits(Mask<int32_t, Avx2> m) { return static_cast<unsigned>(_mm256_movemask_ps(_mm256_castsi256_ps(m.m))); }
template <class T, class Isa>
inline bool any(Mask<T, Isa> m) { return lane_bits(m) != 0; }

inline VAd select(Mask<double, Avx2> m, VAd a, VAd b) { return {_mm256_blendv_pd(a.v, b.v, m.m)}; }
inline VAf select(Mask<float, Avx2> m, VAf a, VAf b) { return {_mm256_blendv_ps(a.v, b.v, m.m)}; }
template <class T>
inline Vec<T, Avx2> select(Mask<T, Avx2> m, Vec<T, Avx2> a, Vec<T, Avx2> b) requires std::is_integral_v<T> {
  return {_mm256_blendv_epi8(a.v, b.v, m.m)};
}
template <class T>
inline Vec<T, Avx2> keep_where(Mask<T, Avx2> m, Vec<T, Avx2> x) { return as_vec(m) & x; }
template <class T>
inline Vec<T, Avx2> zero_where(Mask<T, Avx2> m, Vec<T, Avx2> x) { return and_not(x, as_vec(m)); }

// Bit casts, and mask casts between lane types of one width.
inline VAl bits(VAd x) { return {_mm256_castpd_si256(x.v)}; }
inline VAi bits(VAf x) { return {_mm256_castps_si256(x.v)}; }
inline VAl bits(VAl x) { return x; }
inline VAi bits(VAi x) { return x; }
inline VAd from_bits(VAl b) { return {_mm256_castsi256_pd(b.v)}; }
inline VAf from_bits(VAi b) { return {_mm256_castsi256_ps(b.v)}; }
template <class U, class T>
inline Mask<U, Avx2> mask_cast(Mask<T, Avx2> m) requires(sizeof(U) == sizeof(T)) {
  if constexpr (std::is_same_v<U, T>) return m;
  else if constexpr (std::is_same_v<U, double>) return {_mm256_castsi256_pd(bits(as_vec(m)).v)};
  else if constexpr (std::is_same_v<U, float>) return {_mm256_castsi256_ps(bits(as_vec(m)).v)};
  else return {bits(as_vec(m)).v};
}
// Lanes whose sign bit is set. Avx2: the vector itself, which select,
// lane_bits, any and the mask logic read by its sign bits alone (no
// instruction needed); keep_where and zero_where need a compare's mask.
inline Mask<double, Avx2> sign_mask(VAd x) { return {x.v}; }
inline Mask<float, Avx2> sign_mask(VAf x) { return {x.v}; }
inline Mask<double, Avx2> widen(Mask<int32_t, Sse> m) { return {_mm256_castsi256_pd(_mm256_cvtepi32_epi64(m.m))}; }

// Conversions.
inline VAd to_double(VSi x) { return {_mm256_cvtepi32_pd(x.v)}; }
inline VAf to_float(VAi x) { return {_mm256_cvtepi32_ps(x.v)}; }
inline VAi to_int_nearest(VAf x) { return {_mm256_cvtps_epi32(x.v)}; }
// The high 32-bit words of the four doubles, as four int32 lanes.
inline VSi high_words(VAd x) {
  const __m256 f = _mm256_castpd_ps(x.v);
  const __m128 lo = _mm256_castps256_ps128(f), hi = _mm256_extractf128_ps(f, 1);
  return {_mm_castps_si128(_mm_shuffle_ps(lo, hi, _MM_SHUFFLE(3, 1, 3, 1)))};
}
inline VAd widen_low(VAf x) { return {_mm256_cvtps_pd(_mm256_castps256_ps128(x.v))}; }
inline VAd widen_high(VAf x) { return {_mm256_cvtps_pd(_mm256_extractf128_ps(x.v, 1))}; }
inline VAf narrow(VAd lo, VAd hi) { return {_mm256_set_m128(_mm256_cvtpd_ps(hi.v), _mm256_cvtpd_ps(lo.v))}; }
inline VSf demote(VAd x) { return {_mm256_cvtpd_ps(x.v)}; }
inline VAd promote(VSf x) { return {_mm256_cvtps_pd(x.v)}; }

// Estimates of 1/sqrt(x) and 1/x, within 1.5 * 2^-12 relative.
inline VSf rsqrt_estimate(VSf x) { return {_mm_rsqrt_ps(x.v)}; }
inline VAf rsqrt_estimate(VAf x) { return {_mm256_rsqrt_ps(x.v)}; }
inline VSf rcp_estimate(VSf x) { return {_mm_rcp_ps(x.v)}; }
inline VAf rcp_estimate(VAf x) { return {_mm256_rcp_ps(x.v)}; }

// Table pairs (t[2j], t[2j + 1]) for the four 64-bit indices j: one 16-byte
// load per lane and two shuffles, cheaper than two hardware gathers.
inline void load_pairs(const double* t, VAl j, VAd& first, VAd& second) {
  const __m128i lo = _mm256_castsi256_si128(j.v), hi = _mm256_extracti128_si256(j.v, 1);
  const int64_t j0 = _mm_cvtsi128_si64(lo), j1 = _mm_extract_epi64(lo, 1);
  const int64_t j2 = _mm_cvtsi128_si64(hi), j3 = _mm_extract_epi64(hi, 1);
  const __m256d a = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(t + 2 * j0)), _mm_loadu_pd(t + 2 * j2), 1);
  const __m256d b = _mm256_insertf128_pd(_mm256_castpd128_pd256(_mm_loadu_pd(t + 2 * j1)), _mm_loadu_pd(t + 2 * j3), 1);
  first.v = _mm256_unpacklo_pd(a, b);
  second.v = _mm256_unpackhi_pd(a, b);
}

// Table rows, one per double lane. They leave the vector through 64-bit
// moves rather than through memory: a vector store reloaded as scalars
// stalls store forwarding on some processors.
template <class Isa>
struct RowPointers;
template <>
struct RowPointers<Avx2> {
  const double *p0, *p1, *p2, *p3;
};

// Rows at four 32-bit element offsets into the table (row · length).
inline RowPointers<Avx2> row_pointers(const double* table, VSi offsets) {
  const uint64_t lo = static_cast<uint64_t>(_mm_cvtsi128_si64(offsets.v));
  const uint64_t hi = static_cast<uint64_t>(_mm_extract_epi64(offsets.v, 1));
  return {table + static_cast<uint32_t>(lo), table + (lo >> 32), table + static_cast<uint32_t>(hi),
          table + (hi >> 32)};
}

// Rows given as four 64-bit row numbers.
inline RowPointers<Avx2> row_pointers(const double* table, VAl rows, int row_length) {
  const __m128i lo = _mm256_castsi256_si128(rows.v), hi = _mm256_extracti128_si256(rows.v, 1);
  return {table + _mm_cvtsi128_si64(lo) * row_length, table + _mm_extract_epi64(lo, 1) * row_length,
          table + _mm_cvtsi128_si64(hi) * row_length, table + _mm_extract_epi64(hi, 1) * row_length};
}

// Coefficients j..j+3 of the four rows as four vectors: out[c] holds
// coefficient j+c of every lane. Reads 4 doubles from each row, so rows need
// 3 doubles of padding after them.
inline void gather_columns(const RowPointers<Avx2>& rows, int j, VAd out[4]) {
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

// Float rows of 4: eight rows at table + offsets (in elements), coefficients
// 0..3 of each. The offsets are taken as scalars one by one (an array here
// gets vectorised through memory and stalls store forwarding).
inline void gather_rows(const float* table, VAi offsets, VAf out[4]) {
  const __m128i lo = _mm256_castsi256_si128(offsets.v), hi = _mm256_extracti128_si256(offsets.v, 1);
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

// In-register lookups in aligned tables of 8 and 16 floats: one lane
// permutation (16: two, and a blend on bit 3 of the index).
inline VAf lookup8(const float* t, VAi idx) { return {_mm256_permutevar8x32_ps(_mm256_load_ps(t), idx.v)}; }
inline VAf lookup16(const float* t, VAi idx) {
  const __m256 lo = _mm256_permutevar8x32_ps(_mm256_load_ps(t), idx.v);
  const __m256 hi = _mm256_permutevar8x32_ps(_mm256_load_ps(t + 8), idx.v);
  return {_mm256_blendv_ps(lo, hi, _mm256_castsi256_ps(_mm256_slli_epi32(idx.v, 28)))};
}

}  // namespace oxa::vml::simd
