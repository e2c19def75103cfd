// Accuracy of the inverse normal CDF kernels against MPFR, all levels, both
// precisions, over the whole of (0, 1) including subnormals and the far tail.
#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"
#include "vector_math/mpfr_norm_inv.hpp"

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdlib>
#include <vector>

namespace {

using oxa::test::Bound;

TEST(CdfNormInvAccuracy, Double) {
  const std::vector<double> extra = {
      0x1p-54, std::nextafter(0x1p-54, 0.0), std::nextafter(0x1p-54, 1.0), 0x1p-1074, 0x1p-1022,
      std::nextafter(0.5, 0.0), std::nextafter(0.5, 1.0), std::nextafter(1.0, 0.0), 0.25, 0.75,
      1e-300, 1e-20, 0.975, 0.025, 0x1.54d03d593164dp-3 /* once 4.1 ulp in LA */};
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dCdfNormInv_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dCdfNormInv_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_dCdfNormInv_E9EPnnn, Bound::relative(0x1p-26)}},
      oxa::test::mpfr_norm_inv, oxa::test::Domain<double>{0x1p-1074, std::nextafter(1.0, 0.0)}, extra,
      oxa::test::sample_count(5000));
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
      oxa::test::sample_count(5000));
  oxa::test::expect_within(reports, "sCdfNormInv");
}

}  // namespace

// Every float in (0, 1), against the double HA kernel (0.501 double ulp, so
// 2^-29 of a float ulp). Long: set OXA_VML_EXHAUSTIVE=1 to run it.
TEST(CdfNormInvAccuracy, SingleExhaustive) {
  if (std::getenv("OXA_VML_EXHAUSTIVE") == nullptr) GTEST_SKIP() << "set OXA_VML_EXHAUSTIVE=1";
  constexpr uint32_t kBlock = 1 << 16;
  std::vector<float> a(kBlock), ha(kBlock), la(kBlock), ep(kBlock);
  std::vector<double> wide(kBlock), ref(kBlock);
  double max_ha = 0, max_la = 0, max_ep = 0;
  for (uint32_t start = 1; start < 0x3F800000u; start += kBlock) {
    const uint32_t n = std::min(kBlock, 0x3F800000u - start);
    for (uint32_t k = 0; k < n; ++k) a[k] = std::bit_cast<float>(start + k), wide[k] = a[k];
    oxa_vml_kernel_dCdfNormInv_E9HAynn(n, wide.data(), ref.data());
    oxa_vml_kernel_sCdfNormInv_E9HAynn(n, a.data(), ha.data());
    oxa_vml_kernel_sCdfNormInv_E9LAynn(n, a.data(), la.data());
    oxa_vml_kernel_sCdfNormInv_E9EPnnn(n, a.data(), ep.data());
    for (uint32_t k = 0; k < n; ++k) {
      if (ref[k] == 0) continue;
      const double ulp = std::ldexp(1.0, std::ilogb(static_cast<float>(ref[k])) - 23);
      max_ha = std::max(max_ha, std::fabs(ha[k] - ref[k]) / ulp);
      max_la = std::max(max_la, std::fabs(la[k] - ref[k]) / ulp);
      max_ep = std::max(max_ep, std::fabs(ep[k] - ref[k]) / std::fabs(ref[k]));
    }
  }
  std::printf("sCdfNormInv exhaustive: HA %.3f ulp, LA %.3f ulp, EP %.3e rel\n", max_ha, max_la, max_ep);
  EXPECT_LE(max_ha, 1.0);
  EXPECT_LE(max_la, 4.0);
  EXPECT_LE(max_ep, 0x1p-11);
}
