// Behaviour of the inverse error function kernels beyond ieee_cases.txt:
// odd symmetry, the approach to +-1 and the denormal field of the mode.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/vml_test_support.hpp"

namespace {

template <class T>
struct Named {
  const char* name;
  oxa::test::Kernel<T> kernel;
};

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dErfInv_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dErfInv_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dErfInv_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sErfInv_E9HAynn},
                                {"sLA", oxa_vml_kernel_sErfInv_E9LAynn},
                                {"sEP", oxa_vml_kernel_sErfInv_E9EPnnn}};

// erfinv(-x) = -erfinv(x) bit for bit; and towards 1 the results grow
// strictly through the last doubles and stay finite, ending at
// erfinv(1 - 2^-53) = 5.8635847487551676 (a published value).
template <class T>
void check_symmetry_and_approach(const Named<T>* kernels, double end_value) {
  std::vector<T> a, b;
  for (int i = 1; i < 3000; ++i) a.push_back(T(i) / T(3000) * T(0.999)), b.push_back(-a.back());
  for (T x = T(1), i = 0; i < 64; ++i) a.push_back(x = std::nextafter(x, T(0))), b.push_back(-x);
  std::vector<T> ra(a.size()), rb(a.size());
  for (int l = 0; l < 3; ++l) {
    kernels[l].kernel(static_cast<int64_t>(a.size()), a.data(), ra.data());
    kernels[l].kernel(static_cast<int64_t>(b.size()), b.data(), rb.data());
    for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(ra[i], -rb[i]) << kernels[l].name << " at " << a[i];
    for (size_t i = 3000; i < a.size(); ++i) ASSERT_TRUE(std::isfinite(ra[i]) && ra[i] < ra[i - 1]) << kernels[l].name;
    const T top = T(1) - std::numeric_limits<T>::epsilon() / 2;
    T r;
    kernels[l].kernel(1, &top, &r);
    const double tolerance = sizeof(T) == 8 ? (l == 2 ? 0x1p-26 : 0x1p-50) : (l == 2 ? 0x1p-11 : 0x1p-21);
    EXPECT_NEAR(r, end_value, end_value * tolerance) << kernels[l].name;
  }
}

TEST(ErfInv, OddAndFiniteUpToTheLastValueBelowOne) {
  check_symmetry_and_approach(kDouble, 5.8635847487551676);
  check_symmetry_and_approach(kSingle, 3.8325067f);  // erfinv(1 - 2^-24)
}

// Tiny arguments give subnormal results, flushed under the flushing mode;
// subnormal arguments count as (signed) zero there.
TEST(ErfInv, DenormalFieldOfTheMode) {
  const double a[4] = {0x1p-1022, -0x1p-1040, 0x1p-1000, 0.5};
  double keep[4], flush[4];
  for (const auto& k : kDouble) {
    oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_KEEP);
    k.kernel(4, a, keep);
    oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_FLUSH);
    k.kernel(4, a, flush);
    oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_KEEP);
    EXPECT_TRUE(keep[0] > 0 && keep[0] < 0x1p-1022) << k.name;
    EXPECT_TRUE(keep[1] < 0 && keep[1] > -0x1p-1040) << k.name;
    EXPECT_EQ(flush[0], 0.0) << k.name;
    EXPECT_TRUE(flush[1] == 0.0 && std::signbit(flush[1])) << k.name;
    EXPECT_EQ(flush[2], keep[2]) << k.name;
    EXPECT_EQ(flush[3], keep[3]) << k.name;
  }
}

}  // namespace
