// Floor: r = the greatest integer <= a.
// Method: the processor's rounding toward -inf, inexact not raised.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Floor {
  static constexpr const char* kName = "Floor";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Floor, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::floor(a); }
};

}  // namespace oxa::vml

#include "vector_math/floor/floor_kernels.inc"
