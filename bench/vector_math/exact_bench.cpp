// The exact families, Div, Inv and Hypot against plain -O3 loops, the copy and
// triad memory floors (class "floor"), a vdivpd loop and SLEEF's 0.5-ulp
// hypot. Memory-bound families run at n = 1024 (in cache) and 2^22.
#include <immintrin.h>

#include <cmath>
#include <string>

#if __has_include(<sleef.h>)
#include <sleef.h>
#define OXA_BENCH_HAVE_SLEEF 1
#endif

#include "oxa/vector_math.h"
#include "vector_math/exact_loops.hpp"
#include "vector_math/vml_bench_harness.hpp"

namespace {

using oxa::bench::Candidate;
using oxa::bench::kernel;
namespace loops = oxa::bench::loops;

const std::vector<int64_t> kMemory = {1024, int64_t{1} << 22};

#ifdef OXA_BENCH_HAVE_SLEEF
void sleef_hypot(int64_t n, const double* a, const double* b, double* r) {
  for (int64_t i = 0; i + 4 <= n; i += 4)
    _mm256_storeu_pd(r + i, Sleef_hypotd4_u05avx2(_mm256_loadu_pd(a + i), _mm256_loadu_pd(b + i)));
}
#endif

// The linear fraction with fixed scalars, as a two-input kernel.
void linear_frac_d(int64_t n, const double* a, const double* b, double* r) {
  oxa_vml_kernel_dLinearFrac_H8HAynn(n, a, b, 1.5, 0.25, 0.75, 2.0, r);
}
void linear_frac_s(int64_t n, const float* a, const float* b, float* r) {
  oxa_vml_kernel_sLinearFrac_H8HAynn(n, a, b, 1.5f, 0.25f, 0.75f, 2.0f, r);
}

// Two-input candidate (a from a[0, n), b from a[n, 2n)).
Candidate two(const char* f, const char* cls, const char* name, bool ours,
              void (*k)(int64_t, const double*, const double*, double*), std::function<void(int64_t, void*)> fill,
              std::vector<int64_t> sizes = {}) {
  return {f, cls, name, ours, kernel(k), std::move(fill), false, 2, 1, std::move(sizes)};
}
Candidate one(const char* f, const char* cls, const char* name, bool ours, void (*k)(int64_t, const double*, double*),
              std::function<void(int64_t, void*)> fill, std::vector<int64_t> sizes = {}) {
  return {f, cls, name, ours, kernel(k), std::move(fill), false, 1, 1, std::move(sizes)};
}

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  const auto fill = oxa::bench::uniform<double>(-100.0, 100.0);
  const auto fill_s = oxa::bench::uniform<float>(-100.0f, 100.0f);
  const auto positive = oxa::bench::uniform<double>(0.5, 100.0);
  add(two("dAdd", "exact", "oxa HA", true, oxa_vml_kernel_dAdd_E9HAynn, fill, kMemory));
  add(two("dAdd", "exact", "O3 loop", false, loops::add, fill, kMemory));
  add(two("dAdd", "floor", "triad", false, loops::triad, fill, kMemory));
  add({"sAdd", "exact", "oxa HA", true, kernel(oxa_vml_kernel_sAdd_E9HAynn), fill_s, true, 2, 1, kMemory});
  add({"sAdd", "exact", "O3 loop", false, kernel(loops::add_s), fill_s, true, 2, 1, kMemory});
  add(two("dMul", "exact", "oxa HA", true, oxa_vml_kernel_dMul_E9HAynn, fill, kMemory));
  add(two("dMul", "exact", "O3 loop", false, loops::mul, fill, kMemory));
  add(one("dSqr", "exact", "oxa HA", true, oxa_vml_kernel_dSqr_E9HAynn, fill, kMemory));
  add(one("dSqr", "exact", "O3 loop", false, loops::sqr, fill, kMemory));
  add(one("dAbs", "exact", "oxa HA", true, oxa_vml_kernel_dAbs_E9HAynn, fill, kMemory));
  add(one("dAbs", "exact", "O3 loop", false, loops::abs, fill, kMemory));
  add(one("dAbs", "floor", "copy", false, loops::copy, fill, kMemory));
  add(one("dFloor", "exact", "oxa HA", true, oxa_vml_kernel_dFloor_E9HAynn, fill, kMemory));
  add(one("dFloor", "exact", "O3 loop", false, loops::floor, fill, kMemory));
  add(one("dRound", "exact", "oxa HA", true, oxa_vml_kernel_dRound_E9HAynn, fill, kMemory));
  add({"dRound", "exact", "libm loop", false, oxa::bench::scalar_loop<double>(std::round), fill, false, 1, 1, kMemory});
  add(one("dFrac", "exact", "oxa HA", true, oxa_vml_kernel_dFrac_E9HAynn, fill, kMemory));
  add({"dModf", "exact", "oxa HA", true, kernel(oxa_vml_kernel_dModf_E9HAynn), fill, false, 1, 2, kMemory});
  add(two("dDiv", "cr", "oxa HA", true, oxa_vml_kernel_dDiv_E9HAynn, positive));
  add(two("dDiv", "cr", "vdivpd loop", false, loops::div, positive));
  add({"sDiv", "cr", "oxa HA", true, kernel(oxa_vml_kernel_sDiv_E9HAynn), oxa::bench::uniform<float>(0.5f, 100.0f),
       true, 2});
  add({"sDiv", "cr", "vdivps loop", false, kernel(loops::div_s), oxa::bench::uniform<float>(0.5f, 100.0f), true, 2});
  add(one("dInv", "cr", "oxa HA", true, oxa_vml_kernel_dInv_E9HAynn, positive));
  add(one("dInv", "cr", "vdivpd loop", false, loops::inv, positive));
  add(two("dHypot", "1ulp", "oxa HA", true, oxa_vml_kernel_dHypot_E9HAynn, fill));
  add({"sHypot", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sHypot_E9HAynn), fill_s, true, 2});
  add({"dLinearFrac", "1ulp", "oxa HA", true, kernel(linear_frac_d), positive, false, 2});
  add({"sLinearFrac", "1ulp", "oxa HA", true, kernel(linear_frac_s), fill_s, true, 2});
  add(two("dHypot", "1ulp", "glibc loop", false, loops::hypot, fill));
