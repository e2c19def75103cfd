// Radix sort side by side with std::sort and std::stable_sort on 10^7 keys:
// 32-bit integers, doubles, and 32-bit keys carrying a 64-bit index (against
// std::sort of (key, index) pairs). Each iteration sorts a fresh copy of the
// same random input; the copy is outside the timed region. The radix sort
// runs on one thread (argument 1) and on the service thread limit (0); the
// threaded runs measure the CPU time of the whole process.
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <utility>
#include <vector>

#include "primitives/radix_sort.hpp"

namespace {

constexpr int64_t kKeys = 10'000'000;

template <class T>
const std::vector<T>& input() {
  static const std::vector<T> keys = [] {
    std::mt19937_64 rng(42);
    std::vector<T> v(kKeys);
    if constexpr (std::is_floating_point_v<T>) {
      std::uniform_real_distribution<T> u(-1e6, 1e6);
      for (auto& x : v) x = u(rng);
    } else {
      for (auto& x : v) x = T(rng());
    }
    return v;
  }();
  return keys;
}

// Runs `sort` on a fresh copy of input<T>() each iteration.
template <class T, class Sort>
void run(benchmark::State& state, Sort sort) {
  std::vector<T> work(kKeys);
  for (auto _ : state) {
    state.PauseTiming();
    std::copy(input<T>().begin(), input<T>().end(), work.begin());
    state.ResumeTiming();
    sort(work);
    benchmark::DoNotOptimize(work.data());
  }
  state.SetItemsProcessed(state.iterations() * kKeys);
}

template <class T>
void BM_RadixSort(benchmark::State& state) {
  const auto threads = int32_t(state.range(0));
  run<T>(state, [&](std::vector<T>& v) {
    if (oxa::prim::radix_sort<T>(v.data(), kKeys, false, threads) != 0) state.SkipWithError("sort");
  });
}
template <class T>
void BM_StdSort(benchmark::State& state) {
  run<T>(state, [](std::vector<T>& v) { std::sort(v.begin(), v.end()); });
}
template <class T>
void BM_StdStableSort(benchmark::State& state) {
  run<T>(state, [](std::vector<T>& v) { std::stable_sort(v.begin(), v.end()); });
}

void BM_RadixSortIndex64(benchmark::State& state) {
  const auto threads = int32_t(state.range(0));
  std::vector<uint64_t> index(kKeys);
  run<uint32_t>(state, [&](std::vector<uint32_t>& v) {
    for (int64_t i = 0; i < kKeys; ++i) index[size_t(i)] = uint64_t(i);
    if (oxa::prim::radix_sort<uint32_t, uint64_t>(v.data(), index.data(), kKeys, false, threads) != 0)
      state.SkipWithError("sort");
  });
}
void BM_StdSortPairs(benchmark::State& state) {
  std::vector<std::pair<uint32_t, uint64_t>> pairs(kKeys);
  run<uint32_t>(state, [&](std::vector<uint32_t>& v) {
    for (int64_t i = 0; i < kKeys; ++i) pairs[size_t(i)] = {v[size_t(i)], uint64_t(i)};
    std::sort(pairs.begin(), pairs.end(),
              [](const auto& a, const auto& b) { return a.first < b.first; });
  });
}

BENCHMARK(BM_RadixSort<uint32_t>)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RadixSort<uint32_t>)->Arg(0)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSort<uint32_t>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdStableSort<uint32_t>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RadixSort<double>)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RadixSort<double>)->Arg(0)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSort<double>)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RadixSortIndex64)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_RadixSortIndex64)->Arg(0)->MeasureProcessCPUTime()->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StdSortPairs)->Unit(benchmark::kMillisecond);

}  // namespace
