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
#include <cstdint>

#include "data_fitting/task.hpp"
#include "data_fitting/uniform_partition.hpp"

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
  static bool aligned(const double* p) { return (reinterpret_cast<uintptr_t>(p) & 31) == 0; }
  static void store_pairs(double* out, V v, V s) {
    const V lo = _mm256_unpacklo_pd(v, s);  // v0 s0 v2 s2
    const V hi = _mm256_unpackhi_pd(v, s);  // v1 s1 v3 s3
    _mm256_storeu_pd(out, _mm256_permute2f128_pd(lo, hi, 0x20));
    _mm256_storeu_pd(out + 4, _mm256_permute2f128_pd(lo, hi, 0x31));
  }
  static void stream_pairs(double* out, V v, V s) {
    const V lo = _mm256_unpacklo_pd(v, s);
    const V hi = _mm256_unpackhi_pd(v, s);
    _mm256_stream_pd(out, _mm256_permute2f128_pd(lo, hi, 0x20));
    _mm256_stream_pd(out + 4, _mm256_permute2f128_pd(lo, hi, 0x31));
  }
};

template <>
struct Quad<float> {
  using V = __m128;
  static V load(const float* p) { return _mm_loadu_ps(p); }
  static V sub(V a, V b) { return _mm_sub_ps(a, b); }
  static V mul(V a, V b) { return _mm_mul_ps(a, b); }
  static V div(V a, V b) { return _mm_div_ps(a, b); }
  static bool aligned(const float* p) { return (reinterpret_cast<uintptr_t>(p) & 15) == 0; }
  static void store_pairs(float* out, V v, V s) {
    _mm_storeu_ps(out, _mm_unpacklo_ps(v, s));
    _mm_storeu_ps(out + 4, _mm_unpackhi_ps(v, s));
  }
  static void stream_pairs(float* out, V v, V s) {
    _mm_stream_ps(out, _mm_unpacklo_ps(v, s));
    _mm_stream_ps(out + 4, _mm_unpackhi_ps(v, s));
  }
};

constexpr int64_t kCellBlock = 1024;
constexpr int64_t kFunctionBlock = 4;
// Coefficient output from which stores bypass the caches: well above the
// last-level cache share of one core, so the output would not stay cached.
constexpr int64_t kStreamBytes = int64_t{32} << 20;

template <Real T>
struct LinearContext {
  int64_t cell_blocks;
  int64_t nx;
  int64_t ny;  // at least 1
  const T* x;
  const T* const* y;
  T* const* coeff;
  T inv_h;      // uniform partition only
  bool stream;  // output large enough to bypass the caches
};

// Value of function j at breakpoint i.
template <Real T, bool Cols>
inline T value_at(const LinearContext<T>& c, int64_t j, int64_t i) {
  if constexpr (Cols)
    return c.y[0][i * c.ny + j];
  else
    return c.y[j][i];
}

// Writes the (value, slope) pairs of cells [m, m1) of one function from its
// values y: four cells a step (slope4), single cells (slope1) for the rest.
// A large output is streamed past the caches once the pairs are aligned: it
// is not read back soon, and skipping the read-for-ownership of every written
// line saves a third of the memory traffic. The body fences the streamed
// stores once, before it returns.
template <Real T, class Slope4, class Slope1>
void write_pairs(const T* y, T* out, int64_t m, int64_t m1, bool stream, Slope4 slope4,
                 Slope1 slope1) {
  using Q = Quad<T>;
  auto one = [&](int64_t k) {
    out[2 * k] = y[k];
    out[2 * k + 1] = slope1(k);
  };
  if (stream) {
    for (int peel = 0; peel < 2 && m < m1 && !Q::aligned(out + 2 * m); ++peel) one(m++);
    if (Q::aligned(out + 2 * m)) {
      for (; m + 4 <= m1; m += 4) Q::stream_pairs(out + 2 * m, Q::load(y + m), slope4(m));
    }
  }
  for (; m + 4 <= m1; m += 4) Q::store_pairs(out + 2 * m, Q::load(y + m), slope4(m));
  for (; m < m1; ++m) one(m);
}

// One function over cells [m0, m1), non-uniform partition: a division per
// cell, and the reciprocal for the last cell when the count is odd. (With one
// function, column storage is the row itself.)
template <Real T>
void single_function_cells(const LinearContext<T>& c, int64_t m0, int64_t m1) {
  using Q = Quad<T>;
  const T* x = c.x;
  const T* y = c.y[0];
  const bool odd = (m1 - m0) % 2 == 1;
  auto slope4 = [&](int64_t m) {
    return Q::div(Q::sub(Q::load(y + m + 1), Q::load(y + m)),
                  Q::sub(Q::load(x + m + 1), Q::load(x + m)));
  };
  auto slope1 = [&](int64_t m) {
    if (odd && m == m1 - 1) return (y[m + 1] - y[m]) * (T(1) / (x[m + 1] - x[m]));
    return (y[m + 1] - y[m]) / (x[m + 1] - x[m]);
  };
  write_pairs(y, c.coeff[0], m0, m1, c.stream, slope4, slope1);
}

