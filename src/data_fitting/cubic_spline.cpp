// Cubic splines (order 4): r_j(t) = c0 + c1·u + c2·u² + c3·u³, u = t − x[m],
// on cell m; c0..c3 at positions 4m..4m+3 of function j's block.
// Method: every type first finds the slope s_i at each breakpoint, then writes
// c0 = y_m, c1 = s_m, c3 = t/h, c2 = (δ − s_m)/h − t with δ = (y_{m+1} − y_m)/h
// and t = (s_m + s_{m+1} − 2δ)/h (the cubic Hermite form).
//   Natural type (0, 2): the slopes solve the tridiagonal C2 system, interior
//   rows h_i·s_{i−1} + 2(h_{i−1}+h_i)·s_i + h_{i−1}·s_{i+1} = 3(h_i·δ_{i−1} +
//   h_{i−1}·δ_i), end rows from bc_type. The matrix depends on the partition
//   only: it is factorised once, and each function costs one forward and one
//   backward sweep, four functions per vector. Periodic: the cyclic system of
//   nx−1 slopes, solved as a tridiagonal one plus a rank-one correction whose
//   vector is also solved once.
//   Hermite (3): slopes from ic. Bessel (4): the derivative of the parabola
//   through the point and its neighbours (at the ends, the first or last
//   three points). Akima (5): Akima's weighted mean of neighbouring secant
//   slopes, the two secants beyond each end extrapolated linearly.
// Special: with nx = 2, not-a-knot gives the straight line; with nx = 3 the
// parabola through the three points. Akima and Bessel on nx = 2: the line.
// Every check (types, conditions, arrays, periodic values, scratch) comes
// before the first coefficient is written.
#include <bit>
#include <cmath>
#include <cstring>

#include "data_fitting/spline_common.hpp"

