// The basic estimator: validation and planning, the threaded run over blocks
// of observations, the merge into the caller's state, and finishing.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <new>

#include "oxa/service.h"
#include "summary_stats/basic_kernel.hpp"
#include "summary_stats/basic_pack.hpp"
#include "summary_stats/task.hpp"

namespace oxa::ss {
namespace {

constexpr size_t kAlign = 128;

size_t round_up(size_t bytes) {
  return (bytes + kAlign - 1) & ~(kAlign - 1);
}

// The estimator's work memory lives in the task's owned buffer, kept between
// calls and grown when a call needs more; deletion releases it.
// estimator_work[0] holds its capacity in bytes.
void* task_work(SSTask& task, size_t bytes) {
  auto capacity = reinterpret_cast<uintptr_t>(task.estimator_work[0]);
  if (task.owned_buffer != nullptr && capacity >= bytes) return task.owned_buffer;
  oxa_serv_deallocate(task.owned_buffer);
  task.owned_buffer = oxa_serv_allocate(bytes, kAlign);
  task.estimator_work[0] = reinterpret_cast<void*>(task.owned_buffer ? bytes : 0);
  return task.owned_buffer;
}

// The number of threads: min(work / 8192, thread limit, n / 16), at least 1,
// with work = n p, or n p p when cross-products are accumulated.
int32_t thread_count(int64_t n, int64_t p, bool cross_products) {
  const auto limit_fn = reinterpret_cast<oxa_num_threads_limit_fn>(
      oxa_serv_load_thread_fun("oxa_vsl_serv_threader_get_num_threads_limit"));
  const int64_t limit = limit_fn != nullptr ? limit_fn() : 1;
  const double work = double(n) * double(p) * (cross_products ? double(p) : 1.0);
  const int64_t by_work = work >= 0x1p62 ? INT64_MAX : static_cast<int64_t>(work) >> 13;
  const int64_t t = std::min({by_work, limit, n >> 4});
  return static_cast<int32_t>(std::max<int64_t>(t, 1));
}

template <class T>
struct Run {
  BasicKernel<T> kernel;
  KernelArgs<T> base;  // shared fields; per-block fields filled by the threader
  int64_t n;
  int32_t nthreads;
  Partial<T>* partials;  // one per block
  Partial<T>* blocks;    // block-state scratch, one per block
  T** scratch;           // one per block
  int32_t* status;       // one per block
};

// Per-block body of the parallel run: block `index` folds its share of the
// observations into its own partial state with the planned kernel.
template <class T>
void _vSSBasicThreader(void* context, int64_t index, int32_t, int32_t) {
  auto& run = *static_cast<Run<T>*>(context);
  KernelArgs<T> a = run.base;
  a.first = run.n * index / run.nthreads;
  a.end = run.n * (index + 1) / run.nthreads;
  a.state = &run.partials[index];
  a.block = &run.blocks[index];
  a.scratch = run.scratch[index];
  run.status[index] = run.kernel(a);
}

// Central-sum normaliser: central moment 2 and the covariance are S2 and the
// cross-products times this factor; 1 when nothing has been accumulated.
template <class T>
T covariance_factor(T W, T W2) {
  return W > 0 ? T(1) / (W - W2 / W) : T(1);
}

template <class T>
struct CallLayout {
  int64_t ps, block_size, scratch_elements, state_elements;
  size_t comp_bytes, state_bytes, scratch_bytes, header_bytes, total;
};

template <class T>
CallLayout<T> layout(int64_t p, int64_t pc, int64_t n, bool cp, int32_t nthreads,
                     bool by_observation) {
  CallLayout<T> L{};
  L.ps = (pc + 7) & ~int64_t{7};
  if (cp)
    L.block_size = std::clamp<int64_t>(32768 / L.ps, 16, 512);
  else
    L.block_size = by_observation ? std::clamp<int64_t>(16384 / L.ps, 16, 2048) : 2048;
  // No block longer than a thread's share (keeps scratch small for short calls).
  L.block_size = std::min(L.block_size, std::max<int64_t>(n / nthreads + 1, 16));
  L.scratch_elements = 3 * L.block_size * L.ps;
  L.state_elements = Partial<T>::elements(L.ps, cp);
  L.comp_bytes = round_up(sizeof(int64_t) * p);
  L.state_bytes = round_up(sizeof(T) * L.state_elements);
  L.scratch_bytes = round_up(sizeof(T) * L.scratch_elements);
  L.header_bytes = round_up(nthreads * (2 * sizeof(Partial<T>) + sizeof(T*) + sizeof(int32_t)));
  // Components, the caller's state, the per-block records, then per block:
  // partial, block state, scratch.
  L.total = L.comp_bytes + L.state_bytes + L.header_bytes +
            nthreads * (2 * L.state_bytes + L.scratch_bytes);
  return L;
}

// Reads the caller's running state for the required estimates into A.
template <class T>
void load_state(const SSTask& t, uint32_t req, Method method, int64_t n, const int64_t* comp,
                int64_t pc, int64_t ps, int64_t p, bool& cp_history, Partial<T>& A) {
  const T* accw = static_cast<const T*>(t.accumulated_weights);
  if (accw != nullptr) {
    A.W = accw[0];
    A.W2 = accw[1];
  } else if (method == Method::Convert) {
    A.W = A.W2 = static_cast<T>(n);
  }
  const T factor = covariance_factor(A.W, A.W2);
  auto field = [](void* f) { return static_cast<const T*>(f); };
  for (int64_t k = 0; k < pc; ++k) {
    const int64_t j = comp[k];
    if (req & bit(kSum)) A.sum[k] = field(t.sum)[j];
    if (method == Method::Convert && (req & bit(kSum)))
      A.mean[k] = A.sum[k] / A.W;
    else if (req & bit(kMean))
      A.mean[k] = field(t.mean)[j];
    for (int q = 0; q < 3; ++q) {
      if (req & bit(Bit(kRawSum2 + q)))
        A.raw[q][k] = field(t.raw_sum[q])[j];
      else if (req & bit(Bit(kRaw2 + q)))
        A.raw[q][k] = field(t.raw_moment[q])[j] * A.W;
      if (req & bit(Bit(kCentralSum2 + q)))
        A.central[q][k] = field(t.central_sum[q])[j];
      else if (req & bit(Bit(kCentral2 + q)))
        A.central[q][k] = field(t.central_moment[q])[j] / (q == 0 ? factor : T(1) / A.W);
    }
  }
  cp_history = true;
  if (req & bit(kCrossProduct))
    unpack_to_cp(field(t.cross_product), pc, ps, comp, p,
                 read_int_or(t, t.cross_product_storage, 0), T(1), A.cp);
  else if (req & bit(kCovariance))
    unpack_to_cp(field(t.covariance), pc, ps, comp, p, read_int_or(t, t.covariance_storage, 0),
                 T(1) / factor, A.cp);
  else
    cp_history = false;  // a correlation alone cannot be continued
}

// Writes the required estimates from the final state A.
template <class T>
int32_t store_results(SSTask& t, uint32_t req, Method method, const int64_t* comp, int64_t pc,
                      int64_t ps, int64_t p, const Partial<T>& A) {
  const T W = A.W, factor = covariance_factor(A.W, A.W2);
  const bool base = method != Method::Convert;
  auto field = [](void* f) { return static_cast<T*>(f); };
  // The correlation first: its work buffer is the only thing that can fail,
  // and a failure then leaves every result untouched.
  if (req & bit(kCorrelation)) {
    const int32_t s = _vSSFullCP2PackCor(
        A.cp, pc, ps, comp, p, read_int_or(t, t.correlation_storage, 0), field(t.correlation));
    if (s != 0) return s;
  }
  for (int64_t k = 0; k < pc; ++k) {
    const int64_t j = comp[k];
    const T s2 = A.central[0][k], s3 = A.central[1][k], s4 = A.central[2][k];
    if ((req & bit(kMean)) && method != Method::GivenMean) field(t.mean)[j] = A.mean[k];
    if (base && (req & bit(kSum))) field(t.sum)[j] = A.sum[k];
    for (int q = 0; q < 3; ++q) {
      if (base && (req & bit(Bit(kRawSum2 + q)))) field(t.raw_sum[q])[j] = A.raw[q][k];
      if (base && (req & bit(Bit(kCentralSum2 + q)))) field(t.central_sum[q])[j] = A.central[q][k];
      if (req & bit(Bit(kRaw2 + q))) field(t.raw_moment[q])[j] = A.raw[q][k] / W;
    }
    if (req & bit(kCentral2)) field(t.central_moment[0])[j] = s2 * factor;
    if (req & bit(kCentral3)) field(t.central_moment[1])[j] = s3 / W;
    if (req & bit(kCentral4)) field(t.central_moment[2])[j] = s4 / W;
    // Population forms: m2 = S2/W, m3 = S3/W, m4 = S4/W.
    const T m2 = s2 / W;
    if (req & bit(kKurtosis)) field(t.kurtosis)[j] = (s4 / W) / (m2 * m2) - T(3);
    if (req & bit(kSkewness)) field(t.skewness)[j] = (s3 / W) / (m2 * std::sqrt(m2));
    if (req & bit(kVariation)) field(t.variation)[j] = std::sqrt(s2 * factor) / A.mean[k];
  }
  if (base && (req & bit(kCrossProduct)))
    _vSSFullCP2PackCP(A.cp, pc, ps, comp, p, read_int_or(t, t.cross_product_storage, 0),
                      field(t.cross_product));
  if (req & bit(kCovariance))
    _vSSFullCP2PackCov(A.cp, pc, ps, comp, p, read_int_or(t, t.covariance_storage, 0), factor,
                       field(t.covariance));
  if (base && t.accumulated_weights != nullptr) {
    field(t.accumulated_weights)[0] = A.W;
    field(t.accumulated_weights)[1] = A.W2;
  }
  return VSL_STATUS_OK;
}

// Validation: method, required fields (lowest internal bit first), then the
// data description. Returns 0 and fills the outputs when the call can run.
oxa_status validate(const SSTask* task, uint64_t estimates, int64_t method_word, Method& method,
                    uint32_t& required, int64_t& p, int64_t& n, int64_t& storage) {
  if (task == nullptr) return VSL_SS_ERROR_NULL_TASK;
  if (!classify_method(method_word, method)) return VSL_SS_ERROR_BAD_METHOD;
  required = required_mask(internal_mask(estimates), method);
  if (const int32_t code = missing_field_code(required, present_mask(*task))) return code;
  const SSTask& t = *task;
  p = read_int_or(t, t.dimension, 0);
  if (p < 1) return VSL_SS_ERROR_BAD_DIMENSION;
  n = read_int_or(t, t.n_observations, 0);
  storage = 0;
  if (method == Method::Convert) {
    if (t.accumulated_weights == nullptr && !(t.n_observations != nullptr && t.weights == nullptr))
      return -4020;
    return VSL_STATUS_OK;
  }
  if (n < 1) return VSL_SS_ERROR_BAD_OBS_NUMBER;
  if (t.observations == nullptr) return VSL_SS_ERROR_NULL_OBSERVATIONS;
  if (t.x_storage == nullptr) return VSL_SS_ERROR_NULL_STORAGE;
  storage = read_int(t, t.x_storage);
  if ((storage & (OXA_SS_STORAGE_BY_COMPONENT | OXA_SS_STORAGE_BY_OBSERVATION)) == 0)
    return VSL_SS_ERROR_BAD_STORAGE;
  return VSL_STATUS_OK;
}

// Prepares the accumulators: the work memory, the component list, the caller's
// state and one empty partial state per block. Null when memory is short.
template <class T>
bool _vSSInitBasic(SSTask& t, int64_t p, int64_t n, bool cp, int32_t nthreads, bool by_observation,
                   int64_t*& comp, int64_t& pc, CallLayout<T>& L, Partial<T>& A, Run<T>& run) {
  // Components: all, or those whose index flag is non-zero.
  pc = 0;
  for (int64_t j = 0; j < p; ++j)
    if (t.component_indices == nullptr || read_int_at(t, t.component_indices, j) != 0) ++pc;
  if (pc == 0) return true;
  L = layout<T>(p, pc, n, cp, nthreads, by_observation);
  if (L.ps > (int64_t{1} << 24)) return false;  // p^2 accumulators beyond memory
  auto* base = static_cast<char*>(task_work(t, L.total));
  if (base == nullptr) return false;
  comp = reinterpret_cast<int64_t*>(base);
  for (int64_t j = 0, k = 0; j < p; ++j)
    if (t.component_indices == nullptr || read_int_at(t, t.component_indices, j) != 0)
      comp[k++] = j;
  char* at = base + L.comp_bytes;
  A.bind(reinterpret_cast<T*>(at), L.ps, cp);
  at += L.state_bytes;
  run.partials = reinterpret_cast<Partial<T>*>(at);
  run.blocks = run.partials + nthreads;
  run.scratch = reinterpret_cast<T**>(run.blocks + nthreads);
  run.status = reinterpret_cast<int32_t*>(run.scratch + nthreads);
  at += L.header_bytes;
  for (int32_t b = 0; b < nthreads; ++b) {
    new (&run.partials[b]) Partial<T>();
    new (&run.blocks[b]) Partial<T>();
    run.partials[b].bind(reinterpret_cast<T*>(at), L.ps, cp);
    at += L.state_bytes;
    run.blocks[b].bind(reinterpret_cast<T*>(at), L.ps, cp);
    at += L.state_bytes;
    run.scratch[b] = reinterpret_cast<T*>(at);
    std::memset(at, 0, L.scratch_bytes);
    at += L.scratch_bytes;
  }
  return true;
}

template <class T>
oxa_status basic(SSTask* task, uint64_t estimates, int64_t method_word) {
  Method method;
  uint32_t req = 0;
  int64_t p = 0, n = 0, storage = 0;
  if (const oxa_status s = validate(task, estimates, method_word, method, req, p, n, storage))
    return s;
  if (req == 0) return VSL_STATUS_OK;
  SSTask& t = *task;
  const Plan plan = make_plan(req, method);
  const bool by_observation = (storage & OXA_SS_STORAGE_BY_COMPONENT) == 0;
  const bool weighted = t.weights != nullptr;
  const bool base = method != Method::Convert;

  int64_t* comp = nullptr;
  int64_t pc = 0;
  CallLayout<T> L{};
  Partial<T> A{};
  Run<T> run{};
  const int32_t nthreads = base ? thread_count(n, p, plan.cross_products) : 1;
  if (!_vSSInitBasic(t, p, n, plan.cross_products, nthreads, by_observation, comp, pc, L, A, run))
    return VSL_SS_ERROR_MEM_FAILURE;
  if (pc == 0) return VSL_STATUS_OK;

  bool cp_history = false;
  load_state(t, req, method, n, comp, pc, L.ps, p, cp_history, A);
  if (base) {
    run.kernel = choose_kernel<T>(plan, by_observation, weighted);
    bool contiguous = true;
    for (int64_t k = 1; k < pc; ++k) contiguous = contiguous && comp[k] == comp[0] + k;
    run.base = KernelArgs<T>{0,
                             0,
                             pc,
                             L.ps,
                             comp,
                             contiguous,
                             by_observation ? p : n,
                             static_cast<const T*>(t.observations),
                             static_cast<const T*>(t.weights),
                             A.mean,
                             nullptr,
                             nullptr,
                             nullptr,
                             L.block_size};
    run.n = n;
    run.nthreads = nthreads;
    const auto parallel_for = reinterpret_cast<oxa_parallel_for_fn>(
        oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for"));
    if (nthreads == 1 || parallel_for == nullptr) {
      run.nthreads = 1;
      _vSSBasicThreader<T>(&run, 0, 0, 1);
    } else {
      parallel_for(nthreads, nthreads, &run, &_vSSBasicThreader<T>);
    }
    for (int32_t b = 0; b < run.nthreads; ++b)
      if (run.status[b] < 0) return run.status[b];
    // Partial states in observation order, then into the caller's state.
    Parts parts{pc, L.ps, plan.raw_order, plan.central_order, plan.cross_products};
    for (int32_t b = 1; b < run.nthreads; ++b) merge(run.partials[0], run.partials[b], parts);
    parts.cp = plan.cross_products && cp_history;
    merge(A, run.partials[0], parts);
    if (plan.cross_products && !cp_history)
      for (int64_t a = 0; a < pc; ++a)
        std::memcpy(A.cp + a * L.ps + a, run.partials[0].cp + a * L.ps + a, sizeof(T) * (pc - a));
  }
  return store_results(t, req, method, comp, pc, L.ps, p, A);
}

}  // namespace
}  // namespace oxa::ss

extern "C" oxa_status _vsldSSBasic(SSTask* task, uint64_t estimates, int64_t method) {
  return oxa::ss::basic<double>(task, estimates, method);
}

extern "C" oxa_status _vslsSSBasic(SSTask* task, uint64_t estimates, int64_t method) {
  return oxa::ss::basic<float>(task, estimates, method);
}
