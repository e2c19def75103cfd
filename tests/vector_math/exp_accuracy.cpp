// Accuracy of the exponential kernels against MPFR over the whole domain that
// gives a nonzero finite result, including the subnormal results and the
// edges of the fast range.
#include <cmath>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;

TEST(ExpAccuracy, Double) {
  const std::vector<double> extra = {0x1.62e42fefa39efp+9, 709.7827, 709.0, 704.0, std::nextafter(704.0, 0.0),
                                     -704.0, -708.4, -708.3964185322641, -745.0, -745.1332191019411,
                                     0x1p-60, -0x1p-60, 0.5, -0.5, 1.0, 0x1.62e42fefa39efp-1};
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dExp_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dExp_E9LAynn, Bound::ulps(4.0)}},
      mpfr_exp, oxa::test::Domain<double>{-745.1, 709.78}, extra, oxa::test::sample_count(100000));
  oxa::test::expect_within(reports, "dExp");
}

TEST(ExpAccuracy, Single) {
  const std::vector<float> extra = {88.72283f, 88.0f, 87.0f, std::nextafter(87.0f, 0.0f), -87.0f, -87.3f,
                                    -88.0f, -103.2f, 0x1p-30f, -0x1p-30f, 1.0f};
  const auto reports = oxa::test::measure<float>(
      {{"HA", oxa_vml_kernel_sExp_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_sExp_E9LAynn, Bound::ulps(4.0)}},
      mpfr_exp, oxa::test::Domain<float>{-103.2f, 88.72f}, extra, oxa::test::sample_count(100000));
  oxa::test::expect_within(reports, "sExp");
  // The relative bound over normal results (subnormal ones carry fewer bits).
  const auto fast = oxa::test::measure<float>({{"EP", oxa_vml_kernel_sExp_E9EPnnn, Bound::relative(0x1p-11)}},
                                              mpfr_exp, oxa::test::Domain<float>{-87.33f, 88.72f}, {},
                                              oxa::test::sample_count(100000));
  oxa::test::expect_within(fast, "sExp");
}

}  // namespace
