// The threading layer on OpenMP: a parallel-for over indices, the thread limit,
// the lookup by name, and a ready-made DfThreading record built on both.
#include <omp.h>

#include <atomic>
#include <cstring>

#include "oxa/service.h"

namespace {

int32_t threads_limit() {
  const int limit = omp_get_max_threads();  // honours OMP_NUM_THREADS
  return limit < 1 ? 1 : limit;
}

// Static schedule: iterations are equal-cost blocks in every caller (1024-cell
// blocks, observation blocks), so contiguous shares keep each worker's data
// local and make thread t's share the same from run to run.
void parallel_for(int64_t n, int32_t nthreads, void* context, oxa_parallel_body body) {
  if (n <= 0 || body == nullptr) return;
  if (nthreads < 1) nthreads = 1;
  if (nthreads > n) nthreads = static_cast<int32_t>(n);
  if (nthreads == 1) {
    for (int64_t i = 0; i < n; ++i) body(context, i, 0, 1);
    return;
  }
  // The region's fork and join already order memory; the release/acquire pair
  // on `handoff` states that ordering in a form ThreadSanitizer can see (libgomp
  // is not instrumented), so thread-checked builds report only real races.
  std::atomic<int32_t> handoff{0};
  handoff.store(0, std::memory_order_release);
#pragma omp parallel num_threads(nthreads)
  {
    (void)handoff.load(std::memory_order_acquire);
    const int32_t thread = omp_get_thread_num();
    const int32_t team = omp_get_num_threads();
#pragma omp for schedule(static) nowait
    for (int64_t i = 0; i < n; ++i) body(context, i, thread, team);
    handoff.fetch_add(1, std::memory_order_release);
  }
  (void)handoff.load(std::memory_order_acquire);
}

int32_t df_num_threads(const DfThreadingHint*) { return threads_limit(); }

}  // namespace

extern "C" oxa_serv_fun oxa_serv_load_thread_fun(const char* name) {
  if (name == nullptr) return nullptr;
  if (std::strcmp(name, "oxa_vsl_serv_threader_for") == 0)
    return reinterpret_cast<oxa_serv_fun>(&parallel_for);
  if (std::strcmp(name, "oxa_vsl_serv_threader_get_num_threads_limit") == 0)
    return reinterpret_cast<oxa_serv_fun>(&threads_limit);
  return nullptr;
}

extern "C" const DfThreading oxa_serv_df_threading = {
    &parallel_for, nullptr, nullptr, nullptr, &df_num_threads,
};
