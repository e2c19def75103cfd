// Behaviour of the power kernels beyond ieee_cases.txt (which holds the
// C99 pow special cases): signs of negative bases and the error report.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "oxa/vector_math.h"
#include "vector_math/vml_test_support.hpp"

namespace {

template <class T>
using Powx = void (*)(int64_t, const T*, T, T*);

template <class T>
struct Named {
  const char* name;
  Powx<T> kernel;
};

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dPowx_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dPowx_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dPowx_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sPowx_E9HAynn},
                                {"sLA", oxa_vml_kernel_sPowx_E9LAynn},
                                {"sEP", oxa_vml_kernel_sPowx_E9EPnnn}};

// Negative bases with integer exponents in the fast path keep |a|^b exactly
// symmetric; odd exponents flip the sign.
TEST(Powx, NegativeBasesMirrorPositiveOnes) {
  const double a[6] = {1.5, 2.25, 3.75, 0.3, 7.0, 123.456};
  for (const auto& k : kDouble) {
    for (double b : {2.0, 3.0, -5.0, 17.0, -100.0}) {
      double pos[6], neg_a[6], neg[6];
      for (int i = 0; i < 6; ++i) neg_a[i] = -a[i];
      k.kernel(6, a, b, pos);
      k.kernel(6, neg_a, b, neg);
      const bool odd = std::fmod(b, 2.0) != 0;
      for (int i = 0; i < 6; ++i) EXPECT_EQ(neg[i], odd ? -pos[i] : pos[i]) << k.name << " b=" << b;
    }
  }
}

// The scalar exponent reaches the error report as the second argument.
TEST(Powx, ErrorReportCarriesTheExponent) {
  static std::string name;
  static double arg2;
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_CALLBACK);
  oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    name = c->func_name;
    arg2 = c->arg2;
    return 1;
  });
  const double a[2] = {2, -2};
  double r[2];
  _vmldPowx(2, a, 0.5, r);
  EXPECT_EQ(name, "vdPowx");
  EXPECT_EQ(arg2, 0.5);  // the scalar exponent is reported as the second argument
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace
