// Behaviour of the logarithm kernels beyond ieee_cases.txt: subnormal
// inputs under both denormal modes, exact results.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "vector_math/exp_ln_cases.hpp"

namespace {

using oxa::test::Named;

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dLn_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dLn_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dLn_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sLn_E9HAynn},
                                {"sLA", oxa_vml_kernel_sLn_E9LAynn},
                                {"sEP", oxa_vml_kernel_sLn_E9EPnnn}};

// A subnormal input is a tiny positive number, or zero (singularity) when the
// mode treats denormal inputs as zero.
template <class T>
void check_subnormal(const char* name, oxa::test::Kernel<T> kernel) {
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  const T tiny = std::numeric_limits<T>::denorm_min();
  const T expect = static_cast<T>((std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits) *
                                  0.69314718055994530942);
  oxa::test::with_denormal_mode(OXA_VML_DENORMAL_KEEP, [&] {
    oxa_vml_kernel_SetErrStatus(0);
    T r;
    kernel(1, &tiny, &r);
    EXPECT_NEAR(r, expect, std::fabs(expect) * 1e-6) << name;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 0) << name;
  });
  oxa::test::with_denormal_mode(OXA_VML_DENORMAL_FLUSH, [&] {
    T r;
    kernel(1, &tiny, &r);
    EXPECT_EQ(r, -std::numeric_limits<T>::infinity()) << name;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), VML_ERR_SINGULARITY) << name;
  });
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

TEST(Ln, SubnormalInputsFollowTheDenormalMode) {
  for (const auto& k : kDouble) check_subnormal<double>(k.name, k.kernel);
  for (const auto& k : kSingle) check_subnormal<float>(k.name, k.kernel);
}

// ln(2^k) = k ln2 rounds the same for k and -k: the exact leading sum.
TEST(Ln, PowersOfTwoAreAntisymmetric) {
  for (const auto& k : kDouble) {
    const double x[4] = {2.0, 0.5, 0x1p1000, 0x1p-1000};
    double r[4];
    k.kernel(4, x, r);
    EXPECT_EQ(r[0], -r[1]) << k.name;
    EXPECT_EQ(r[2], -r[3]) << k.name;
  }
}

}  // namespace
