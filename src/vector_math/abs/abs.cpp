// Abs: r = |a|.
// Method: clears the sign bit, nothing else; leaves the control word alone.
// Accuracy: exact; -0 -> +0, every NaN keeps its payload (a signalling NaN
//   stays signalling). No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Abs {
  static constexpr const char* kName = "Abs";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Abs, T, A> {
  static constexpr bool kSetsControlWord = false;
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::abs(a); }
};

}  // namespace oxa::vml

#include "vector_math/abs/abs_kernels.inc"
