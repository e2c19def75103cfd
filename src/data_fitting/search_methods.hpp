// Cell search: the seven sequential methods, written once over the element
// type T and a cell-width policy W.
//
// Cell of a site t, the same for every method: 0 when t < x[0] or t is NaN;
// k when x[k-1] <= t < x[k]; nx-1 when t = x[nx-1]; nx when t > x[nx-1].
// Apart from the right end it is the number of breakpoints <= t. Every method
// first settles the right end and the sites below x[0] (NaN included), which
// also keeps NaN out of the float-to-integer truncations of the guesses.
#pragma once

#include <immintrin.h>

#include <algorithm>
#include <bit>
#include <cmath>
#include <cstdint>
#include <limits>
#include <type_traits>

#include "data_fitting/task.hpp"
#include "data_fitting/uniform_partition.hpp"

namespace oxa::df {

// Cell widths: element written and integer type of the index arithmetic.
struct Cells32 {
  using Out = int32_t;
  using Idx = int32_t;
  static constexpr int32_t bits = 32;
};
struct Cells64 {
  using Out = int64_t;
  using Idx = int64_t;
  static constexpr int32_t bits = 64;
};
struct Cells64Pack {  // 64-bit cells from 32-bit arithmetic, for nx < 2^31 - 1
  using Out = int64_t;
  using Idx = int32_t;
  static constexpr int32_t bits = 64;
};

enum class Width { k32, k64, k64Pack };

// The width-choosing entries: bit 2 set and bit 1 clear gives 32-bit cells.
inline Width choose_width(int32_t flags, int64_t nx) {
  if ((flags & 2) != 0 && (flags & 1) == 0) return Width::k32;
  return nx < 2147483647 ? Width::k64Pack : Width::k64;
}

template <Real T>
using SearchCallback =
    std::conditional_t<std::is_same_v<T, double>, oxa_df_dsearch_callback, oxa_df_ssearch_callback>;

// Breakpoints kept in an array.
template <Real T>
struct StoredPoints {
  const T* x;
  int64_t nx;
  T first() const { return x[0]; }
  T last() const { return x[nx - 1]; }
  T operator[](int64_t k) const { return x[k]; }
};

// Breakpoints of a uniform partition given by its two ends (uniform_breakpoint).
template <Real T>
struct EvenPoints {
  const T* x;
  int64_t nx;
  T first() const { return x[0]; }
  T last() const { return x[1]; }
  T operator[](int64_t k) const { return uniform_breakpoint(x[0], x[1], nx, k); }
};

// Settles the sites every method treats alike. Returns true with the cell in
// *r for t = x_last (nx-1) and for t < x[0] or NaN (0).
template <class Idx, Real T>
inline bool settle_ends(T t, T x0, T xl, int64_t nx, Idx* r) {
  if (t == xl) {
    *r = static_cast<Idx>(nx - 1);
    return true;
  }
  if (!(t >= x0)) {
    *r = 0;
    return true;
  }
  return false;
}

// Moves a guess k in [0, nx] to the cell of t (t >= x[0], t != x_last): right
// while x[k] <= t, else left while x[k-1] > t.
template <class Idx, class P>
inline Idx walk_from(const P& x, Idx nx, decltype(x[0]) t, Idx k) {
  if (k < nx && x[k] <= t) {
    do ++k;
    while (k < nx && x[k] <= t);
  } else {
    while (k >= 1 && x[k - 1] > t) --k;
  }
  return k;
}

// Truncated guess inv·(t − x0) of one site, nx where that is not in [0, nx)
// (sites below x0 and NaN included; those are settled elsewhere).
template <Real T>
inline int64_t guess(T t, T x0, T inv, int64_t nx) {
  const T v = inv * (t - x0);
  return v >= T(0) && v < static_cast<T>(nx) ? std::min(static_cast<int64_t>(v), nx) : nx;
}

// Four sites at a time. scaled(): inv·(t − x0) in T arithmetic, widened to
// double lanes. above(): gathers x[mid] for four 64-bit indices and returns
// the lanes where it is above the site, as 64-bit masks.
template <Real T>
struct Lanes4;

template <>
struct Lanes4<double> {
  using V = __m256d;
  static V load(const double* p) { return _mm256_loadu_pd(p); }
  static __m256d wide(const double* p) { return load(p); }
  static __m256d scaled(const double* t, double x0, double inv) {
    return _mm256_mul_pd(_mm256_sub_pd(load(t), _mm256_set1_pd(x0)), _mm256_set1_pd(inv));
  }
  static __m256i above(const double* x, __m256i mid, V t) {
    return _mm256_castpd_si256(_mm256_cmp_pd(_mm256_i64gather_pd(x, mid, 8), t, _CMP_GT_OQ));
  }
};

template <>
struct Lanes4<float> {
  using V = __m128;
  static V load(const float* p) { return _mm_loadu_ps(p); }
  static __m256d wide(const float* p) { return _mm256_cvtps_pd(load(p)); }
  static __m256d scaled(const float* t, float x0, float inv) {
    return _mm256_cvtps_pd(_mm_mul_ps(_mm_sub_ps(load(t), _mm_set1_ps(x0)), _mm_set1_ps(inv)));
  }
  static __m256i above(const float* x, __m256i mid, V t) {
    const __m128 m = _mm_cmp_ps(_mm256_i64gather_ps(x, mid, 4), t, _CMP_GT_OQ);
    return _mm256_cvtepi32_epi64(_mm_castps_si128(m));  // widen the lane masks
  }
};

// Guesses trunc(inv·(t − x0)) for four sites as whole doubles, nx where that
// is not in [0, nx) (sites below x0 and NaN included; those are settled
// elsewhere).
template <Real T>
inline __m256d guess4_whole(const T* t, T x0, T inv, int64_t nx) {
  const __m256d v = Lanes4<T>::scaled(t, x0, inv);
  const __m256d top = _mm256_set1_pd(static_cast<double>(nx));
  const __m256d inside = _mm256_and_pd(_mm256_cmp_pd(v, _mm256_setzero_pd(), _CMP_GE_OQ),
                                       _mm256_cmp_pd(v, top, _CMP_LT_OQ));
  return _mm256_blendv_pd(top, _mm256_round_pd(v, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC), inside);
}

// Whole doubles in [0, 2^52) as 64-bit integers: add 2^52 and take the bits.
inline __m256i whole_to_int64(__m256d whole) {
  const __m256d magic = _mm256_set1_pd(0x1p52);
  return _mm256_sub_epi64(_mm256_castpd_si256(_mm256_add_pd(whole, magic)),
                          _mm256_castpd_si256(magic));
}

template <Real T>
inline void guess4(const T* t, T x0, T inv, int64_t nx, int64_t* g) {
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(g), whole_to_int64(guess4_whole(t, x0, inv, nx)));
}

