// Mul: r = a * b.
// Method: the processor's multiplication.
// Accuracy: exact (the operation is correctly rounded).
// Special: none; infinities and NaN follow the operation (a NaN operand's
//   payload passes on, a signalling NaN is quietened). No status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct Mul {
  static constexpr const char* kName = "Mul";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Mul, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a, V b) { return a * b; }
};

}  // namespace oxa::vml

#include "vector_math/mul/mul_kernels.inc"
