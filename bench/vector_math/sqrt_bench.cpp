// Square root: our kernels against the processor's correctly rounded root
// in a plain vector loop and SLEEF's 0.5-ulp and 3.5-ulp variants.
#include <immintrin.h>

#if __has_include(<sleef.h>)
#include <sleef.h>
#define OXA_BENCH_HAVE_SLEEF 1
#endif

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

namespace {

__m256d hw_sqrt_d(__m256d x) { return _mm256_sqrt_pd(x); }
__m256 hw_sqrt_s(__m256 x) { return _mm256_sqrt_ps(x); }
#ifdef OXA_BENCH_HAVE_SLEEF
__m256d sleef_u05_d(__m256d x) { return Sleef_sqrtd4_u05avx2(x); }
__m256d sleef_u35_d(__m256d x) { return Sleef_sqrtd4_u35avx2(x); }
__m256 sleef_u05_s(__m256 x) { return Sleef_sqrtf8_u05avx2(x); }
__m256 sleef_u35_s(__m256 x) { return Sleef_sqrtf8_u35avx2(x); }
#endif

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  using oxa::bench::kernel;
  using oxa::bench::vector_loop;
  const auto fill_d = oxa::bench::uniform<double>(0.0, 1000.0);
  const auto fill_s = oxa::bench::uniform<float>(0.0f, 1000.0f);
  add({"dSqrt", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dSqrt_E9HAynn), fill_d});
  add({"dSqrt", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_dSqrt_E9LAynn), fill_d});
  add({"dSqrt", "2^-26", "oxa EP", true, kernel(oxa_vml_kernel_dSqrt_E9EPnnn), fill_d});
  add({"dSqrt", "1ulp", "vsqrtpd loop", false, vector_loop(hw_sqrt_d), fill_d});
#ifdef OXA_BENCH_HAVE_SLEEF
  add({"dSqrt", "1ulp", "SLEEF u05", false, vector_loop(sleef_u05_d), fill_d});
  add({"dSqrt", "4ulp", "SLEEF u35", false, vector_loop(sleef_u35_d), fill_d});
#endif
  add({"sSqrt", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sSqrt_E9HAynn), fill_s, true});
  add({"sSqrt", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_sSqrt_E9LAynn), fill_s, true});
  add({"sSqrt", "2^-11", "oxa EP", true, kernel(oxa_vml_kernel_sSqrt_E9EPnnn), fill_s, true});
  add({"sSqrt", "1ulp", "vsqrtps loop", false, vector_loop(hw_sqrt_s), fill_s, true});
#ifdef OXA_BENCH_HAVE_SLEEF
  add({"sSqrt", "1ulp", "SLEEF u05", false, vector_loop(sleef_u05_s), fill_s, true});
  add({"sSqrt", "4ulp", "SLEEF u35", false, vector_loop(sleef_u35_s), fill_s, true});
#endif
});

}  // namespace
