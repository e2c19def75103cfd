// PHILOX4X32X10 and ARS5 doubles on [0, 1) through their generator entry
// points, at 1M and 16M values; the Random123 loops and the write floor they
// are compared with are in streams_bench.cpp (same program, same run).
#include <benchmark/benchmark.h>

#include <vector>

#include "oxa/streams.h"

namespace {

void BM_OxaCounterDoubles(benchmark::State& state, int32_t id) {
  const int64_t n = state.range(0);
  std::vector<double> r(size_t(n), 0.0);
  StreamState* s = nullptr;
  const uint32_t seed = 12345;
  if (_vslNewStreamEx(&s, id, 1, &seed) != 0) {
    state.SkipWithError("stream creation failed");
    return;
  }
  const auto gen = id == OXA_BRNG_ARS5 ? _vsldBRngARS5 : _vsldBRngPHILOX4X32X10;
  for (auto _ : state) {
    gen(s, int32_t(n), r.data(), 0.0, 1.0);
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  _vslDeleteStream(&s);
  state.SetItemsProcessed(state.iterations() * n);
  state.SetBytesProcessed(state.iterations() * n * 8);
}

BENCHMARK_CAPTURE(BM_OxaCounterDoubles, PHILOX4X32X10, OXA_BRNG_PHILOX4X32X10)
    ->Arg(1 << 20)->Arg(1 << 24);
BENCHMARK_CAPTURE(BM_OxaCounterDoubles, ARS5, OXA_BRNG_ARS5)->Arg(1 << 20)->Arg(1 << 24);

}  // namespace
