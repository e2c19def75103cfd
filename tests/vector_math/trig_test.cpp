// Behaviour of the Sin, Cos, SinCos and Tan kernels beyond
// ieee_cases.txt: SinCos's error reports, the denormal field of the mode
// and the exact reduction of huge arguments against MPFR.
#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <limits>
#include <random>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/vml_test_support.hpp"

extern "C" int32_t oxa_vml_kernel_reduce_pio2d(double x, double* r);

namespace {

using oxa::test::Kernel;

template <class T, void (*K)(int64_t, const T*, T*, T*), int Which>
void one_of(int64_t n, const T* a, T* r) {
  std::vector<T> other(static_cast<size_t>(n));
  if (Which == 0)
    K(n, a, r, other.data());
  else
    K(n, a, other.data(), r);
}

template <class T>
struct Named {
  const char* name;
  Kernel<T> kernel;
  bool is_cos;  // cos(+-0) = 1; sin and tan keep the signed zero
};

const Named<double> kDouble[] = {
    {"dSinHA", oxa_vml_kernel_dSin_E9HAynn, false}, {"dSinLA", oxa_vml_kernel_dSin_E9LAynn, false},
    {"dSinEP", oxa_vml_kernel_dSin_E9EPnnn, false}, {"dCosHA", oxa_vml_kernel_dCos_E9HAynn, true},
    {"dCosLA", oxa_vml_kernel_dCos_E9LAynn, true},  {"dCosEP", oxa_vml_kernel_dCos_E9EPnnn, true},
    {"dTanHA", oxa_vml_kernel_dTan_E9HAynn, false}, {"dTanLA", oxa_vml_kernel_dTan_E9LAynn, false},
    {"dTanEP", oxa_vml_kernel_dTan_E9EPnnn, false},
    {"dSinCosHA.sin", one_of<double, oxa_vml_kernel_dSinCos_E9HAynn, 0>, false},
    {"dSinCosHA.cos", one_of<double, oxa_vml_kernel_dSinCos_E9HAynn, 1>, true},
    {"dSinCosEP.cos", one_of<double, oxa_vml_kernel_dSinCos_E9EPnnn, 1>, true}};
const Named<float> kSingle[] = {
    {"sSinHA", oxa_vml_kernel_sSin_E9HAynn, false}, {"sSinEP", oxa_vml_kernel_sSin_E9EPnnn, false},
    {"sCosLA", oxa_vml_kernel_sCos_E9LAynn, true},  {"sCosEP", oxa_vml_kernel_sCos_E9EPnnn, true},
    {"sTanHA", oxa_vml_kernel_sTan_E7HAynn, false}, {"sTanEP", oxa_vml_kernel_sTan_E9EPnnn, false},
    {"sSinCosLA.sin", one_of<float, oxa_vml_kernel_sSinCos_E9LAynn, 0>, false},
    {"sSinCosLA.cos", one_of<float, oxa_vml_kernel_sSinCos_E9LAynn, 1>, true}};

// Infinities in both outputs of SinCos: each reported once, with the kernel's
// error name and both results NaN.
TEST(Trig, SinCosReportsInfinityOnceWithBothResults) {
  static std::vector<VmlErrorContext> seen;
  const VmlErrorCallBack previous = oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    seen.push_back(*c);
    return 0;
  });
  const double inf = std::numeric_limits<double>::infinity();
  const double in[6] = {1.0, -inf, 2.0, 3.0, inf, 4.0};
  double s[6], c[6];
  oxa_vml_kernel_dSinCos_E9LAynn(6, in, s, c);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_EQ(seen[0].index, 1);
  EXPECT_EQ(seen[1].index, 4);
  EXPECT_STREQ(seen[0].func_name, "vdSinCos");
  EXPECT_TRUE(std::isnan(seen[1].res1) && std::isnan(seen[1].res2));
  EXPECT_TRUE(std::isnan(s[4]) && std::isnan(c[4]) && std::isnan(s[1]) && std::isnan(c[1]));
  EXPECT_EQ(s[2], std::sin(2.0));  // glibc's sin is correctly rounded here

  // The tangent kernels report under their level's name.
  seen.clear();
  double t;
  oxa_vml_kernel_dTan_E9EPnnn(1, &inf, &t);
  float tf;
  const float inff = std::numeric_limits<float>::infinity();
  oxa_vml_kernel_sTan_E7HAynn(1, &inff, &tf);
  ASSERT_EQ(seen.size(), 2u);
  EXPECT_STREQ(seen[0].func_name, "dTan_A11");
  EXPECT_STREQ(seen[1].func_name, "sTan_HA");
  oxa_vml_kernel_SetErrorCallBack(previous);
  oxa_vml_kernel_ClearErrStatus();
}

