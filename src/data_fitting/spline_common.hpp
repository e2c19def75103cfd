// What the construction, evaluation and integration kernels of the
// polynomial splines share: breakpoints of either partition kind, value
// access by storage, the checks of the value and coefficient pointers, lanes
// of four functions, and running blocks on the caller's parallel-for.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <cstring>

#include "data_fitting/task.hpp"
#include "data_fitting/uniform_partition.hpp"

namespace oxa::df {

// Breakpoint i of a partition. A uniform partition stores only its two ends;
// its breakpoints come from uniform_breakpoint, as the cell search's do, so a
// site equal to a breakpoint meets the same number here and there.
template <Real T>
struct Breakpoints {
  const T* x;
  int64_t nx;
  bool uniform;
  T operator[](int64_t i) const {
    return uniform ? uniform_breakpoint(x[0], x[1], nx, i) : x[i];
  }
  T last() const { return uniform ? x[1] : x[nx - 1]; }
};

// Left ends of the cells of a Subbotin quadratic spline: t_0 = x[0],
// t_i = (x[i−1] + x[i])/2, t_nx = x[nx−1]; nx cells.
template <Real T>
T subbotin_knot(const Breakpoints<T>& x, int64_t i) {
  if (i == 0) return x[0];
  if (i >= x.nx) return x.last();
  return T(0.5) * (x[i - 1] + x[i]);
}

// The polynomial piece of a site t in cell k (the search's convention) and
// its offset from the piece's left end: cell k − 1 clamped to the cells of
// the partition, or for the Subbotin spline the knot interval holding t.
template <Real T>
int64_t piece_of(const Breakpoints<T>& x, bool subbotin, int64_t k, T t, T* u) {
  if (!subbotin) {
    const int64_t m = std::clamp<int64_t>(k - 1, 0, x.nx - 2);
    *u = t - x[m];
    return m;
  }
  int64_t m = k;
  if (k <= 0)
    m = 0;
  else if (k >= x.nx)
    m = x.nx - 1;
  else if (t < subbotin_knot(x, k))
    m = k - 1;
  *u = t - subbotin_knot(x, m);
  return m;
}

template <Real T>
Breakpoints<T> breakpoints_of(const DfTask& t) {
  return {static_cast<const T*>(t.x), t.nx, (t.xhint & DF_X_UNIFORM) != 0};
}

// Function values as the task's yhint says: rows (y[j][i]) or columns
// (y[0][i·ny + j]).
template <Real T>
struct Values {
  const T* const* y;
  int64_t ny;
  bool cols;
  T operator()(int64_t j, int64_t i) const { return cols ? y[0][i * ny + j] : y[j][i]; }
};

template <Real T>
Values<T> values_of(const DfTask& t) {
  return {reinterpret_cast<const T* const*>(t.y), t.ny <= 0 ? 1 : t.ny, t.yhint == DF_STORE_COLS};
}

// Every function needs its values (and, when coeff is set, its coefficient
// block): a pointer never attached, not set one by one, or lost to a raised
// ny is reported instead of dereferenced.
inline oxa_status check_value_pointers(const DfTask& t) {
  if (!is_storage_hint(t.yhint)) return DF_ERR_BAD_Y_HINT;
  const int64_t ny = t.ny <= 0 ? 1 : t.ny;
  const int64_t n = t.yhint == DF_STORE_COLS ? 1 : ny;
  if (pointer_capacity(t.y) < n) return DF_ERR_BAD_Y;
  for (int64_t j = 0; j < n; ++j)
    if (t.y[j] == nullptr) return DF_ERR_BAD_Y;
  return DF_OK;
}

inline oxa_status check_coeff_pointers(const DfTask& t) {
  const int64_t ny = t.ny <= 0 ? 1 : t.ny;
  if (pointer_capacity(t.scoeff) < ny) return DF_ERR_BAD_COEFF;
  for (int64_t j = 0; j < ny; ++j)
    if (t.scoeff[j] == nullptr) return DF_ERR_BAD_COEFF;
  return DF_OK;
}

// What evaluation and integration check alike after their own arguments: the
// result hint, the function list (nfunc = 0 selects every function) and the
// value or coefficient pointers the spline's order reads.
inline oxa_status check_request(const DfTask& t, int64_t rhint, int64_t& nfunc, const int64_t* func) {
  if (rhint != 0 && rhint != DF_STORE_ROWS && rhint != DF_STORE_COLS && rhint != DF_STORE_SEPARATE)
    return DF_ERR_BAD_RESULT_HINT;
  const int64_t ny = t.ny <= 0 ? 1 : t.ny;
  if (nfunc < 0 || (func == nullptr && nfunc > ny)) return DF_ERR_BAD_INDEX;
  if (nfunc == 0) nfunc = ny;
  if (func != nullptr)
    for (int64_t f = 0; f < nfunc; ++f)
      if (func[f] < 0 || func[f] >= ny) return DF_ERR_BAD_INDEX;
  return t.s_order == 0 ? check_value_pointers(t) : check_coeff_pointers(t);
}

// Periodic condition: every function's first and last values equal (NaN
// fails).
template <Real T>
oxa_status check_periodic(const DfTask& t) {
  const Values<T> v = values_of<T>(t);
  for (int64_t j = 0; j < v.ny; ++j)
    if (!(v(j, 0) == v(j, t.nx - 1))) return DF_ERR_PERIODIC_VALUES;
  return DF_OK;
}

// Lanes: one function (the scalar itself) or four side by side in a vector.
template <Real T, int L>
struct LaneType;
template <>
struct LaneType<double, 1> {
  using V = double;
};
template <>
struct LaneType<float, 1> {
  using V = float;
};
template <>
struct LaneType<double, 4> {
  typedef double V __attribute__((vector_size(32)));
};
template <>
struct LaneType<float, 4> {
  typedef float V __attribute__((vector_size(16)));
};
template <Real T, int L>
using Lanes = typename LaneType<T, L>::V;

template <Real T>
inline Lanes<T, 4> load4(const T* p) {
  Lanes<T, 4> v;
  std::memcpy(&v, p, sizeof v);
  return v;
}
template <Real T>
inline void store4(T* p, Lanes<T, 4> v) {
  std::memcpy(p, &v, sizeof v);
}

// out[i] = f(a[i], b[i]) for i < n, four at a time.
template <Real T, class F>
inline void map2(int64_t n, const T* a, const T* b, T* out, F f) {
  int64_t i = 0;
  for (; i + 4 <= n; i += 4) store4(out + i, f(load4(a + i), load4(b + i)));
  for (; i < n; ++i) out[i] = f(a[i], b[i]);
}

// c − a·b and a·b + c, rounded once.
inline double fnma(double a, double b, double c) { return std::fma(-a, b, c); }
inline float fnma(float a, float b, float c) { return std::fma(-a, b, c); }
inline Lanes<double, 4> fnma(Lanes<double, 4> a, Lanes<double, 4> b, Lanes<double, 4> c) {
  return (Lanes<double, 4>)_mm256_fnmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
}
inline Lanes<float, 4> fnma(Lanes<float, 4> a, Lanes<float, 4> b, Lanes<float, 4> c) {
  return (Lanes<float, 4>)_mm_fnmadd_ps((__m128)a, (__m128)b, (__m128)c);
}
inline double fma(double a, double b, double c) { return std::fma(a, b, c); }
inline float fma(float a, float b, float c) { return std::fma(a, b, c); }
inline Lanes<double, 4> fma(Lanes<double, 4> a, Lanes<double, 4> b, Lanes<double, 4> c) {
  return (Lanes<double, 4>)_mm256_fmadd_pd((__m256d)a, (__m256d)b, (__m256d)c);
}
inline Lanes<float, 4> fma(Lanes<float, 4> a, Lanes<float, 4> b, Lanes<float, 4> c) {
  return (Lanes<float, 4>)_mm_fmadd_ps((__m128)a, (__m128)b, (__m128)c);
}

// Writes the four coefficients (k0..k3 of every lane) of cell m for the
// first `used` functions of a lane group: a 4×4 transpose and one store per
// function when all four lanes are used, streamed past the caches when
// `stream` (every output 32-byte aligned, output too large to stay cached).
[[gnu::always_inline]] inline void store_cell4(double* const* out, int64_t m, int used, Lanes<double, 4> k0,
                        Lanes<double, 4> k1, Lanes<double, 4> k2, Lanes<double, 4> k3,
                        bool stream = false) {
  if (used == 4 && stream) {
    const __m256d t0 = _mm256_unpacklo_pd((__m256d)k0, (__m256d)k1);
    const __m256d t1 = _mm256_unpackhi_pd((__m256d)k0, (__m256d)k1);
    const __m256d t2 = _mm256_unpacklo_pd((__m256d)k2, (__m256d)k3);
    const __m256d t3 = _mm256_unpackhi_pd((__m256d)k2, (__m256d)k3);
    _mm256_stream_pd(out[0] + 4 * m, _mm256_permute2f128_pd(t0, t2, 0x20));
    _mm256_stream_pd(out[1] + 4 * m, _mm256_permute2f128_pd(t1, t3, 0x20));
    _mm256_stream_pd(out[2] + 4 * m, _mm256_permute2f128_pd(t0, t2, 0x31));
    _mm256_stream_pd(out[3] + 4 * m, _mm256_permute2f128_pd(t1, t3, 0x31));
    return;
  }
  if (used == 4) {
    const __m256d t0 = _mm256_unpacklo_pd((__m256d)k0, (__m256d)k1);
    const __m256d t1 = _mm256_unpackhi_pd((__m256d)k0, (__m256d)k1);
    const __m256d t2 = _mm256_unpacklo_pd((__m256d)k2, (__m256d)k3);
    const __m256d t3 = _mm256_unpackhi_pd((__m256d)k2, (__m256d)k3);
    _mm256_storeu_pd(out[0] + 4 * m, _mm256_permute2f128_pd(t0, t2, 0x20));
    _mm256_storeu_pd(out[1] + 4 * m, _mm256_permute2f128_pd(t1, t3, 0x20));
    _mm256_storeu_pd(out[2] + 4 * m, _mm256_permute2f128_pd(t0, t2, 0x31));
    _mm256_storeu_pd(out[3] + 4 * m, _mm256_permute2f128_pd(t1, t3, 0x31));
    return;
  }
  for (int l = 0; l < used; ++l) {
    double* o = out[l] + 4 * m;
    o[0] = k0[l], o[1] = k1[l], o[2] = k2[l], o[3] = k3[l];
  }
}

[[gnu::always_inline]] inline void store_cell4(float* const* out, int64_t m, int used, Lanes<float, 4> k0,
                        Lanes<float, 4> k1, Lanes<float, 4> k2, Lanes<float, 4> k3,
                        bool stream = false) {
  if (used == 4) {
    __m128 r0 = (__m128)k0, r1 = (__m128)k1, r2 = (__m128)k2, r3 = (__m128)k3;
    _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
    if (stream) {
      _mm_stream_ps(out[0] + 4 * m, r0);
      _mm_stream_ps(out[1] + 4 * m, r1);
      _mm_stream_ps(out[2] + 4 * m, r2);
      _mm_stream_ps(out[3] + 4 * m, r3);
      return;
    }
    _mm_storeu_ps(out[0] + 4 * m, r0);
    _mm_storeu_ps(out[1] + 4 * m, r1);
    _mm_storeu_ps(out[2] + 4 * m, r2);
    _mm_storeu_ps(out[3] + 4 * m, r3);
    return;
  }
  for (int l = 0; l < used; ++l) {
    float* o = out[l] + 4 * m;
    o[0] = k0[l], o[1] = k1[l], o[2] = k2[l], o[3] = k3[l];
  }
}

template <Real T>
[[gnu::always_inline]] inline void store_cell4(T* const* out, int64_t m, int, T k0, T k1, T k2, T k3, bool = false) {
  T* o = out[0] + 4 * m;
  o[0] = k0, o[1] = k1, o[2] = k2, o[3] = k3;
}

// Runs body(context, k, thread, threads) for k in [0, iterations): on the
// caller's parallel-for with min(iterations, its thread count) threads when
// `parallel` holds and a parallel-for is given, else on the calling thread.
// Returns the number of threads used, so a caller can size per-thread
// scratch before the call through `threads_for`.
inline int32_t threads_for(const DfThreading* th, int64_t iterations, const DfThreadingHint& hint) {
  if (th == nullptr || th->parallel_for == nullptr || iterations < 2) return 1;
  int32_t t = th->get_num_threads != nullptr ? th->get_num_threads(&hint) : 1;
  return static_cast<int32_t>(std::clamp<int64_t>(t, 1, iterations));
}

inline void run_blocks(const DfThreading* th, int64_t iterations, int32_t threads, void* context,
                       oxa_parallel_body body) {
  if (threads > 1) {
    th->parallel_for(iterations, threads, context, body);
    return;
  }
  for (int64_t k = 0; k < iterations; ++k) body(context, k, 0, 1);
}

}  // namespace oxa::df
