// Quasi-random doubles on [0, 1): Sobol and Niederreiter streams of dimension
// 1, 10 and 100 handing out 2^20 points per iteration, and the plain write
// loop of the same number of doubles (the memory floor) for dimension 1.
// BM_QuasiCalls hands out the same 2^20 points in calls of 1024 points into
// one reused buffer (a consumer that streams points), so the output stays in
// cache and the generator's own cost shows. Items are points. The peer (scipy's unscrambled Sobol, random_base2(20)) is
// timed by bench/streams/scipy_sobol_time.py on the same machine.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <vector>

#include "oxa/streams.h"

namespace {

constexpr int64_t kPoints = int64_t{1} << 20;

void BM_QuasiWriteFloor(benchmark::State& state) {
  const int64_t n = kPoints * state.range(0);
  std::vector<double> r(static_cast<size_t>(n));
  double v = 0.0;
  for (auto _ : state) {
    for (int64_t i = 0; i < n; ++i) r[i] = v + static_cast<double>(i) * 0x1p-32;
    v += 1.0;
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kPoints);
}

void BM_Quasi(benchmark::State& state, int32_t id) {
  const uint32_t d = static_cast<uint32_t>(state.range(0));
  const int64_t n = kPoints * d;
  std::vector<double> r(static_cast<size_t>(n));
  StreamState* s = nullptr;
  if (_vslNewStreamEx(&s, id, 1, &d) != 0) {
    state.SkipWithError("stream creation failed");
    return;
  }
  BrngProperties p;
  _vslGetBrngProperties(id, &p);
  for (auto _ : state) {
    p.GenDouble(s, static_cast<int32_t>(n), r.data(), 0.0, 1.0);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kPoints);
  _vslDeleteStream(&s);
}

void BM_QuasiCalls(benchmark::State& state, int32_t id) {
  const uint32_t d = static_cast<uint32_t>(state.range(0));
  constexpr int64_t kCall = 1024;
  std::vector<double> r(static_cast<size_t>(kCall * d));
  StreamState* s = nullptr;
  if (_vslNewStreamEx(&s, id, 1, &d) != 0) {
    state.SkipWithError("stream creation failed");
    return;
  }
  BrngProperties p;
  _vslGetBrngProperties(id, &p);
  for (auto _ : state) {
    for (int64_t k = 0; k < kPoints; k += kCall) {
      p.GenDouble(s, static_cast<int32_t>(kCall * d), r.data(), 0.0, 1.0);
      benchmark::DoNotOptimize(r.data());
    }
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kPoints);
  _vslDeleteStream(&s);
}

BENCHMARK(BM_QuasiWriteFloor)->Arg(1)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Quasi, SOBOL, OXA_BRNG_SOBOL)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_Quasi, NIEDERR, OXA_BRNG_NIEDERR)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(BM_QuasiCalls, SOBOL, OXA_BRNG_SOBOL)->Arg(1)->Arg(10)->Arg(100)->Unit(benchmark::kMillisecond);

}  // namespace
