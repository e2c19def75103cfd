// Kernels called in place (the output array is the input array) give the same
// results as out of place, special lanes included, at every position of the
// blocked loop: the scalar routine must see the input, not the vector pass's
// placeholder.
#include <gtest/gtest.h>

#include <cmath>
#include <cstring>
#include <limits>
#include <vector>

#include "oxa/vector_math.h"

namespace {

constexpr double kInf = std::numeric_limits<double>::infinity();

bool same(double x, double y) { return std::memcmp(&x, &y, sizeof x) == 0 || (x != x && y != y); }

struct Case {
  const char* name;
  const OxaVmlKernel_d* table;
  double ordinary, special;
};

TEST(VectorMathInPlace, SpecialLanesMatchOutOfPlace) {
  const Case cases[] = {
      {"Exp", oxa_vml_kernel_dExp_ttab, 0.5, 1000.0},
      {"Ln", oxa_vml_kernel_dLn_ttab, 2.0, 0.0},
      {"InvSqrt", oxa_vml_kernel_dInvSqrt_ttab, 4.0, 0.0},
      {"Sqrt", oxa_vml_kernel_dSqrt_ttab, 4.0, -1.0},
      {"ErfInv", oxa_vml_kernel_dErfInv_ttab, 0.25, -1.0},
      {"Sin", oxa_vml_kernel_dSin_ttab, 0.5, kInf},
      {"CdfNormInv", oxa_vml_kernel_dCdfNormInv_ttab, 0.25, 0.0},
  };
  const uint32_t saved = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  for (const Case& c : cases) {
    for (int slot = 0; slot < 3; ++slot) {
      for (int n : {1, 3, 8, 13}) {
        for (int at = 0; at < n; ++at) {
          std::vector<double> in(n, c.ordinary), out(n), inplace;
          in[at] = c.special;
          inplace = in;
          c.table[slot](n, in.data(), out.data());
          c.table[slot](n, inplace.data(), inplace.data());
          for (int i = 0; i < n; ++i)
            ASSERT_TRUE(same(out[i], inplace[i]))
                << c.name << " slot " << slot << " n " << n << " special at " << at << " lane " << i
                << ": " << out[i] << " vs " << inplace[i];
        }
      }
    }
  }
  oxa_vml_kernel_SetMode(saved);
}

TEST(VectorMathInPlace, TwoOutputAndScalarShapes) {
  const uint32_t saved = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  for (int n : {2, 8, 9}) {
    std::vector<double> in(n, 0.5), s(n), c(n), inplace;
    in[n - 1] = kInf;
    inplace = in;
    oxa_vml_kernel_dSinCos_ttab[1](n, in.data(), s.data(), c.data());
    std::vector<double> c2(n);
    oxa_vml_kernel_dSinCos_ttab[1](n, inplace.data(), inplace.data(), c2.data());
    for (int i = 0; i < n; ++i) EXPECT_TRUE(same(s[i], inplace[i]) && same(c[i], c2[i])) << i;

    std::vector<double> base(n, 2.0), p(n);
    base[n - 1] = 0.0;
    std::vector<double> pin = base;
    oxa_vml_kernel_dPowx_ttab[1](n, base.data(), -1.0, p.data());
    oxa_vml_kernel_dPowx_ttab[1](n, pin.data(), -1.0, pin.data());
    for (int i = 0; i < n; ++i) EXPECT_TRUE(same(p[i], pin[i])) << i;
    EXPECT_EQ(pin[n - 1], kInf);
  }
  oxa_vml_kernel_SetMode(saved);
}

}  // namespace
