// Ln: r = ln a.
// Method: a = 2^k z, z in [0.707, 1.414), 128 rows of (1/c, ln c); ln a =
//   k ln2 + ln c + ln1p(z/c - 1), ln1p a Taylor polynomial on |r| < 2^-7.6
//   (ln_core.hpp). d HA sums the leading terms in double-double, LA and EP
//   round three times; single precision is evaluated in double and rounded
//   once.
// Accuracy: d HA 0.50 ulp, LA 1.1 ulp, EP 2^-31 rel; s HA 0.50 ulp, LA 0.50
//   ulp, EP 2^-17 rel (measured by tests/vector_math/ln_accuracy).
// Special: +-0 -> -inf, status 2; a < 0 (and -inf) -> NaN, status 1; +inf ->
//   +inf; NaN -> NaN quietly; 1 -> +0. Subnormal inputs (taken as zero when
//   the mode treats denormals as zero) and all the above go to the scalar
//   routine; the fast path takes the positive normal numbers.
// Tables: ln_table.inc, made by tools/fit/ln.py.
#include <cmath>
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/ln/ln_core.hpp"

namespace oxa::vml {

namespace fam {
struct Ln;
}  // namespace fam

namespace {

using VD = simd::Vec<double>;

inline double opaque(double v) {
  asm("" : "+x"(v));
  return v;
}

// ln of positive normal doubles (after any scaling, k_adjust added to k).
template <class T, Acc A>
[[gnu::always_inline]] inline VD ln_of(VD x, VD k_adjust) {
  if constexpr (std::is_same_v<T, double>) {
    if constexpr (A == Acc::HA) {
      const dd::DD<VD> l = lnc::ln_dd<8>(x, k_adjust);
      return l.hi + l.lo;
    } else {
      return lnc::ln_plain<A == Acc::LA ? 7 : 4>(x, k_adjust);
    }
  } else {
    return lnc::ln_plain<A == Acc::HA ? 4 : A == Acc::LA ? 3 : 2>(x, k_adjust);
  }
}

}  // namespace

// One element outside the fast range. Writes ln x, returns the status.
template <class T, Acc A>
int32_t ln_cout_rare(const T* a, T* r) {
  const T x = *a;
  if (std::isnan(x)) {
    *r = x + x;
    return VML_ERR_NONE;
  }
  if (x == 0) {  // also a subnormal when denormals are taken as zero
    *r = static_cast<T>(opaque(-1.0) / opaque(0.0));
    return VML_ERR_SINGULARITY;
  }
  if (x < 0) {
    *r = static_cast<T>(opaque(HUGE_VAL) * opaque(0.0));
    return VML_ERR_DOMAIN;
  }
  if (std::isinf(x)) {
    *r = x;
    return VML_ERR_NONE;
  }
  // Positive subnormal (or, for float, anything positive: double holds it as
  // a normal number). A double subnormal is scaled by 2^64 first.
  double xd = static_cast<double>(x);
  double k_adjust = 0.0;
  if (xd < 0x1p-1022) {
    xd *= 0x1p64;
    k_adjust = -64.0;
  }
  double lanes[4];
  simd::store(lanes, ln_of<T, A>(simd::broadcast(xd), simd::broadcast(k_adjust)));
  *r = static_cast<T>(lanes[0]);
  return VML_ERR_NONE;
}

template <Acc A>
int32_t vdln_cout_rare(const double* a, double* r) { return ln_cout_rare<double, A>(a, r); }
template <Acc A>
int32_t vsln_cout_rare(const float* a, float* r) { return ln_cout_rare<float, A>(a, r); }

template <class T, Acc A>
struct Policy<fam::Ln, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr const char* kName = kDouble ? "vdLn" : "vsLn";
  static constexpr bool kSetsControlWord = true;
  static constexpr T kSafeInput = T(1);

  // Fast for positive normal inputs: (high word - smallest normal's) taken
  // unsigned below (inf's - smallest normal's); one signed compare after
  // flipping the sign bit.
  static simd::Vec<T> special(simd::Vec<T> x) {
    if constexpr (kDouble) {
      const __m128i d = _mm_xor_si128(_mm_sub_epi32(simd::high_words(x), _mm_set1_epi32(0x00100000)),
                                      _mm_set1_epi32(static_cast<int32_t>(0x80000000u)));
      return simd::widen_mask(_mm_cmpgt_epi32(d, _mm_set1_epi32(static_cast<int32_t>(0xFFDFFFFFu))));
    } else {
      const __m256i d = _mm256_xor_si256(_mm256_sub_epi32(simd::bits(x), _mm256_set1_epi32(0x00800000)),
                                         _mm256_set1_epi32(static_cast<int32_t>(0x80000000u)));
      return simd::from_bits_f(_mm256_cmpgt_epi32(d, _mm256_set1_epi32(static_cast<int32_t>(0xFEFFFFFFu))));
    }
  }

  [[gnu::always_inline]] static simd::Vec<T> vector(simd::Vec<T> x) {
    const VD zero = simd::broadcast(0.0);
    if constexpr (kDouble)
      return ln_of<T, A>(x, zero);
    else
      return simd::narrow(ln_of<T, A>(simd::widen_low(x), zero), ln_of<T, A>(simd::widen_high(x), zero));
  }

  static int32_t scalar(const T* x, T* r) {
    if constexpr (kDouble)
      return vdln_cout_rare<A>(x, r);
    else
      return vsln_cout_rare<A>(x, r);
  }
};

template void kernel_in1_out1<fam::Ln, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Ln, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Ln, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
