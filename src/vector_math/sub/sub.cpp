// Sub: r = a - b.
// Method: the processor's subtraction.
// Accuracy: exact (the operation is correctly rounded).
// Special: none; infinities and NaN follow the operation (a NaN operand's
//   payload passes on, a signalling NaN is quietened). No status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Sub {
  static constexpr const char* kName = "Sub";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Sub, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a, V b) { return a - b; }
};

}  // namespace oxa::vml

#include "vector_math/sub/sub_kernels.inc"
