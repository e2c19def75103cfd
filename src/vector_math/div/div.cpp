// Div: r = a / b.
// Method: the processor's division at every level (correctly rounded, and
//   no slower than an estimate refined to the LA or EP bound).
// Accuracy: HA, LA, EP 0.5 ulp (correctly rounded).
// Special: b = +-0 with a neither zero nor NaN -> the signed infinity, status
//   2 (singularity); 0/0 -> NaN, status 1 (domain); NaN operands pass quietly.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Div {
  static constexpr const char* kName = "Div";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Div, T, A> {
  static constexpr bool kFormulaTakesAnyInput = true;
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa>, simd::Vec<T, Isa> b) {
    return b == simd::Vec<T, Isa>(T(0));
  }
  template <class V>
  [[gnu::always_inline]] static V vector(V a, V b) { return a / b; }
  // b = +-0: the quotient the vector pass stored, and its status.
  static int32_t scalar(const T* a, const T* b, T* r) {
    *r = *a / *b;
    if (*a != *a) return VML_ERR_NONE;
    return *a == T(0) ? VML_ERR_DOMAIN : VML_ERR_SINGULARITY;
  }
};

}  // namespace oxa::vml

#include "vector_math/div/div_kernels.inc"
