// NearbyInt: r = a rounded to an integer in the caller's rounding mode.
// Method: as Rint, without raising inexact; the control word is left alone.
// Accuracy: exact; signed zeros kept, NaN passes with its payload
//   (quietened), infinities unchanged. No special lanes, no status.
#include <cstdint>

#include "vector_math/frame/kernel_frame.hpp"

namespace oxa::vml {
namespace fam {
struct NearbyInt {
  static constexpr const char* kName = "NearbyInt";
};
}  // namespace fam

template <class T, Acc A>
struct Policy<fam::NearbyInt, T, A> {
  // Round in the caller's mode: the control word stays as the caller set it.
  static constexpr bool kSetsControlWord = false;
  template <class V>
  [[gnu::always_inline]] static V vector(V a) { return simd::nearbyint(a); }
};

}  // namespace oxa::vml

#include "vector_math/nearbyint/nearbyint_kernels.inc"
