// Cell search and linear spline construction, side by side with plain
// baselines in the same run: a std::upper_bound loop and a branchless
// bisection for the search, a function-major loop and a triad for the spline.
// Compare the per-site times (search) and bytes per second (spline).
//
//   build/default/bench/bench_data_fitting --benchmark_min_time=0.3
#include <benchmark/benchmark.h>

#include <algorithm>
#include <random>
#include <vector>

#include "oxa/data_fitting.h"
#include "oxa/service.h"

namespace {

constexpr int64_t kSites = 1000000;

std::vector<double> increasing_partition(int64_t nx) {
  std::mt19937_64 g(1);
  std::uniform_real_distribution<double> step(0.1, 1.9);
  std::vector<double> x(static_cast<size_t>(nx));
  double v = 0;
  for (auto& e : x) e = v += step(g);
  return x;
}

std::vector<double> random_sites(const std::vector<double>& x, bool sorted) {
  std::mt19937_64 g(2);
  std::uniform_real_distribution<double> u(x.front(), x.back());
  std::vector<double> s(kSites);
  for (auto& e : s) e = u(g);
  if (sorted) std::sort(s.begin(), s.end());
  return s;
}

// One thread, or the service layer's threads capped at two.
int32_t two_threads(const DfThreadingHint*) {
  return 2;
}
const DfThreading kTwoThreads = {oxa_serv_df_threading.parallel_for, nullptr, nullptr, nullptr,
                                 &two_threads};

// Seconds per site, printed with an SI prefix (for example 28n).
void report_sites(benchmark::State& state) {
  state.counters["per_site"] = benchmark::Counter(
      static_cast<double>(kSites),
      benchmark::Counter::kIsIterationInvariantRate | benchmark::Counter::kInvert);
}

void BM_UpperBound(benchmark::State& state) {
  const auto x = increasing_partition(state.range(0));
  const auto s = random_sites(x, state.range(1) != 0);
  std::vector<int64_t> cell(kSites);
  for (auto _ : state) {
    for (int64_t i = 0; i < kSites; ++i)
      cell[static_cast<size_t>(i)] =
          std::upper_bound(x.begin(), x.end(), s[static_cast<size_t>(i)]) - x.begin();
    benchmark::DoNotOptimize(cell.data());
  }
  report_sites(state);
}

void BM_BranchlessBisection(benchmark::State& state) {
  const auto x = increasing_partition(state.range(0));
  const auto s = random_sites(x, false);
  std::vector<int64_t> cell(kSites);
  const auto n = static_cast<int64_t>(x.size());
  for (auto _ : state) {
    for (int64_t i = 0; i < kSites; ++i) {
      const double t = s[static_cast<size_t>(i)];
      const double* base = x.data();
      int64_t len = n;
      while (len > 1) {
        const int64_t half = len / 2;
        base = base[half - 1] <= t ? base + half : base;
        len -= half;
      }
      cell[static_cast<size_t>(i)] = (base - x.data()) + (*base <= t);
    }
    benchmark::DoNotOptimize(cell.data());
  }
  report_sites(state);
}

// range(0) nx, range(1) sorted sites, range(2) threads (1 or 2), range(3)
// uniform partition.
void BM_Search(benchmark::State& state) {
  const auto x = increasing_partition(state.range(0));
  const auto s = random_sites(x, state.range(1) != 0);
  const bool uniform = state.range(3) != 0;
  const double ends[2] = {x.front(), x.back()};
  DfTask* task = nullptr;
  oxa_df_kernel_dNewTask1D(&task, static_cast<int64_t>(x.size()), uniform ? ends : x.data(),
                           uniform ? DF_X_UNIFORM : DF_X_NON_UNIFORM, 0, nullptr, 0, 0);
  std::vector<int64_t> cell(kSites);
  const DfThreading* th = state.range(2) == 2 ? &kTwoThreads : nullptr;
  const int64_t hint = state.range(1) != 0 ? DF_SITE_SORTED : 0;
  for (auto _ : state) {
    oxa_df_kernel_dDFSearch1D(task, DF_CELL_64, kSites, s.data(), hint, nullptr, cell.data(),
                              nullptr, nullptr, th);
    benchmark::DoNotOptimize(cell.data());
  }
  report_sites(state);
  oxa_df_kernel_DeleteTask(&task);
}

BENCHMARK(BM_UpperBound)
    ->ArgNames({"nx", "sorted"})
    ->ArgsProduct({{100, 10000, 1000000}, {0, 1}})
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_BranchlessBisection)
    ->ArgName("nx")
    ->Arg(100)
    ->Arg(10000)
    ->Arg(1000000)
    ->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Search)
    ->ArgNames({"nx", "sorted", "threads", "uniform"})
    ->ArgsProduct({{100, 10000, 1000000}, {0}, {1, 2}, {0}})
    ->Args({1000000, 1, 1, 0})
    ->Args({1000000, 0, 1, 1})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

// ---- Linear spline: 100 functions on 10^5 breakpoints --------------------

constexpr int64_t kNx = 100000, kNy = 100;

struct SplineData {
  std::vector<double> x = increasing_partition(kNx);
  std::vector<double> y = std::vector<double>(static_cast<size_t>(kNx * kNy), 1.5);
  std::vector<double> c = std::vector<double>(static_cast<size_t>(2 * (kNx - 1) * kNy), 0.0);
};

// Bytes moved: the values read and the coefficients written.
void report_spline_bytes(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * kNy * (kNx + 2 * (kNx - 1)) *
                          static_cast<int64_t>(sizeof(double)));
}

void BM_LinearSpline(benchmark::State& state) {
  SplineData d;
  DfTask* task = nullptr;
  oxa_df_kernel_dNewTask1D(&task, kNx, d.x.data(), DF_X_NON_UNIFORM, kNy, d.y.data(), DF_STORE_ROWS,
                           0);
  oxa_df_kernel_dEditPPSpline1D(task, 2, 0, 0, nullptr, 0, nullptr, d.c.data(), 0);
  const DfThreading* th = state.range(0) == 2 ? &kTwoThreads : nullptr;
  for (auto _ : state) {
    oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, th);
    benchmark::DoNotOptimize(d.c.data());
  }
  report_spline_bytes(state);
  oxa_df_kernel_DeleteTask(&task);
}

// The plain function-major loop with a division per cell, on as many threads.
struct PlainContext {
  SplineData* d;
};
void plain_function(void* ctx, int64_t j, int32_t, int32_t) {
  SplineData& d = *static_cast<PlainContext*>(ctx)->d;
  const double* y = d.y.data() + j * kNx;
  double* c = d.c.data() + j * 2 * (kNx - 1);
  for (int64_t m = 0; m + 1 < kNx; ++m) {
    c[2 * m] = y[m];
    c[2 * m + 1] =
        (y[m + 1] - y[m]) / (d.x[static_cast<size_t>(m + 1)] - d.x[static_cast<size_t>(m)]);
  }
}
void BM_PlainLoop(benchmark::State& state) {
  SplineData d;
  PlainContext ctx{&d};
  const auto threads = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    oxa_serv_df_threading.parallel_for(kNy, threads, &ctx, &plain_function);
    benchmark::DoNotOptimize(d.c.data());
  }
  report_spline_bytes(state);
}

// Triad a = b + s·c over the same number of bytes, the bandwidth reference.
struct TriadContext {
  std::vector<double> a, b, c;
  int64_t chunk;
};
void triad_chunk(void* ctx, int64_t k, int32_t, int32_t) {
  auto& t = *static_cast<TriadContext*>(ctx);
  const int64_t end = std::min<int64_t>((k + 1) * t.chunk, static_cast<int64_t>(t.a.size()));
  for (int64_t i = k * t.chunk; i < end; ++i)
    t.a[static_cast<size_t>(i)] = t.b[static_cast<size_t>(i)] + 3.0 * t.c[static_cast<size_t>(i)];
}
void BM_Triad(benchmark::State& state) {
  const int64_t n = kNy * (kNx + 2 * (kNx - 1)) / 3;
  TriadContext t{std::vector<double>(static_cast<size_t>(n), 0.0),
                 std::vector<double>(static_cast<size_t>(n), 1.0),
                 std::vector<double>(static_cast<size_t>(n), 2.0), 1 << 16};
  const auto threads = static_cast<int32_t>(state.range(0));
  for (auto _ : state) {
    oxa_serv_df_threading.parallel_for((n + t.chunk - 1) / t.chunk, threads, &t, &triad_chunk);
    benchmark::DoNotOptimize(t.a.data());
  }
  report_spline_bytes(state);
}

BENCHMARK(BM_Triad)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_PlainLoop)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_LinearSpline)
    ->ArgName("threads")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
