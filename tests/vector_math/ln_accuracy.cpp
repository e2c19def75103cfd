// Accuracy of the logarithm kernels against MPFR over all positive finite
// inputs, subnormals included, with extra points around 1 where the result
// is small and relative precision is hardest to keep.
#include <cmath>
#include <limits>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;

template <class T>
std::vector<T> near_one() {
  std::vector<T> v;
  T up = 1, down = 1;
  for (int k = 0; k < 64; ++k) {
    up = std::nextafter(up, T(2));
    down = std::nextafter(down, T(0));
    v.push_back(up);
    v.push_back(down);
  }
  for (T d = T(0x1p-12); d < T(0.3); d *= T(1.37)) {
    v.push_back(1 + d);
    v.push_back(1 - d);
  }
  return v;
}

TEST(LnAccuracy, Double) {
  std::vector<double> extra = near_one<double>();
  for (double x : {0x1p-1074, 0x1p-1022, 0x1.fffffffffffffp-1023, std::numeric_limits<double>::max(),
                   0x1.6955p-1, 0x1.6955p0, 2.0, 0.5, M_E})
    extra.push_back(x);
  const auto reports = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dLn_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dLn_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_dLn_E9EPnnn, Bound::relative(0x1p-26)}},
      mpfr_log, oxa::test::Domain<double>{0x1p-1074, std::numeric_limits<double>::max()}, extra,
      oxa::test::sample_count(100000));
  oxa::test::expect_within(reports, "dLn");
  // Relative accuracy near 1, where the result is small.
  const auto near = oxa::test::measure<double>(
      {{"HA", oxa_vml_kernel_dLn_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_dLn_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_dLn_E9EPnnn, Bound::relative(0x1p-26)}},
      mpfr_log, oxa::test::Domain<double>{0.9, 1.1}, {}, oxa::test::sample_count(20000));
  oxa::test::expect_within(near, "dLn near 1");
}

TEST(LnAccuracy, Single) {
  std::vector<float> extra = near_one<float>();
  for (float x : {0x1p-149f, 0x1p-126f, std::numeric_limits<float>::max(), 2.0f, 0.5f})
    extra.push_back(x);
  const auto reports = oxa::test::measure<float>(
      {{"HA", oxa_vml_kernel_sLn_E9HAynn, Bound::ulps(1.0)},
       {"LA", oxa_vml_kernel_sLn_E9LAynn, Bound::ulps(4.0)},
       {"EP", oxa_vml_kernel_sLn_E9EPnnn, Bound::relative(0x1p-11)}},
      mpfr_log, oxa::test::Domain<float>{0x1p-149f, std::numeric_limits<float>::max()}, extra,
      oxa::test::sample_count(100000));
  oxa::test::expect_within(reports, "sLn");
}

}  // namespace