// Block k: cell block k mod cell_blocks, function block k div cell_blocks.
template <Real T, bool Cols, bool Uniform>
void linear_body(void* context, int64_t k, int32_t, int32_t) {
  const auto& c = *static_cast<const LinearContext<T>*>(context);
  const int64_t b = k % c.cell_blocks, f = k / c.cell_blocks;
  const int64_t m0 = b * kCellBlock, m1 = std::min(m0 + kCellBlock, c.nx - 1);
  const int64_t j0 = f * kFunctionBlock, j1 = std::min(j0 + kFunctionBlock, c.ny);
  if (!Uniform && c.ny == 1) {
    single_function_cells<T>(c, m0, m1);
  } else if constexpr (Cols) {
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
    for (int64_t m = m0; m < m1; ++m) r[m - m0] = Uniform ? c.inv_h : T(1) / (c.x[m + 1] - c.x[m]);
    using Q = Quad<T>;
    for (int64_t j = j0; j < j1; ++j) {
      const T* y = c.y[j];
      auto slope4 = [&](int64_t m) {
        return Q::mul(Q::sub(Q::load(y + m + 1), Q::load(y + m)), Q::load(r + (m - m0)));
      };
      auto slope1 = [&](int64_t m) { return (y[m + 1] - y[m]) * r[m - m0]; };
      write_pairs(y, c.coeff[j], m0, m1, c.stream, slope4, slope1);
    }
  }
  if (c.stream) _mm_sfence();  // streamed stores land before the block reports done
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
      if (!(value_at<T, Cols>(c, j, 0) == value_at<T, Cols>(c, j, c.nx - 1)))
        return DF_ERR_PERIODIC_VALUES;

  if constexpr (Uniform) c.inv_h = uniform_inverse_step(c.x[0], c.x[1], c.nx);
  c.stream = 2 * (c.nx - 1) * c.ny * static_cast<int64_t>(sizeof(T)) >= kStreamBytes;

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

// The four routines, by value storage and partition kind; each hands its
// linear_body instance (_v1DLinearThreader<storage><grid>) to the threads.
using LinearRoutine = oxa_status (*)(const DfTask&, const DfThreading*);
template <Real T>
constexpr LinearRoutine _v1DLSLinearYColsNoUniformGrid = &linear_routine<T, true, false>;
template <Real T>
constexpr LinearRoutine _v1DLSLinearYColsUniformGrid = &linear_routine<T, true, true>;
template <Real T>
constexpr LinearRoutine _v1DLSLinearYRowsNoUniformGrid = &linear_routine<T, false, false>;
template <Real T>
constexpr LinearRoutine _v1DLSLinearYRowsUniformGrid = &linear_routine<T, false, true>;

template <Real T>
oxa_status linear_spline(DfTask* task, const void* extra, const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  if (extra != nullptr) return DF_ERR_UNEXPECTED_ARG;
  if (task->nx < 2) return DF_ERR_BAD_NX;
  if (!is_storage_hint(task->yhint)) return DF_ERR_BAD_Y_HINT;
  // Every function needs its values and its coefficient block: a missing one
  // (never attached, not set one by one, or ny raised after attaching) is
  // reported instead of dereferenced.
  const int64_t ny = task->ny <= 0 ? 1 : task->ny;
  const int64_t value_pointers = task->yhint == DF_STORE_COLS ? 1 : ny;
  if (pointer_capacity(task->y) < value_pointers) return DF_ERR_BAD_Y;
  for (int64_t j = 0; j < value_pointers; ++j)
    if (task->y[j] == nullptr) return DF_ERR_BAD_Y;
  if (pointer_capacity(task->scoeff) < ny) return DF_ERR_BAD_COEFF;
  for (int64_t j = 0; j < ny; ++j)
    if (task->scoeff[j] == nullptr) return DF_ERR_BAD_COEFF;
  // Indexed by (uniform partition ? 1 : 0) + (column storage ? 0 : 2).
  static constexpr LinearRoutine routines[4] = {
      _v1DLSLinearYColsNoUniformGrid<T>,
      _v1DLSLinearYColsUniformGrid<T>,
      _v1DLSLinearYRowsNoUniformGrid<T>,
      _v1DLSLinearYRowsUniformGrid<T>,
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