// Stores four cells held as whole doubles.
template <class Out>
inline void store_cells4(__m256d c, Out* out) {
  if constexpr (sizeof(Out) == 4)
    _mm_storeu_si128(reinterpret_cast<__m128i*>(out), _mm256_cvtpd_epi32(c));
  else
    _mm256_storeu_si256(reinterpret_cast<__m256i*>(out), whole_to_int64(c));
}

// Cell of one site on a uniform partition: the guess's cell c = g + 1 (at
// most nx), moved down when b(c − 1) > t or up when b(c) <= t. The product
// inv·(t − x0) can round across a breakpoint in either direction, by less
// than one cell.
template <Real T>
inline int64_t uniform_cell(T t, T x0, T xl, T inv, int64_t nx) {
  int64_t r;
  if (settle_ends(t, x0, xl, nx, &r)) return r;
  const int64_t c = std::min(guess(t, x0, inv, nx) + 1, nx);
  if (uniform_breakpoint(x0, xl, nx, c - 1) > t) return c - 1;
  return c < nx && uniform_breakpoint(x0, xl, nx, c) <= t ? c + 1 : c;
}

// A bound δ, in cells, such that a site whose v = inv·(t − x0) lies more than
// δ from a whole number is in the guess's cell without checking: twice the
// rounding of v (t − x0, inv and the product, relative to the exact position
// nx·ε at most, plus the distance of inv from (nx − 1)/(x1 − x0)) plus that of
// the breakpoints (nx·ε in the product and quotient, and half an ulp of the
// largest end in the sum). 1 (never skip) from 2^-8 up: a wider band would
// send so many groups to the checks that the branch itself costs more.
template <Real T>
inline double uniform_skip_margin(T x0, T x1, T inv, int64_t nx) {
  const double u = std::numeric_limits<T>::epsilon() / 2;
  const double n = static_cast<double>(nx - 1), d = static_cast<double>(x1) - x0;
  const double inv_off = std::fabs(static_cast<double>(inv) * d / n - 1);
  const double big = std::fmax(std::fabs(static_cast<double>(x0)),  // the largest end
                               std::fabs(static_cast<double>(x1)));
  const double delta = 2 * (static_cast<double>(nx) * (inv_off + 16 * u) + big * u * n / d);
  return d > 0 && delta < 0x1p-8 ? delta : 1.0;  // NaN included
}

