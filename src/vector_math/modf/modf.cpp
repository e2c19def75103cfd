// Modf: r1 = Trunc(a), the integer part; r2 = Frac(a), the fraction.
// Method: as Trunc and Frac; both parts carry the sign of a.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/rounding/rounding.hpp"

namespace oxa::vml {
namespace fam {
struct Modf {
  static constexpr const char* kName = "Modf";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Modf, T, A> {
  template <class V>
  [[gnu::always_inline]] static void vector(V a, V& r1, V& r2) {
    r1 = simd::trunc(a);
    r2 = rounding::frac(a);
  }
};

}  // namespace oxa::vml

#include "vector_math/modf/modf_kernels.inc"
