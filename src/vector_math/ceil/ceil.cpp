// Ceil: r = the least integer >= a.
// Method: the processor's rounding toward +inf, inexact not raised.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Ceil {
  static constexpr const char* kName = "Ceil";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Ceil, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::ceil(a); }
};

}  // namespace oxa::vml

#include "vector_math/ceil/ceil_kernels.inc"
