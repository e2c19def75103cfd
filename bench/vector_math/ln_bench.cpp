// Logarithm: our kernels against SLEEF's 1-ulp and 3.5-ulp variants and
// glibc's libmvec. EP has no peer: our LA stands in its class as the
// reference for the EP speed-up.
#include <immintrin.h>
#include <sleef.h>

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

extern "C" __m256d _ZGVdN4v_log(__m256d);
extern "C" __m256 _ZGVdN8v_logf(__m256);

namespace {

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  using oxa::bench::kernel;
  using oxa::bench::vector_loop;
  const auto fill_d = oxa::bench::uniform<double>(1e-3, 1e3);
  const auto fill_s = oxa::bench::uniform<float>(1e-3f, 1e3f);
  add({"dLn", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dLn_E9HAynn), fill_d});
  add({"dLn", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_dLn_E9LAynn), fill_d});
  add({"dLn", "2^-26", "oxa EP", true, kernel(oxa_vml_kernel_dLn_E9EPnnn), fill_d});
  add({"dLn", "1ulp", "SLEEF u10", false, vector_loop(+[](__m256d x) { return Sleef_logd4_u10avx2(x); }), fill_d});
  add({"dLn", "4ulp", "SLEEF u35", false, vector_loop(+[](__m256d x) { return Sleef_logd4_u35avx2(x); }), fill_d});
  add({"dLn", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_log), fill_d});
  add({"dLn", "2^-26", "oxa LA (ref)", false, kernel(oxa_vml_kernel_dLn_E9LAynn), fill_d});
  add({"sLn", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sLn_E9HAynn), fill_s, true});
  add({"sLn", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_sLn_E9LAynn), fill_s, true});
  add({"sLn", "2^-11", "oxa EP", true, kernel(oxa_vml_kernel_sLn_E9EPnnn), fill_s, true});
  add({"sLn", "1ulp", "SLEEF u10", false, vector_loop(+[](__m256 x) { return Sleef_logf8_u10avx2(x); }), fill_s, true});
  add({"sLn", "4ulp", "SLEEF u35", false, vector_loop(+[](__m256 x) { return Sleef_logf8_u35avx2(x); }), fill_s, true});
  add({"sLn", "4ulp", "libmvec", false, vector_loop(_ZGVdN8v_logf), fill_s, true});
  add({"sLn", "2^-11", "oxa LA (ref)", false, kernel(oxa_vml_kernel_sLn_E9LAynn), fill_s, true});
});

}  // namespace
