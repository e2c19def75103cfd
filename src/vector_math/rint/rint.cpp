// Rint: r = a rounded to an integer in the caller's rounding mode.
// Method: the processor's rounding in the current mode (inexact raised as
//   the instruction does); the kernel leaves the control word alone, so the
//   caller's denormal setting applies too.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Rint {
  static constexpr const char* kName = "Rint";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Rint, T, A> {
  // Round in the caller's mode: the control word stays as the caller set it.
  static constexpr bool kSetsControlWord = false;
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::rint(a); }
};

}  // namespace oxa::vml

#include "vector_math/rint/rint_kernels.inc"
