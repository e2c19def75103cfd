// Accuracy of the inverse normal CDF kernels against MPFR, all levels, both
// precisions, over the whole of (0, 1) including subnormals and the far tail.
#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"
#include "vector_math/mpfr_norm_inv.hpp"

#include <cmath>

namespace {

using oxa::test::Bound;

TEST(CdfNormInvAccuracy, Double) {
  const std::vector<double> extra = {
      0x1p-54, std::nextafter(0x1p-54, 0.0), std::nextafter(0x1p-54, 1.0), 0x1p-1074, 0x1p-1022,
      std::nextafter(0.5, 0.0), std::nextafter(0.5, 1.0), std::nextafter(1.0, 0.0), 0.25, 0.75,
      1e-300, 1e-20, 0.975, 0.025};
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dCdfNormInv_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dCdfNormInv_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_dCdfNormInv_E9EPnnn, Bound::relative(0x1p-26)}},
      oxa::test::mpfr_norm_inv, oxa::test::Domain<double>{0x1p-1074, std::nextafter(1.0, 0.0)}, extra,
      oxa::test::sample_count(10000));
  oxa::test::expect_within(reports, "dCdfNormInv");
}

TEST(CdfNormInvAccuracy, Single) {
  const std::vector<float> extra = {0x1p-149f, 0x1p-126f, std::nextafter(0.5f, 0.0f),
                                    std::nextafter(0.5f, 1.0f), std::nextafter(1.0f, 0.0f), 0.25f,
                                    0.75f, 1e-30f, 0.975f, 0.025f};
  const auto reports = oxa::test::measure<float>(
      {{"HA", oxa_vml_kernel_sCdfNormInv_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_sCdfNormInv_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_sCdfNormInv_E9EPnnn, Bound::relative(0x1p-11)}},
      oxa::test::mpfr_norm_inv, oxa::test::Domain<float>{0x1p-149f, std::nextafter(1.0f, 0.0f)}, extra,
      oxa::test::sample_count(10000));
  oxa::test::expect_within(reports, "sCdfNormInv");
}

}  // namespace