// Uniform (method 0): uniform_cell, four sites at a time without branches
// but one: the breakpoint checks run only for a group with a site within δ
// of a breakpoint (uniform_skip_margin). Cells are whole doubles; the ends
// are settled last by blending. x holds the two ends; no other breakpoint is
// read.
template <Real T, class W>
void search_uniform(int64_t nx, const T* x, T inv, int64_t n, const T* site,
                    typename W::Out* cell) {
  using Out = typename W::Out;
  const T x0 = x[0], xl = x[1];
  const UniformBreakpoints4<T> b(x0, xl, nx);
  const __m256d one = _mm256_set1_pd(1.0), top = _mm256_set1_pd(static_cast<double>(nx));
  const __m256d last = _mm256_set1_pd(static_cast<double>(nx - 1));
  const __m256d first = _mm256_set1_pd(static_cast<double>(x0));
  const __m256d right = _mm256_set1_pd(static_cast<double>(xl));
  const double delta = uniform_skip_margin(x0, xl, inv, nx);
  const __m256d near_lo = _mm256_set1_pd(delta), near_hi = _mm256_set1_pd(1 - delta);
  int64_t i = 0;
  for (; i + 4 <= n; i += 4) {
    const __m256d t = Lanes4<T>::wide(site + i);
    const __m256d v = Lanes4<T>::scaled(site + i, x0, inv);
    const __m256d g = guess4_whole(site + i, x0, inv, nx);
    __m256d c = _mm256_min_pd(_mm256_add_pd(g, one), top);
    const __m256d f = _mm256_sub_pd(v, g);  // NaN, negative or >= 1 outside [0, nx)
    const __m256d clear = _mm256_and_pd(_mm256_cmp_pd(f, near_lo, _CMP_GT_OQ),
                                        _mm256_cmp_pd(f, near_hi, _CMP_LT_OQ));
    if (_mm256_movemask_pd(clear) != 0xF) {
      const __m256d down = _mm256_cmp_pd(b(_mm256_sub_pd(c, one)), t, _CMP_GT_OQ);
      const __m256d up =
          _mm256_and_pd(_mm256_cmp_pd(c, top, _CMP_LT_OQ), _mm256_cmp_pd(b(c), t, _CMP_LE_OQ));
      c = _mm256_add_pd(_mm256_sub_pd(c, _mm256_and_pd(down, one)), _mm256_and_pd(up, one));
    }
    c = _mm256_blendv_pd(c, last, _mm256_cmp_pd(t, right, _CMP_EQ_OQ));
    c = _mm256_andnot_pd(_mm256_cmp_pd(t, first, _CMP_NGE_UQ), c);  // t < x0 or NaN: 0
    store_cells4(c, cell + i);
  }
  for (; i < n; ++i) cell[i] = static_cast<Out>(uniform_cell(site[i], x0, xl, inv, nx));
}

// Quasi-uniform (method 1): guesses for a block of 32 sites first, four at a
// time, then a short walk from each guess.
template <Real T, class W>
void search_quasi_uniform(int64_t nx, const T* x, T inv, int64_t n, const T* site,
                          typename W::Out* cell) {
  using Idx = typename W::Idx;
  constexpr int64_t kBlock = 32;
  const StoredPoints<T> pts{x, nx};
  const T x0 = x[0], xl = x[nx - 1];
  const Idx inx = static_cast<Idx>(nx);
  int64_t g[kBlock];
  for (int64_t b = 0; b < n; b += kBlock) {
    const int64_t m = std::min(kBlock, n - b);
    const T* s = site + b;
    int64_t i = 0;
    for (; i + 4 <= m; i += 4) guess4(s + i, x0, inv, nx, g + i);
    for (; i < m; ++i) g[i] = guess(s[i], x0, inv, nx);
    for (i = 0; i < m; ++i) {
      Idx r;
      if (!settle_ends(s[i], x0, xl, nx, &r)) r = walk_from(pts, inx, s[i], static_cast<Idx>(g[i]));
      cell[b + i] = r;
    }
  }
}

