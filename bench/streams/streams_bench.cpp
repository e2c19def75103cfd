// Uniform doubles on [0, 1) from each generator, side by side with peers and
// with a plain write loop (the memory floor), at 1M and 16M values; and
// integer uniforms against std::uniform_int_distribution. Compare rates
// (items_per_second) within one run.
#include <Random123/ars.h>
#include <Random123/philox.h>
#include <benchmark/benchmark.h>

#include <cstdint>
#include <random>
#include <vector>

#include "oxa/distributions.h"

namespace {

void set_items(benchmark::State& state, int64_t n) {
  state.SetItemsProcessed(state.iterations() * n);
  state.SetBytesProcessed(state.iterations() * n * 8);
}

void BM_WriteFloor(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<double> r(n);
  double v = 0.0;
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) r[i] = v + static_cast<double>(i) * 0x1p-32;
    v += 1.0;
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  set_items(state, n);
}

void BM_StdMt19937Real(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<double> r(n);
  std::mt19937 eng(12345);
  std::uniform_real_distribution<double> dist(0.0, 1.0);
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) r[i] = dist(eng);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  set_items(state, n);
}

void BM_Philox4x32_10(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<double> r(n);
  r123::Philox4x32 gen;
  r123::Philox4x32::ctr_type c = {{0, 0, 0, 0}};
  const r123::Philox4x32::key_type k = {{12345, 0}};
  for (auto _ : state) {
    for (int64_t i = 0; i + 4 <= n; i += 4) {
      c.v[0]++;
      const auto o = gen(c, k);
      for (int j = 0; j < 4; ++j) r[i + j] = o.v[j] * 0x1p-32;
    }
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  set_items(state, n);
}

void BM_Ars5(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<double> r(n);
  r123::ARS4x32_R<5> gen;
  r123::ARS4x32_R<5>::ctr_type c = {{0, 0, 0, 0}};
  const r123::ARS4x32_R<5>::ukey_type uk = {{12345, 0, 0, 0}};
  const r123::ARS4x32_R<5>::key_type k(uk);
  for (auto _ : state) {
    for (int64_t i = 0; i + 4 <= n; i += 4) {
      c.v[0]++;
      const auto o = gen(c, k);
      for (int j = 0; j < 4; ++j) r[i + j] = o.v[j] * 0x1p-32;
    }
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  set_items(state, n);
}

void BM_Oxa(benchmark::State& state, int32_t id) {
  const int64_t n = state.range(0);
  std::vector<double> r(n);
  StreamState* s = nullptr;
  const uint32_t seed = 12345;
  if (_vslNewStreamEx(&s, id, 1, &seed) != 0) {
    state.SkipWithError("stream creation failed");
    return;
  }
  for (auto _ : state) {
    _vsldRngUniform(OXA_RNG_METHOD_STANDARD, s, static_cast<int32_t>(n), r.data(), 0.0, 1.0);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  _vslDeleteStream(&s);
  set_items(state, n);
}

void BM_StdIntUniform(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<int32_t> r(n);
  std::mt19937 eng(12345);
  std::uniform_int_distribution<int32_t> dist(-1000, 999);
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) r[i] = dist(eng);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_OxaIntUniformMCG31M1(benchmark::State& state) {
  const int64_t n = state.range(0);
  std::vector<int32_t> r(n);
  StreamState* s = nullptr;
  const uint32_t seed = 12345;
  _vslNewStreamEx(&s, OXA_BRNG_MCG31M1, 1, &seed);
  for (auto _ : state) {
    _vsliRngUniform(0, s, static_cast<int32_t>(n), r.data(), -1000, 1000);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  _vslDeleteStream(&s);
  state.SetItemsProcessed(state.iterations() * n);
}

constexpr int64_t kSmall = 1 << 20, kLarge = 1 << 24;

BENCHMARK(BM_WriteFloor)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_StdMt19937Real)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_Philox4x32_10)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_Ars5)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(BM_Oxa, MCG31M1, OXA_BRNG_MCG31M1)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(BM_Oxa, MCG59, OXA_BRNG_MCG59)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(BM_Oxa, MRG32K3A, OXA_BRNG_MRG32K3A)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(BM_Oxa, R250, OXA_BRNG_R250)->Arg(kSmall)->Arg(kLarge);
BENCHMARK_CAPTURE(BM_Oxa, WH, OXA_BRNG_WH)->Arg(kSmall)->Arg(kLarge);
BENCHMARK(BM_StdIntUniform)->Arg(kSmall);
BENCHMARK(BM_OxaIntUniformMCG31M1)->Arg(kSmall);

}  // namespace
