// Quadratic splines (order 3): r_j(t) = c0 + c1·u + c2·u² on each cell, the
// three coefficients at 3m..3m+2 of function j's block.
// Standard (type 0): cells are the nx − 1 intervals of the partition,
// u = t − x[m]; once continuously differentiable. With the slope s_m at
// x[m], c1 = s_m, c2 = (δ_m − s_m)/h_m and s_{m+1} = 2δ_m − s_m (an error in
// a slope is passed on with factor −1, never grown). One end condition:
// DF_BC_FIRST_LEFT / DF_BC_FIRST_RIGHT (slope given, recurrence from that
// end), DF_BC_SECOND_LEFT / DF_BC_SECOND_RIGHT (second derivative of the end
// cell given), DF_BC_FREE_END or 0 (the first cell a line), DF_BC_NOT_A_KNOT
// (the first two cells one parabola).
// Subbotin (type 1): knots t_0 = x[0], t_i = (x[i−1] + x[i])/2, t_nx =
// x[nx−1]; nx cells [t_i, t_{i+1}], u = t − t_i; the spline interpolates at
// the breakpoints (x[i] lies in cell i) and is continuously differentiable at
// the knots. Unknowns: the knot values v_1..v_{nx−1} and the end slopes; the
// slope conditions at the knots form a tridiagonal system in v, closed by
// one left and one right condition (first or second derivative, bc values
// left then right).
// Every check comes before the first coefficient is written.
#include <cstring>

#include "data_fitting/spline_common.hpp"