// Denormal inputs are kept in mode 0x140000 and flushed to a zero of their
// sign in mode 0x280000.
TEST(Trig, DenormalsFollowTheMode) {
  const double tiny[4] = {0x1p-1040, -0x1p-1040, 0x1p-1074, 1.0};
  for (const uint32_t mode : {uint32_t{OXA_VML_DENORMAL_KEEP}, uint32_t{OXA_VML_DENORMAL_FLUSH}}) {
    const uint32_t saved = oxa_vml_kernel_SetMode(mode);
    double r[4];
    oxa_vml_kernel_dSin_E9HAynn(4, tiny, r);
    const bool flush = mode == OXA_VML_DENORMAL_FLUSH;
    EXPECT_EQ(r[0], flush ? 0.0 : 0x1p-1040);
    EXPECT_EQ(r[1], flush ? -0.0 : -0x1p-1040);
    EXPECT_TRUE(std::signbit(r[1]));
    EXPECT_EQ(r[2], flush ? 0.0 : 0x1p-1074);
    oxa_vml_kernel_dCos_E9LAynn(4, tiny, r);
    EXPECT_EQ(r[0], 1.0);
    oxa_vml_kernel_SetMode(saved);
  }
}

// The exact reduction: x - k pi/2 against MPFR for random doubles of every
// size, the known closest case among them; relative error below 2^-90.
TEST(Trig, ReductionIsExactForHugeArguments) {
  std::mt19937_64 rng(42);
  std::vector<double> xs = {6381956970095103.0 * 0x1p797, 0x1.fffffffffffffp+1023, 0x1p30, 0.75, 1e22};
  std::uniform_int_distribution<uint64_t> bits(0x3FE0000000000000ull, 0x7FEFFFFFFFFFFFFFull);
  for (int i = 0; i < 3000; ++i) xs.push_back(std::bit_cast<double>(bits(rng)));
  mpfr_t x, halfpi, k, r, got;
  mpfr_inits2(2400, x, halfpi, k, r, got, static_cast<mpfr_ptr>(nullptr));
  mpfr_const_pi(halfpi, MPFR_RNDN);
  mpfr_div_2ui(halfpi, halfpi, 1, MPFR_RNDN);
  for (const double v : xs) {
    for (const double sx : {v, -v}) {
      double rr[2];
      const int32_t q = oxa_vml_kernel_reduce_pio2d(sx, rr);
      mpfr_set_d(x, sx, MPFR_RNDN);
      mpfr_div(k, x, halfpi, MPFR_RNDN);
      mpfr_rint(k, k, MPFR_RNDN);
      mpfr_set_ui(r, 4, MPFR_RNDN);
      mpfr_fmod(r, k, r, MPFR_RNDN);
      const long kq = mpfr_get_si(r, MPFR_RNDN);
      mpfr_mul(r, k, halfpi, MPFR_RNDN);
      mpfr_sub(r, x, r, MPFR_RNDN);
      mpfr_set_d(got, rr[0], MPFR_RNDN);
      mpfr_add_d(got, got, rr[1], MPFR_RNDN);
      mpfr_sub(got, got, r, MPFR_RNDN);
      mpfr_div(got, got, r, MPFR_RNDN);
      EXPECT_LT(std::fabs(mpfr_get_d(got, MPFR_RNDN)), 0x1p-90) << std::hexfloat << sx;
      EXPECT_EQ(q, static_cast<int32_t>((kq + 4) % 4)) << std::hexfloat << sx;
    }
  }
  mpfr_clears(x, halfpi, k, r, got, static_cast<mpfr_ptr>(nullptr));
}

}  // namespace
