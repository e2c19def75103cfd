// Reciprocal square root: our kernels against 1/sqrt in a vector loop (the
// divider twice; 1.5 ulp), which no peer library improves on, in each class.
#include <immintrin.h>

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

namespace {

__m256d div_sqrt_d(__m256d x) { return _mm256_div_pd(_mm256_set1_pd(1.0), _mm256_sqrt_pd(x)); }
__m256 div_sqrt_s(__m256 x) { return _mm256_div_ps(_mm256_set1_ps(1.0f), _mm256_sqrt_ps(x)); }

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  using oxa::bench::kernel;
  using oxa::bench::vector_loop;
  const auto fill_d = oxa::bench::uniform<double>(1e-3, 1e3);
  const auto fill_s = oxa::bench::uniform<float>(1e-3f, 1e3f);
  add({"dInvSqrt", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dInvSqrt_E9HAynn), fill_d});
  add({"dInvSqrt", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_dInvSqrt_E9LAynn), fill_d});
  add({"dInvSqrt", "2^-26", "oxa EP", true, kernel(oxa_vml_kernel_dInvSqrt_E9EPnnn), fill_d});
  add({"dInvSqrt", "1ulp", "1/vsqrtpd (HA class)", false, vector_loop(div_sqrt_d), fill_d});
  add({"dInvSqrt", "4ulp", "1/vsqrtpd (LA class)", false, vector_loop(div_sqrt_d), fill_d});
  add({"sInvSqrt", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sInvSqrt_E9HAynn), fill_s, true});
  add({"sInvSqrt", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_sInvSqrt_E9LAynn), fill_s, true});
  add({"sInvSqrt", "2^-11", "oxa EP", true, kernel(oxa_vml_kernel_sInvSqrt_E9EPnnn), fill_s, true});
  add({"sInvSqrt", "1ulp", "1/vsqrtps (HA class)", false, vector_loop(div_sqrt_s), fill_s, true});
  add({"sInvSqrt", "4ulp", "1/vsqrtps (LA class)", false, vector_loop(div_sqrt_s), fill_s, true});
});

}  // namespace