// Number of the n sorted values p[0..n) that are <= t, four at a time: groups
// entirely <= t are counted whole, the first mixed group ends the count.
template <Real T>
inline int64_t count_le(const T* p, int64_t n, T t) {
  int64_t c = 0;
  int64_t k = 0;
  for (; k + 4 <= n; k += 4) {
    int mask;
    if constexpr (std::is_same_v<T, double>)
      mask =
          _mm256_movemask_pd(_mm256_cmp_pd(_mm256_loadu_pd(p + k), _mm256_set1_pd(t), _CMP_LE_OQ));
    else
      mask = _mm_movemask_ps(_mm_cmp_ps(_mm_loadu_ps(p + k), _mm_set1_ps(t), _CMP_LE_OQ));
    if (mask != 0xF) return c + std::popcount(static_cast<unsigned>(mask));
    c += 4;
  }
  for (; k < n && p[k] <= t; ++k) ++c;
  return c;
}

// Sorted (method 2): sites ascending; the scan position carries over from site
// to site and never goes back, so a start state beyond the first site's cell
// gives wrong cells (the sorted hint is the caller's promise). The first site
// narrows the start by halving, stopping at hi − ⌊nx/2⌋ so that at most a step
// or two are taken; the forward scan does the rest.
template <Real T, class W>
void search_sorted(int64_t nx, const T* x, int64_t* state, int64_t n, const T* site,
                   typename W::Out* cell) {
  using Idx = typename W::Idx;
  if (n < 1) return;
  const T x0 = x[0], xl = x[nx - 1];
  const Idx inx = static_cast<Idx>(nx), half = static_cast<Idx>(nx / 2);
  Idx pos = static_cast<Idx>(std::clamp<int64_t>(*state, 0, nx));
  for (int64_t i = 0; i < n; ++i) {
    const T t = site[i];
    Idx r;
    if (settle_ends(t, x0, xl, nx, &r)) {
      cell[i] = r;
      continue;
    }
    if (i == 0 && pos < inx - half) {
      Idx hi = inx;
      while (pos < hi - half) {
        const Idx mid = static_cast<Idx>(pos + (hi - pos) / 2);
        if (x[mid] > t)
          hi = mid;
        else
          pos = mid;
      }
    }
    pos += static_cast<Idx>(count_le(x + pos, inx - pos, t));  // the forward scan
    cell[i] = pos;
  }
  *state = pos;
}

// Peak (method 3): sites cluster around breakpoint p; walk from p.
template <Real T, class W>
void search_peak(int64_t nx, const T* x, int64_t p, int64_t n, const T* site,
                 typename W::Out* cell) {
  using Idx = typename W::Idx;
  const StoredPoints<T> pts{x, nx};
  const T x0 = x[0], xl = x[nx - 1];
  const Idx inx = static_cast<Idx>(nx);
  const Idx start = static_cast<Idx>(std::clamp<int64_t>(p, 0, nx));
  for (int64_t i = 0; i < n; ++i) {
    Idx r;
    if (!settle_ends(site[i], x0, xl, nx, &r)) r = walk_from(pts, inx, site[i], start);
    cell[i] = r;
  }
}

// Hybrid (method 4): the accelerator table gives [lo, hi] with
// x[lo] <= t < x[hi]; bisection shrinks it to at most 40 breakpoints, a
// vector count finishes. Returns false for a site settled without the table.
template <class Idx, Real T>
inline bool hybrid_bounds(int64_t nx, const T* x, const DfSearchBin* bins, T ibw, T t, Idx* r,
                          Idx* lo, Idx* hi) {
  const T x0 = x[0], xl = x[nx - 1];
  if (settle_ends(t, x0, xl, nx, r)) return false;
  if (t > xl) {
    *r = static_cast<Idx>(nx);
    return false;
  }
  const DfSearchBin& e = bins[static_cast<int64_t>(ibw * (t - x0))];
  *lo = static_cast<Idx>(e.lo);
  *hi = static_cast<Idx>(e.hi);
  return true;
}

template <class Idx, Real T>
inline Idx hybrid_finish(const T* x, T t, Idx lo, Idx hi) {
  const Idx len = hi - lo;
  if (len < 2) return lo + len;
  return lo + static_cast<Idx>(count_le(x + lo, len, t));
}

