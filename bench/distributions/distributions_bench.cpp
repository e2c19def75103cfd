// Gaussian, exponential and multivariate Gaussian generation on 1,048,576
// values from an MCG59 stream, side by side with peers in the same run:
// Boost's ziggurat normal and exponential over mt19937_64, std's normal over
// mt19937_64, GSL's ziggurat. Compare items_per_second within one run.
#include <benchmark/benchmark.h>
#include <gsl/gsl_randist.h>
#include <gsl/gsl_rng.h>

#include <boost/random/exponential_distribution.hpp>
#include <boost/random/mersenne_twister.hpp>
#include <boost/random/normal_distribution.hpp>
#include <cstdint>
#include <random>
#include <vector>

#include "oxa/distributions.h"

namespace {

constexpr int64_t kCount = 1 << 20;

class OxaStream {
 public:
  OxaStream() {
    const uint32_t seed = 12345;
    _vslNewStreamEx(&s_, OXA_BRNG_MCG59, 1, &seed);
  }
  ~OxaStream() { _vslDeleteStream(&s_); }
  StreamState* get() const { return s_; }

 private:
  StreamState* s_ = nullptr;
};

void finish(benchmark::State& state, const void* data) {
  benchmark::DoNotOptimize(data);
  benchmark::ClobberMemory();
  (void)state;
}

void BM_OxaGaussian(benchmark::State& state) {
  OxaStream s;
  std::vector<double> r(kCount);
  const auto method = static_cast<uint32_t>(state.range(0));
  for (auto _ : state) {
    _vsldRngGaussian(method, s.get(), kCount, r.data(), 0.0, 1.0);
    finish(state, r.data());
  }
  state.SetItemsProcessed(state.iterations() * kCount);
  state.SetLabel(method == 0 ? "BoxMuller" : method == 1 ? "BoxMuller2" : "ICDF");
}
BENCHMARK(BM_OxaGaussian)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

void BM_OxaGaussianFloat(benchmark::State& state) {
  OxaStream s;
  std::vector<float> r(kCount);
  const auto method = static_cast<uint32_t>(state.range(0));
  for (auto _ : state) {
    _vslsRngGaussian(method, s.get(), kCount, r.data(), 0.0f, 1.0f);
    finish(state, r.data());
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_OxaGaussianFloat)->Arg(0)->Arg(1)->Arg(2)->Unit(benchmark::kMillisecond);

// A peer that makes one value per call of next().
template <class Next>
void run_peer(benchmark::State& state, Next next) {
  std::vector<double> r(kCount);
  for (auto _ : state) {
    for (double& v : r) v = next();
    finish(state, r.data());
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}

void BM_BoostZigguratNormal(benchmark::State& state) {
  boost::random::mt19937_64 eng(12345);
  boost::random::normal_distribution<double> dist(0.0, 1.0);
  run_peer(state, [&] { return dist(eng); });
}
BENCHMARK(BM_BoostZigguratNormal)->Unit(benchmark::kMillisecond);

void BM_StdNormal(benchmark::State& state) {
  std::mt19937_64 eng(12345);
  std::normal_distribution<double> dist(0.0, 1.0);
  run_peer(state, [&] { return dist(eng); });
}
BENCHMARK(BM_StdNormal)->Unit(benchmark::kMillisecond);

void BM_GslZiggurat(benchmark::State& state) {
  gsl_rng* g = gsl_rng_alloc(gsl_rng_mt19937);
  gsl_rng_set(g, 12345);
  run_peer(state, [&] { return gsl_ran_gaussian_ziggurat(g, 1.0); });
  gsl_rng_free(g);
}
BENCHMARK(BM_GslZiggurat)->Unit(benchmark::kMillisecond);

void BM_BoostExponential(benchmark::State& state) {
  boost::random::mt19937_64 eng(12345);
  boost::random::exponential_distribution<double> dist(1.0);
  run_peer(state, [&] { return dist(eng); });
}
BENCHMARK(BM_BoostExponential)->Unit(benchmark::kMillisecond);

void BM_OxaExponential(benchmark::State& state) {
  OxaStream s;
  std::vector<double> r(kCount);
  for (auto _ : state) {
    _vsldRngExponential(0, s.get(), kCount, r.data(), 0.0, 1.0);
    finish(state, r.data());
  }
  state.SetItemsProcessed(state.iterations() * kCount);
}
BENCHMARK(BM_OxaExponential)->Unit(benchmark::kMillisecond);

// Full factor, arguments (method, dimension): the same 1,048,576 values as
// vectors, to set beside BM_OxaGaussian with the same method; dimensions 100
// and 1000 weigh the triangular product.
void BM_OxaGaussianMV(benchmark::State& state) {
  const auto d = static_cast<int32_t>(state.range(1));
  const int32_t vectors = kCount / d;
  OxaStream s;
  std::vector<double> r(static_cast<size_t>(vectors) * d), mean(d, 1.0), factor(d * d, 0.0);
  for (int i = 0; i < d; ++i)
    for (int j = 0; j <= i; ++j) factor[i * d + j] = 1.0 / (1 + i + j);
  const auto method = static_cast<uint32_t>(state.range(0));
  for (auto _ : state) {
    _vsldRngGaussianMV(method, s.get(), vectors, r.data(), d, OXA_MATRIX_STORAGE_FULL, mean.data(),
                       factor.data());
    finish(state, r.data());
  }
  state.SetItemsProcessed(state.iterations() * vectors * d);
}
BENCHMARK(BM_OxaGaussianMV)
    ->Args({1, 10})->Args({2, 10})->Args({2, 100})->Args({2, 1000})
    ->Unit(benchmark::kMillisecond);

}  // namespace
