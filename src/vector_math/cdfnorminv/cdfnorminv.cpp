// CdfNormInv: r = Phi^-1(a), the inverse of the standard normal CDF.
// Method: y = 2a (a < 1/2) or 2 - 2a, Phi^-1(a) = (2a - 1) * R(y) with R smooth
//   on (0, 1]; the high word of y picks a table row (B - (hy >> s)), the
//   remaining significand bits give t = m - centre, R = row polynomial in t.
//   Double: EP cubic on 16 pieces per binade (|t| <= 1/32), LA degree 11 and
//   HA degree 14 on 4 pieces per binade (|t| <= 1/8); HA keeps c0, c1 and
//   2a - 1 in double-double. Single: evaluated in double on 4 pieces per
//   binade down to the smallest subnormal, degree 5 / 3 / 2 for HA / LA / EP.
// Accuracy: d HA 0.51 ulp, LA 1.5 ulp, EP 2^-29 rel; s HA 0.51 ulp, LA 0.6 ulp,
//   EP 2^-17 rel (measured by tests/vector_math/cdfnorminv_accuracy).
// Special: 0 and -0 -> -inf, 1 -> +inf, status 2; a < 0, a > 1, +-inf -> NaN,
//   status 1; NaN -> NaN quietly; 1/2 -> +0 exactly. Double a < 2^-54 takes the
//   far-tail routine (cdfnorminv_tail.cpp). The control word is left alone.
// Tables: cdfnorminv_tables.inc, made by tools/fit/cdfnorminv.py, shared with
//   ErfInv through cdfnorminv_rows.hpp.
#include <bit>
#include <cstdint>

#include "vector_math/cdfnorminv/cdfnorminv.hpp"
#include "vector_math/cdfnorminv/cdfnorminv_rows.hpp"
#include "vector_math/frame/dd.hpp"
#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/frame/opaque.hpp"

namespace oxa::vml {
namespace {

using namespace norm_rows;  // Layout, layout(), the constant offsets

// R(y) * (2x - 1) for four x in [2^-54, 1) (or the float fast range).
template <const Layout& L>
[[gnu::always_inline]] inline VD bulk(VD x) {
  const VD half = simd::broadcast(0.5), one = simd::broadcast(1.0), two = simd::broadcast(2.0);
  const VD x2 = x + x;
  const VD below_half{_mm256_cmp_pd(x.v, half.v, _CMP_LT_OQ)};
  const VD y = simd::select(below_half, two - x2, x2);
  // x = 1/2 gives y = 1, evaluated at the bottom of row 0: the factor 2x - 1
  // = 0 makes the result +0 all the same.
  const dd::DD<VD> R = norm_rows::evaluate<L>(y);
  if constexpr (!L.split) {
    return R.hi * (x2 - one);  // 2x - 1 rounds for x < 1/4: at most 0.5 ulp more
  } else {
    // 2x - 1 exactly as a double-double; one rounding for the product.
    const dd::DD<VD> d = dd::fast_two_sum(simd::broadcast(-1.0), x2);
    return simd::fma(R.hi, d.hi, simd::fma(R.hi, d.lo, R.lo * d.hi));
  }
}

// Classification on h: the high word (double, with bit 0 set when the low
// word is nonzero) or the bits (float). Returns the status.
template <class T>
int32_t settle_special(uint32_t h, T x, T* r, const double* k) {
  constexpr bool kDouble = std::is_same_v<T, double>;
  constexpr uint32_t kHalfH = kDouble ? 0x3FE00000u : 0x3F000000u;
  constexpr uint32_t kOneH = kDouble ? 0x3FF00000u : 0x3F800000u;
  constexpr uint32_t kInfH = kDouble ? 0x7FF00000u : 0x7F800000u;
  const uint32_t abs_h = h & 0x7FFFFFFFu;
  if (abs_h > kInfH) {  // NaN: quiet it, no status
    *r = x * x;
    return VML_ERR_NONE;
  }
  if (abs_h == 0 || h == kOneH) {  // +-0 -> -inf, 1 -> +inf
    const unsigned index = (h >> 31) | (h < kHalfH ? 1u : 0u);
    *r = static_cast<T>(opaque(k[index ? kNumNeg : kNumPos]) / opaque(k[kZero]));
    return VML_ERR_SINGULARITY;
  }
  *r = static_cast<T>(opaque(k[kPosInf]) * opaque(k[kZero]));  // outside [0, 1]
  return VML_ERR_DOMAIN;
}

}  // namespace

template <Acc A>
int32_t dCdfNormInv_SC(const double* x, double* r) {
  const uint64_t b = std::bit_cast<uint64_t>(*x);
  const uint32_t hx = static_cast<uint32_t>(b >> 32);
  const uint32_t h = hx | (static_cast<uint32_t>(b) != 0 ? 1u : 0u);
  const double* k = layout<double, A>().constants();
  if (h >= 1 && h <= 0x3FEFFFFFu) {
    *r = h == 0x3FE00000u ? k[kZero] : dCdfNormInv_Tail(*x);
    return VML_ERR_NONE;
  }
  return settle_special<double>(h, *x, r, k);
}

template <Acc A>
int32_t sCdfNormInv_SC(const float* x, float* r) {
  const uint32_t h = std::bit_cast<uint32_t>(*x);
  const double* k = layout<float, A>().constants();
  if (h >= 1 && h <= 0x3F7FFFFFu) {  // not reached from the kernels: all of (0, 1) is fast
    const double xd = *x;
    double rd;
    kernel_in1_out1<fam::CdfNormInv, double, Acc::HA>(1, &xd, &rd);
    *r = static_cast<float>(rd);
    return VML_ERR_NONE;
  }
  return settle_special<float>(h, *x, r, k);
}

template <class T, Acc A>
struct Policy<fam::CdfNormInv, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr const char* kName = kDouble ? "vdCdfNormInv" : "vsCdfNormInv";
  static constexpr bool kSetsControlWord = false;
  static constexpr T kSafeInput = T(0.75);

