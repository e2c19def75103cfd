// The vector layer on another instruction set: Exp, Ln and Sin built for
// AVX-512 give the same bits as the exported AVX2 kernels, every level and
// type, on 2^22 inputs each (every kind of bit pattern, and the ranges where
// the formulas work), whole arrays and short tails. Skipped on processors
// without AVX-512.
#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <random>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/avx512_kernels.hpp"

namespace {

bool has_avx512() {
  return __builtin_cpu_supports("avx512f") && __builtin_cpu_supports("avx512dq") &&
         __builtin_cpu_supports("avx512bw") && __builtin_cpu_supports("avx512vl");
}

// Arbitrary bit patterns, then values spread over each family's range.
template <class T>
std::vector<T> inputs(size_t n, double range) {
  std::mt19937_64 gen(12);
  std::uniform_real_distribution<double> u(-1.0, 1.0);
  std::vector<T> v(n);
  for (size_t i = 0; i < n; ++i) {
    const uint64_t b = gen();
    switch (i % 4) {
      case 0: std::memcpy(&v[i], &b, sizeof(T)); break;
      case 1: v[i] = static_cast<T>(range * u(gen)); break;
      case 2: v[i] = static_cast<T>(std::ldexp(u(gen), static_cast<int>(b % 120) - 100)); break;
      default: v[i] = static_cast<T>(std::fabs(range * u(gen))); break;
    }
  }
  return v;
}

template <class T>
void compare(const char* label, void (*avx2)(int64_t, const T*, T*), void (*avx512)(int64_t, const T*, T*),
             const std::vector<T>& x) {
  std::vector<T> want(x.size()), got(x.size());
  for (size_t n : {x.size(), size_t{61}, size_t{7}}) {
    avx2(static_cast<int64_t>(n), x.data(), want.data());
    avx512(static_cast<int64_t>(n), x.data(), got.data());
    for (size_t i = 0; i < n; ++i) {
      if (std::memcmp(&want[i], &got[i], sizeof(T)) != 0) {
        ADD_FAILURE() << label << " n=" << n << " x=" << x[i] << " avx2=" << want[i] << " avx512=" << got[i];
        return;
      }
    }
  }
}

TEST(Avx512, ExpLnSinGiveTheBitsOfTheAvx2Kernels) {
  if (!has_avx512()) GTEST_SKIP() << "no AVX-512 on this processor";
  const OxaVmlKernel_d* d[] = {oxa_vml_kernel_dExp_ttab, oxa_vml_kernel_dLn_ttab, oxa_vml_kernel_dSin_ttab};
  const OxaVmlKernel_s* s[] = {oxa_vml_kernel_sExp_ttab, oxa_vml_kernel_sLn_ttab, oxa_vml_kernel_sSin_ttab};
  const double range[] = {750.0, 1e300, 1e6};
  const char* level[] = {"LA", "HA", "EP"};
  const size_t n = size_t{1} << 22;
  for (int f = 0; f < 3; ++f) {
    const auto& fam = oxa::test::kAvx512Families[f];
    const auto xd = inputs<double>(n, range[f]);
    const auto xs = inputs<float>(n, range[f] > 1e30 ? 1e30 : range[f]);
    for (int l = 0; l < 3; ++l) {
      const std::string label = std::string(fam.name) + " " + level[l];
      if (fam.d[l] != nullptr) compare<double>(("d" + label).c_str(), d[f][l], fam.d[l], xd);
      compare<float>(("s" + label).c_str(), s[f][l], fam.s[l], xs);
    }
  }
}

}  // namespace
