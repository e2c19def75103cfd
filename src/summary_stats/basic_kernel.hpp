// Basic-estimator block kernels: one templated body for every method, storage,
// weighting, moment level and cross-product choice.
//
// Basic kernels: fold observations [first, end) into a running state.
// Method: blocks of observations; per block, sums of w x^k (pass 1), the
//   block's centre (its mean, or the given mean), sums of w (x - centre)^k and
//   of w (x_a - c_a)(x_b - c_b) over the cached block (pass 2); the block
//   state is then merged into the running state (basic_state.hpp), which is
//   the one-pass update applied a block at a time. The fast method without
//   cross-products makes one pass of shifted sums per block instead
//   (fast_sums.hpp). The divisions by the accumulated weight are shared by
//   all components of a block.
// Accuracy: central sums by two passes (or about a shift) within a block,
//   then merged: relative error at worst about eps (block size + number of
//   blocks), accumulated in the element type (float data in float).
// Special: leading zero weights of a fold into an empty state are skipped (the
//   update factor 1/(W + w) is undefined there); an all-zero-weight block
//   leaves the state unchanged. NaN and infinity propagate.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <numeric>

#include "summary_stats/basic_plan.hpp"
#include "summary_stats/basic_state.hpp"
#include "summary_stats/cross_tiles.hpp"
#include "summary_stats/fast_sums.hpp"
#include "summary_stats/lanes.hpp"

