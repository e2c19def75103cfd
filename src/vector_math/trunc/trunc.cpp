// Trunc: r = a rounded toward zero.
// Method: the processor's rounding toward zero, inexact not raised.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Trunc {
  static constexpr const char* kName = "Trunc";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Trunc, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::trunc(a); }
};

}  // namespace oxa::vml

#include "vector_math/trunc/trunc_kernels.inc"
