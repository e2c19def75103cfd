// The fast method's sums: one pass of shifted power sums, then the mean,
// central sums and sums about zero derived from them.
//
// Method: per component, with a shift c, sums t_k = sum of w (x - c)^k for
//   k = 1..R in one pass (no cached block, no second pass), block by block
//   into totals over the range a kernel folds; then delta = t_1/W,
//   mean = c + delta and, binomially about the mean,
//     S2 = t2 - delta t1
//     S3 = t3 - 3 delta t2 + 2 delta^2 t1
//     S4 = t4 - 4 delta t3 + 6 delta^2 t2 - 3 delta^3 t1,
//   and the sums about zero R_k from (mean, S_k): R2 = S2 + W m^2,
//   R3 = S3 + 3 m S2 + W m^3, R4 = S4 + 4 m S3 + 6 m^2 S2 + W m^4 (every
//   term bounded by sum of w |x|^k, so no digit is lost that the result has).
//   Ranges (threads) and successive calls then merge pairwise
//   (basic_state.hpp), as in the one-pass method.
// Why the shift: sums about zero give S2 = W (r2 - m^2), which cancels when
//   |mean| >> spread (values near 1e7 with spread 0.1 keep no correct digit,
//   and the difference can come out negative). About a shift within the data's
//   spread, t2 and delta t1 are of the size of S2 and the loss is what the
//   data's own rounding costs. The shift is the running state's mean when the
//   state holds observations, else the range's first observation; a
//   non-finite shift is replaced by 0 so that infinities give the same
//   results as sums about zero. One shift for the whole range keeps the block
//   sums additive: merging blocks instead would round each block's mean, an
//   error of eps |mean| that the merge multiplies by the means' difference.
// Accuracy: relative error about eps (block size / lanes + number of blocks)
//   plus eps (mean - c)^2 / variance; S2 is clamped at 0 (a sum of squares).
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "summary_stats/basic_state.hpp"
#include "summary_stats/lanes.hpp"

