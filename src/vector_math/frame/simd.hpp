// The instruction-set-neutral vector layer: families write their formulas
// once over Vec<T, Isa> and Mask<T, Isa>; only the files of frame/ name
// processor intrinsics.
//
// Instruction sets (empty tags): Avx2 (256-bit, the library's build target),
// Avx512 (512-bit; its operations exist only in translation units compiled
// with -mavx512f -mavx512dq -mavx512bw -mavx512vl), and Sse (128-bit), which
// holds the half-width vectors of Avx2. Half<Isa> names the instruction set
// of the half-width vectors: Half<Avx2> = Sse, Half<Avx512> = Avx2.
//
// Types. Vec<T, Isa> for T = double, float, int64_t, int32_t; v is the
// native register; kLanes lanes; Vec<T, Isa>(x) broadcasts x.
//   Vec<double, Isa> and Vec<int64_t, Isa> have the same lane count N,
//   Vec<float, Isa> and Vec<int32_t, Isa> have 2N; Vec<int32_t, Half<Isa>>
//   and Vec<float, Half<Isa>> have N lanes, one per double.
// Mask<T, Isa>: one bit per lane of Vec<T, Isa> (Avx2: all-ones lanes;
//   Avx512: a mask register).
//
// Operations (Avx2 and Avx512; Sse has only what the half-width vectors
// need: the int32 operations, the estimates, widen, demote and promote):
//   load<Isa>(p), store(p, v), broadcast<Isa>(x);
//   + - * / (and unary -), fma(a,b,c) = a*b+c, fms = a*b-c, fnma = c-a*b,
//     each rounded once (also on plain double and float); sqrt (also on
//     plain double and float, errno untouched), min, max,
//     abs, sign_bit, round_even / floor / ceil / trunc (no exception),
//     rint (current rounding mode), nearbyint (the same, no inexact);
//   & | ^ on any Vec, and_not(a, b) = a & ~b;
//   compares: == < <= > >= != (ordered, false on NaN; != true on NaN),
//     nlt (unordered not-less) and is_nan on floating lanes; == and > (signed)
//     on integer lanes; all give a Mask;
//   masks: & | ^, and_not, ~, any, lane_bits (bit k = lane k), no_lanes<T, Isa>(),
//     select(m, a, b) (b where m is set, else a), keep_where(m, x) (x or 0),
//     zero_where(m, x) (0 or x), mask_cast<U>(m) between lane types of one width,
//     widen(m) from Mask<int32_t, Half<Isa>> to Mask<double, Isa>,
//     sign_mask(x): the lanes whose sign bit is set (on Avx2 good for
//     select, lane_bits, any and mask logic only);
//   bit casts: bits(Vec<double>) -> Vec<int64_t>, bits(Vec<float>) ->
//     Vec<int32_t>, from_bits(...) back;
//   integers: + - on int64/int32 lanes, shl<n>, shr<n> (logical), sar<n>
//     (arithmetic, int32 lanes), min/max and mullo (int32 lanes);
//   conversions: to_double(Vec<int32_t, Half<Isa>>), to_float(Vec<int32_t>),
//     to_int_nearest(Vec<float>), high_words(Vec<double>) ->
//     Vec<int32_t, Half<Isa>>, widen_low/widen_high(Vec<float>) ->
//     Vec<double>, narrow(lo, hi) -> Vec<float>, demote(Vec<double>) ->
//     Vec<float, Half<Isa>>, promote back;
//   estimates: rsqrt_estimate and rcp_estimate of float lanes (Sse, Avx2:
//     within 1.5 * 2^-12; Avx512: 2^-14);
//   table lookups: load_pairs(t, j, first, second) = t[2j], t[2j+1] for
//     int64 lanes j; row_pointers(table, offsets) (int32 element offsets, one
//     per double lane) or row_pointers(table, rows, length) (int64 rows),
//     then gather_columns(rows, j, out[4]) = coefficients j..j+3 of each
//     lane's row (rows padded by 3 elements); gather_rows(table, offsets,
//     out[4]) for float rows of 4; lookup8 / lookup16(table, idx): an
//     in-register lookup in an aligned table of 8 or 16 floats (idx in 0..7
//     or 0..15).
#pragma once

#include <immintrin.h>

#include <cmath>
#include <cstdint>
#include <type_traits>