// Sites go through in groups of 16 whose bisections advance in lockstep, four
// lanes to a gather, without branches: on a large partition the cache misses
// of sixteen sites overlap instead of queueing one after the other.
template <Real T, class W>
void search_hybrid(int64_t nx, const T* x, const DfSearchBin* bins, T ibw, int64_t n, const T* site,
                   typename W::Out* cell) {
  using Idx = typename W::Idx;
  using L = Lanes4<T>;
  constexpr int64_t kLanes = 4, kQuads = 4, kGroup = kLanes * kQuads;
  const __m256i narrow = _mm256_set1_epi64x(40);
  int64_t i = 0;
  for (; i + kGroup <= n; i += kGroup) {
    alignas(32) int64_t lo[kGroup], hi[kGroup];
    Idx r[kGroup];
    bool open[kGroup];
    for (int64_t k = 0; k < kGroup; ++k) {
      Idx l = 0, h = 0;  // a settled site bisects the empty range [0, 0]
      open[k] = hybrid_bounds(nx, x, bins, ibw, site[i + k], &r[k], &l, &h);
      lo[k] = l;
      hi[k] = h;
    }
    __m256i vlo[kQuads], vhi[kQuads];
    typename L::V vt[kQuads];
    for (int64_t q = 0; q < kQuads; ++q) {
      vlo[q] = _mm256_load_si256(reinterpret_cast<const __m256i*>(lo + kLanes * q));
      vhi[q] = _mm256_load_si256(reinterpret_cast<const __m256i*>(hi + kLanes * q));
      vt[q] = L::load(site + i + kLanes * q);
    }
    for (;;) {  // while lo < hi − 40 in any lane
      int wide_any = 0;
      for (int64_t q = 0; q < kQuads; ++q) {
        const __m256i wide = _mm256_cmpgt_epi64(_mm256_sub_epi64(vhi[q], vlo[q]), narrow);
        const __m256i mid = _mm256_srli_epi64(_mm256_add_epi64(vlo[q], vhi[q]), 1);
        const __m256i above = L::above(x, mid, vt[q]);
        vhi[q] = _mm256_blendv_epi8(vhi[q], mid, _mm256_and_si256(wide, above));
        vlo[q] = _mm256_blendv_epi8(vlo[q], mid, _mm256_andnot_si256(above, wide));
        wide_any |= _mm256_movemask_epi8(wide);
      }
      if (wide_any == 0) break;
    }
    for (int64_t q = 0; q < kQuads; ++q) {
      _mm256_store_si256(reinterpret_cast<__m256i*>(lo + kLanes * q), vlo[q]);
      _mm256_store_si256(reinterpret_cast<__m256i*>(hi + kLanes * q), vhi[q]);
    }
    for (int64_t k = 0; k < kGroup; ++k)
      cell[i + k] =
          open[k] ? hybrid_finish(x, site[i + k], static_cast<Idx>(lo[k]), static_cast<Idx>(hi[k]))
                  : r[k];
  }
  for (; i < n; ++i) {
    Idx r, lo, hi;
    if (hybrid_bounds(nx, x, bins, ibw, site[i], &r, &lo, &hi)) {
      while (lo < hi - 40) {
        const Idx mid = static_cast<Idx>(lo + (hi - lo) / 2);
        if (x[mid] > site[i])
          hi = mid;
        else
          lo = mid;
      }
      r = hybrid_finish(x, site[i], lo, hi);
    }
    cell[i] = r;
  }
}

// User-defined (methods 5 and 6, P = StoredPoints or EvenPoints): the
// call-back guesses every cell at once; sites it does not flag as final are
// corrected by a walk from max(guess, 0).
template <Real T, class W, class P>
oxa_status search_user(const P& pts, int64_t n, const T* site, SearchCallback<T> cb, void* params,
                       typename W::Out* cell) {
  using Idx = typename W::Idx;
  if (n < 1) return DF_OK;
  constexpr int64_t kStackFlags = 1024;
  int32_t stack_flags[kStackFlags];
  int32_t* flag = n <= kStackFlags ? stack_flags : allocate_array<int32_t>(n);
  if (flag == nullptr) return DF_ERR_MEM;
  std::fill(flag, flag + n, 0);
  oxa_status s = cb(n, site, cell, W::bits, flag, params);
  if (s >= 0 && s != 1000) {
    const T x0 = pts.first(), xl = pts.last();
    const Idx inx = static_cast<Idx>(pts.nx);
    for (int64_t i = 0; i < n; ++i) {
      if (flag[i] != 0) continue;
      Idx r;
      if (!settle_ends(site[i], x0, xl, pts.nx, &r)) {
        const Idx g = static_cast<Idx>(std::clamp<int64_t>(cell[i], 0, pts.nx));
        r = walk_from(pts, inx, site[i], g);
      }
      cell[i] = r;
    }
  }
  if (s == 1000) s = DF_OK;
  if (flag != stack_flags) oxa_serv_deallocate(flag);
  return s;
}

}  // namespace oxa::df
