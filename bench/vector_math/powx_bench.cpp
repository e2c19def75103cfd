// Power with a scalar exponent (b = 2.5, bases in [0.1, 100)): our kernels
// against SLEEF's 1-ulp pow and glibc's libmvec pow with b broadcast. EP has
// no peer: our LA stands in its class as the reference for the EP speed-up.
#include <immintrin.h>
#include <sleef.h>

#include <functional>

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

extern "C" __m256d _ZGVdN4vv_pow(__m256d, __m256d);
extern "C" __m256 _ZGVdN8vv_powf(__m256, __m256);

namespace {

constexpr double kB = 2.5;

template <class T>
std::function<void(int64_t, const void*, void*)> ours(void (*k)(int64_t, const T*, T, T*)) {
  return [k](int64_t n, const void* a, void* r) {
    k(n, static_cast<const T*>(a), static_cast<T>(kB), static_cast<T*>(r));
  };
}

std::function<void(int64_t, const void*, void*)> peer(__m256d (*f)(__m256d, __m256d)) {
  return [f](int64_t n, const void* a, void* r) {
    const __m256d b = _mm256_set1_pd(kB);
    for (int64_t i = 0; i + 4 <= n; i += 4)
      _mm256_storeu_pd(static_cast<double*>(r) + i, f(_mm256_loadu_pd(static_cast<const double*>(a) + i), b));
  };
}

std::function<void(int64_t, const void*, void*)> peer(__m256 (*f)(__m256, __m256)) {
  return [f](int64_t n, const void* a, void* r) {
    const __m256 b = _mm256_set1_ps(static_cast<float>(kB));
    for (int64_t i = 0; i + 8 <= n; i += 8)
      _mm256_storeu_ps(static_cast<float*>(r) + i, f(_mm256_loadu_ps(static_cast<const float*>(a) + i), b));
  };
}

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  const auto fill_d = oxa::bench::uniform<double>(0.1, 100.0);
  const auto fill_s = oxa::bench::uniform<float>(0.1f, 100.0f);
  add({"dPowx", "1ulp", "oxa HA", true, ours(oxa_vml_kernel_dPowx_E9HAynn), fill_d});
  add({"dPowx", "4ulp", "oxa LA", true, ours(oxa_vml_kernel_dPowx_E9LAynn), fill_d});
  add({"dPowx", "2^-26", "oxa EP", true, ours(oxa_vml_kernel_dPowx_E9EPnnn), fill_d});
  add({"dPowx", "1ulp", "SLEEF u10", false, peer(+[](__m256d x, __m256d y) { return Sleef_powd4_u10avx2(x, y); }), fill_d});
  add({"dPowx", "4ulp", "libmvec", false, peer(_ZGVdN4vv_pow), fill_d});
  add({"dPowx", "2^-26", "oxa LA (ref)", false, ours(oxa_vml_kernel_dPowx_E9LAynn), fill_d});
  add({"sPowx", "1ulp", "oxa HA", true, ours(oxa_vml_kernel_sPowx_E9HAynn), fill_s, true});
  add({"sPowx", "4ulp", "oxa LA", true, ours(oxa_vml_kernel_sPowx_E9LAynn), fill_s, true});
  add({"sPowx", "2^-11", "oxa EP", true, ours(oxa_vml_kernel_sPowx_E9EPnnn), fill_s, true});
  add({"sPowx", "1ulp", "SLEEF u10", false, peer(+[](__m256 x, __m256 y) { return Sleef_powf8_u10avx2(x, y); }), fill_s, true});
  add({"sPowx", "4ulp", "libmvec", false, peer(_ZGVdN8vv_powf), fill_s, true});
  add({"sPowx", "2^-11", "oxa LA (ref)", false, ours(oxa_vml_kernel_sPowx_E9LAynn), fill_s, true});
});

}  // namespace
