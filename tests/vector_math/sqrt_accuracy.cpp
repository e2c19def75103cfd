// Accuracy of the square-root and reciprocal-square-root kernels against
// MPFR over all positive floating-point numbers: subnormals, the seams of the
// scaled ranges, the top binade, and binade edges where estimates are worst.
#include <cmath>
#include <limits>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;
using oxa::test::Kernel;

template <class T>
std::vector<T> edges() {
  using L = std::numeric_limits<T>;
  std::vector<T> v = {L::denorm_min(), L::min(), std::nextafter(L::min(), T(0)), L::max(), T(0x1p125), T(0x1p126)};
  for (int e = L::min_exponent; e < L::max_exponent - 2; e += 37)
    for (T m : {T(1), T(1.5), T(2) - L::epsilon(), T(2), T(3), T(4) - 2 * L::epsilon()}) v.push_back(std::ldexp(m, e));
  return v;
}

// HA within 0.5 ulp for the square root (it rounds correctly) and 1 ulp for
// the reciprocal; LA within 4 ulp; EP within the relative bound of its type.
template <class T>
void check(const char* name, const Kernel<T> (&k)[3], oxa::test::Reference reference, double ha_ulps) {
  const double ep = sizeof(T) == 8 ? 0x1p-26 : 0x1p-11;
  const auto reports = oxa::test::measure<T>(
      {{"HA", k[0], Bound::ulps(ha_ulps)}, {"LA", k[1], Bound::ulps(ha_ulps == 0.5 ? 0.5 : 4.0)},
       {"EP", k[2], Bound::relative(ep)}},
      reference, oxa::test::Domain<T>{std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::max()},
      edges<T>(), oxa::test::sample_count(200000));
  oxa::test::expect_within(reports, name);
}

TEST(SqrtAccuracy, SquareRoot) {
  check<double>("dSqrt", {oxa_vml_kernel_dSqrt_E9HAynn, oxa_vml_kernel_dSqrt_E9LAynn, oxa_vml_kernel_dSqrt_E9EPnnn},
                mpfr_sqrt, 0.5);
  check<float>("sSqrt", {oxa_vml_kernel_sSqrt_E9HAynn, oxa_vml_kernel_sSqrt_E9LAynn, oxa_vml_kernel_sSqrt_E9EPnnn},
               mpfr_sqrt, 0.5);
}

TEST(SqrtAccuracy, ReciprocalSquareRoot) {
  check<double>("dInvSqrt",
                {oxa_vml_kernel_dInvSqrt_E9HAynn, oxa_vml_kernel_dInvSqrt_E9LAynn, oxa_vml_kernel_dInvSqrt_E9EPnnn},
                mpfr_rec_sqrt, 1.0);
  check<float>("sInvSqrt",
               {oxa_vml_kernel_sInvSqrt_E9HAynn, oxa_vml_kernel_sInvSqrt_E9LAynn, oxa_vml_kernel_sInvSqrt_E9EPnnn},
               mpfr_rec_sqrt, 1.0);
}

}  // namespace