namespace oxa::ss {

template <class T>
struct KernelArgs {
  int64_t first, end;   // observations to fold
  int64_t pc, ps;       // selected components and the state stride
  const int64_t* comp;  // indices of the selected components
  bool contiguous;      // comp[k] == comp[0] + k
  int64_t ld;           // n for storage by component, p by observation
  const T* x;           // observation matrix
  const T* w;           // weights (weighted members)
  const T* given_mean;  // dense centre of the given-mean method
  Partial<T>* state;    // running state, updated in place
  Partial<T>* block;    // block state scratch
  T* scratch;           // 3 * block_size * ps values, zero on first use
  int64_t block_size;   // observations per block
};

template <class T>
using BasicKernel = int (*)(const KernelArgs<T>&);

// Raw and central orders that a kernel of (method, level) keeps.
constexpr int kernel_raw_order(Method m, int level) {
  return m == Method::OnePass ? (level == 3   ? 4
                                 : level == 2 ? 2
                                              : 1)
         : m == Method::Fast  ? level + 1
                              : (level == 3 ? 4 : 1);
}
constexpr int kernel_central_order(Method m, int level) {
  return m == Method::OnePass ? (level == 3   ? 4
                                 : level >= 1 ? 2
                                              : 0)
         : m == Method::Fast  ? (level >= 1 ? level + 1 : 0)
                              : (level == 0   ? 2
                                 : level == 1 ? 3
                                              : 4);
}

namespace detail {

// out[q] += sum over i of w_i (v_i - c)^(q+1), q < P, over U independent
// vector accumulators per power (a fixed summation order for every n).
template <int P, bool Weighted, class T>
void power_sums(const T* v, const T* w, int64_t n, T c, T* out) {
  using L = Lanes<T>;
  using V = typename L::V;
  constexpr int W = L::kWidth, U = P <= 2 ? 4 : 2;
  V acc[P][U];
  for (int q = 0; q < P; ++q)
    for (int u = 0; u < U; ++u) acc[q][u] = L::zero();
  const V cv = L::set1(c);
  int64_t i = 0;
  for (; i + U * W <= n; i += U * W)
    for (int u = 0; u < U; ++u) {
      const V d = L::sub(L::load(v + i + u * W), cv);
      V pw = Weighted ? L::mul(L::load(w + i + u * W), d) : d;
      for (int q = 0; q < P; ++q) {
        acc[q][u] = L::add(acc[q][u], pw);
        if (q + 1 < P) pw = L::mul(pw, d);
      }
    }
  for (int q = 0; q < P; ++q) {
    for (int u = 1; u < U; ++u) acc[q][0] = L::add(acc[q][0], acc[q][u]);
    T lanes[W];
    L::store(lanes, acc[q][0]);
    T s = 0;
    for (int l = 0; l < W; ++l) s += lanes[l];
    out[q] += s;
  }
  for (; i < n; ++i) {
    const T d = v[i] - c;
    T pw = Weighted ? w[i] * d : d;
    for (int q = 0; q < P; ++q) {
      out[q] += pw;
      pw *= d;
    }
  }
}

// Unweighted sums over `rows` whole observations of pc adjacent components
// stored without gaps: out[q][k] += sum_i (x_ik - c_k)^(q+1) (c = 0 when
// centre is null). The block is read as a flat array in periods of
// L = lcm(pc, 8) elements, whose positions keep the same component from
// period to period, so the loop runs in full vectors; the L partial sums are
// folded into the pc components at the end. Returns the observations done (a
// whole number of periods; 0 when L is longer than kMaxPeriod).
inline constexpr int64_t kMaxPeriod = 256;

template <int P, class T>
int64_t flat_power_sums(const T* x, int64_t rows, int64_t pc, const T* centre, T* const* out) {
  const int64_t period = std::lcm(pc, int64_t{8});
  if (period > kMaxPeriod) return 0;
  const int64_t per = period / pc;  // observations per period
  const int64_t periods = rows / per;
  T acc[P][kMaxPeriod] = {};
  T c[kMaxPeriod];
  for (int64_t e = 0; e < period; ++e) c[e] = centre ? centre[e % pc] : T(0);
  for (int64_t t = 0; t < periods; ++t) {
    const T* v = x + t * period;
    for (int64_t e = 0; e < period; ++e) {
      const T d = v[e] - c[e];
      T pw = d;
      for (int q = 0; q < P; ++q) {
        acc[q][e] += pw;
        pw *= d;
      }
    }
  }
  for (int q = 0; q < P; ++q)
    for (int64_t e = 0; e < period; ++e) out[q][e % pc] += acc[q][e];
  return periods * per;
}

// Block state of observations [i0, i0 + nb) by component rows.
template <class T, Method M, bool Weighted, int R, int C, bool CP>
void block_by_component(const KernelArgs<T>& a, int64_t i0, int64_t nb, Partial<T>& B) {
  const T* w = Weighted ? a.w + i0 : nullptr;
  T* d = a.scratch;
  T* dw = Weighted ? a.scratch + a.block_size * a.ps : d;
  for (int64_t k = 0; k < a.pc; ++k) {
    const T* v = a.x + a.comp[k] * a.ld + i0;
    T s[4] = {};
    power_sums<R, Weighted>(v, w, nb, T(0), s);
    B.sum[k] = s[0];
    for (int q = 1; q < R; ++q) B.raw[q - 1][k] = s[q];
    const T centre = M == Method::GivenMean ? a.given_mean[k] : s[0] / B.W;
    B.mean[k] = centre;
    if constexpr (C >= 2) {
      T c[4] = {};
      power_sums<C, Weighted>(v, w, nb, centre, c);
      for (int q = 1; q < C; ++q) B.central[q - 1][k] = c[q];
    }
    if constexpr (CP) {
      for (int64_t i = 0; i < nb; ++i) d[i * a.ps + k] = v[i] - centre;
      if constexpr (Weighted)
        for (int64_t i = 0; i < nb; ++i) dw[i * a.ps + k] = w[i] * d[i * a.ps + k];
    }
  }
}

// Block state of observations [i0, i0 + nb) by observation rows.
template <class T, Method M, bool Weighted, int R, int C, bool CP>
void block_by_observation(const KernelArgs<T>& a, int64_t i0, int64_t nb, Partial<T>& B) {
  const int64_t pc = a.pc, ps = a.ps;
  const T* rows;
  int64_t ldr;
  if (a.contiguous) {
    rows = a.x + i0 * a.ld + a.comp[0];
    ldr = a.ld;
  } else {  // gather the selected components into a dense block
    T* g = a.scratch + 2 * a.block_size * ps;
    for (int64_t i = 0; i < nb; ++i)
      for (int64_t k = 0; k < pc; ++k) g[i * ps + k] = a.x[(i0 + i) * a.ld + a.comp[k]];
    rows = g;
    ldr = ps;
  }
  int64_t flat = 0;  // observations summed by the flat path
  if constexpr (!Weighted) {
    if (ldr == pc) {
      T* raw_out[4] = {B.sum, B.raw[0], B.raw[1], B.raw[2]};
      flat = flat_power_sums<R, T>(rows, nb, pc, nullptr, raw_out);
    }
  }
  T* __restrict s1 = B.sum;
  T* __restrict r2 = B.raw[0];
  T* __restrict r3 = B.raw[1];
  T* __restrict r4 = B.raw[2];
  for (int64_t i = flat; i < nb; ++i) {
    const T* __restrict v = rows + i * ldr;
    const T wi = Weighted ? a.w[i0 + i] : T(1);
    for (int64_t k = 0; k < pc; ++k) {
      T pw = Weighted ? wi * v[k] : v[k];
      s1[k] += pw;
      if constexpr (R >= 2) {
        pw *= v[k];
        r2[k] += pw;
      }
      if constexpr (R >= 3) {
        pw *= v[k];
        r3[k] += pw;
      }
      if constexpr (R >= 4) {
        pw *= v[k];
        r4[k] += pw;
      }
    }
  }
  T* __restrict m = B.mean;
  const T inv = T(1) / B.W;
  for (int64_t k = 0; k < pc; ++k) m[k] = M == Method::GivenMean ? a.given_mean[k] : s1[k] * inv;
  if constexpr (C >= 2 && !CP) {
    if (flat > 0) {
      T order1[kMaxPeriod];  // sums of (x - c), not kept
      T* central_out[4] = {order1, B.central[0], B.central[1], B.central[2]};
      flat_power_sums<C, T>(rows, nb, pc, m, central_out);
    }
  } else {
    flat = 0;
  }
  if constexpr (C >= 2 || CP) {
    T* __restrict c2 = B.central[0];
    T* __restrict c3 = B.central[1];
    T* __restrict c4 = B.central[2];
    T* __restrict d = a.scratch;
    T* __restrict dw = a.scratch + a.block_size * ps;
    for (int64_t i = flat; i < nb; ++i) {
      const T* __restrict v = rows + i * ldr;
      const T wi = Weighted ? a.w[i0 + i] : T(1);
      for (int64_t k = 0; k < pc; ++k) {
        const T dk = v[k] - m[k];
        const T wd = Weighted ? wi * dk : dk;
        if constexpr (C >= 2) c2[k] += wd * dk;
        if constexpr (C >= 3) c3[k] += wd * dk * dk;
        if constexpr (C >= 4) c4[k] += wd * dk * dk * dk;
        if constexpr (CP) {
          d[i * ps + k] = dk;
          if constexpr (Weighted) dw[i * ps + k] = wd;
        }
      }
    }
  }
}

// Fast-method sums of block [i0, i0 + nb) by component rows about `shift`:
// B.sum and B.raw[0..2] get the sums of w (x - c)^k, k = 1..R.
template <class T, bool Weighted, int R>
void fast_block_by_component(const KernelArgs<T>& a, int64_t i0, int64_t nb, const T* shift,
                             Partial<T>& B) {
  const T* w = Weighted ? a.w + i0 : nullptr;
  for (int64_t k = 0; k < a.pc; ++k) {
    T t[4] = {};
    const T* v = a.x + a.comp[k] * a.ld + i0;
    for (int64_t j = 0; j < nb; j += kFastChunk)  // lane sums flushed every chunk
      power_sums<R, Weighted>(v + j, Weighted ? w + j : nullptr, std::min(kFastChunk, nb - j),
                              shift[k], t);
    B.sum[k] = t[0];
    for (int q = 1; q < R; ++q) B.raw[q - 1][k] = t[q];
  }
}

// The same by observation rows.
template <class T, bool Weighted, int R>
void fast_block_by_observation(const KernelArgs<T>& a, int64_t i0, int64_t nb, const T* shift,
                               Partial<T>& B) {
  const int64_t pc = a.pc;
  const T* rows;
  int64_t ldr;
  if (a.contiguous) {
    rows = a.x + i0 * a.ld + a.comp[0];
    ldr = a.ld;
  } else {  // gather the selected components into a dense block
    T* g = a.scratch;
    for (int64_t i = 0; i < nb; ++i)
      for (int64_t k = 0; k < pc; ++k) g[i * pc + k] = a.x[(i0 + i) * a.ld + a.comp[k]];
    rows = g;
    ldr = pc;
  }
  T* const t[4] = {B.sum, B.raw[0], B.raw[1], B.raw[2]};
  int64_t done = 0;
  if constexpr (!Weighted)
    if (ldr == pc) done = shifted_flat<R, T>(rows, nb, pc, shift, t);
  shifted_row_by_row<R, Weighted, T>(rows, ldr, done, nb, pc, Weighted ? a.w + i0 : nullptr, shift,
                                     t);
}

// The fast method without cross-products, observations [i, a.end): one shift
// for the whole range (fast_sums.hpp), block sums added into range totals
// (two-level summation; no mean differences between blocks to round), then
// one finish and one merge into the state. The totals and the shift live at
// the end of the scratch, past any gathered block.
template <class T, bool ByObservation, bool Weighted, int R>
void fast_range(const KernelArgs<T>& a, int64_t i, const Parts& parts) {
  const int64_t pc = a.pc, ps = a.ps;
  T* const total = a.scratch + 2 * a.block_size * ps;  // R arrays of ps
  T* const shift = total + 4 * ps;
  std::fill(total, shift + ps, T(0));
  for (int64_t k = 0; k < pc; ++k)
    shift[k] = fast_shift(*a.state, k,
                          ByObservation ? a.x[i * a.ld + a.comp[k]] : a.x[a.comp[k] * a.ld + i]);
  // One pass with nothing cached: long blocks keep each component's read one
  // long stream. Only a gathered block is bounded by the scratch.
  const int64_t block_size = !ByObservation ? kFastBlockElements
                             : a.contiguous && !Weighted
                                 ? std::max(a.block_size, kFastBlockElements / pc)
                                 : a.block_size;
  Partial<T>& B = *a.block;
  T* const block_memory = B.sum;
  T W = 0, W2 = 0;
  for (; i < a.end; i += std::min(block_size, a.end - i)) {
    const int64_t nb = std::min(block_size, a.end - i);
    B.bind(block_memory, ps, false);
    if constexpr (ByObservation)
      fast_block_by_observation<T, Weighted, R>(a, i, nb, shift, B);
    else
      fast_block_by_component<T, Weighted, R>(a, i, nb, shift, B);
    for (int64_t k = 0; k < pc; ++k) total[k] += B.sum[k];
    for (int q = 1; q < R; ++q)
      for (int64_t k = 0; k < pc; ++k) total[q * ps + k] += B.raw[q - 1][k];
    if constexpr (Weighted) {
      for (int64_t t = i; t < i + nb; ++t) {
        W += a.w[t];
        W2 += a.w[t] * a.w[t];
      }
    } else {
      W += static_cast<T>(nb);
    }
  }
  if (W == 0) return;
  B.bind(block_memory, ps, false);
  B.W = W;
  B.W2 = Weighted ? W2 : W;
  for (int64_t k = 0; k < pc; ++k) {
    const T t[4] = {total[k], total[ps + k], total[2 * ps + k], total[3 * ps + k]};
    finish_shifted<T, R>(B, k, shift[k], t);
  }
  merge(*a.state, B, parts);
}

}  // namespace detail

// The kernel of one (method, storage, weighting, level, cross-product) choice.
template <class T, Method M, bool ByObservation, bool Weighted, int Level, bool CP>
int basic_kernel(const KernelArgs<T>& a) {
  constexpr int R = kernel_raw_order(M, Level);
  constexpr int C = kernel_central_order(M, Level);
  const Parts parts{a.pc, a.ps, R, C, CP};
  int64_t i = a.first;
  if constexpr (Weighted)
    if (a.state->W == 0)
      while (i < a.end && a.w[i] == 0) ++i;
  Partial<T>& B = *a.block;
  T* block_memory = B.sum;
  if constexpr (M == Method::Fast && !CP) {
    if (i < a.end) detail::fast_range<T, ByObservation, Weighted, R>(a, i, parts);
    return 0;
  }
  while (i < a.end) {
    const int64_t nb = std::min(a.block_size, a.end - i);
    B.bind(block_memory, a.ps, CP);
    if constexpr (Weighted) {
      for (int64_t t = i; t < i + nb; ++t) {
        B.W += a.w[t];
        B.W2 += a.w[t] * a.w[t];
      }
    } else {
      B.W = B.W2 = static_cast<T>(nb);
    }
    if (B.W != 0) {
      if constexpr (ByObservation)
        detail::block_by_observation<T, M, Weighted, R, C, CP>(a, i, nb, B);
      else
        detail::block_by_component<T, M, Weighted, R, C, CP>(a, i, nb, B);
      if constexpr (CP) {
        const T* d = a.scratch;
        const T* dw = Weighted ? a.scratch + a.block_size * a.ps : d;
        cross_tiles(nb, a.ps, d, dw, B.cp);
      }
      merge(*a.state, B, parts);
    }
    i += nb;
  }
  return 0;
}

// Kernel tables. One-pass: index (weighted ? 8 : 0) + (by observation ? 16 : 0)
// + level * 2 + (cross-products ? 1 : 0); fast and given-mean: (weighted ? 4 : 0)
// + (by observation ? 8 : 0) + level. The byte offsets into tables of 8-byte
// entries are these indices times 8.
template <class T>
struct BasicKernelTables {
  BasicKernel<T> one_pass[32];
  BasicKernel<T> fast[16];
  BasicKernel<T> given_mean[16];
  // Cross-product companions of the fast and given-mean members (same index),
  // used when a covariance, correlation or cross-product is requested with
  // those methods.
  BasicKernel<T> fast_cp[16];
  BasicKernel<T> given_mean_cp[16];
};

template <class T>
const BasicKernelTables<T>& basic_kernel_tables();

// Names of the 64 named members in table order: one-pass, fast, given mean.
extern const char* const kBasicKernelNames[64];

// The kernel for a plan.
template <class T>
BasicKernel<T> choose_kernel(const Plan& plan, bool by_observation, bool weighted) {
  const auto& t = basic_kernel_tables<T>();
  if (plan.method == Method::OnePass)
    return t.one_pass[(weighted ? 8 : 0) + (by_observation ? 16 : 0) + plan.level * 2 +
                      (plan.cross_products ? 1 : 0)];
  const int i = (weighted ? 4 : 0) + (by_observation ? 8 : 0) + plan.level;
  if (plan.method == Method::Fast) return plan.cross_products ? t.fast_cp[i] : t.fast[i];
  return plan.cross_products ? t.given_mean_cp[i] : t.given_mean[i];
}

}  // namespace oxa::ss
