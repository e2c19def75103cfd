// Accuracy of the inverse error function kernels against MPFR over the whole
// of (-1, 1): subnormal arguments, the cross-over where 1 - |x| starts to
// round, and the last few representable values before +-1.
#include <cmath>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"
#include "vector_math/mpfr_erfinv.hpp"

namespace {

using oxa::test::Bound;

template <class T>
std::vector<T> edges() {
  std::vector<T> v = {std::numeric_limits<T>::denorm_min(), std::numeric_limits<T>::min(), T(0x1p-54),
                      T(0x1p-53), T(0x1p-30), T(0.5), std::nextafter(T(0.5), T(0)), T(0.75)};
  T x = T(1);
  for (int i = 0; i < 8; ++i) v.push_back(x = std::nextafter(x, T(0)));
  const size_t n = v.size();
  for (size_t i = 0; i < n; ++i) v.push_back(-v[i]);
  return v;
}

// HA and LA in ulps over all of (-1, 1); EP, whose bound is relative, where
// the results are normal numbers (a subnormal result has fewer digits).
template <class T>
void check(oxa::test::Kernel<T> ha, oxa::test::Kernel<T> la, oxa::test::Kernel<T> ep, double ep_bound,
           const char* name) {
  const T below_one = std::nextafter(T(1), T(0));
  const auto ulps = oxa::test::measure<T>({{"HA", ha, Bound::ulps(1.0)}, {"LA", la, Bound::ulps(4.0)}},
                                          oxa::test::mpfr_erfinv, oxa::test::Domain<T>{-below_one, below_one},
                                          edges<T>(), oxa::test::sample_count(10000));
  oxa::test::expect_within(ulps, name);
  std::vector<T> extra;
  for (T x : edges<T>())
    if (std::fabs(x) >= T(2) * std::numeric_limits<T>::min()) extra.push_back(x);
  const auto relative = oxa::test::measure<T>(
      {{"EP", ep, Bound::relative(ep_bound)}}, oxa::test::mpfr_erfinv,
      oxa::test::Domain<T>{T(2) * std::numeric_limits<T>::min(), below_one}, extra, oxa::test::sample_count(10000));
  oxa::test::expect_within(relative, name);
}

TEST(ErfInvAccuracy, Double) {
  check<double>(oxa_vml_kernel_dErfInv_E9HAynn, oxa_vml_kernel_dErfInv_E9LAynn, oxa_vml_kernel_dErfInv_E9EPnnn,
                0x1p-26, "dErfInv");
}

TEST(ErfInvAccuracy, Single) {
  check<float>(oxa_vml_kernel_sErfInv_E9HAynn, oxa_vml_kernel_sErfInv_E9LAynn, oxa_vml_kernel_sErfInv_E9EPnnn,
               0x1p-11, "sErfInv");
}

}  // namespace
