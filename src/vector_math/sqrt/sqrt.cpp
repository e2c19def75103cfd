// Sqrt: r = sqrt(a).
// Method: HA and LA use the processor's correctly rounded square root. EP
//   avoids the divider: x times the processor's 12-bit reciprocal-root
//   estimate, which double corrects by the series of its residual
//   (invsqrt/rsqrt_core.hpp).
// Accuracy: HA and LA 0.5 ulp (correctly rounded); EP d 2^-34.5 rel,
//   s 2^-11.9 rel (measured by tests/vector_math/sqrt_accuracy).
// Special: a < 0 (including -inf) -> NaN, status 1; +-0 -> +-0; +inf -> +inf;
//   NaN -> NaN quietly. EP settles zeros, subnormals, infinities and (double)
//   a outside [2^-126, 2^126) in the scalar routine, with the correctly
//   rounded root.
//   Denormal inputs count as zero when the mode flushes denormals.
#include <immintrin.h>

#include <cstdint>
#include <type_traits>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/invsqrt/rsqrt_core.hpp"

namespace oxa::vml {
namespace fam {
struct Sqrt;
}  // namespace fam

namespace {

template <class T>
using V = simd::Vec<T>;

inline V<double> hw_sqrt(V<double> x) { return {_mm256_sqrt_pd(x.v)}; }
inline V<float> hw_sqrt(V<float> x) { return {_mm256_sqrt_ps(x.v)}; }

// One element outside the fast path: the correctly rounded root, which is
// NaN (invalid raised) for x < 0.
template <class T>
int32_t sqrt_cout_rare(const T* a, T* r) {
  const T x = *a;
  T root;
  if constexpr (std::is_same_v<T, double>)
    root = _mm_cvtsd_f64(_mm_sqrt_sd(_mm_setzero_pd(), _mm_set_sd(x)));
  else
    root = _mm_cvtss_f32(_mm_sqrt_ss(_mm_set_ss(x)));
  *r = root;
  return x < T(0) ? VML_ERR_DOMAIN : VML_ERR_NONE;
}

}  // namespace

template <class T, Acc A>
struct Policy<fam::Sqrt, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr const char* kName = kDouble ? "vdSqrt" : "vsSqrt";
  static constexpr bool kSetsControlWord = true;
  static constexpr T kSafeInput = T(1);

  // HA, LA: only negative numbers (an ordered compare: -0 and NaN pass).
  // EP: everything but the positive normal numbers of the float range
  // (double: also those at or above 2^126, for the residual's sake).
  static V<T> special(V<T> x) {
    if constexpr (A != Acc::EP) {
      if constexpr (kDouble)
        return {_mm256_cmp_pd(x.v, _mm256_setzero_pd(), _CMP_LT_OQ)};
      else
        return {_mm256_cmp_ps(x.v, _mm256_setzero_ps(), _CMP_LT_OQ)};
    } else {
      return rsqrt::outside<T>(x, rsqrt::kFastLow<T>, kDouble ? rsqrt::kFastHigh<T> : 0x7F800000u);
    }
  }

  [[gnu::always_inline]] static V<T> vector(V<T> x) {
    if constexpr (A != Acc::EP)
      return hw_sqrt(x);
    else
      return rsqrt::fast<T, true>(x);
  }

  static int32_t scalar(const T* a, T* r) { return sqrt_cout_rare<T>(a, r); }
};

}  // namespace oxa::vml

#include "vector_math/sqrt/sqrt_kernels.inc"
