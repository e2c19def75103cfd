// Accuracy of the reciprocal-square-root kernels against MPFR over all
// positive floating-point numbers, including the scaled ranges (subnormals,
// the top binades) and the binade edges where the bit-pattern start is worst.
#include <cfloat>
#include <cmath>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;

TEST(InvSqrtAccuracy, Double) {
  std::vector<double> extra = {0x1p-1074, 0x1p-1022, std::nextafter(0x1p-1022, 0.0), 0x1p1022,
                               std::nextafter(0x1p1022, 0.0), DBL_MAX, 1.0, 2.0, 3.0};
  for (int e = -1020; e < 1020; e += 97)
    for (double m : {1.0, 1.5, 2.0 - 0x1p-52, 2.0, 3.0, 4.0 - 0x1p-51}) extra.push_back(std::ldexp(m, e));
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dInvSqrt_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dInvSqrt_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_dInvSqrt_E9EPnnn, Bound::relative(0x1p-26)}},
      mpfr_rec_sqrt, oxa::test::Domain<double>{0x1p-1074, DBL_MAX}, extra, oxa::test::sample_count(200000));
  oxa::test::expect_within(reports, "dInvSqrt");
}

TEST(InvSqrtAccuracy, Single) {
  std::vector<float> extra = {0x1p-149f, 0x1p-126f, std::nextafter(0x1p-126f, 0.0f), 0x1p125f,
                              std::nextafter(0x1p125f, 0.0f), FLT_MAX, 1.0f, 2.0f, 3.0f};
  const auto reports = oxa::test::measure<float>(
      {{"HA", oxa_vml_kernel_sInvSqrt_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_sInvSqrt_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_sInvSqrt_E9EPnnn, Bound::relative(0x1p-11)}},
      mpfr_rec_sqrt, oxa::test::Domain<float>{0x1p-149f, FLT_MAX}, extra, oxa::test::sample_count(200000));
  oxa::test::expect_within(reports, "sInvSqrt");
}

}  // namespace
