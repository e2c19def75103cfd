// Linear spline: r_j(t) = y_j(x[m]) + slope_j,m · (t − x[m]) on cell m.
// Coefficients: value at 2m, slope at 2m+1 of function j's block.
// Method: work cut into blocks of 1024 cells × 4 functions, handed to the
// caller's parallel-for when there are 5 blocks or more.
// Slopes: uniform partition dy·inv_h, inv_h = (nx−1)/(x[1]−x[0]); non-uniform,
// several functions: dy·r, r = 1/(x[m+1]−x[m]) once per cell; one function:
// dy/dx directly (the last cell of an odd count uses dy·r). The two
// non-uniform forms may differ in the last bit.
// Special: periodic condition (bc_type 64) with y_j(x[0]) != y_j(x[nx−1])
// (NaN included) fails with -1018 before anything is written.
#include <immintrin.h>

#include <algorithm>

#include "data_fitting/task.hpp"

namespace oxa::df {
namespace {

// Four cells at a time: packed loads of values and reciprocals, and the
// (value, slope) pairs interleaved into two (double) or one (float) stores.
template <Real T>
struct Quad;

template <>
struct Quad<double> {
  using V = __m256d;
  static V load(const double* p) { return _mm256_loadu_pd(p); }
  static V sub(V a, V b) { return _mm256_sub_pd(a, b); }
  static V mul(V a, V b) { return _mm256_mul_pd(a, b); }
  static V div(V a, V b) { return _mm256_div_pd(a, b); }
  static void store_pairs(double* out, V v, V s) {
    const V lo = _mm256_unpacklo_pd(v, s);  // v0 s0 v2 s2
    const V hi = _mm256_unpackhi_pd(v, s);  // v1 s1 v3 s3
    _mm256_storeu_pd(out, _mm256_permute2f128_pd(lo, hi, 0x20));
    _mm256_storeu_pd(out + 4, _mm256_permute2f128_pd(lo, hi, 0x31));
  }
};

template <>
struct Quad<float> {
  using V = __m128;
  static V load(const float* p) { return _mm_loadu_ps(p); }
  static V sub(V a, V b) { return _mm_sub_ps(a, b); }
  static V mul(V a, V b) { return _mm_mul_ps(a, b); }
  static V div(V a, V b) { return _mm_div_ps(a, b); }
  static void store_pairs(float* out, V v, V s) {
    _mm_storeu_ps(out, _mm_unpacklo_ps(v, s));
    _mm_storeu_ps(out + 4, _mm_unpackhi_ps(v, s));
  }
};

constexpr int64_t kCellBlock = 1024;
constexpr int64_t kFunctionBlock = 4;

template <Real T>
struct LinearContext {
  int64_t cell_blocks;
  int64_t nx;
  int64_t ny;  // at least 1
  const T* x;
  const T* const* y;
  T* const* coeff;
  T inv_h;     // uniform partition only
};

// Value of function j at breakpoint i.
template <Real T, bool Cols>
inline T value_at(const LinearContext<T>& c, int64_t j, int64_t i) {
  if constexpr (Cols) return c.y[0][i * c.ny + j];
  else return c.y[j][i];
}

// One function over cells [m0, m1), non-uniform partition: a division per
// cell, two cells a step, and the reciprocal for the last odd cell.
template <Real T, bool Cols>
void single_function_cells(const LinearContext<T>& c, int64_t m0, int64_t m1) {
  T* out = c.coeff[0];
  const T* x = c.x;
  int64_t m = m0;
  // With one function, column storage is the row itself.
  using Q = Quad<T>;
  const T* y = c.y[0];
  for (; m + 4 <= m1; m += 4) {
    const auto v = Q::load(y + m);
    Q::store_pairs(out + 2 * m, v,
                   Q::div(Q::sub(Q::load(y + m + 1), v), Q::sub(Q::load(x + m + 1), Q::load(x + m))));
  }
  for (; m + 2 <= m1; m += 2) {
    const T y0 = value_at<T, Cols>(c, 0, m), y1 = value_at<T, Cols>(c, 0, m + 1);
    const T y2 = value_at<T, Cols>(c, 0, m + 2);
    out[2 * m] = y0;
    out[2 * m + 1] = (y1 - y0) / (x[m + 1] - x[m]);
    out[2 * m + 2] = y1;
    out[2 * m + 3] = (y2 - y1) / (x[m + 2] - x[m + 1]);
  }
  if (m < m1) {
    const T r = T(1) / (x[m + 1] - x[m]);
    const T y0 = value_at<T, Cols>(c, 0, m);
    out[2 * m] = y0;
    out[2 * m + 1] = (value_at<T, Cols>(c, 0, m + 1) - y0) * r;
  }
}

// Block k: cell block k mod cell_blocks, function block k div cell_blocks.
template <Real T, bool Cols, bool Uniform>
void linear_body(void* context, int64_t k, int32_t, int32_t) {
  const auto& c = *static_cast<const LinearContext<T>*>(context);
  const int64_t b = k % c.cell_blocks, f = k / c.cell_blocks;
  const int64_t m0 = b * kCellBlock, m1 = std::min(m0 + kCellBlock, c.nx - 1);
  const int64_t j0 = f * kFunctionBlock, j1 = std::min(j0 + kFunctionBlock, c.ny);
  if (!Uniform && c.ny == 1) {
    single_function_cells<T, Cols>(c, m0, m1);
    return;
  }
  if constexpr (Cols) {
    // Cell-major: the functions of one cell are adjacent in column storage.
    for (int64_t m = m0; m < m1; ++m) {
      const T r = Uniform ? c.inv_h : T(1) / (c.x[m + 1] - c.x[m]);
      for (int64_t j = j0; j < j1; ++j) {
        const T y0 = value_at<T, Cols>(c, j, m);
        c.coeff[j][2 * m] = y0;
        c.coeff[j][2 * m + 1] = (value_at<T, Cols>(c, j, m + 1) - y0) * r;
      }
    }
  } else {
    // Function-major over the block: r is computed once per cell, kept on the
    // stack and reused by the block's functions.
    T r[kCellBlock];
    for (int64_t m = m0; m < m1; ++m)
      r[m - m0] = Uniform ? c.inv_h : T(1) / (c.x[m + 1] - c.x[m]);
    using Q = Quad<T>;
    for (int64_t j = j0; j < j1; ++j) {
      const T* y = c.y[j];
      T* out = c.coeff[j];
      int64_t m = m0;
      for (; m + 4 <= m1; m += 4) {
        const auto v = Q::load(y + m);
        Q::store_pairs(out + 2 * m, v, Q::mul(Q::sub(Q::load(y + m + 1), v), Q::load(r + (m - m0))));
      }
      for (; m < m1; ++m) {
        out[2 * m] = y[m];
        out[2 * m + 1] = (y[m + 1] - y[m]) * r[m - m0];
      }
    }
  }
}

template <Real T, bool Cols, bool Uniform>
oxa_status linear_routine(const DfTask& task, const DfThreading* threading) {
  LinearContext<T> c{};
  c.nx = task.nx;
  c.ny = task.ny <= 0 ? 1 : task.ny;
  c.x = static_cast<const T*>(task.x);
  c.y = reinterpret_cast<const T* const*>(task.y);
  c.coeff = reinterpret_cast<T* const*>(task.scoeff);

  if (task.bc_type == DF_BC_PERIODIC)
    for (int64_t j = 0; j < c.ny; ++j)
      if (!(value_at<T, Cols>(c, j, 0) == value_at<T, Cols>(c, j, c.nx - 1))) return DF_ERR_PERIODIC_VALUES;

  if constexpr (Uniform) c.inv_h = static_cast<T>(c.nx - 1) / (c.x[1] - c.x[0]);

  c.cell_blocks = (c.nx - 1 + kCellBlock - 1) / kCellBlock;
  const int64_t function_blocks = (c.ny + kFunctionBlock - 1) / kFunctionBlock;
  const int64_t iterations = c.cell_blocks * function_blocks;
  oxa_parallel_body body = &linear_body<T, Cols, Uniform>;

  // Small problems (nx·ny < 128) and up to 4 blocks stay on the calling thread.
  if (c.nx * c.ny >= 128 && iterations >= 5 && threading != nullptr &&
      threading->parallel_for != nullptr) {
    int32_t threads = 1;
    if (threading->get_num_threads != nullptr) {
      const DfThreadingHint hint{c.nx,
                                 c.ny,
                                 c.cell_blocks,
                                 function_blocks,
                                 c.x,
                                 reinterpret_cast<const void* const*>(task.y),
                                 const_cast<const void* const*>(task.scoeff),
                                 Uniform ? static_cast<double>(c.inv_h) : 0.0};
      threads = threading->get_num_threads(&hint);
    }
    threads = static_cast<int32_t>(std::clamp<int64_t>(threads, 1, iterations));
    threading->parallel_for(iterations, threads, &c, body);
    return DF_OK;
  }
  for (int64_t k = 0; k < iterations; ++k) body(&c, k, 0, 1);
  return DF_OK;
}

template <Real T>
oxa_status linear_spline(DfTask* task, const void* extra, const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  if (extra != nullptr) return DF_ERR_UNEXPECTED_ARG;
  if (task->nx < 2) return DF_ERR_BAD_NX;
  if (!is_storage_hint(task->yhint)) return DF_ERR_BAD_Y_HINT;
  // Without values or coefficient pointers there is nothing to read or write.
  if (task->y == nullptr) return DF_ERR_BAD_Y;
  if (task->scoeff == nullptr) return DF_ERR_BAD_COEFF;
  using Routine = oxa_status (*)(const DfTask&, const DfThreading*);
  // Indexed by (uniform partition ? 1 : 0) + (column storage ? 0 : 2).
  static constexpr Routine routines[4] = {
      &linear_routine<T, true, false>,   // _v1DLSLinearYColsNoUniformGrid
      &linear_routine<T, true, true>,    // _v1DLSLinearYColsUniformGrid
      &linear_routine<T, false, false>,  // _v1DLSLinearYRowsNoUniformGrid
      &linear_routine<T, false, true>,   // _v1DLSLinearYRowsUniformGrid
  };
  const int index = ((task->xhint & DF_X_UNIFORM) ? 1 : 0) + (task->yhint == DF_STORE_COLS ? 0 : 2);
  return routines[index](*task, threading);
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFLinearSpline1D(DfTask* task, int64_t, const void* extra,
                                           const DfThreading* threading) {
  return oxa::df::linear_spline<double>(task, extra, threading);
}

oxa_status oxa_df_kernel_sDFLinearSpline1D(DfTask* task, int64_t, const void* extra,
                                           const DfThreading* threading) {
  return oxa::df::linear_spline<float>(task, extra, threading);
}

}  // extern "C"
