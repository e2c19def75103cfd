// Accuracy of the square-root kernels against MPFR over all non-negative
// floating-point numbers, subnormals and the largest finite value included.
#include <cfloat>
#include <cmath>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;

TEST(SqrtAccuracy, Double) {
  const std::vector<double> extra = {0x1p-1074, 0x1p-1022, std::nextafter(0x1p-1022, 0.0), 0x1p1022,
                                     std::nextafter(0x1p1022, 0.0), DBL_MAX, 2.0, 3.0, std::nextafter(4.0, 0.0)};
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dSqrt_E9HAynn, Bound::ulps(0.5)},
       {"LA", oxa_vml_kernel_dSqrt_E9LAynn, Bound::ulps(0.5)},
       {"EP", oxa_vml_kernel_dSqrt_E9EPnnn, Bound::relative(0x1p-26)}},
      mpfr_sqrt, oxa::test::Domain<double>{0.0, DBL_MAX}, extra, oxa::test::sample_count(200000));
  oxa::test::expect_within(reports, "dSqrt");
}

TEST(SqrtAccuracy, Single) {
  const std::vector<float> extra = {0x1p-149f, 0x1p-126f, std::nextafter(0x1p-126f, 0.0f), 0x1p125f,
                                    FLT_MAX, 2.0f, 3.0f, std::nextafter(4.0f, 0.0f)};
  const auto reports = oxa::test::measure<float>(
      {{"HA", oxa_vml_kernel_sSqrt_E9HAynn, Bound::ulps(0.5)},
       {"LA", oxa_vml_kernel_sSqrt_E9LAynn, Bound::ulps(0.5)},
       {"EP", oxa_vml_kernel_sSqrt_E9EPnnn, Bound::relative(0x1p-11)}},
      mpfr_sqrt, oxa::test::Domain<float>{0.0f, FLT_MAX}, extra, oxa::test::sample_count(200000));
  oxa::test::expect_within(reports, "sSqrt");
}

}  // namespace
