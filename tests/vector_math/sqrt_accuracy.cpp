// Accuracy of the square-root and reciprocal-square-root kernels against
// MPFR over all positive floating-point numbers: subnormals, the seams of the
// scaled ranges, the top binade, and binade edges where estimates are worst.
#include <bit>
#include <cmath>
#include <cstdlib>
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

// Long tier (OXA_VML_EXHAUSTIVE=1): every positive float, in slices.
TEST(SqrtAccuracy, EveryPositiveFloat) {
  if (std::getenv("OXA_VML_EXHAUSTIVE") == nullptr) GTEST_SKIP() << "set OXA_VML_EXHAUSTIVE=1 to run";
  const struct {
    const char* name;
    Kernel<float> k[3];
    oxa::test::Reference reference;
    double ha_ulps;
  } rows[] = {{"sSqrt", {oxa_vml_kernel_sSqrt_E9HAynn, oxa_vml_kernel_sSqrt_E9LAynn, oxa_vml_kernel_sSqrt_E9EPnnn},
               mpfr_sqrt, 0.5},
              {"sInvSqrt", {oxa_vml_kernel_sInvSqrt_E9HAynn, oxa_vml_kernel_sInvSqrt_E9LAynn,
                            oxa_vml_kernel_sInvSqrt_E9EPnnn}, mpfr_rec_sqrt, 1.0}};
  constexpr uint32_t kSlice = 1u << 22;
  for (const auto& row : rows) {
    for (uint32_t first = 1; first < 0x7F800000u; first += kSlice) {
      std::vector<float> slice;
      for (uint32_t b = first; b < first + kSlice && b < 0x7F800000u; ++b) slice.push_back(std::bit_cast<float>(b));
      const auto reports = oxa::test::measure<float>(
          {{"HA", row.k[0], Bound::ulps(row.ha_ulps)}, {"LA", row.k[1], Bound::ulps(row.ha_ulps == 0.5 ? 0.5 : 4.0)},
           {"EP", row.k[2], Bound::relative(0x1p-11)}},
          row.reference, oxa::test::Domain<float>{1.0f, 1.0f}, slice, 0);
      for (const auto& r : reports) {
        ASSERT_LE(r.max_ulp, r.bound.max_ulp > 0 ? r.bound.max_ulp : INFINITY) << row.name << " " << r.name;
        ASSERT_LE(r.max_rel, r.bound.max_rel > 0 ? r.bound.max_rel : INFINITY) << row.name << " " << r.name;
      }
    }
  }
}

}  // namespace