namespace oxa::df {
namespace {

constexpr int64_t kFunctionBlock = 4;

template <Real T>
struct QuadraticContext {
  Breakpoints<T> x;
  Values<T> v;
  T* const* coeff;
  int64_t ny, type, bc_type;
  T bc0, bc1;
  T* scratch;  // per thread: 4·(nx + 1) reals
};

template <Real T>
void standard(const QuadraticContext<T>& c, int64_t j, T* s) {
  const int64_t nx = c.x.nx, cells = nx - 1;
  T* out = c.coeff[j];
  auto h = [&](int64_t m) { return c.x[m + 1] - c.x[m]; };
  auto d = [&](int64_t m) { return (c.v(j, m + 1) - c.v(j, m)) / h(m); };
  const int64_t bc = c.bc_type;
  if (bc == DF_BC_FIRST_RIGHT || bc == DF_BC_SECOND_RIGHT) {
    // From the right end: s_m = 2δ_m − s_{m+1}.
    s[nx - 1] = bc == DF_BC_FIRST_RIGHT ? c.bc0 : d(cells - 1) + h(cells - 1) * c.bc0 / 2;
    for (int64_t m = cells - 1; m >= 0; --m) s[m] = 2 * d(m) - s[m + 1];
  } else {
    if (bc == DF_BC_FIRST_LEFT)
      s[0] = c.bc0;
    else if (bc == DF_BC_SECOND_LEFT)
      s[0] = d(0) - h(0) * c.bc0 / 2;
    else if (bc == DF_BC_NOT_A_KNOT && nx > 2)
      s[0] = d(0) - (d(1) - d(0)) / (h(0) + h(1)) * h(0);
    else
      s[0] = d(0);
    for (int64_t m = 0; m < cells; ++m) s[m + 1] = 2 * d(m) - s[m];
  }
  for (int64_t m = 0; m < cells; ++m) {
    out[3 * m] = c.v(j, m);
    out[3 * m + 1] = s[m];
    out[3 * m + 2] = (d(m) - s[m]) / h(m);
  }
  // A given second derivative is kept exactly (the difference above cancels
  // on a narrow end cell).
  if (bc == DF_BC_SECOND_LEFT) out[2] = c.bc0 / 2;
  if (bc == DF_BC_SECOND_RIGHT) out[3 * cells - 1] = c.bc0 / 2;
}

// Subbotin: v_i = value at knot t_i. Cell i has length L_i and, for
// 1 ≤ i ≤ nx−2, its data point at ξ_i = x[i] − t_i; its slopes at both ends
// follow from the parabola through (0, v_i), (ξ_i, y_i), (L_i, v_{i+1}).
template <Real T>
void subbotin(const QuadraticContext<T>& c, int64_t j, T* buf) {
  const int64_t nx = c.x.nx, n = nx;  // cells
  T* knot = buf;          // nx + 1
  T* a = buf + (nx + 1);  // rows of the system in v_1 .. v_{nx−1}
  T* b = a + (nx + 1);
  T* r = b + (nx + 1);
  knot[0] = c.x[0];
  for (int64_t i = 1; i < nx; ++i) knot[i] = T(0.5) * (c.x[i - 1] + c.x[i]);
  knot[nx] = c.x.last();
  const bool first_left = (c.bc_type & DF_BC_FIRST_LEFT) != 0;
  const bool first_right = (c.bc_type & DF_BC_FIRST_RIGHT) != 0;
  // Slope of cell i at its left end = l0·v_i + ly·y + l1·v_{i+1} (+ const),
  // at its right end = r0·v_i + ry·y + r1·v_{i+1}. End cells: the left one
  // has p'(L) = 2(v_1 − v_0)/L − σ_L, or (v_1 − v_0)/L + f''·L/2 with the
  // second derivative given; the right one p'(0) likewise.
  struct Slopes {
    T l0, ly, l1, r0, ry, r1, lc, rc;  // lc, rc: constant parts
  };
  auto slopes = [&](int64_t i) {
    const T L = knot[i + 1] - knot[i];
    Slopes s{};
    if (i == 0) {  // right-end slope 2(v_1 − v_0)/L − σ_L, or (v_1 − v_0)/L + f''·L/2
      s.r0 = first_left ? -2 / L : -1 / L, s.r1 = -s.r0;
      s.rc = first_left ? -c.bc0 : c.bc0 * L / 2;
      return s;
    }
    if (i == n - 1) {  // left-end slope 2(v_n − v_{n−1})/L − σ_R, or (v_n − v_{n−1})/L − f''·L/2
      s.l0 = first_right ? -2 / L : -1 / L, s.l1 = -s.l0;
      s.lc = first_right ? -c.bc1 : -c.bc1 * L / 2;
      return s;
    }
    const T xi = c.x[i] - knot[i];
    s.l0 = -(xi + L) / (xi * L), s.ly = L / (xi * (L - xi)), s.l1 = -xi / (L * (L - xi));
    s.r0 = (L - xi) / (xi * L), s.ry = -L / (xi * (L - xi)), s.r1 = (2 * L - xi) / (L * (L - xi));
    return s;
  };
  // Row k (k = 1 .. nx−1): right slope of cell k−1 = left slope of cell k,
  // unknowns v_{k−1}, v_k, v_{k+1} with v_0 = y_0 and v_nx = y_{nx−1} known.
  const T v0 = c.v(j, 0), vn = c.v(j, nx - 1);
  T* cc = r + (nx + 1);  // super-diagonal; buf holds 5·(nx + 1)
  for (int64_t k = 1; k < nx; ++k) {
    const Slopes p = slopes(k - 1), q = slopes(k);
    // p.r0·v_{k−1} + p.r1·v_k + p.ry·y_{k−1} + p.rc = q.l0·v_k + q.l1·v_{k+1} + q.ly·y_k + q.lc
    a[k] = p.r0, b[k] = p.r1 - q.l0, cc[k] = -q.l1;
    r[k] = q.ly * c.v(j, k) + q.lc - p.ry * c.v(j, k - 1) - p.rc;
  }
  r[1] -= a[1] * v0;
  r[nx - 1] -= cc[nx - 1] * vn;
  // Thomas, v into r.
  for (int64_t k = 2; k < nx; ++k) {
    const T w = a[k] / b[k - 1];
    b[k] -= w * cc[k - 1];
    r[k] -= w * r[k - 1];
  }
  r[nx - 1] /= b[nx - 1];
  for (int64_t k = nx - 2; k >= 1; --k) r[k] = (r[k] - cc[k] * r[k + 1]) / b[k];
  r[0] = v0, r[nx] = vn;
  T* out = c.coeff[j];
  for (int64_t i = 0; i < n; ++i) {
    const T L = knot[i + 1] - knot[i];
    T slope0;
    if (i == 0) {
      slope0 = first_left ? c.bc0 : (r[1] - r[0]) / L - c.bc0 * L / 2;
    } else if (i == n - 1) {
      const T sr = first_right ? c.bc1 : (r[n] - r[n - 1]) / L + c.bc1 * L / 2;
      slope0 = 2 * (r[n] - r[n - 1]) / L - sr;
    } else {
      const Slopes s = slopes(i);
      slope0 = s.l0 * r[i] + s.ly * c.v(j, i) + s.l1 * r[i + 1];
    }
    out[3 * i] = r[i];
    out[3 * i + 1] = slope0;
    out[3 * i + 2] = ((r[i + 1] - r[i]) / L - slope0) / L;
  }
  if (!first_left) out[2] = c.bc0 / 2;  // given second derivatives kept exactly
  if (!first_right) out[3 * n - 1] = c.bc1 / 2;
}

template <Real T>
void quadratic_body(void* context, int64_t k, int32_t thread, int32_t) {
  const auto& c = *static_cast<const QuadraticContext<T>*>(context);
  T* buf = c.scratch + static_cast<size_t>(thread) * 6 * static_cast<size_t>(c.x.nx + 1);
  const int64_t j1 = std::min((k + 1) * kFunctionBlock, c.ny);
  for (int64_t j = k * kFunctionBlock; j < j1; ++j) {
    if (c.type == DF_TYPE_SUBBOTIN)
      subbotin(c, j, buf);
    else
      standard(c, j, buf);
  }
}

template <Real T>
oxa_status quadratic_spline(DfTask* task, const void* extra, const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  if (extra != nullptr) return DF_ERR_UNEXPECTED_ARG;
  const DfTask& t = *task;
  if (t.nx < 2) return DF_ERR_BAD_NX;
  if (t.s_order != DF_ORDER_QUADRATIC) return DF_ERR_BAD_ORDER;
  if (t.s_type != DF_TYPE_DEFAULT && t.s_type != DF_TYPE_SUBBOTIN) return DF_ERR_BAD_TYPE;
  const int64_t bc = t.bc_type;
  int values = 0;
  if (t.s_type == DF_TYPE_DEFAULT) {
    switch (bc) {
      case 0: case DF_BC_FREE_END: case DF_BC_NOT_A_KNOT:
        break;
      case DF_BC_FIRST_LEFT: case DF_BC_FIRST_RIGHT: case DF_BC_SECOND_LEFT: case DF_BC_SECOND_RIGHT:
        values = 1;
        break;
      default:
        return DF_ERR_BAD_BC_TYPE;
    }
  } else {
    const int64_t left = bc & (DF_BC_FIRST_LEFT | DF_BC_SECOND_LEFT);
    const int64_t right = bc & (DF_BC_FIRST_RIGHT | DF_BC_SECOND_RIGHT);
    if ((bc & ~(left | right)) != 0 || (left != DF_BC_FIRST_LEFT && left != DF_BC_SECOND_LEFT) ||
        (right != DF_BC_FIRST_RIGHT && right != DF_BC_SECOND_RIGHT))
      return DF_ERR_BAD_BC_TYPE;
    values = 2;
  }
  const T* bcv = static_cast<const T*>(t.bc);
  if (values > 0 && bcv == nullptr) return DF_ERR_BAD_BC;
  if (const oxa_status s = check_value_pointers(t); s != DF_OK) return s;
  if (const oxa_status s = check_coeff_pointers(t); s != DF_OK) return s;

  QuadraticContext<T> c{};
  c.x = breakpoints_of<T>(t);
  c.v = values_of<T>(t);
  c.coeff = reinterpret_cast<T* const*>(t.scoeff);
  c.ny = t.ny <= 0 ? 1 : t.ny;
  c.type = t.s_type;
  c.bc_type = bc;
  if (values > 0) c.bc0 = bcv[0];
  if (values > 1) c.bc1 = bcv[1];
  const int64_t iterations = (c.ny + kFunctionBlock - 1) / kFunctionBlock;
  const DfThreadingHint hint{t.nx, c.ny, 1, iterations, t.x,
                             reinterpret_cast<const void* const*>(t.y),
                             const_cast<const void* const*>(t.scoeff), 0.0};
  const int32_t threads = threads_for(threading, iterations, hint);
  c.scratch = allocate_array<T>(threads * 6 * (t.nx + 1));
  if (c.scratch == nullptr) return DF_ERR_MEM;
  run_blocks(threading, iterations, threads, &c, &quadratic_body<T>);
  oxa_serv_deallocate(c.scratch);
  return DF_OK;
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFQuadraticSpline1D(DfTask* task, int64_t, const void* extra,
                                              const DfThreading* threading) {
  return oxa::df::quadratic_spline<double>(task, extra, threading);
}

oxa_status oxa_df_kernel_sDFQuadraticSpline1D(DfTask* task, int64_t, const void* extra,
                                              const DfThreading* threading) {
  return oxa::df::quadratic_spline<float>(task, extra, threading);
}

}  // extern "C"
