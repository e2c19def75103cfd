// Behaviour of the inverse normal CDF kernels beyond ieee_cases.txt: the
// reported elements, symmetry, the fast-range boundary, the far tail and the
// control word.
#include <gtest/gtest.h>
#include <immintrin.h>

#include <algorithm>
#include <functional>
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

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dCdfNormInv_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dCdfNormInv_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dCdfNormInv_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sCdfNormInv_E9HAynn},
                                {"sLA", oxa_vml_kernel_sCdfNormInv_E9LAynn},
                                {"sEP", oxa_vml_kernel_sCdfNormInv_E9EPnnn}};

// Every offending element is reported in index order with its own status.
TEST(CdfNormInv, ReportsEachOffendingElementInOrder) {
  static std::vector<std::pair<int32_t, int32_t>> seen;
  const VmlErrorCallBack previous = oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    seen.emplace_back(c->index, c->code);
    return 1;
  });
  const double in[13] = {0.2, 0.0, 0.3, 2.0, 0.4, 0.5, 1.0, 0.6, 0.7, -1.0, 0.8, 0.9, 1.0};
  for (const auto& k : kDouble) {
    seen.clear();
    double out[13];
    k.kernel(13, in, out);
    const std::vector<std::pair<int32_t, int32_t>> want = {{1, 2}, {3, 1}, {6, 2}, {9, 1}, {12, 2}};
    EXPECT_EQ(seen, want) << k.name;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 2) << k.name;  // the last one reported
  }
  oxa_vml_kernel_SetErrorCallBack(previous);
  oxa_vml_kernel_ClearErrStatus();
}

// Phi^-1(1 - a) = -Phi^-1(a) exactly whenever 1 - a is exact.
TEST(CdfNormInv, ResultsAreAntisymmetricAboutOneHalf) {
  std::vector<double> a, b;
  for (int i = 1; i < 4000; ++i) {
    const double x = 0.5 + 0.25 * i / 4000.0 + 0x1p-50 * i;  // 1 - x is exact for x >= 1/2
    a.push_back(x), b.push_back(1.0 - x);
  }
  a.push_back(0x1p-53), b.push_back(1.0 - 0x1p-53);
  a.push_back(0x1p-30), b.push_back(1.0 - 0x1p-30);
  std::vector<double> ra(a.size()), rb(a.size());
  for (const auto& k : kDouble) {
    k.kernel(static_cast<int64_t>(a.size()), a.data(), ra.data());
    k.kernel(static_cast<int64_t>(b.size()), b.data(), rb.data());
    for (size_t i = 0; i < a.size(); ++i) ASSERT_EQ(ra[i], -rb[i]) << k.name << " at " << a[i];
  }
  std::vector<float> fa, fb;
  for (int i = 1; i < 4000; ++i) fa.push_back(0.5f + 0.25f * i / 4000.0f), fb.push_back(1.0f - fa.back());
  std::vector<float> fra(fa.size()), frb(fa.size());
  for (const auto& k : kSingle) {
    k.kernel(static_cast<int64_t>(fa.size()), fa.data(), fra.data());
    k.kernel(static_cast<int64_t>(fb.size()), fb.data(), frb.data());
    for (size_t i = 0; i < fa.size(); ++i) ASSERT_EQ(fra[i], -frb[i]) << k.name << " at " << fa[i];
  }
}

// Results decrease strictly as a walks down through 2^-54 (where the fast
// range hands over to the far-tail routine) and through the subnormals.
TEST(CdfNormInv, MonotoneAcrossTheFastRangeBoundaryAndIntoSubnormals) {
  std::vector<double> a;
  double x = std::ldexp(1.0, -54);
  for (int i = 0; i < 40; ++i) x = std::nextafter(x, 1.0);
  for (int i = 0; i < 80; ++i) a.push_back(x), x = std::nextafter(x, 0.0);
  for (int e = -60; e >= -1074; e -= 7) a.push_back(std::ldexp(1.0, e)), a.push_back(std::ldexp(1.5, e));
  std::sort(a.begin(), a.end(), std::greater<>());
  a.push_back(std::numeric_limits<double>::denorm_min());
  std::vector<double> r(a.size());
  for (const auto& k : kDouble) {
    if (k.kernel == oxa_vml_kernel_dCdfNormInv_E9EPnnn) continue;  // EP is only 2^-26 accurate
    oxa_vml_kernel_SetErrStatus(oxa::test::kUntouched);
    k.kernel(static_cast<int64_t>(a.size()), a.data(), r.data());
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), oxa::test::kUntouched);
    for (size_t i = 0; i < a.size(); ++i) {
      ASSERT_TRUE(std::isfinite(r[i]) && r[i] < -8.0) << k.name << " at " << a[i];
      if (i > 0) {
        ASSERT_LE(r[i], r[i - 1]) << k.name << " at " << std::hexfloat << a[i];
      }
    }
  }
}

// At the centre of the first piece (t = 0) the result is (2x - 1) * c0 of row
// 0 exactly, which pins the reduction and the published first coefficients.
TEST(CdfNormInv, CentreOfTheFirstPieceGivesTheLeadingCoefficient) {
  const double x_ep = 0.4921875, x_la = 0.46875;  // y = 63/64 and y = 15/16
  double r;
  oxa_vml_kernel_dCdfNormInv_E9EPnnn(1, &x_ep, &r);
  EXPECT_EQ(r, -0x1p-6 * 1.2533942533804652);
  oxa_vml_kernel_dCdfNormInv_E9LAynn(1, &x_la, &r);
  EXPECT_EQ(r, -0x1p-4 * 1.2545986037297951);
}

// These kernels neither read nor write the control word: results computed
// under a directed rounding mode still come back, and the word is unchanged.
TEST(CdfNormInv, LeavesTheControlWordAlone) {
  const unsigned saved = _mm_getcsr();
  const unsigned odd = (saved & ~0x6000u) | 0x6000u | 0x8040u;  // toward zero, FTZ, DAZ
  _mm_setcsr(odd);
  const double a[5] = {0.1, 0.2, 0.3, 0.4, 0.6};
  double r[5];
  for (const auto& k : kDouble) {
    k.kernel(5, a, r);
    EXPECT_EQ(_mm_getcsr() & 0xFFC0u, odd & 0xFFC0u) << k.name;
  }
  _mm_setcsr(saved);
}

}  // namespace
