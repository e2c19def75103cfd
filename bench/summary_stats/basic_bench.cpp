// Basic estimator against a STREAM-style read, Eigen and GSL, in one run.
// Counters: bytes_per_second of input; ratios are read off side by side.
//   mean + variance, p = 1, 10, 100 over the same 10^8 values: fast (0x1) and
//     one-pass (0x2), both storages, against the read floor, a plain loop of
//     shifted raw sums (the fast method's work, written out) and Eigen (p = 10);
//   covariance, p = 100, n = 10^6, one-pass, 1 and 2 threads, against Eigen's
//     centred product;
//   mean + variance of one variable against gsl_stats_mean + gsl_stats_variance.
#include <benchmark/benchmark.h>
#include <immintrin.h>
#include <omp.h>

#include <cstdint>
#include <vector>

#include "oxa/summary_stats.h"

#ifdef OXA_BENCH_HAVE_EIGEN
#include <Eigen/Dense>
#endif
#ifdef OXA_BENCH_HAVE_GSL
#include <gsl/gsl_statistics_double.h>
#endif

namespace {

constexpr int64_t kElements = 100'000'000;  // 800 MB, shared by every case

const std::vector<double>& data() {
  static const std::vector<double> x = [] {
    std::vector<double> v(kElements);
    uint64_t s = 1;
    for (auto& e : v) {
      s = s * 6364136223846793005ull + 1442695040888963407ull;
      e = double(s >> 11) * 0x1p-53 + 1.0;
    }
    return v;
  }();
  return x;
}

void set_bytes(benchmark::State& state, int64_t elements) {
  state.SetBytesProcessed(state.iterations() * elements * int64_t(sizeof(double)));
}

// STREAM-style read: sum of all elements with independent lanes.
void BM_stream_sum(benchmark::State& state) {
  const double* x = data().data();
  for (auto _ : state) {
    double acc[8] = {};
    for (int64_t i = 0; i < kElements; i += 8)
      for (int l = 0; l < 8; ++l) acc[l] += x[i + l];
    benchmark::DoNotOptimize(acc);
  }
  set_bytes(state, kElements);
}

// Sums of d and d^2, d = v[i] - v[0], over four vectors of independent lanes.
void shifted_row(const double* v, int64_t n, double& c, double& s1, double& s2) {
  c = v[0];
  const __m256d cv = _mm256_set1_pd(c);
  __m256d a1[4], a2[4];
  for (int u = 0; u < 4; ++u) a1[u] = a2[u] = _mm256_setzero_pd();
  int64_t i = 0;
  for (; i + 16 <= n; i += 16)
    for (int u = 0; u < 4; ++u) {
      const __m256d d = _mm256_sub_pd(_mm256_loadu_pd(v + i + 4 * u), cv);
      a1[u] = _mm256_add_pd(a1[u], d);
      a2[u] = _mm256_fmadd_pd(d, d, a2[u]);
    }
  double l1[4], l2[4];
  _mm256_storeu_pd(l1, _mm256_add_pd(_mm256_add_pd(a1[0], a1[1]), _mm256_add_pd(a1[2], a1[3])));
  _mm256_storeu_pd(l2, _mm256_add_pd(_mm256_add_pd(a2[0], a2[1]), _mm256_add_pd(a2[2], a2[3])));
  s1 = l1[0] + l1[1] + l1[2] + l1[3];
  s2 = l2[0] + l2[1] + l2[2] + l2[3];
  for (; i < n; ++i) {
    const double d = v[i] - c;
    s1 += d;
    s2 += d * d;
  }
}

// The fast method's work written plainly: per component, sums of d and d^2
// with d = x - x_first, in sixteen independent lanes (by component, and for
// one component either way) or across the components of each observation
// (by observation); mean and variance from them at the end.
void BM_plain_shifted(benchmark::State& state) {
  const int64_t p = state.range(0), n = kElements / p;
  const double* x = data().data();
  std::vector<double> mean(p), var(p), c(p), s1(p), s2(p);
  for (auto _ : state) {
    if (state.range(1) == 0x10000 || p == 1) {
      for (int64_t j = 0; j < p; ++j) shifted_row(x + j * n, n, c[j], s1[j], s2[j]);
    } else {
      for (int64_t j = 0; j < p; ++j) {
        c[j] = x[j];
        s1[j] = s2[j] = 0;
      }
      for (int64_t i = 0; i < n; ++i) {
        const double* v = x + i * p;
        for (int64_t j = 0; j < p; ++j) {
          const double d = v[j] - c[j];
          s1[j] += d;
          s2[j] += d * d;
        }
      }
    }
    for (int64_t j = 0; j < p; ++j) {
      const double delta = s1[j] / double(n);
      mean[j] = c[j] + delta;
      var[j] = (s2[j] - delta * s1[j]) / double(n - 1);
    }
    benchmark::DoNotOptimize(var.data());
    benchmark::DoNotOptimize(mean.data());
  }
  set_bytes(state, kElements);
}

// One estimator run per iteration over p x n observations.
void run_basic(benchmark::State& state, int64_t p, int64_t storage, uint64_t estimates,
               int64_t method, int threads) {
  const int64_t n = kElements / p;
  std::vector<double> mean(p), raw2(p), c2(p), cov(p * p), accw(2);
  const int64_t cov_storage = 0;
  SSTask* task = nullptr;
  _vsldSSNewTask(&task, &p, &n, &storage, data().data(), nullptr, nullptr, 1);
  _vsldSSEditMoments(task, mean.data(), raw2.data(), nullptr, nullptr, c2.data(), nullptr, nullptr);
  _vsldSSEditCovCor(task, nullptr, cov.data(), &cov_storage, nullptr, nullptr);
  _vsldSSEditTask(task, OXA_SS_ID_ACCUMULATED_WEIGHTS, accw.data());
  const int saved = omp_get_max_threads();
  omp_set_num_threads(threads);
  for (auto _ : state) {
    accw[0] = accw[1] = 0;
    if (_vsldSSBasic(task, estimates, method) != 0) state.SkipWithError("estimator failed");
    benchmark::DoNotOptimize(c2.data());
  }
  omp_set_num_threads(saved);
  _vslSSDeleteTask(&task);
  set_bytes(state, kElements);
}

constexpr uint64_t kMeanVariance = OXA_SS_EST_MEAN | OXA_SS_EST_CENTRAL2;

void BM_oxa_mean_var(benchmark::State& state) {
  run_basic(state, state.range(0), state.range(1), kMeanVariance, state.range(2), 1);
}
void BM_oxa_cov_p100(benchmark::State& state) {
  run_basic(state, 100, 0x20000, OXA_SS_EST_MEAN | OXA_SS_EST_COVARIANCE, 0x2, int(state.range(0)));
}

#ifdef OXA_BENCH_HAVE_EIGEN
using RowMajor = Eigen::Matrix<double, Eigen::Dynamic, Eigen::Dynamic, Eigen::RowMajor>;

// Mean and variance per component; by component the p rows of length n are
// contiguous (range 0x10000), by observation the n rows of length p are.
void BM_eigen_mean_var(benchmark::State& state) {
  const int64_t p = 10, n = kElements / p;
  for (auto _ : state) {
    Eigen::VectorXd mean, var;
    if (state.range(0) == 0x10000) {
      Eigen::Map<const RowMajor> x(data().data(), p, n);
      mean = x.rowwise().mean();
      var = (x.colwise() - mean).rowwise().squaredNorm() / double(n - 1);
    } else {
      Eigen::Map<const RowMajor> x(data().data(), n, p);
      mean = x.colwise().mean().transpose();
      var = (x.rowwise() - mean.transpose()).colwise().squaredNorm().transpose() / double(n - 1);
    }
    benchmark::DoNotOptimize(var.data());
  }
  set_bytes(state, kElements);
}

void BM_eigen_cov_p100(benchmark::State& state) {
  const int64_t p = 100, n = kElements / p;
  Eigen::Map<const RowMajor> x(data().data(), n, p);
  Eigen::setNbThreads(int(state.range(0)));
  for (auto _ : state) {
    const Eigen::RowVectorXd mean = x.colwise().mean();
    const Eigen::MatrixXd centred = x.rowwise() - mean;
    const Eigen::MatrixXd cov = (centred.adjoint() * centred) / double(n - 1);
    benchmark::DoNotOptimize(cov.data());
  }
  set_bytes(state, kElements);
}
#endif

#ifdef OXA_BENCH_HAVE_GSL
// One variable of n = 10^7 values: GSL mean + variance against the estimator.
void BM_gsl_mean_var_one(benchmark::State& state) {
  const size_t n = kElements / 10;
  for (auto _ : state) {
    const double m = gsl_stats_mean(data().data(), 1, n);
    const double v = gsl_stats_variance_m(data().data(), 1, n, m);
    benchmark::DoNotOptimize(v);
  }
  set_bytes(state, kElements / 10);
}
#endif

void BM_oxa_mean_var_one(benchmark::State& state) {
  const int64_t p = 1, n = kElements / 10, storage = 0x10000;
  double mean, raw2, c2, accw[2];
  SSTask* task = nullptr;
  _vsldSSNewTask(&task, &p, &n, &storage, data().data(), nullptr, nullptr, 1);
  _vsldSSEditMoments(task, &mean, &raw2, nullptr, nullptr, &c2, nullptr, nullptr);
  _vsldSSEditTask(task, OXA_SS_ID_ACCUMULATED_WEIGHTS, accw);
  const int saved = omp_get_max_threads();
  omp_set_num_threads(1);
  for (auto _ : state) {
    accw[0] = accw[1] = 0;
    _vsldSSBasic(task, kMeanVariance, state.range(0));
    benchmark::DoNotOptimize(c2);
  }
  omp_set_num_threads(saved);
  _vslSSDeleteTask(&task);
  set_bytes(state, kElements / 10);
}

}  // namespace

