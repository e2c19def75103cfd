// Exponential: our kernels against SLEEF's 1-ulp variant and glibc's libmvec
// (the <= 4 ulp class). EP has no peer: our LA stands in its class as the
// reference for the EP speed-up.
#include <immintrin.h>
#include <sleef.h>

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

extern "C" __m256d _ZGVdN4v_exp(__m256d);
extern "C" __m256 _ZGVdN8v_expf(__m256);

namespace {

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  using oxa::bench::kernel;
  using oxa::bench::vector_loop;
  const auto fill_d = oxa::bench::uniform<double>(-700.0, 700.0);
  const auto fill_s = oxa::bench::uniform<float>(-87.0f, 87.0f);
  add({"dExp", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dExp_E9HAynn), fill_d});
  add({"dExp", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_dExp_E9LAynn), fill_d});
  add({"dExp", "1ulp", "SLEEF u10", false, vector_loop(+[](__m256d x) { return Sleef_expd4_u10avx2(x); }), fill_d});
  add({"dExp", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_exp), fill_d});
  add({"sExp", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sExp_E9HAynn), fill_s, true});
  add({"sExp", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_sExp_E9LAynn), fill_s, true});
  add({"sExp", "2^-11", "oxa EP", true, kernel(oxa_vml_kernel_sExp_E9EPnnn), fill_s, true});
  add({"sExp", "1ulp", "SLEEF u10", false, vector_loop(+[](__m256 x) { return Sleef_expf8_u10avx2(x); }), fill_s, true});
  add({"sExp", "4ulp", "libmvec", false, vector_loop(_ZGVdN8v_expf), fill_s, true});
  add({"sExp", "2^-11", "oxa LA (ref)", false, kernel(oxa_vml_kernel_sExp_E9LAynn), fill_s, true});
});

}  // namespace
