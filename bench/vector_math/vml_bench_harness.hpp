// Speed harness for vector-math kernels: registers each kernel and its peers
// (SLEEF, libmvec, scalar libm loops, other libraries) as Google Benchmark runs
// over the same inputs, at n = 1024 (in cache) and n = 1048576, and prints a
// table of ns/element with each kernel's ratio to the fastest peer of its
// accuracy class. Family files register their candidates at
// static-initialisation time through a Registrar, e.g. for a logarithm:
//
//   #include <sleef.h>
//   extern "C" __m256d _ZGVdN4v_log(__m256d);  // libmvec, AVX2
//   const oxa::bench::Registrar r([] {
//     const auto fill = oxa::bench::uniform<double>(1e-300, 1e300);
//     add({"dLn", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dLn_E9HAynn), fill});
//     add({"dLn", "1ulp", "SLEEF u10", false, vector_loop(Sleef_logd4_u10avx2), fill});
//     add({"dLn", "4ulp", "SLEEF u35", false, vector_loop(Sleef_logd4_u35avx2), fill});
//     add({"dLn", "4ulp", "libmvec", false, vector_loop(_ZGVdN4v_log), fill});
//     add({"dLn", "1ulp", "libm loop", false, scalar_loop<double>(std::log), fill});
//   });
//
// Run: build/default/bench/vector_math/bench_vector_math (the table comes
// last; --benchmark_filter=dLn narrows it).
#pragma once

#include <immintrin.h>

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

namespace oxa::bench {

// One implementation of one function: runs r[i] = f(a[i]) for i < n.
struct Candidate {
  std::string function;  // e.g. "dCdfNormInv"
  std::string accuracy;  // class compared against, e.g. "1ulp", "4ulp", "2^-26"
  std::string name;      // e.g. "oxa HA", "SLEEF u10", "libm loop"
  bool ours;             // ours are compared with the best peer of the same class
  std::function<void(int64_t n, const void* a, void* r)> run;
  std::function<void(int64_t n, void* a)> fill;  // inputs of the function's domain
  bool is_float = false;
  int inputs = 1;                // arrays a reads: a[0, n), a[n, 2n), ...
  int outputs = 1;               // arrays r writes, likewise
  std::vector<int64_t> sizes{};  // the values of n, if not the defaults
};

void add(Candidate c);

// Adapters.
template <class T>
std::function<void(int64_t, const void*, void*)> kernel(void (*k)(int64_t, const T*, T*)) {
  return [k](int64_t n, const void* a, void* r) { k(n, static_cast<const T*>(a), static_cast<T*>(r)); };
}

template <class T>
std::function<void(int64_t, const void*, void*)> scalar_loop(T (*f)(T)) {
  return [f](int64_t n, const void* a, void* r) {
    const T* x = static_cast<const T*>(a);
    T* y = static_cast<T*>(r);
    for (int64_t i = 0; i < n; ++i) y[i] = f(x[i]);
  };
}

// A 4-lane double vector function (SLEEF, libmvec); n is a multiple of 4 here.
inline std::function<void(int64_t, const void*, void*)> vector_loop(__m256d (*f)(__m256d)) {
  return [f](int64_t n, const void* a, void* r) {
    const double* x = static_cast<const double*>(a);
    double* y = static_cast<double*>(r);
    for (int64_t i = 0; i + 4 <= n; i += 4) _mm256_storeu_pd(y + i, f(_mm256_loadu_pd(x + i)));
  };
}

inline std::function<void(int64_t, const void*, void*)> vector_loop(__m256 (*f)(__m256)) {
  return [f](int64_t n, const void* a, void* r) {
    const float* x = static_cast<const float*>(a);
    float* y = static_cast<float*>(r);
    for (int64_t i = 0; i + 8 <= n; i += 8) _mm256_storeu_ps(y + i, f(_mm256_loadu_ps(x + i)));
  };
}

// Kernels of two inputs (read from a and a + n) or two outputs (to r, r + n).
template <class T>
std::function<void(int64_t, const void*, void*)> kernel(void (*k)(int64_t, const T*, const T*, T*)) {
  return [k](int64_t n, const void* a, void* r) {
    k(n, static_cast<const T*>(a), static_cast<const T*>(a) + n, static_cast<T*>(r));
  };
}
template <class T>
std::function<void(int64_t, const void*, void*)> kernel(void (*k)(int64_t, const T*, T*, T*)) {
  return [k](int64_t n, const void* a, void* r) {
    k(n, static_cast<const T*>(a), static_cast<T*>(r), static_cast<T*>(r) + n);
  };
}

// Uniform inputs in [lo, hi) from a fixed seed.
template <class T>
std::function<void(int64_t, void*)> uniform(T lo, T hi) {
  return [lo, hi](int64_t n, void* a) {
    T* x = static_cast<T*>(a);
    uint64_t s = 0x9E3779B97F4A7C15ull;
    for (int64_t i = 0; i < n; ++i) {
      s = s * 6364136223846793005ull + 1442695040888963407ull;
      const double u = static_cast<double>(s >> 11) * 0x1p-53;
      x[i] = static_cast<T>(lo + (hi - lo) * u);
    }
  };
}

struct Registrar {
  explicit Registrar(const std::function<void()>& f) { f(); }
};

}  // namespace oxa::bench
