// Frac: r = a - Trunc(a), with the sign of a.
// Method: the subtraction is exact below 2^52 (double) or 2^23 (float);
//   larger numbers and infinities give a zero with the sign of a
//   (Frac(-2) = -0, Frac(-inf) = -0).
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"
#include "vector_math/rounding/rounding.hpp"

namespace oxa::vml {
namespace fam {
struct Frac {
  static constexpr const char* kName = "Frac";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::Frac, T, A> {
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return rounding::frac(a); }
};

}  // namespace oxa::vml

#include "vector_math/frac/frac_kernels.inc"
