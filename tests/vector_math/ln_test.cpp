// Behaviour of the logarithm kernels: special values and statuses in every
// block position, subnormal inputs under both denormal modes, exact results.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "vector_math/exp_ln_cases.hpp"

namespace {

using oxa::test::Named;

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dLn_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dLn_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dLn_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sLn_E9HAynn},
                                {"sLA", oxa_vml_kernel_sLn_E9LAynn},
                                {"sEP", oxa_vml_kernel_sLn_E9EPnnn}};

template <class T>
std::vector<oxa::test::SpecialCase<T>> special_cases() {
  constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  const T tiny = std::numeric_limits<T>::denorm_min();
  return {{T(1), T(0), 0},   {T(0), -inf, 2},  {-T(0), -inf, 2}, {T(-1), nan, 1}, {-tiny, nan, 1},
          {-inf, nan, 1},    {inf, inf, 0},    {nan, nan, 0},    {-nan, nan, 0}};
}

TEST(Ln, SpecialValuesAndStatusesInEveryPosition) {
  for (const auto& k : kDouble)
    oxa::test::check_specials<double>(k.name, k.kernel, special_cases<double>(), oxa::test::ordinary<double>(13));
  for (const auto& k : kSingle)
    oxa::test::check_specials<float>(k.name, k.kernel, special_cases<float>(), oxa::test::ordinary<float>(29));
}

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

// Exact powers of two give k ln 2 with the same rounding at every level of
// ulp accuracy; the callback sees the function's name.
TEST(Ln, PowersOfTwoAndErrorName) {
  for (const auto& k : kDouble) {
    const double x[4] = {2.0, 0.5, 0x1p1000, 0x1p-1000};
    double r[4];
    k.kernel(4, x, r);
    EXPECT_NEAR(r[0], 0.69314718055994530942, 2e-16) << k.name;
    EXPECT_EQ(r[0], -r[1]) << k.name;
    EXPECT_EQ(r[2], -r[3]) << k.name;
  }
  static std::string name;
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_CALLBACK);
  oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    name = c->func_name;
    return 1;
  });
  const double xd = -1;
  double rd;
  oxa_vml_kernel_dLn_E9HAynn(1, &xd, &rd);
  EXPECT_EQ(name, "vdLn");
  const float xs = 0;
  float rs;
  oxa_vml_kernel_sLn_E9LAynn(1, &xs, &rs);
  EXPECT_EQ(name, "vsLn");
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace
