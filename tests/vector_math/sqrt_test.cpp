// Behaviour of the square-root and reciprocal-square-root kernels beyond
// ieee_cases.txt: the scaled ranges of the scalar routine and the
// denormal field of the mode.
#include <gtest/gtest.h>

#include <cfloat>
#include <cmath>
#include <limits>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/vml_test_support.hpp"

namespace {

using oxa::test::Kernel;

template <class T>
struct Family {
  const char* name;
  Kernel<T> kernels[3];  // HA, LA, EP
};

const Family<double> kSqrtD{"dSqrt", {oxa_vml_kernel_dSqrt_E9HAynn, oxa_vml_kernel_dSqrt_E9LAynn, oxa_vml_kernel_dSqrt_E9EPnnn}};
const Family<float> kSqrtS{"sSqrt", {oxa_vml_kernel_sSqrt_E9HAynn, oxa_vml_kernel_sSqrt_E9LAynn, oxa_vml_kernel_sSqrt_E9EPnnn}};
const Family<double> kInvD{"dInvSqrt", {oxa_vml_kernel_dInvSqrt_E9HAynn, oxa_vml_kernel_dInvSqrt_E9LAynn, oxa_vml_kernel_dInvSqrt_E9EPnnn}};
const Family<float> kInvS{"sInvSqrt", {oxa_vml_kernel_sInvSqrt_E9HAynn, oxa_vml_kernel_sInvSqrt_E9LAynn, oxa_vml_kernel_sInvSqrt_E9EPnnn}};

// The smallest subnormal with an even exponent, and its exact root.
template <class T>
constexpr T kTinyEven = sizeof(T) == 8 ? T(0x1p-1074) : T(0x1p-148);
template <class T>
constexpr T kTinyEvenRoot = sizeof(T) == 8 ? T(0x1p-537) : T(0x1p-74);

// 1/sqrt(4^k) = 2^-k exactly, across the whole exponent range: the fast path,
// both scaled ranges of the scalar routine and the seams between them.
template <class T>
void check_powers_of_four(const Family<T>& f) {
  std::vector<T> x, want;
  const int lo = std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits;  // -1073 or -148
  for (int e = lo + (lo & 1); e < std::numeric_limits<T>::max_exponent; e += 2)
    x.push_back(std::ldexp(T(1), e)), want.push_back(std::ldexp(T(1), -e / 2));
  std::vector<T> r(x.size());
  for (int level = 0; level < 2; ++level) {  // HA and LA round correctly here
    f.kernels[level](static_cast<int64_t>(x.size()), x.data(), r.data());
    for (size_t i = 0; i < x.size(); ++i) ASSERT_EQ(r[i], want[i]) << f.name << " level " << level << " at " << x[i];
  }
}

TEST(InvSqrt, PowersOfFourAreExactAcrossTheExponentRange) {
  check_powers_of_four(kInvD);
  check_powers_of_four(kInvS);
}

// Flushing mode: subnormal inputs count as zero (sqrt gives 0, the reciprocal
// a singularity); keeping mode: they are ordinary numbers.
TEST(Sqrt, DenormalFieldOfTheMode) {
  const uint32_t saved = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  const double sub[4] = {0x1p-1060, 0x1p-1070, 0x1p-1040, 0x1p-1030};
  double r[4];
  for (int level = 0; level < 3; ++level) {
    oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_FLUSH);
    oxa_vml_kernel_ClearErrStatus();
    kSqrtD.kernels[level](4, sub, r);
    for (double v : r) EXPECT_EQ(v, 0.0) << level;
    kInvD.kernels[level](4, sub, r);
    for (double v : r) EXPECT_EQ(v, std::numeric_limits<double>::infinity()) << level;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), VML_ERR_SINGULARITY);

    oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_KEEP);
    oxa_vml_kernel_ClearErrStatus();
    kSqrtD.kernels[level](4, sub, r);
    EXPECT_EQ(r[0], 0x1p-530) << level;
    kInvD.kernels[level](4, sub, r);
    EXPECT_EQ(r[1], 0x1p535) << level;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), VML_ERR_NONE);
  }
  oxa_vml_kernel_SetMode(saved);
  oxa_vml_kernel_SetMode(OXA_VML_DENORMAL_KEEP);
}

}  // namespace