BENCHMARK(BM_stream_sum)->Unit(benchmark::kMillisecond);
// (p, storage, method)
BENCHMARK(BM_oxa_mean_var)
    ->ArgsProduct({{1, 10, 100}, {0x10000, 0x20000}, {0x1}})
    ->Args({10, 0x10000, 0x2})
    ->Args({10, 0x20000, 0x2})
    ->Unit(benchmark::kMillisecond);
// (p, storage)
BENCHMARK(BM_plain_shifted)
    ->ArgsProduct({{1, 10, 100}, {0x10000, 0x20000}})
    ->Unit(benchmark::kMillisecond);
#ifdef OXA_BENCH_HAVE_EIGEN
BENCHMARK(BM_eigen_mean_var)->Arg(0x10000)->Arg(0x20000)->Unit(benchmark::kMillisecond);
#endif
BENCHMARK(BM_oxa_cov_p100)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
#ifdef OXA_BENCH_HAVE_EIGEN
BENCHMARK(BM_eigen_cov_p100)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond)->UseRealTime();
#endif
BENCHMARK(BM_oxa_mean_var_one)->Arg(0x1)->Arg(0x2)->Unit(benchmark::kMillisecond);
#ifdef OXA_BENCH_HAVE_GSL
BENCHMARK(BM_gsl_mean_var_one)->Unit(benchmark::kMillisecond);
#endif
