// Sin, Cos, SinCos and Tan: our kernels against SLEEF (1.0-ulp and 3.5-ulp
// AVX2 variants) and glibc's libmvec (4-ulp class), on arguments in
// [-10, 10]. The EP rows are compared with our LA kernel of the same function.
#include <immintrin.h>
#include <sleef.h>

#include <cstring>
#include <functional>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

extern "C" {
__m256d _ZGVdN4v_sin(__m256d);
__m256d _ZGVdN4v_cos(__m256d);
__m256d _ZGVdN4v_tan(__m256d);
__m256 _ZGVdN8v_sinf(__m256);
__m256 _ZGVdN8v_cosf(__m256);
__m256 _ZGVdN8v_tanf(__m256);
}

namespace {

using oxa::bench::add;

// SinCos writes its cosines into a scratch array of the run's size.
template <class T>
std::function<void(int64_t, const void*, void*)> two_out(void (*k)(int64_t, const T*, T*, T*)) {
  return [k](int64_t n, const void* a, void* r) {
    static thread_local std::vector<T> second;
    second.resize(static_cast<size_t>(n));
    k(n, static_cast<const T*>(a), static_cast<T*>(r), second.data());
  };
}

// SLEEF declares its results const; a plain function pointer for the harness.
template <auto F, class V>
V wrap(V x) {
  return F(x);
}

template <auto F, class V, class T, int W>
std::function<void(int64_t, const void*, void*)> sleef_sincos() {
  return [](int64_t n, const void* a, void* r) {
    static thread_local std::vector<T> second;
    second.resize(static_cast<size_t>(n));
    const T* x = static_cast<const T*>(a);
    T* y = static_cast<T*>(r);
    for (int64_t i = 0; i + W <= n; i += W) {
      V v;
      std::memcpy(&v, x + i, sizeof v);
      const auto sc = F(v);
      std::memcpy(y + i, &sc.x, sizeof v);
      std::memcpy(second.data() + i, &sc.y, sizeof v);
    }
  };
}

const oxa::bench::Registrar registrar([] {
  using oxa::bench::kernel;
  using oxa::bench::vector_loop;
  const auto fill_d = oxa::bench::uniform<double>(-10.0, 10.0);
  const auto fill_s = oxa::bench::uniform<float>(-10.0f, 10.0f);

  const auto ours_d = [&](const char* f, auto ha, auto la, auto ep) {
    add({f, "1ulp", "oxa HA", true, ha, fill_d});
    add({f, "4ulp", "oxa LA", true, la, fill_d});
    add({f, "2^-26", "oxa EP", true, ep, fill_d});
    add({f, "2^-26", "oxa LA (EP target)", false, la, fill_d});
  };
  const auto ours_s = [&](const char* f, auto ha, auto la, auto ep) {
    add({f, "1ulp", "oxa HA", true, ha, fill_s, true});
    add({f, "4ulp", "oxa LA", true, la, fill_s, true});
    add({f, "2^-11", "oxa EP", true, ep, fill_s, true});
    add({f, "2^-11", "oxa LA (EP target)", false, la, fill_s, true});
  };

  ours_d("dSin", kernel(oxa_vml_kernel_dSin_E9HAynn), kernel(oxa_vml_kernel_dSin_E9LAynn),
         kernel(oxa_vml_kernel_dSin_E9EPnnn));
  add({"dSin", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_sind4_u10avx2, __m256d>), fill_d});
  add({"dSin", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_sind4_u35avx2, __m256d>), fill_d});
  add({"dSin", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_sin), fill_d});

  ours_d("dCos", kernel(oxa_vml_kernel_dCos_E9HAynn), kernel(oxa_vml_kernel_dCos_E9LAynn),
         kernel(oxa_vml_kernel_dCos_E9EPnnn));
  add({"dCos", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_cosd4_u10avx2, __m256d>), fill_d});
  add({"dCos", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_cosd4_u35avx2, __m256d>), fill_d});
  add({"dCos", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_cos), fill_d});

  ours_d("dTan", kernel(oxa_vml_kernel_dTan_E9HAynn), kernel(oxa_vml_kernel_dTan_E9LAynn),
         kernel(oxa_vml_kernel_dTan_E9EPnnn));
  add({"dTan", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_tand4_u10avx2, __m256d>), fill_d});
  add({"dTan", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_tand4_u35avx2, __m256d>), fill_d});
  add({"dTan", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_tan), fill_d});

  ours_d("dSinCos", two_out(oxa_vml_kernel_dSinCos_E9HAynn), two_out(oxa_vml_kernel_dSinCos_E9LAynn),
         two_out(oxa_vml_kernel_dSinCos_E9EPnnn));
  add({"dSinCos", "1ulp", "SLEEF u10", false,
       sleef_sincos<Sleef_sincosd4_u10avx2, __m256d, double, 4>(), fill_d});
  add({"dSinCos", "4ulp", "SLEEF u35", false,
       sleef_sincos<Sleef_sincosd4_u35avx2, __m256d, double, 4>(), fill_d});

  ours_s("sSin", kernel(oxa_vml_kernel_sSin_E9HAynn), kernel(oxa_vml_kernel_sSin_E9LAynn),
         kernel(oxa_vml_kernel_sSin_E9EPnnn));
  add({"sSin", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_sinf8_u10avx2, __m256>), fill_s, true});
  add({"sSin", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_sinf8_u35avx2, __m256>), fill_s, true});
  add({"sSin", "4ulp", "libmvec", false, vector_loop(_ZGVdN8v_sinf), fill_s, true});

  ours_s("sCos", kernel(oxa_vml_kernel_sCos_E9HAynn), kernel(oxa_vml_kernel_sCos_E9LAynn),
         kernel(oxa_vml_kernel_sCos_E9EPnnn));
  add({"sCos", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_cosf8_u10avx2, __m256>), fill_s, true});
  add({"sCos", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_cosf8_u35avx2, __m256>), fill_s, true});
  add({"sCos", "4ulp", "libmvec", false, vector_loop(_ZGVdN8v_cosf), fill_s, true});

  ours_s("sTan", kernel(oxa_vml_kernel_sTan_E7HAynn), kernel(oxa_vml_kernel_sTan_E9LAynn),
         kernel(oxa_vml_kernel_sTan_E9EPnnn));
  add({"sTan", "1ulp", "SLEEF u10", false, vector_loop(wrap<Sleef_tanf8_u10avx2, __m256>), fill_s, true});
  add({"sTan", "4ulp", "SLEEF u35", false, vector_loop(wrap<Sleef_tanf8_u35avx2, __m256>), fill_s, true});
  add({"sTan", "4ulp", "libmvec", false, vector_loop(_ZGVdN8v_tanf), fill_s, true});

  ours_s("sSinCos", two_out(oxa_vml_kernel_sSinCos_E9HAynn), two_out(oxa_vml_kernel_sSinCos_E9LAynn),
         two_out(oxa_vml_kernel_sSinCos_E9EPnnn));
  add({"sSinCos", "1ulp", "SLEEF u10", false,
       sleef_sincos<Sleef_sincosf8_u10avx2, __m256, float, 8>(), fill_s, true});
  add({"sSinCos", "4ulp", "SLEEF u35", false,
       sleef_sincos<Sleef_sincosf8_u35avx2, __m256, float, 8>(), fill_s, true});
});

}  // namespace