#ifdef OXA_BENCH_HAVE_SLEEF
  add(two("dHypot", "1ulp", "SLEEF u05", false, sleef_hypot, fill));
#endif
  // The remaining kernels of the catalogue rows, for their cost column.
  const struct {
    const char* name;
    void (*d)(int64_t, const double*, double*);
    void (*s)(int64_t, const float*, float*);
  } unary[] = {{"Sqr", nullptr, oxa_vml_kernel_sSqr_E9HAynn},
               {"Abs", nullptr, oxa_vml_kernel_sAbs_E9HAynn},
               {"Inv", nullptr, oxa_vml_kernel_sInv_E9HAynn},
               {"Ceil", oxa_vml_kernel_dCeil_E9HAynn, oxa_vml_kernel_sCeil_E9HAynn},
               {"Floor", nullptr, oxa_vml_kernel_sFloor_E9HAynn},
               {"Round", nullptr, oxa_vml_kernel_sRound_E9HAynn},
               {"Trunc", oxa_vml_kernel_dTrunc_E9HAynn, oxa_vml_kernel_sTrunc_E9HAynn},
               {"Rint", oxa_vml_kernel_dRint_E9HAynn, oxa_vml_kernel_sRint_E9HAynn},
               {"NearbyInt", oxa_vml_kernel_dNearbyInt_E9HAynn, oxa_vml_kernel_sNearbyInt_E9HAynn},
               {"Frac", nullptr, oxa_vml_kernel_sFrac_E9HAynn}};
  for (const auto& u : unary) {
    if (u.d != nullptr)
      add(one(("d" + std::string(u.name)).c_str(), "exact", "oxa HA", true, u.d, fill));
    add({"s" + std::string(u.name), "exact", "oxa HA", true, kernel(u.s), fill_s, true});
  }
  add({"sSub", "exact", "oxa HA", true, kernel(oxa_vml_kernel_sSub_E9HAynn), fill_s, true, 2});
  add(two("dSub", "exact", "oxa HA", true, oxa_vml_kernel_dSub_E9HAynn, fill));
  add({"sMul", "exact", "oxa HA", true, kernel(oxa_vml_kernel_sMul_E9HAynn), fill_s, true, 2});
  add({"sModf", "exact", "oxa HA", true, kernel(oxa_vml_kernel_sModf_E9HAynn), fill_s, true, 1, 2});
});

}  // namespace