namespace oxa::vml::simd {

struct Sse {};
struct Avx2 {};
struct Avx512 {};

template <class Isa>
struct HalfOf;
template <>
struct HalfOf<Avx2> {
  using type = Sse;
};
template <>
struct HalfOf<Avx512> {
  using type = Avx2;
};
template <class Isa>
using Half = typename HalfOf<Isa>::type;

// The native register of each (element type, instruction set).
template <class T, class Isa>
struct Native;
template <> struct Native<double, Sse> { using type = __m128d; using mask = __m128d; };
template <> struct Native<float, Sse> { using type = __m128; using mask = __m128; };
template <> struct Native<int64_t, Sse> { using type = __m128i; using mask = __m128i; };
template <> struct Native<int32_t, Sse> { using type = __m128i; using mask = __m128i; };
template <> struct Native<double, Avx2> { using type = __m256d; using mask = __m256d; };
template <> struct Native<float, Avx2> { using type = __m256; using mask = __m256; };
template <> struct Native<int64_t, Avx2> { using type = __m256i; using mask = __m256i; };
template <> struct Native<int32_t, Avx2> { using type = __m256i; using mask = __m256i; };
template <> struct Native<double, Avx512> { using type = __m512d; using mask = __mmask8; };
template <> struct Native<float, Avx512> { using type = __m512; using mask = __mmask16; };
template <> struct Native<int64_t, Avx512> { using type = __m512i; using mask = __mmask8; };
template <> struct Native<int32_t, Avx512> { using type = __m512i; using mask = __mmask16; };

template <class T, class Isa = Avx2>
struct Vec {
  using Elem = T;
  using IsaTag = Isa;
  using native = typename Native<T, Isa>::type;
  static constexpr int kLanes = static_cast<int>(sizeof(native) / sizeof(T));
  native v;
  Vec() = default;
  Vec(native n) : v(n) {}  // NOLINT: implicit, so that {intrinsic(...)} reads as a Vec
  explicit Vec(T x);       // broadcast (defined per instruction set)
};

template <class T, class Isa = Avx2>
struct Mask {
  using native = typename Native<T, Isa>::mask;
  static constexpr int kLanes = Vec<T, Isa>::kLanes;
  native m;
};

// Integer lanes of the same width as T.
template <class T>
using IntOf = std::conditional_t<sizeof(T) == 8, int64_t, int32_t>;

template <class Isa = Avx2, class T>
Vec<T, Isa> load(const T* p);

template <class Isa = Avx2, class T>
inline Vec<T, Isa> broadcast(T x) {
  return Vec<T, Isa>(x);
}

// Scalar fused operations, so that templates over "T or Vec<T>" read alike.
inline double fma(double a, double b, double c) { return std::fma(a, b, c); }
inline double fms(double a, double b, double c) { return std::fma(a, b, -c); }
inline double fnma(double a, double b, double c) { return std::fma(-a, b, c); }
inline float fma(float a, float b, float c) { return std::fma(a, b, c); }
inline float fms(float a, float b, float c) { return std::fma(a, b, -c); }
inline float fnma(float a, float b, float c) { return std::fma(-a, b, c); }
// Correctly rounded square roots of one element, NaN (invalid raised) below
// zero, errno untouched.
inline double sqrt(double x) { return _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x))); }
inline float sqrt(float x) { return _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x))); }

}  // namespace oxa::vml::simd

#include "vector_math/frame/simd_avx2.hpp"
#if defined(__AVX512F__) && defined(__AVX512DQ__) && defined(__AVX512BW__) && defined(__AVX512VL__)
#include "vector_math/frame/simd_avx512.hpp"
#endif

namespace oxa::vml::simd {

// Operations written once over the ones above.
template <class T, class Isa>
inline Vec<T, Isa>& operator+=(Vec<T, Isa>& a, Vec<T, Isa> b) { return a = a + b; }
template <class T, class Isa>
inline Vec<T, Isa>& operator-=(Vec<T, Isa>& a, Vec<T, Isa> b) { return a = a - b; }
template <class T, class Isa>
inline Vec<T, Isa>& operator*=(Vec<T, Isa>& a, Vec<T, Isa> b) { return a = a * b; }
template <class T, class Isa, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
inline Vec<T, Isa> operator-(Vec<T, Isa> a) { return a ^ Vec<T, Isa>(T(-0.0)); }
template <class T, class Isa, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
inline Vec<T, Isa> abs(Vec<T, Isa> a) { return and_not(a, Vec<T, Isa>(T(-0.0))); }
template <class T, class Isa, std::enable_if_t<std::is_floating_point_v<T>, int> = 0>
inline Vec<T, Isa> sign_bit(Vec<T, Isa> a) { return a & Vec<T, Isa>(T(-0.0)); }
template <class T, class Isa>
inline Mask<T, Isa> operator>(Vec<T, Isa> a, Vec<T, Isa> b) requires std::is_floating_point_v<T> { return b < a; }
// The empty mask: no lane set.
template <class T, class Isa>
inline Mask<T, Isa> no_lanes() { return Mask<T, Isa>{typename Mask<T, Isa>::native{}}; }
template <class T, class Isa>
inline Mask<T, Isa> operator>=(Vec<T, Isa> a, Vec<T, Isa> b) requires std::is_floating_point_v<T> { return b <= a; }

}  // namespace oxa::vml::simd
