// Inv: r = 1 / a.
// Method: the processor's division at every level.
// Accuracy: HA, LA, EP 0.5 ulp (correctly rounded).
// Special: a = +-0 -> +-inf, status 2 (singularity); +-inf -> +-0; NaN passes
//   quietly.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Inv {
  static constexpr const char* kName = "Inv";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Inv, T, A> {
  static constexpr bool kFormulaTakesAnyInput = true;
  template <class Isa>
  static simd::Mask<T, Isa> special(simd::Vec<T, Isa> a) {
    return a == simd::Vec<T, Isa>(T(0));
  }
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return V(T(1)) / a; }
  static int32_t scalar(const T* a, T* r) {
    *r = T(1) / *a;
    return VML_ERR_SINGULARITY;
  }
};

}  // namespace oxa::vml

#include "vector_math/inv/inv_kernels.inc"
