// Exp: r = e^a.
// Method: a = k ln2/N + r, 2^(j/N) from a table (with its relative tail for
//   HA), e^r - 1 a Taylor polynomial on |r| <= ln2/2N (exp_core.hpp). Double:
//   N = 128, degree 5. Single, in float lanes: N = 8 with the table in a
//   register, degree 4 (EP 2). The scalar routine works in double.
// Accuracy: d HA 0.51 ulp (0.75 on subnormal results), LA 1.0 ulp; s HA
//   0.59 ulp, LA 0.88 ulp (all floats), EP 2^-16 rel (measured by
//   tests/vector_math/exp_accuracy).
// Special: +inf -> +inf; -inf -> +0; NaN -> NaN quietly; overflow (d a >
//   709.78, s a > 88.72) -> +inf, status 3; result below the smallest normal
//   (subnormal or 0) -> that result, status 4. The fast path takes |a| < 704
//   (d) or |a| < 87 (s); the rest goes to the scalar routine.
// Tables: exp_table.inc, made by tools/fit/exp.py.
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>

#include "vector_math/exp/exp_core.hpp"
#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {

namespace fam {
struct Exp;
}  // namespace fam

namespace {

// The double core of each level: the kernels of d, and the scalar routine of
// s (which works in double).
template <class T, Acc A>
using ExpCoreOf = std::conditional_t<
    std::is_same_v<T, double>, expc::Exp<5, A == Acc::HA, false>,
    std::conditional_t<A == Acc::HA, expc::Exp<3, false, false>,
                       std::conditional_t<A == Acc::LA, expc::Exp<2, false, false>, expc::Exp<1, false, false>>>>;

}  // namespace

// One element outside the fast range. Writes e^x, returns the status.
template <class T, Acc A>
int32_t exp_cout_rare(const T* a, T* r) {
  const T x = *a;
  if (std::isnan(x)) {
    *r = x + x;
    return VML_ERR_NONE;
  }
  if (std::isinf(x)) {
    *r = x > 0 ? x : T(0);
    return VML_ERR_NONE;
  }
  int32_t status;
  const double y = expc::exp_wide<ExpCoreOf<T, A>>(static_cast<double>(x), 0.0, &status);
  if constexpr (std::is_same_v<T, double>) {
    *r = y;
    return status;
  } else {
    const float f = static_cast<float>(y);
    *r = f;
    if (std::isinf(f)) return VML_ERR_OVERFLOW;
    if (f < std::numeric_limits<float>::min()) return VML_ERR_UNDERFLOW;
    return VML_ERR_NONE;
  }
}

template <Acc A>
int32_t vdexp_cout_rare(const double* a, double* r) { return exp_cout_rare<double, A>(a, r); }
template <Acc A>
int32_t vsexp_cout_rare(const float* a, float* r) { return exp_cout_rare<float, A>(a, r); }

template <class T, Acc A>
struct Policy<fam::Exp, T, A> {
  static constexpr bool kDouble = std::is_same_v<T, double>;
  static constexpr const char* kName = kDouble ? "vdExp" : "vsExp";
  static constexpr bool kSetsControlWord = true;
  static constexpr T kSafeInput = T(1);
  using Core = ExpCoreOf<T, A>;

  // Fast when |a| < 704 (d, high word below 0x40860000) or |a| < 87 (s).
  static simd::Vec<T> special(simd::Vec<T> x) {
    if constexpr (kDouble) {
      const __m128i abs_hi = _mm_and_si128(simd::high_words(x), _mm_set1_epi32(0x7FFFFFFF));
      return simd::widen_mask(_mm_cmpgt_epi32(abs_hi, _mm_set1_epi32(0x4085FFFF)));
    } else {
      const __m256i abs_bits = _mm256_and_si256(simd::bits(x), _mm256_set1_epi32(0x7FFFFFFF));
      return simd::from_bits_f(_mm256_cmpgt_epi32(abs_bits, _mm256_set1_epi32(0x42ADFFFF)));
    }
  }

  [[gnu::always_inline]] static simd::Vec<T> vector(simd::Vec<T> x) {
    if constexpr (kDouble) {
      return Core::eval(x, simd::broadcast(0.0));
    } else {
      // HA keeps the table tail; LA drops it (0.5 ulp); EP uses a quadratic.
      using Single = expc::ExpSingle<A == Acc::EP ? 2 : 4, A == Acc::HA>;
      return Single::eval(x);
    }
  }

  static int32_t scalar(const T* x, T* r) {
    if constexpr (kDouble)
      return vdexp_cout_rare<A>(x, r);
    else
      return vsexp_cout_rare<A>(x, r);
  }
};

}  // namespace oxa::vml

#include "vector_math/exp/exp_kernels.inc"
