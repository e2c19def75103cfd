// Behaviour of the exponential kernels beyond ieee_cases.txt: the largest
// finite results, subnormal results under both denormal modes.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "vector_math/exp_ln_cases.hpp"

namespace {

using oxa::test::Named;

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dExp_E9HAynn}, {"dLA", oxa_vml_kernel_dExp_E9LAynn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sExp_E9HAynn},
                                {"sLA", oxa_vml_kernel_sExp_E9LAynn},
                                {"sEP", oxa_vml_kernel_sExp_E9EPnnn}};

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

}  // namespace
