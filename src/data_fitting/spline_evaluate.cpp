// Spline evaluation: values and derivatives of chosen functions at sites.
// Method: sites in blocks of 256; the search (method from the hints) gives
// each site's cell, the polynomial of cell m = clamp(cell − 1, 0, nx − 2)
// is evaluated at u = t − x[m] by Horner's rule, derivative d as
// Σ_{p≥d} c_p·p!/(p−d)!·u^{p−d}. Cubic values: four sites a step, the four
// coefficients of each gathered with one load and a transpose.
// Extrapolation: a site left of x[0] takes the polynomial of the first cell,
// right of x[nx−1] that of the last; the step-wise interpolants the first
// and the last value. A caller's left or right call-back, when given,
// replaces those results for the sites beyond its end (NaN sites are not
// beyond either end).
// Order 0: look-up y_i where t = x[i] exactly, NaN elsewhere; step-wise
// right-continuous y_m on [x[m], x[m+1]); left-continuous y_{m+1} on
// (x[m], x[m+1]]. Their derivatives are 0.
// Threads: chunks of 4096 sites on the caller's parallel-for.
#include <atomic>
#include <cstring>
#include <limits>
#include <new>

#include "data_fitting/site_cells.hpp"

namespace oxa::df {
namespace {

template <Real T>
using InterpCallback =
    std::conditional_t<std::is_same_v<T, double>, oxa_df_dinterp_callback, oxa_df_sinterp_callback>;

constexpr int64_t kChunk = 4096;
constexpr int kMaxDerivatives = 8;

template <Real T>
struct EvalContext {
  SearchJob<T> job;
  Sites<T> sites;
  Breakpoints<T> x;
  Values<T> v;
  const T* const* coeff;
  int64_t order, type;
  bool subbotin;
  int64_t nf;
  const int64_t* func;  // NULL: functions 0 .. nf−1
  int nd;
  int der[kMaxDerivatives];
  T* r;
  bool by_site;
  InterpCallback<T> left, right;
  void *left_params, *right_params;
  std::atomic<int32_t> status;
};

template <Real T>
int64_t function_index(const EvalContext<T>& c, int64_t f) {
  return c.func != nullptr ? c.func[f] : f;
}

template <Real T>
T& result(const EvalContext<T>& c, int64_t i, int64_t f, int di) {
  if (c.by_site) return c.r[(i * c.nf + f) * c.nd + di];
  return c.r[(f * c.nd + di) * c.sites.n + i];
}

// Derivative d of Σ c_p u^p, p < K.
template <Real T, int K>
T poly_derivative(const T* c, T u, int d) {
  T acc = 0;
  for (int p = K - 1; p >= d; --p) {
    T f = 1;
    for (int k = 0; k < d; ++k) f *= static_cast<T>(p - k);
    acc = fma(acc, u, c[p] * f);
  }
  return acc;
}

// Cubic values of four sites: one load of each site's cell and a transpose.
inline Lanes<double, 4> cubic4(const double* c, const int64_t* m, Lanes<double, 4> u) {
  const __m256d r0 = _mm256_loadu_pd(c + 4 * m[0]), r1 = _mm256_loadu_pd(c + 4 * m[1]);
  const __m256d r2 = _mm256_loadu_pd(c + 4 * m[2]), r3 = _mm256_loadu_pd(c + 4 * m[3]);
  const __m256d t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
  const __m256d t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
  using V = Lanes<double, 4>;
  const V k0 = (V)_mm256_permute2f128_pd(t0, t2, 0x20), k1 = (V)_mm256_permute2f128_pd(t1, t3, 0x20);
  const V k2 = (V)_mm256_permute2f128_pd(t0, t2, 0x31), k3 = (V)_mm256_permute2f128_pd(t1, t3, 0x31);
  return fma(fma(fma(k3, u, k2), u, k1), u, k0);
}

inline Lanes<float, 4> cubic4(const float* c, const int64_t* m, Lanes<float, 4> u) {
  __m128 r0 = _mm_loadu_ps(c + 4 * m[0]), r1 = _mm_loadu_ps(c + 4 * m[1]);
  __m128 r2 = _mm_loadu_ps(c + 4 * m[2]), r3 = _mm_loadu_ps(c + 4 * m[3]);
  _MM_TRANSPOSE4_PS(r0, r1, r2, r3);
  using V = Lanes<float, 4>;
  return fma(fma(fma((V)r3, u, (V)r2), u, (V)r1), u, (V)r0);
}

template <Real T, int K>
void poly_block(const EvalContext<T>& c, int64_t i0, int64_t n, const int64_t* m, const T* u) {
  for (int64_t f = 0; f < c.nf; ++f) {
    const T* coeff = c.coeff[function_index(c, f)];
    for (int di = 0; di < c.nd; ++di) {
      const int d = c.der[di];
      int64_t i = 0;
      if constexpr (K == 4) {
        if (d == 0 && !c.by_site) {
          using V = Lanes<T, 4>;
          T* out = &result(c, i0, f, 0) + di * c.sites.n;
          for (; i + 4 <= n; i += 4) {
            V uu;
            std::memcpy(&uu, u + i, sizeof(V));
            const V r = cubic4(coeff, m + i, uu);
            std::memcpy(out + i, &r, sizeof(V));
          }
        }
      }
      for (; i < n; ++i)
        result(c, i0 + i, f, di) = d >= K ? T(0) : poly_derivative<T, K>(coeff + K * m[i], u[i], d);
    }
  }
}

template <Real T>
void step_block(const EvalContext<T>& c, int64_t i0, int64_t n, const int64_t* cell, const T* t) {
  const int64_t nx = c.x.nx;
  const T nan = std::numeric_limits<T>::quiet_NaN();
  for (int64_t i = 0; i < n; ++i) {
    const int64_t k = cell[i];
    int64_t idx = -1;  // breakpoint whose value the site takes; −1: NaN
    if (std::isnan(t[i])) {
      idx = -1;
    } else if (c.type == DF_TYPE_LOOKUP) {
      if (k >= 1 && k <= nx - 1 && c.x[k - 1] == t[i]) idx = k - 1;
      if (k == nx - 1 && t[i] == c.x.last()) idx = nx - 1;
    } else if (k == 0) {
      idx = 0;
    } else if (k >= nx - 1 && !(t[i] < c.x.last())) {
      idx = nx - 1;
    } else if (c.type == DF_TYPE_STEP_RIGHT) {
      idx = k - 1;
    } else {
      idx = c.x[k - 1] == t[i] ? k - 1 : k;
    }
    for (int64_t f = 0; f < c.nf; ++f) {
      const int64_t j = function_index(c, f);
      for (int di = 0; di < c.nd; ++di)
        result(c, i0 + i, f, di) = idx < 0 ? nan : c.der[di] == 0 ? c.v(j, idx) : T(0);
    }
  }
}

// The call-backs' results replace those of the sites beyond the ends.
template <Real T>
oxa_status call_backs(const EvalContext<T>& c, int64_t i0, int64_t n, const int64_t* cell,
                      const T* t, T* buf) {
  if (c.left == nullptr && c.right == nullptr) return DF_OK;
  const T x0 = c.x[0], xl = c.x.last();
  const int64_t count = c.nf * c.nd;
  for (int64_t i = 0; i < n; ++i) {
    InterpCallback<T> cb = nullptr;
    void* params = nullptr;
    if (t[i] < x0)
      cb = c.left, params = c.left_params;
    else if (t[i] > xl)
      cb = c.right, params = c.right_params;
    if (cb == nullptr) continue;
    const int32_t s = cb(count, cell[i], t[i], buf, params);
    if (s < 0) return s;
    for (int64_t f = 0; f < c.nf; ++f)
      for (int di = 0; di < c.nd; ++di) result(c, i0 + i, f, di) = buf[f * c.nd + di];
  }
  return DF_OK;
}

// Chunk k: sites [k·4096, min(k·4096 + 4096, nsite)).
template <Real T>
void eval_body(void* context, int64_t k, int32_t, int32_t) {
  auto& c = *static_cast<EvalContext<T>*>(context);
  const int64_t end = std::min((k + 1) * kChunk, c.sites.n);
  int64_t pos = 0;
  alignas(64) T t[kSiteBlock], u[kSiteBlock];
  alignas(64) int64_t cell[kSiteBlock], m[kSiteBlock];
  // Results of one site from a call-back: on the stack when they fit.
  T stack_buf[64 * kMaxDerivatives];
  T* buf = stack_buf;
  const int64_t count = c.nf * c.nd;
  if ((c.left != nullptr || c.right != nullptr) && count > 64 * kMaxDerivatives) {
    buf = allocate_array<T>(count);
    if (buf == nullptr) {
      int32_t ok = DF_OK;
      c.status.compare_exchange_strong(ok, DF_ERR_MEM);
      return;
    }
  }
  const int64_t nx = c.x.nx;
  for (int64_t i0 = k * kChunk; i0 < end; i0 += kSiteBlock) {
    if (c.status.load(std::memory_order_relaxed) != DF_OK) break;
    const int64_t n = std::min(kSiteBlock, end - i0);
    site_cells(c.job, c.sites, i0, n, t, cell, &pos);
    if (c.order == 0) {
      step_block(c, i0, n, cell, t);
    } else {
      if (c.subbotin) {
        for (int64_t i = 0; i < n; ++i) m[i] = piece_of(c.x, true, cell[i], t[i], &u[i]);
      } else {
        for (int64_t i = 0; i < n; ++i) {
          m[i] = std::clamp<int64_t>(cell[i] - 1, 0, nx - 2);
          u[i] = t[i] - c.x[m[i]];
        }
      }
      switch (c.order) {
        case 2:
          poly_block<T, 2>(c, i0, n, m, u);
          break;
        case 3:
          poly_block<T, 3>(c, i0, n, m, u);
          break;
        default:
          poly_block<T, 4>(c, i0, n, m, u);
          break;
      }
    }
    if (const oxa_status s = call_backs(c, i0, n, cell, t, buf); s != DF_OK) {
      int32_t ok = DF_OK;
      c.status.compare_exchange_strong(ok, s);
      break;
    }
  }
  if (buf != stack_buf) oxa_serv_deallocate(buf);
}

template <Real T>
oxa_status evaluate(DfTask* task, int64_t nsite, const T* site, int64_t sitehint,
                    const T* datahint, int64_t nfunc, const int64_t* func, int64_t ndorder,
                    const int64_t* dorder, T* r, int64_t rhint, InterpCallback<T> left,
                    void* left_params, InterpCallback<T> right, void* right_params,
                    const DfThreading* threading) {
  if (task == nullptr) return DF_ERR_NULL_TASK;
  const DfTask& t = *task;
  if (t.nx < 2) return DF_ERR_BAD_NX;
  const int64_t order = t.s_order;
  if (order != 0 && (order < 2 || order > 4)) return DF_ERR_BAD_ORDER;
  if (order == 0 && (t.s_type < DF_TYPE_LOOKUP || t.s_type > DF_TYPE_STEP_LEFT))
    return DF_ERR_BAD_TYPE;
  if (order == 3 && t.s_type != DF_TYPE_DEFAULT && t.s_type != DF_TYPE_SUBBOTIN)
    return DF_ERR_BAD_TYPE;
  if (nsite < 0) return DF_ERR_BAD_NSITE;
  if (nsite > 0 && site == nullptr) return DF_ERR_BAD_SITE;
  if (ndorder < 0 || ndorder > kMaxDerivatives) return DF_ERR_BAD_DORDER;
  if (const oxa_status s = check_request(t, rhint, nfunc, func); s != DF_OK) return s;
  const int64_t ny = t.ny <= 0 ? 1 : t.ny;

  auto* c = static_cast<EvalContext<T>*>(oxa_serv_allocate(sizeof(EvalContext<T>), kAlign));
  if (c == nullptr) return DF_ERR_MEM;
  new (c) EvalContext<T>{};
  if (const oxa_status s = site_search_job<T>(t, sitehint, datahint, c->job); s != DF_OK) {
    oxa_serv_deallocate(c);
    return s;
  }
  c->nd = 0;
  if (dorder == nullptr) {
    c->der[c->nd++] = 0;
  } else {
    for (int64_t d = 0; d < ndorder; ++d)
      if (dorder[d] != 0) c->der[c->nd++] = static_cast<int>(d);
  }
  oxa_status status = DF_OK;
  if (c->nd > 0 && nsite > 0 && r == nullptr) status = DF_ERR_BAD_RESULT;
  if (status == DF_OK && c->nd > 0 && nsite > 0) {
    c->sites = {site, nsite, sitehint == DF_SITE_UNIFORM};
    c->x = breakpoints_of<T>(t);
    c->v = order == 0 ? values_of<T>(t) : Values<T>{};
    c->coeff = reinterpret_cast<T* const*>(t.scoeff);
    c->order = order;
    c->type = t.s_type;
    c->subbotin = order == 3 && t.s_type == DF_TYPE_SUBBOTIN;
    c->nf = nfunc;
    c->func = func;
    c->r = r;
    c->by_site = rhint == DF_STORE_COLS;
    c->left = left, c->right = right;
    c->left_params = left_params, c->right_params = right_params;
    c->status.store(DF_OK);
    const int64_t iterations = (nsite + kChunk - 1) / kChunk;
    const DfThreadingHint hint{t.nx, ny, iterations, 1, t.x, nullptr, nullptr, 0.0};
    run_blocks(threading, iterations, threads_for(threading, iterations, hint), c,
               &eval_body<T>);
    status = c->status.load();
  }
  c->~EvalContext<T>();
  oxa_serv_deallocate(c);
  return status;
}

}  // namespace
}  // namespace oxa::df