namespace oxa::ss::detail {

template <class T>
T fast_shift(const Partial<T>& state, int64_t k, T first) {
  const T c = state.W != 0 ? state.mean[k] : first;
  return std::isfinite(c) ? c : T(0);
}

// Block fields of component k from the shift c and t[q] = sum w (x - c)^(q+1).
template <class T, int R>
void finish_shifted(Partial<T>& B, int64_t k, T c, const T* t) {
  const T W = B.W;
  const T delta = t[0] / W;
  const T m = c + delta;
  B.mean[k] = m;
  B.sum[k] = W * c + t[0];
  if constexpr (R >= 2) {
    const T s2 = std::fmax(t[1] - delta * t[0], T(0));
    const T wm2 = W * m * m;
    B.central[0][k] = s2;
    B.raw[0][k] = s2 + wm2;
    if constexpr (R >= 3) {
      const T s3 = t[2] - T(3) * delta * t[1] + T(2) * delta * delta * t[0];
      B.central[1][k] = s3;
      B.raw[1][k] = s3 + m * (T(3) * s2 + wm2);
      if constexpr (R >= 4) {
        const T s4 = t[3] - T(4) * delta * t[2] + T(6) * delta * delta * t[1] -
                     T(3) * delta * delta * delta * t[0];
        B.central[2][k] = s4;
        B.raw[2][k] = s4 + m * (T(4) * s3 + m * (T(6) * s2 + wm2));
      }
    }
  }
}

inline constexpr int64_t kMaxPeriodFast = 256;
// Values summed in lane accumulators before they are added to the block's
// sums: running sums of a few hundred terms per lane at most (float ones too).
inline constexpr int64_t kFastChunk = 4096;
// Values a fast block reads: one component's run by component, rows x pc by
// observation. Long runs read each component as one stream.
inline constexpr int64_t kFastBlockElements = int64_t{1} << 18;

// acc[q][e] += sum over rows r of (x[r][e] - c[e])^(q+1) for rows of `len`
// elements (a multiple of the vector width) read in order; short rows four
// per step, so that each accumulator is loaded and stored once per four rows.
template <int R, class T>
void shifted_rows_impl(const T* x, int64_t rows, int64_t len, const T* c,
                       T (*acc)[kMaxPeriodFast]) {
  using L = Lanes<T>;
  using V = typename L::V;
  constexpr int W = L::kWidth;
  int64_t r = 0;
  // Four rows per step only while the four share a cache line or two: rows
  // further apart read as interleaved streams, measured 20-50% slower (p = 10
  // and 100 by observation) than one row after the other.
  const int64_t group_rows = len <= 16 ? rows : 0;
  for (; r + 4 <= group_rows; r += 4) {
    const T* v = x + r * len;
    for (int64_t e = 0; e < len; e += W) {
      const V ce = L::load(c + e);
      const V d0 = L::sub(L::load(v + e), ce);
      const V d1 = L::sub(L::load(v + len + e), ce);
      const V d2 = L::sub(L::load(v + 2 * len + e), ce);
      const V d3 = L::sub(L::load(v + 3 * len + e), ce);
      V p0 = d0, p1 = d1, p2 = d2, p3 = d3;
      for (int q = 0; q < R; ++q) {
        const V s = L::add(L::add(p0, p1), L::add(p2, p3));
        L::store(acc[q] + e, L::add(L::load(acc[q] + e), s));
        if (q + 1 < R) {
          p0 = L::mul(p0, d0);
          p1 = L::mul(p1, d1);
          p2 = L::mul(p2, d2);
          p3 = L::mul(p3, d3);
        }
      }
    }
  }
  for (; r < rows; ++r) {
    const T* v = x + r * len;
    for (int64_t e = 0; e < len; e += W) {
      const V d = L::sub(L::load(v + e), L::load(c + e));
      V p = d;
      for (int q = 0; q < R; ++q) {
        L::store(acc[q] + e, L::add(L::load(acc[q] + e), p));
        if (q + 1 < R) p = L::mul(p, d);
      }
    }
    asm volatile("" ::: "memory");  // keeps the rows apart (no unroll-and-jam)
  }
}

// Unweighted block of `nb` dense observations of pc components (row length
// pc, no gaps) read as a flat array in periods of P = lcm(pc, 8) elements,
// whose positions keep the same component from period to period: full
// vectors, no per-element branch. t[q][k] += sums of (x - c_k)^(q+1).
// Returns the observations done (whole periods; 0 when P > kMaxPeriodFast).
template <int R, class T>
int64_t shifted_flat(const T* x, int64_t nb, int64_t pc, const T* shift, T* const* t) {
  const int64_t period = std::lcm(pc, int64_t{8});
  if (period > kMaxPeriodFast) return 0;
  const int64_t per = period / pc;
  const int64_t periods = nb / per;
  alignas(64) T acc[R][kMaxPeriodFast];
  alignas(64) T c[kMaxPeriodFast] = {};
  for (int64_t e = 0; e < period; ++e) c[e] = shift[e % pc];
  // Accumulators flushed every chunk of periods (short running sums).
  const int64_t chunk = std::max<int64_t>(kFastChunk / period, 4);
  for (int64_t r = 0; r < periods; r += chunk) {
    for (int q = 0; q < R; ++q) std::fill(acc[q], acc[q] + period, T(0));
    shifted_rows_impl<R, T>(x + r * period, std::min(chunk, periods - r), period, c, acc);
    for (int64_t e0 = 0; e0 < period; e0 += pc)
      for (int q = 0; q < R; ++q)
        for (int64_t k = 0; k < pc; ++k) t[q][k] += acc[q][e0 + k];
  }
  return periods * per;
}

// Rows [first, nb) one at a time, vectors across components, scalar tail.
template <int R, bool Weighted, class T>
void shifted_row_by_row(const T* rows, int64_t ldr, int64_t first, int64_t nb, int64_t pc,
                        const T* w, const T* c, T* const* t) {
  using L = Lanes<T>;
  using V = typename L::V;
  constexpr int W = L::kWidth;
  for (int64_t i = first; i < nb; ++i) {
    const T* v = rows + i * ldr;
    const T wi = Weighted ? w[i] : T(1);
    const V wv = L::set1(wi);
    int64_t k = 0;
    for (; k + W <= pc; k += W) {
      const V d = L::sub(L::load(v + k), L::load(c + k));
      V p = Weighted ? L::mul(wv, d) : d;
      for (int q = 0; q < R; ++q) {
        L::add_to(t[q] + k, p);
        if (q + 1 < R) p = L::mul(p, d);
      }
    }
    for (; k < pc; ++k) {
      const T d = v[k] - c[k];
      T p = Weighted ? wi * d : d;
      for (int q = 0; q < R; ++q) {
        t[q][k] += p;
        p *= d;
      }
    }
  }
}

}  // namespace oxa::ss::detail