namespace oxa::df {
namespace {

// The slope system's factorisation and right-hand-side weights.
template <Real T>
struct Plan {
  int64_t nx = 0;
  int64_t n = 0;  // unknowns: nx, or nx − 1 when periodic
  bool periodic = false;
  T* h = nullptr;   // cell widths (nx − 1)
  T* ih = nullptr;  // their reciprocals
  T* w = nullptr;   // elimination multipliers a_i / b'_{i−1}
  T* ib = nullptr;  // 1 / b'_i
  T* cb = nullptr;  // c_i / b'_i
  T* z = nullptr;  // periodic: the correction vector
  T ag = 0, zden = 1;
  // Non-periodic end rows: r_0 = e0·δ_0 + e1·δ_1 + g0, r_{n−1} = f0·δ_{n−2} + f1·δ_{n−3} + g1.
  T e0 = 0, e1 = 0, g0 = 0, f0 = 0, f1 = 0, g1 = 0;
};

enum class End { kSecond, kFirst, kNotAKnot, kParabola, kLine };

struct EndRows {
  End left, right;
  double left_value = 0, right_value = 0;
};

// The end rows a boundary-condition type asks for; false for a type the
// natural cubic cannot take.
template <Real T>
bool end_rows(int64_t bc_type, const T* bc, int64_t nx, EndRows& e) {
  if (bc_type == 0 || bc_type == DF_BC_FREE_END) {
    e.left = e.right = End::kSecond;
    return true;
  }
  if (bc_type == DF_BC_NOT_A_KNOT) {
    e.left = e.right = nx == 2 ? End::kLine : nx == 3 ? End::kParabola : End::kNotAKnot;
    return true;
  }
  const int64_t left = bc_type & (DF_BC_FIRST_LEFT | DF_BC_SECOND_LEFT);
  const int64_t right = bc_type & (DF_BC_FIRST_RIGHT | DF_BC_SECOND_RIGHT);
  const int64_t known = DF_BC_FIRST_LEFT | DF_BC_SECOND_LEFT | DF_BC_FIRST_RIGHT |
                        DF_BC_SECOND_RIGHT;
  if ((bc_type & ~known) != 0 || (left != DF_BC_FIRST_LEFT && left != DF_BC_SECOND_LEFT) ||
      (right != DF_BC_FIRST_RIGHT && right != DF_BC_SECOND_RIGHT))
    return false;
  e.left = left == DF_BC_FIRST_LEFT ? End::kFirst : End::kSecond;
  e.right = right == DF_BC_FIRST_RIGHT ? End::kFirst : End::kSecond;
  // Values: the left one, then the right one.
  e.left_value = bc[0];
  e.right_value = bc[1];
  return true;
}

// 2^−e for q of exponent e: q times it lies in [1, 2).
inline double unit_scale(double q) {
  const uint64_t e = (std::bit_cast<uint64_t>(q) >> 52) & 0x7ff;
  return std::bit_cast<double>((uint64_t{2046} - e) << 52);
}
inline float unit_scale(float q) {
  const uint32_t e = (std::bit_cast<uint32_t>(q) >> 23) & 0xff;
  return std::bit_cast<float>((uint32_t{254} - e) << 23);
}

// Thomas factorisation of rows (a, b, c), held in (w, ib, cb) on entry.
// The pivots b'_i = b_i − a_i·c_{i−1}/b'_{i−1} are the ratios q_i/q_{i−1} of
// q_i = b_i·q_{i−1} − a_i·c_{i−1}·q_{i−2} (q_{−1} = 1), a recurrence with one
// fma and no division on its chain; the pair (q_i, q_{i−1}) is scaled by a
// power of two every 8 steps to stay in range (exact), and the divisions run
// afterwards, independent of each other. `pairs` is scratch of 2n reals.
template <Real T>
void factorise(Plan<T>& P, T* pairs) {
  const int64_t n = P.n;
  T *qcur = pairs, *qprev = pairs + n;
  T q1 = 1, q0 = P.ib[0];
  qcur[0] = q0, qprev[0] = 1;
  for (int64_t i = 1; i < n; ++i) {
    const T t = P.w[i] * P.cb[i - 1] * q1;
    const T q = std::fma(P.ib[i], q0, -t);
    qprev[i] = q0, qcur[i] = q;
    q1 = q0, q0 = q;
    if ((i & 7) == 0) {
      const T sc = unit_scale(q0);
      q0 *= sc, q1 *= sc;
    }
  }
  map2(n, qprev, qcur, P.ib, [](auto a, auto b) { return a / b; });
  map2(n - 1, P.w + 1, P.ib, P.w + 1, [](auto a, auto b) { return a * b; });
  map2(n, P.cb, P.ib, P.cb, [](auto a, auto b) { return a * b; });
}

// Solves the factorised tridiagonal system for one right-hand side in place.
template <Real T>
void solve_one(const Plan<T>& P, T* r) {
  for (int64_t i = 1; i < P.n; ++i) r[i] = fnma(P.w[i], r[i - 1], r[i]);
  r[P.n - 1] *= P.ib[P.n - 1];
  for (int64_t i = P.n - 2; i >= 0; --i) r[i] = fnma(P.cb[i], r[i + 1], r[i] * P.ib[i]);
}

// Cell widths and their reciprocals (the divisions independent of each other).
template <Real T>
void cell_widths(const Breakpoints<T>& x, T* h, T* ih) {
  const int64_t cells = x.nx - 1;
  if (x.uniform) {
    for (int64_t m = 0; m < cells; ++m) h[m] = x[m + 1] - x[m];
  } else {
    map2(cells, x.x + 1, x.x, h, [](auto a, auto b) { return a - b; });
  }
  map2(cells, h, h, ih, [](auto a, auto) { return 1 / a; });
}

template <Real T>
void make_plan(Plan<T>& P, const Breakpoints<T>& x, const EndRows& e, bool periodic, T* pairs) {
  const int64_t nx = x.nx, cells = nx - 1;
  T* h = P.h;
  cell_widths(x, h, P.ih);
  T *a = P.w, *b = P.ib, *c = P.cb;
  if (periodic) {
    const int64_t n = P.n = cells;  // at least 2
    P.periodic = true;
    for (int64_t i = 0; i < n; ++i) {
      const int64_t im = i == 0 ? n - 1 : i - 1;
      a[i] = h[i], b[i] = 2 * (h[im] + h[i]), c[i] = h[im];
    }
    // A = T + u·vᵀ, u = (γ, 0, .., c_{n−1}), v = (1, 0, .., a_0/γ).
    const T gamma = -b[0], a0 = a[0], cl = c[n - 1];
    b[0] -= gamma;
    b[n - 1] -= a0 * cl / gamma;
    factorise(P, pairs);
    std::memset(P.z, 0, static_cast<size_t>(n) * sizeof(T));
    P.z[0] = gamma;
    P.z[n - 1] = cl;
    solve_one(P, P.z);
    P.ag = a0 / gamma;
    P.zden = T(1) + P.z[0] + P.ag * P.z[n - 1];
    return;
  }
  const int64_t n = P.n = nx;
  for (int64_t i = 1; i + 1 < n; ++i) {
    a[i] = h[i], b[i] = 2 * (h[i - 1] + h[i]), c[i] = h[i - 1];
  }
  switch (e.left) {
    case End::kSecond:  // 2·s0 + s1 = 3δ0 − f''·h0/2
      b[0] = 2, c[0] = 1, P.e0 = 3, P.g0 = static_cast<T>(-e.left_value) * h[0] / 2;
      break;
    case End::kFirst:
      b[0] = 1, c[0] = 0, P.g0 = static_cast<T>(e.left_value);
      break;
    case End::kNotAKnot: {  // third derivative continuous at x[1]
      const T d = h[0] + h[1];
      b[0] = h[1], c[0] = d, P.e0 = (h[0] + 2 * d) * h[1] / d, P.e1 = h[0] * h[0] / d;
      break;
    }
    case End::kParabola:  // s0 + s1 = 2δ0
      b[0] = 1, c[0] = 1, P.e0 = 2;
      break;
    case End::kLine:
      b[0] = 1, c[0] = 0, P.e0 = 1;
      break;
  }
  const int64_t l = n - 1;
  switch (e.right) {
    case End::kSecond:  // s_{n−2} + 2·s_{n−1} = 3δ + f''·h/2
      a[l] = 1, b[l] = 2, P.f0 = 3, P.g1 = static_cast<T>(e.right_value) * h[l - 1] / 2;
      break;
    case End::kFirst:
      a[l] = 0, b[l] = 1, P.g1 = static_cast<T>(e.right_value);
      break;
    case End::kNotAKnot: {
      const T d = h[l - 2] + h[l - 1];
      a[l] = d, b[l] = h[l - 2];
      P.f0 = (2 * d + h[l - 1]) * h[l - 2] / d, P.f1 = h[l - 1] * h[l - 1] / d;
      break;
    }
    case End::kParabola:  // s_{n−2} + s_{n−1} = 2δ_{n−2}
      a[l] = 1, b[l] = 1, P.f0 = 2;
      break;
    case End::kLine:
      a[l] = 0, b[l] = 1, P.f0 = 1;
      break;
  }
  c[l] = 0;
  factorise(P, pairs);
}

// Up to L functions side by side: value i of lane l at src[l][i·stride].
template <Real T, int L>
struct Group {
  using V = Lanes<T, L>;
  const T* src[L];
  int64_t stride;
  bool contiguous;  // column storage with every lane used: one vector load
  T* out[L];
  int used;
  bool stream;  // every output aligned and the whole output large
  V y(int64_t i) const {
    if constexpr (L == 1) {
      return src[0][i * stride];
    } else {
      if (contiguous) {
        V v;
        std::memcpy(&v, src[0] + i * stride, sizeof(V));
        return v;
      }
      V v;
      for (int l = 0; l < L; ++l) v[l] = src[l][i * stride];
      return v;
    }
  }
};

template <Real T, int L>
[[gnu::always_inline]] inline void write_cell(const Group<T, L>& g, int64_t m, Lanes<T, L> y, Lanes<T, L> d, Lanes<T, L> s0,
                Lanes<T, L> s1, T ih) {
  const Lanes<T, L> t = (s0 + s1 - T(2) * d) * ih;
  store_cell4(g.out, m, g.used, y, s0, (d - s0) * ih - t, t * ih, g.stream);
}

// Natural-type sweeps of one group; U and D are scratch of nx lanes each.
template <Real T, int L>
void solve_group(const Plan<T>& P, const Group<T, L>& g, Lanes<T, L>* U, Lanes<T, L>* D) {
  using V = Lanes<T, L>;
  const int64_t nx = P.nx, n = P.n;
  if (P.periodic) {
    const V d_last = (g.y(nx - 1) - g.y(nx - 2)) * P.ih[n - 1];
    V yi = g.y(0), rp{}, dprev = d_last;
    for (int64_t i = 0; i < n; ++i) {
      const V yn = g.y(i + 1);
      const V d = (yn - yi) * P.ih[i];
      D[i] = d;
      const V r = T(3) * P.h[i] * dprev + T(3) * P.h[i == 0 ? n - 1 : i - 1] * d;
      rp = i == 0 ? r : fnma(V{} + P.w[i], rp, r);
      U[i] = rp * P.ib[i];
      yi = yn, dprev = d;
    }
    for (int64_t i = n - 2; i >= 0; --i) U[i] = fnma(V{} + P.cb[i], U[i + 1], U[i]);
    const V alpha = (U[0] + P.ag * U[n - 1]) / P.zden;
    const V s_first = fnma(alpha, V{} + P.z[0], U[0]);
    V s0 = s_first;
    for (int64_t m = 0; m < n; ++m) {
      const V s1 = m + 1 == n ? s_first : fnma(alpha, V{} + P.z[m + 1], U[m + 1]);
      write_cell(g, m, g.y(m), D[m], s0, s1, P.ih[m]);
      s0 = s1;
    }
    return;
  }
  const V d0 = (g.y(1) - g.y(0)) * P.ih[0];
  V rp = P.e0 * d0 + P.g0;
  if (P.e1 != T(0)) rp += P.e1 * ((g.y(2) - g.y(1)) * P.ih[1]);
  U[0] = rp * P.ib[0];
  V yi = g.y(1), dprev = d0, dprev2 = d0;
  for (int64_t i = 1; i + 1 < n; ++i) {
    const V yn = g.y(i + 1);
    const V d = (yn - yi) * P.ih[i];
    dprev2 = dprev;
    rp = fnma(V{} + P.w[i], rp, T(3) * P.h[i] * dprev + T(3) * P.h[i - 1] * d);
    U[i] = rp * P.ib[i];
    yi = yn, dprev = d;
  }
  V r_last = P.f0 * dprev + P.g1;
  if (P.f1 != T(0)) r_last += P.f1 * dprev2;  // δ_{n−3}
  rp = fnma(V{} + P.w[n - 1], rp, r_last);
  V s1 = rp * P.ib[n - 1];
  V y1 = g.y(n - 1);
  for (int64_t m = n - 2; m >= 0; --m) {
    const V s0 = fnma(V{} + P.cb[m], s1, U[m]);
    const V y0 = g.y(m);
    write_cell(g, m, y0, (y1 - y0) * P.ih[m], s0, s1, P.ih[m]);
    s1 = s0, y1 = y0;
  }
}

// Slopes of the local types for one function, into s (nx values).
template <Real T>
void local_slopes(int64_t type, const T* h, const T* ih, const Group<T, 1>& g, const T* ic,
                  int64_t nx, T* s, T* d) {
  const int64_t cells = nx - 1;
  for (int64_t m = 0; m < cells; ++m) d[m] = (g.y(m + 1) - g.y(m)) * ih[m];
  if (type == DF_TYPE_HERMITE) {
    for (int64_t i = 0; i < nx; ++i) s[i] = ic[i];
    return;
  }
  if (nx == 2) {
    s[0] = s[1] = d[0];
    return;
  }
  if (type == DF_TYPE_BESSEL) {
    for (int64_t i = 1; i < cells; ++i)
      s[i] = (h[i] * d[i - 1] + h[i - 1] * d[i]) / (h[i - 1] + h[i]);
    s[0] = d[0] - (d[1] - d[0]) / (h[0] + h[1]) * h[0];
    const int64_t l = cells - 1;
    s[nx - 1] = d[l] + (d[l] - d[l - 1]) / (h[l - 1] + h[l]) * h[l];
    return;
  }
  // Akima: secants m_k, k = −2 .. nx, two extrapolated on each side; the slope
  // at breakpoint i weighs m_{i−1} and m_i by |m_{i+1} − m_i| and
  // |m_{i−1} − m_{i−2}|. Where both weights are negligible (their sum at most
  // 1e-9 of the largest sum) the slope is (m_{i−2} + m_{i+1})/2.
  auto sec = [&](int64_t k) -> T {
    if (k >= 0 && k < cells) return d[k];
    if (k == -1) return 2 * d[0] - d[1];
    if (k == -2) return 3 * d[0] - 2 * d[1];
    if (k == cells) return 2 * d[cells - 1] - d[cells - 2];
    return 3 * d[cells - 1] - 2 * d[cells - 2];
  };
  T largest = 0;
  for (int64_t i = 0; i < nx; ++i)
    largest = std::max(largest, std::fabs(sec(i + 1) - sec(i)) + std::fabs(sec(i - 1) - sec(i - 2)));
  const T tiny = static_cast<T>(1e-9) * largest;
  for (int64_t i = 0; i < nx; ++i) {
    const T f1 = std::fabs(sec(i + 1) - sec(i)), f2 = std::fabs(sec(i - 1) - sec(i - 2));
    const T f12 = f1 + f2;
    s[i] = f12 > tiny ? (f1 * sec(i - 1) + f2 * sec(i)) / f12 : T(0.5) * (sec(i + 1) + sec(i - 2));
  }
}

constexpr int64_t kFunctionBlock = 4;

template <Real T>
struct CubicContext {
  Plan<T> plan;
  Breakpoints<T> x;
  Values<T> v;
  T* const* coeff;
  int64_t type;
  const T* ic;
  int64_t ny;
  T* scratch;  // per thread: scratch_size reals
  size_t scratch_size;
  bool stream;  // coefficients too large to stay cached: stores bypass the caches
};

// Coefficient output from which stores bypass the caches (as for the linear
// spline): well above a core's share of the last-level cache.
constexpr int64_t kStreamBytes = int64_t{32} << 20;

template <Real T, int L>
Group<T, L> group_of(const CubicContext<T>& c, int64_t j0) {
  Group<T, L> g{};
  g.used = static_cast<int>(std::min<int64_t>(L, c.ny - j0));
  g.stride = c.v.cols ? c.v.ny : 1;
  g.contiguous = c.v.cols && g.used == L;
  for (int l = 0; l < L; ++l) {
    const int64_t j = j0 + std::min(l, g.used - 1);  // spare lanes repeat the last function
    g.src[l] = c.v.cols ? c.v.y[0] + j : c.v.y[j];
    g.out[l] = c.coeff[j];
  }
  g.stream = c.stream && g.used == L;
  for (int l = 0; l < L; ++l)
    g.stream = g.stream && reinterpret_cast<uintptr_t>(g.out[l]) % (4 * sizeof(T)) == 0;
  return g;
}

// Block k: functions 4k .. 4k+3.
template <Real T>
void cubic_body(void* context, int64_t k, int32_t thread, int32_t) {
  const auto& c = *static_cast<const CubicContext<T>*>(context);
  const int64_t nx = c.plan.nx;
  T* scratch = c.scratch + static_cast<size_t>(thread) * c.scratch_size;
  const int64_t j0 = k * kFunctionBlock;
  if (c.type == DF_TYPE_HERMITE || c.type == DF_TYPE_BESSEL || c.type == DF_TYPE_AKIMA) {
    const int64_t j1 = std::min(j0 + kFunctionBlock, c.ny);
    for (int64_t j = j0; j < j1; ++j) {
      const Group<T, 1> g = group_of<T, 1>(c, j);
      T *s = scratch, *d = scratch + nx;
      local_slopes(c.type, c.plan.h, c.plan.ih, g, c.ic + j * nx, nx, s, d);
      for (int64_t m = 0; m + 1 < nx; ++m)
        write_cell(g, m, g.y(m), d[m], s[m], s[m + 1], c.plan.ih[m]);
    }
    return;
  }
  if (c.ny == 1) {
    solve_group<T, 1>(c.plan, group_of<T, 1>(c, 0), scratch, scratch + nx);
    return;
  }
  auto* U = reinterpret_cast<Lanes<T, 4>*>(scratch);
  const Group<T, 4> g = group_of<T, 4>(c, j0);
  solve_group<T, 4>(c.plan, g, U, U + nx);
  if (g.stream) _mm_sfence();  // streamed stores land before the block reports done
}

template <Real T>
oxa_status cubic_spline(DfTask* task, const void* extra, const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  if (extra != nullptr) return DF_ERR_UNEXPECTED_ARG;
  const DfTask& t = *task;
  if (t.nx < 2) return DF_ERR_BAD_NX;
  if (t.s_order != DF_ORDER_CUBIC) return DF_ERR_BAD_ORDER;
  const int64_t type = t.s_type;
  if (type != DF_TYPE_DEFAULT && (type < DF_TYPE_NATURAL || type > DF_TYPE_AKIMA))
    return DF_ERR_BAD_TYPE;
  const T* bc = static_cast<const T*>(t.bc);
  EndRows ends{};
  const bool periodic = t.bc_type == DF_BC_PERIODIC;
  if (type == DF_TYPE_DEFAULT || type == DF_TYPE_NATURAL) {
    if (t.bc_type < 0) return DF_ERR_BAD_BC_TYPE;
    const bool values = !periodic && (t.bc_type & (DF_BC_FIRST_LEFT | DF_BC_SECOND_LEFT |
                                                   DF_BC_FIRST_RIGHT | DF_BC_SECOND_RIGHT)) != 0;
    if (values && bc == nullptr) return DF_ERR_BAD_BC;
    if (!periodic && !end_rows(t.bc_type, bc, t.nx, ends)) return DF_ERR_BAD_BC_TYPE;
  } else if (t.bc_type != 0) {
    return DF_ERR_BAD_BC_TYPE;  // the local types take no boundary condition
  }
  if (type == DF_TYPE_HERMITE) {
    if (t.ic_type != DF_IC_FIRST_DER) return DF_ERR_BAD_IC_TYPE;
    if (t.ic == nullptr) return DF_ERR_BAD_IC;
  }
  if (const oxa_status s = check_value_pointers(t); s != DF_OK) return s;
  if (const oxa_status s = check_coeff_pointers(t); s != DF_OK) return s;
  if (periodic)
    if (const oxa_status s = check_periodic<T>(t); s != DF_OK) return s;

  CubicContext<T> c{};
  c.x = breakpoints_of<T>(t);
  c.v = values_of<T>(t);
  c.coeff = reinterpret_cast<T* const*>(t.scoeff);
  c.type = type;
  c.ic = static_cast<const T*>(t.ic);
  c.ny = t.ny <= 0 ? 1 : t.ny;
  const int64_t nx = t.nx;
  c.stream = 4 * (nx - 1) * c.ny * static_cast<int64_t>(sizeof(T)) >= kStreamBytes;
  // Periodic on one cell: both values equal, the constant.
  const bool cyclic = periodic && nx > 2;
  if (periodic && !cyclic) ends.left = ends.right = End::kLine;

  const int64_t iterations = (c.ny + kFunctionBlock - 1) / kFunctionBlock;
  const DfThreadingHint hint{nx, c.ny, 1, iterations, t.x,
                             reinterpret_cast<const void* const*>(t.y),
                             const_cast<const void* const*>(t.scoeff), 0.0};
  const int32_t threads = threads_for(threading, iterations, hint);
  // Plan: 6 arrays of nx; scratch per thread: 2·nx reals a lane.
  const bool solved = type == DF_TYPE_NATURAL || type == DF_TYPE_DEFAULT;
  const size_t lanes = c.ny == 1 || !solved ? 1 : 4;
  c.scratch_size = 2 * lanes * static_cast<size_t>(nx);
  const size_t bytes = (6 * static_cast<size_t>(nx) + threads * c.scratch_size) * sizeof(T);
  T* block = static_cast<T*>(oxa_serv_allocate(bytes, kAlign));
  if (block == nullptr) return DF_ERR_MEM;
  Plan<T>& P = c.plan;
  P.nx = nx;
  T* a = block;
  for (T** f : {&P.h, &P.ih, &P.w, &P.ib, &P.cb, &P.z}) *f = a, a += nx;
  c.scratch = block + 6 * nx;
  if (type == DF_TYPE_DEFAULT || type == DF_TYPE_NATURAL) {
    make_plan(P, c.x, ends, cyclic, c.scratch);
  } else {
    cell_widths(c.x, P.h, P.ih);
  }
  run_blocks(threading, iterations, threads, &c, &cubic_body<T>);
  oxa_serv_deallocate(block);
  return DF_OK;
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFCubicSpline1D(DfTask* task, int64_t, const void* extra,
                                          const DfThreading* threading) {
  return oxa::df::cubic_spline<double>(task, extra, threading);
}

oxa_status oxa_df_kernel_sDFCubicSpline1D(DfTask* task, int64_t, const void* extra,
                                          const DfThreading* threading) {
  return oxa::df::cubic_spline<float>(task, extra, threading);
}

}  // extern "C"
