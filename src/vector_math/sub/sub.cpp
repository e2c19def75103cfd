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

template void kernel_in2_out1<fam::Sub, double, Acc::HA>(int64_t, const double*, const double*, double*);
template void kernel_in2_out1<fam::Sub, float, Acc::HA>(int64_t, const float*, const float*, float*);

}  // namespace oxa::vml
