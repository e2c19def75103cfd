// Accuracy of the power kernels against MPFR on a grid of exponents (small
// and large integers, half-integers, negative, tiny and huge values) times
// random bases: positive bases over the whole finite range, negative bases
// for integer exponents. Results that overflow or vanish are left to the
// special-value tests; subnormal results are measured in subnormal ulps.
#include <cmath>
#include <cstdio>
#include <random>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

template <class T>
using Powx = void (*)(int64_t, const T*, T, T*);

template <class T>
struct PowLevel {
  const char* name;
  Powx<T> kernel;
  oxa::test::Bound bound;
};

template <class T>
void measure_powx(const char* function, const std::vector<PowLevel<T>>& levels, const std::vector<T>& exponents,
                  int64_t per_exponent) {
  std::mt19937_64 rng(0x9047);
  using oxa::test::detail::from_ordinal;
  using oxa::test::detail::ordinal;
  std::uniform_int_distribution<int64_t> by_bits(ordinal(std::numeric_limits<T>::denorm_min()),
                                                 ordinal(std::numeric_limits<T>::max()));
  std::uniform_real_distribution<double> near_one(0.5, 2.0);
  std::vector<double> max_ulp(levels.size()), max_rel(levels.size());
  mpfr_t x, y, z, diff, ulp;
  mpfr_inits2(128, x, y, z, diff, ulp, static_cast<mpfr_ptr>(nullptr));
  for (T b : exponents) {
    std::vector<T> a;
    for (int64_t k = 0; k < per_exponent; ++k) {
      T v = (k % 3 == 0) ? static_cast<T>(near_one(rng)) : from_ordinal<T>(by_bits(rng));
      if (k % 4 == 1 && std::trunc(b) == b) v = -v;
      a.push_back(v);
    }
    for (size_t l = 0; l < levels.size(); ++l) {
      std::vector<T> r(a.size());
      levels[l].kernel(static_cast<int64_t>(a.size()), a.data(), b, r.data());
      for (size_t i = 0; i < a.size(); ++i) {
        mpfr_set_d(x, a[i], MPFR_RNDN);
        mpfr_set_d(y, b, MPFR_RNDN);
        mpfr_pow(z, x, y, MPFR_RNDN);
        const double zd = mpfr_get_d(z, MPFR_RNDN);
        if (!std::isfinite(static_cast<T>(zd)) || zd == 0 || !mpfr_number_p(z)) continue;
        if (std::fabs(zd) > std::numeric_limits<T>::max()) continue;
        oxa::test::detail::ulp_of<T>(ulp, z);
        if (mpfr_cmp(ulp, z) > 0 && mpfr_cmp_d(z, 0) > 0) continue;  // rounds to zero
        mpfr_set_d(diff, r[i], MPFR_RNDN);
        mpfr_sub(diff, diff, z, MPFR_RNDN);
        const double rel = std::fabs(mpfr_get_d(diff, MPFR_RNDN) / zd);
        mpfr_div(diff, diff, ulp, MPFR_RNDN);
        const double u = std::isfinite(r[i]) ? std::fabs(mpfr_get_d(diff, MPFR_RNDN)) : INFINITY;
        if (u > max_ulp[l]) max_ulp[l] = u;
        if (rel > max_rel[l] && std::fabs(zd) >= std::numeric_limits<T>::min()) max_rel[l] = rel;
        if (levels[l].bound.max_ulp > 0) {
          ASSERT_LE(u, levels[l].bound.max_ulp) << function << " " << levels[l].name << " a=" << std::hexfloat
                                                << a[i] << " b=" << b << " got " << r[i];
        } else if (std::fabs(zd) >= std::numeric_limits<T>::min()) {
          ASSERT_LE(rel, levels[l].bound.max_rel) << function << " " << levels[l].name << " a=" << std::hexfloat
                                                  << a[i] << " b=" << b << " got " << r[i];
        }
      }
    }
  }
  mpfr_clears(x, y, z, diff, ulp, static_cast<mpfr_ptr>(nullptr));
  for (size_t l = 0; l < levels.size(); ++l)
    std::printf("%-8s %s  max %.3f ulp  max rel %.3e\n", function, levels[l].name, max_ulp[l], max_rel[l]);
}

template <class T>
std::vector<T> exponent_grid() {
  std::vector<T> e;
  for (double v : {1.0, 2.0, 3.0, -1.0, -2.0, -3.0, 0.5, -0.5, 1.5, 2.5, -7.5, 10.0, 17.0, -33.0, 100.0, -100.0,
                   1023.0, 0.3, -0.3, 1.0 / 3, 2.75, 0x1p-20, -0x1p-20, 1e4, -1e4, 123456789.0, 0x1p40, -0x1p40,
                   1.4e5, -1.4e5, 7e4 + 0.5,
                   0x1.fffffffffffffp52})
    e.push_back(static_cast<T>(v));
  return e;
}

TEST(PowxAccuracy, Double) {
  measure_powx<double>("dPowx",
                       {{"HA", oxa_vml_kernel_dPowx_E9HAynn, oxa::test::Bound::ulps(1.0)},
                        {"LA", oxa_vml_kernel_dPowx_E9LAynn, oxa::test::Bound::ulps(4.0)},
                        {"EP", oxa_vml_kernel_dPowx_E9EPnnn, oxa::test::Bound::relative(0x1p-26)}},
                       exponent_grid<double>(), oxa::test::sample_count(50000) / 25);
}

TEST(PowxAccuracy, Single) {
  measure_powx<float>("sPowx",
                      {{"HA", oxa_vml_kernel_sPowx_E9HAynn, oxa::test::Bound::ulps(1.0)},
                       {"LA", oxa_vml_kernel_sPowx_E9LAynn, oxa::test::Bound::ulps(4.0)},
                       {"EP", oxa_vml_kernel_sPowx_E9EPnnn, oxa::test::Bound::relative(0x1p-11)}},
                      exponent_grid<float>(), oxa::test::sample_count(50000) / 25);
}

}  // namespace
