// Round: r = a rounded to the nearest integer, halfway cases away from zero.
// Method: Trunc(a) plus one with the sign of a where the discarded part
//   (exact) is at least one half; otherwise plus a zero with the sign of a,
//   which keeps the truncation's signed zero (Round(-0.3) = -0).
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/rounding/rounding.hpp"

namespace oxa::vml {
namespace fam {
struct Round {
  static constexpr const char* kName = "Round";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Round, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return rounding::round_half_away(a); }
};

}  // namespace oxa::vml

#include "vector_math/round/round_kernels.inc"