extern "C" {

oxa_status oxa_df_kernel_dDFInterpolate1D(DfTask* task, int64_t nsite, const double* site,
                                          int64_t sitehint, const double* datahint, int64_t nfunc,
                                          const int64_t* func, int64_t ndorder,
                                          const int64_t* dorder, double* r, int64_t rhint,
                                          oxa_df_dinterp_callback left, void* left_params,
                                          oxa_df_dinterp_callback right, void* right_params,
                                          const DfThreading* threading) {
  return oxa::df::evaluate<double>(task, nsite, site, sitehint, datahint, nfunc, func, ndorder,
                                   dorder, r, rhint, left, left_params, right, right_params,
                                   threading);
}

oxa_status oxa_df_kernel_sDFInterpolate1D(DfTask* task, int64_t nsite, const float* site,
                                          int64_t sitehint, const float* datahint, int64_t nfunc,
                                          const int64_t* func, int64_t ndorder,
                                          const int64_t* dorder, float* r, int64_t rhint,
                                          oxa_df_sinterp_callback left, void* left_params,
                                          oxa_df_sinterp_callback right, void* right_params,
                                          const DfThreading* threading) {
  return oxa::df::evaluate<float>(task, nsite, site, sitehint, datahint, nfunc, func, ndorder,
                                  dorder, r, rhint, left, left_params, right, right_params,
                                  threading);
}

}  // extern "C"
