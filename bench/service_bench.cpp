// Service layer: cost of an aligned allocation against the C runtime's
// aligned_alloc, and the overhead of an empty parallel-for against a bare
// OpenMP loop.
#include <benchmark/benchmark.h>

#include <cstdlib>

#include "oxa/service.h"

static void BM_oxa_allocate(benchmark::State& state) {
  const size_t size = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    void* p = oxa_serv_allocate(size, 128);
    benchmark::DoNotOptimize(p);
    oxa_serv_deallocate(p);
  }
}
static void BM_libc_aligned_alloc(benchmark::State& state) {
  const size_t size = static_cast<size_t>(state.range(0));
  for (auto _ : state) {
    void* p = std::aligned_alloc(128, (size + 127) & ~size_t{127});
    benchmark::DoNotOptimize(p);
    std::free(p);
  }
}
BENCHMARK(BM_oxa_allocate)->Arg(64)->Arg(8192)->Arg(1 << 20);
BENCHMARK(BM_libc_aligned_alloc)->Arg(64)->Arg(8192)->Arg(1 << 20);

static void noop(void*, int64_t, int32_t, int32_t) {}
static void BM_oxa_parallel_for(benchmark::State& state) {
  auto pf = reinterpret_cast<oxa_parallel_for_fn>(oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for"));
  const int32_t threads = static_cast<int32_t>(state.range(0));
  for (auto _ : state) pf(1024, threads, nullptr, noop);
}
static void BM_omp_parallel_for(benchmark::State& state) {
  const int threads = static_cast<int>(state.range(0));
  for (auto _ : state) {
#pragma omp parallel for num_threads(threads) schedule(static)
    for (int i = 0; i < 1024; ++i) benchmark::ClobberMemory();
  }
}
BENCHMARK(BM_oxa_parallel_for)->Arg(1)->Arg(2);
BENCHMARK(BM_omp_parallel_for)->Arg(1)->Arg(2);
