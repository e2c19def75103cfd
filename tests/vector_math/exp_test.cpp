// Behaviour of the exponential kernels: special values and statuses in every
// block position, subnormal results under both denormal modes, the dispatch
// slots (dExp has no EP kernel) and the name given to the error routine.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "vector_math/exp_ln_cases.hpp"

namespace {

using oxa::test::Named;

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dExp_E9HAynn}, {"dLA", oxa_vml_kernel_dExp_E9LAynn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sExp_E9HAynn},
                                {"sLA", oxa_vml_kernel_sExp_E9LAynn},
                                {"sEP", oxa_vml_kernel_sExp_E9EPnnn}};

// Overflow threshold ln(max) and underflow-to-zero threshold per type.
template <class T>
std::vector<oxa::test::SpecialCase<T>> special_cases(T over, T zero_below) {
  constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  return {{T(0), T(1), 0},       {-T(0), T(1), 0},          {inf, inf, 0},          {-inf, T(0), 0},
          {nan, nan, 0},         {over, inf, 3},            {T(1e30), inf, 3},      {zero_below, T(0), 4},
          {T(-1e30), T(0), 4}};
}

TEST(Exp, SpecialValuesAndStatusesInEveryPosition) {
  for (const auto& k : kDouble)
    oxa::test::check_specials<double>(k.name, k.kernel, special_cases<double>(709.79, -745.2),
                                      oxa::test::ordinary<double>(13));
  for (const auto& k : kSingle)
    oxa::test::check_specials<float>(k.name, k.kernel, special_cases<float>(88.73f, -104.0f),
                                     oxa::test::ordinary<float>(29));
}

// Largest finite results stay finite and silent; subnormal results report
// underflow, and are flushed to +0 when the mode flushes denormals.
template <class T>
void check_range_edges(const char* name, oxa::test::Kernel<T> kernel, T largest, T subnormal_arg) {
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  for (const uint32_t field : {OXA_VML_DENORMAL_KEEP, OXA_VML_DENORMAL_FLUSH}) {
    oxa::test::with_denormal_mode(field, [&] {
      oxa_vml_kernel_SetErrStatus(0);
      T r;
      kernel(1, &largest, &r);
      EXPECT_TRUE(std::isfinite(r)) << name;
      EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 0) << name;
      kernel(1, &subnormal_arg, &r);
      EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), VML_ERR_UNDERFLOW) << name;
      if (field == OXA_VML_DENORMAL_FLUSH)
        EXPECT_EQ(r, T(0)) << name;
      else
        EXPECT_TRUE(r > 0 && r < std::numeric_limits<T>::min()) << name;
    });
  }
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

TEST(Exp, RangeEdgesAndDenormalMode) {
  for (const auto& k : kDouble) check_range_edges<double>(k.name, k.kernel, 709.7827128933839, -740.0);
  for (const auto& k : kSingle) check_range_edges<float>(k.name, k.kernel, 88.72283f, -100.0f);
}

TEST(Exp, DispatchSlotsAndStubs) {
  EXPECT_EQ(oxa_vml_kernel_dExp_ttab[0], &oxa_vml_kernel_dExp_E9LAynn);
  EXPECT_EQ(oxa_vml_kernel_dExp_ttab[1], &oxa_vml_kernel_dExp_E9HAynn);
  EXPECT_EQ(oxa_vml_kernel_dExp_ttab[2], &oxa_vml_kernel_dExp_E9LAynn);
  EXPECT_EQ(oxa_vml_kernel_sExp_ttab[2], &oxa_vml_kernel_sExp_E9EPnnn);
  const double x[5] = {-2, -1, 0, 1, 2};
  double via_stub[5], direct[5];
  _vmldExp_26(5, x, via_stub);
  oxa_vml_kernel_dExp_E9LAynn(5, x, direct);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(via_stub[i], direct[i]);
}

// The callback sees the function's name, the element's index and values.
TEST(Exp, ErrorReportNamesTheFunction) {
  static std::string name;
  static int32_t index;
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_CALLBACK);
  oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    name = c->func_name;
    index = c->index;
    return 1;
  });
  const double xd[6] = {0, 0, 0, 0, 0, 800};
  double rd[6];
  oxa_vml_kernel_dExp_E9HAynn(6, xd, rd);
  EXPECT_EQ(name, "vdExp");
  EXPECT_EQ(index, 5);
  const float xs[3] = {0, -200, 0};
  float rs[3];
  oxa_vml_kernel_sExp_E9EPnnn(3, xs, rs);
  EXPECT_EQ(name, "vsExp");
  EXPECT_EQ(index, 1);
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace
