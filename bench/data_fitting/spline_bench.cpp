// Cubic spline construction and evaluation beside GSL's cubic spline
// (gsl_spline_init with the natural cspline; gsl_spline_eval with an
// accelerator) and the linear spline, in the same run. scipy's CubicSpline
// is timed by spline_bench_scipy.py on the same sizes.
//
//   build/default/bench/data_fitting/bench_data_fitting --benchmark_filter='Cubic|Gsl|Linear'
#include <benchmark/benchmark.h>
#include <gsl/gsl_errno.h>
#include <gsl/gsl_spline.h>

#include <algorithm>
#include <random>
#include <vector>

#include "oxa/data_fitting.h"
#include "oxa/service.h"

namespace {

int32_t two_threads(const DfThreadingHint*) { return 2; }
const DfThreading kTwo = {oxa_serv_df_threading.parallel_for, nullptr, nullptr, nullptr,
                          &two_threads};

struct Data {
  int64_t nx, ny;
  std::vector<double> x, y, c;
  Data(int64_t nx_, int64_t ny_, int64_t order) : nx(nx_), ny(ny_) {
    std::mt19937_64 g(1);
    std::uniform_real_distribution<double> step(0.1, 1.9), v(-1, 1);
    double t = 0;
    for (int64_t i = 0; i < nx; ++i) x.push_back(t += step(g));
    y.resize(static_cast<size_t>(nx * ny));
    for (auto& e : y) e = v(g);
    c.assign(static_cast<size_t>((nx - 1) * order * ny), 0.0);
  }
};

DfTask* make_task(Data& d, int64_t order) {
  DfTask* task = nullptr;
  oxa_df_kernel_dNewTask1D(&task, d.nx, d.x.data(), DF_X_NON_UNIFORM, d.ny, d.y.data(),
                           DF_STORE_ROWS, 0);
  oxa_df_kernel_dEditPPSpline1D(task, order, order == 4 ? DF_TYPE_NATURAL : 0,
                                order == 4 ? DF_BC_FREE_END : 0, nullptr, 0, nullptr, d.c.data(),
                                0);
  return task;
}

// range(0) ny, range(1) threads.
void BM_CubicConstruct(benchmark::State& state) {
  Data d(100000, state.range(0), 4);
  DfTask* task = make_task(d, 4);
  const DfThreading* th = state.range(1) == 2 ? &kTwo : nullptr;
  for (auto _ : state) {
    if (oxa_df_kernel_dDFCubicSpline1D(task, 0, nullptr, th) != DF_OK) state.SkipWithError("status");
    benchmark::DoNotOptimize(d.c.data());
  }
  oxa_df_kernel_DeleteTask(&task);
}

void BM_LinearConstruct(benchmark::State& state) {
  Data d(100000, state.range(0), 2);
  DfTask* task = make_task(d, 2);
  const DfThreading* th = state.range(1) == 2 ? &kTwo : nullptr;
  for (auto _ : state) {
    oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, th);
    benchmark::DoNotOptimize(d.c.data());
  }
  oxa_df_kernel_DeleteTask(&task);
}

// One GSL spline object per function, initialised each iteration.
void BM_GslCsplineInit(benchmark::State& state) {
  Data d(100000, state.range(0), 0);
  std::vector<gsl_spline*> s;
  for (int64_t j = 0; j < d.ny; ++j) s.push_back(gsl_spline_alloc(gsl_interp_cspline, d.nx));
  for (auto _ : state) {
    for (int64_t j = 0; j < d.ny; ++j)
      gsl_spline_init(s[j], d.x.data(), d.y.data() + j * d.nx, static_cast<size_t>(d.nx));
    benchmark::ClobberMemory();
  }
  for (auto* p : s) gsl_spline_free(p);
}

constexpr int64_t kSites = 1000000, kEvalNx = 10000;

std::vector<double> sites(const Data& d, bool sorted) {
  std::mt19937_64 g(2);
  std::uniform_real_distribution<double> u(d.x.front(), d.x.back());
  std::vector<double> s(kSites);
  for (auto& e : s) e = u(g);
  if (sorted) std::sort(s.begin(), s.end());
  return s;
}

// range(0) sorted sites (and the sorted hint).
void BM_CubicEvaluate(benchmark::State& state) {
  Data d(kEvalNx, 1, 4);
  DfTask* task = make_task(d, 4);
  oxa_df_kernel_dDFCubicSpline1D(task, 0, nullptr, nullptr);
  const auto t = sites(d, state.range(0) != 0);
  std::vector<double> r(kSites);
  const int64_t hint = state.range(0) != 0 ? DF_SITE_SORTED : 0;
  for (auto _ : state) {
    oxa_df_kernel_dDFInterpolate1D(task, kSites, t.data(), hint, nullptr, 0, nullptr, 0, nullptr,
                                   r.data(), 0, nullptr, nullptr, nullptr, nullptr, nullptr);
    benchmark::DoNotOptimize(r.data());
  }
  oxa_df_kernel_DeleteTask(&task);
}

void BM_GslEvaluate(benchmark::State& state) {
  Data d(kEvalNx, 1, 0);
  gsl_spline* s = gsl_spline_alloc(gsl_interp_cspline, d.nx);
  gsl_spline_init(s, d.x.data(), d.y.data(), static_cast<size_t>(d.nx));
  gsl_interp_accel* acc = gsl_interp_accel_alloc();
  const auto t = sites(d, state.range(0) != 0);
  std::vector<double> r(kSites);
  for (auto _ : state) {
    for (int64_t i = 0; i < kSites; ++i) r[i] = gsl_spline_eval(s, t[i], acc);
    benchmark::DoNotOptimize(r.data());
  }
  gsl_interp_accel_free(acc);
  gsl_spline_free(s);
}

BENCHMARK(BM_CubicConstruct)
    ->ArgNames({"ny", "threads"})
    ->Args({1, 1})
    ->Args({100, 1})
    ->Args({100, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_GslCsplineInit)->ArgName("ny")->Arg(1)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_LinearConstruct)
    ->ArgNames({"ny", "threads"})
    ->Args({100, 1})
    ->Args({100, 2})
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();
BENCHMARK(BM_CubicEvaluate)->ArgName("sorted")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_GslEvaluate)->ArgName("sorted")->Arg(0)->Arg(1)->Unit(benchmark::kMillisecond);

}  // namespace
