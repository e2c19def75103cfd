// Spline integration: ∫_l^r of chosen functions for pairs of limits.
// Method: with G(t) = ∫_{x[0]}^t, the integral is G(r) − G(l). Each limit is
// placed in a piece m with offset u from the piece's left end; then
// G(r) − G(l) = Σ_{q=ml}^{mr−1} F_q(h_q) + F_mr(u_r) − F_ml(u_l), where
// F_q(u) = Σ_p c_p·u^{p+1}/(p+1) integrates piece q from its left end and a
// sum with ml > mr counts its pieces negatively. The pieces are the cells,
// their polynomials extended beyond the ends as in the evaluation; for the
// step-wise interpolants two more constant pieces lie left of x[0] (value
// y_0, anchored at x[0]) and right of x[nx−1] (value y_{nx−1}).
// Threads: chunks of 4096 limit pairs on the caller's parallel-for.
#include <new>

#include "data_fitting/site_cells.hpp"

namespace oxa::df {
namespace {

constexpr int64_t kChunk = 4096;

template <Real T>
struct IntegralContext {
  SearchJob<T> ljob, rjob;
  Sites<T> l, r;
  Breakpoints<T> x;
  Values<T> v;
  const T* const* coeff;
  int64_t order, type, nf;
  bool subbotin;
  const int64_t* func;
  T* out;
  bool by_limit;
};

// The piece of a limit t with cell k and its offset.
template <Real T>
void place(const IntegralContext<T>& c, T t, int64_t k, int64_t& m, T& u) {
  const int64_t nx = c.x.nx;
  if (c.order != 0) {
    m = piece_of(c.x, c.subbotin, k, t, &u);
  } else if (t < c.x[0] || std::isnan(t)) {
    m = -1, u = t - c.x[0];
  } else if (!(t < c.x.last())) {
    m = nx - 1, u = t - c.x.last();
  } else {
    m = std::clamp<int64_t>(k - 1, 0, nx - 2);
    u = t - c.x[m];
  }
}

// ∫ of piece m from its left end over a length u, for function j.
template <Real T>
T piece(const IntegralContext<T>& c, int64_t j, int64_t m, T u) {
  if (c.order == 0) {
    const int64_t nx = c.x.nx;
    int64_t i = m;
    if (m < 0)
      i = 0;
    else if (m < nx - 1 && c.type == DF_TYPE_STEP_LEFT)
      i = m + 1;
    return c.v(j, i) * u;
  }
  const int64_t K = c.order;
  const T* p = c.coeff[j] + K * m;
  T acc = 0;
  for (int64_t q = K - 1; q >= 0; --q) acc = fma(acc, u, p[q] / static_cast<T>(q + 1));
  return acc * u;
}

template <Real T>
T full_pieces(const IntegralContext<T>& c, int64_t j, int64_t a, int64_t b) {
  T s = 0;
  const bool neg = a > b;
  if (neg) std::swap(a, b);
  for (int64_t q = std::max<int64_t>(a, 0); q < b; ++q) {
    if (c.subbotin) {
      s += piece(c, j, q, subbotin_knot(c.x, q + 1) - subbotin_knot(c.x, q));
      continue;
    }
    if (q >= c.x.nx - 1) break;  // the right constant piece never lies inside a range
    s += piece(c, j, q, c.x[q + 1] - c.x[q]);
  }
  return neg ? -s : s;
}

template <Real T>
void integral_body(void* context, int64_t k, int32_t, int32_t) {
  const auto& c = *static_cast<const IntegralContext<T>*>(context);
  const int64_t end = std::min((k + 1) * kChunk, c.l.n);
  int64_t lpos = 0, rpos = 0;
  alignas(64) T lt[kSiteBlock], rt[kSiteBlock];
  alignas(64) int64_t lc[kSiteBlock], rc[kSiteBlock];
  for (int64_t i0 = k * kChunk; i0 < end; i0 += kSiteBlock) {
    const int64_t n = std::min(kSiteBlock, end - i0);
    site_cells(c.ljob, c.l, i0, n, lt, lc, &lpos);
    site_cells(c.rjob, c.r, i0, n, rt, rc, &rpos);
    for (int64_t i = 0; i < n; ++i) {
      int64_t ml, mr;
      T ul, ur;
      place(c, lt[i], lc[i], ml, ul);
      place(c, rt[i], rc[i], mr, ur);
      for (int64_t f = 0; f < c.nf; ++f) {
        const int64_t j = c.func != nullptr ? c.func[f] : f;
        const T v = full_pieces(c, j, ml, mr) + piece(c, j, mr, ur) - piece(c, j, ml, ul);
        if (c.by_limit)
          c.out[(i0 + i) * c.nf + f] = v;
        else
          c.out[f * c.l.n + i0 + i] = v;
      }
    }
  }
}

template <Real T>
oxa_status integrate(DfTask* task, int64_t nlim, const T* llim, int64_t llimhint, const T* rlim,
                     int64_t rlimhint, const T* ldatahint, const T* rdatahint, int64_t nfunc,
                     const int64_t* func, T* r, int64_t rhint, const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  const DfTask& t = *task;
  if (t.nx < 2) return DF_ERR_BAD_NX;
  const int64_t order = t.s_order;
  if (order != 0 && (order < 2 || order > 4)) return DF_ERR_BAD_ORDER;
  if (order == 0 && t.s_type != DF_TYPE_STEP_RIGHT && t.s_type != DF_TYPE_STEP_LEFT)
    return DF_ERR_BAD_TYPE;
  if (order == 3 && t.s_type != DF_TYPE_DEFAULT && t.s_type != DF_TYPE_SUBBOTIN)
    return DF_ERR_BAD_TYPE;
  if (nlim < 0) return DF_ERR_BAD_NSITE;
  if (nlim > 0 && (llim == nullptr || rlim == nullptr)) return DF_ERR_BAD_SITE;
  if (const oxa_status s = check_request(t, rhint, nfunc, func); s != DF_OK) return s;
  const int64_t ny = t.ny <= 0 ? 1 : t.ny;
  IntegralContext<T> c{};
  if (const oxa_status s = site_search_job<T>(t, llimhint, ldatahint, c.ljob); s != DF_OK) return s;
  if (const oxa_status s = site_search_job<T>(t, rlimhint, rdatahint, c.rjob); s != DF_OK) return s;
  if (nlim == 0) return DF_OK;
  if (r == nullptr) return DF_ERR_BAD_RESULT;
  c.l = {llim, nlim, llimhint == DF_SITE_UNIFORM};
  c.r = {rlim, nlim, rlimhint == DF_SITE_UNIFORM};
  c.x = breakpoints_of<T>(t);
  c.v = order == 0 ? values_of<T>(t) : Values<T>{};
  c.coeff = reinterpret_cast<T* const*>(t.scoeff);
  c.order = order;
  c.type = t.s_type;
  c.subbotin = order == 3 && t.s_type == DF_TYPE_SUBBOTIN;
  c.nf = nfunc;
  c.func = func;
  c.out = r;
  c.by_limit = rhint == DF_STORE_COLS;
  const int64_t iterations = (nlim + kChunk - 1) / kChunk;
  const DfThreadingHint hint{t.nx, ny, iterations, 1, t.x, nullptr, nullptr, 0.0};
  run_blocks(threading, iterations, threads_for(threading, iterations, hint), &c,
             &integral_body<T>);
  return DF_OK;
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFIntegrate1D(DfTask* task, int64_t nlim, const double* llim,
                                        int64_t llimhint, const double* rlim, int64_t rlimhint,
                                        const double* ldatahint, const double* rdatahint,
                                        int64_t nfunc, const int64_t* func, double* r,
                                        int64_t rhint, const DfThreading* threading) {
  return oxa::df::integrate<double>(task, nlim, llim, llimhint, rlim, rlimhint, ldatahint,
                                    rdatahint, nfunc, func, r, rhint, threading);
}

oxa_status oxa_df_kernel_sDFIntegrate1D(DfTask* task, int64_t nlim, const float* llim,
                                        int64_t llimhint, const float* rlim, int64_t rlimhint,
                                        const float* ldatahint, const float* rdatahint,
                                        int64_t nfunc, const int64_t* func, float* r,
                                        int64_t rhint, const DfThreading* threading) {
  return oxa::df::integrate<float>(task, nlim, llim, llimhint, rlim, rlimhint, ldatahint,
                                   rdatahint, nfunc, func, r, rhint, threading);
}

}  // extern "C"