  // Double: fast when 2^-54 <= x < 1, i.e. 0x3C900000 <= hx < 0x3FF00000; the
  // offset maps that interval onto the lowest signed values, so one signed
  // compare finds all others. Float: fast when 0 < x < 1 (bits 1..0x3F7FFFFF).
  static simd::Vec<T> special(simd::Vec<T> x) {
    if constexpr (kDouble) {
      const __m128i biased = _mm_add_epi32(simd::high_words(x), _mm_set1_epi32(0x43700000));
      return simd::widen_mask(_mm_cmpgt_epi32(biased, _mm_set1_epi32(static_cast<int32_t>(0x835FFFFFu))));
    } else {
      const __m256i biased = _mm256_add_epi32(simd::bits(x), _mm256_set1_epi32(0x7FFFFFFF));
      return simd::from_bits_f(
          _mm256_cmpgt_epi32(biased, _mm256_set1_epi32(static_cast<int32_t>(0xBF7FFFFEu))));
    }
  }

  [[gnu::always_inline]] static simd::Vec<T> vector(simd::Vec<T> x) {
    constexpr const Layout& L = layout<T, A>();
    if constexpr (kDouble)
      return bulk<L>(x);
    else
      return simd::narrow(bulk<L>(simd::widen_low(x)), bulk<L>(simd::widen_high(x)));
  }

  static int32_t scalar(const T* x, T* r) {
    if constexpr (kDouble)
      return dCdfNormInv_SC<A>(x, r);
    else
      return sCdfNormInv_SC<A>(x, r);
  }
};

template int32_t dCdfNormInv_SC<Acc::HA>(const double*, double*);
template int32_t dCdfNormInv_SC<Acc::LA>(const double*, double*);
template int32_t dCdfNormInv_SC<Acc::EP>(const double*, double*);
template int32_t sCdfNormInv_SC<Acc::HA>(const float*, float*);
template int32_t sCdfNormInv_SC<Acc::LA>(const float*, float*);
template int32_t sCdfNormInv_SC<Acc::EP>(const float*, float*);

template void kernel_in1_out1<fam::CdfNormInv, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::CdfNormInv, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::CdfNormInv, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::CdfNormInv, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::CdfNormInv, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::CdfNormInv, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
