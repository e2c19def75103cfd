// MT19937 streams side by side with std::mt19937 on 1,048,576 values.
#include <benchmark/benchmark.h>

#include <random>
#include <string>
#include <vector>

#include "oxa/streams.h"

namespace {

constexpr int32_t kValues = 1 << 20;

struct MtStream {
  StreamState* s = nullptr;
  MtStream() {
    const uint32_t seed = 5489;
    _vslNewStreamEx(&s, OXA_BRNG_MT19937, 1, &seed);
  }
  ~MtStream() { _vslDeleteStream(&s); }
};

void BM_Mt19937Words(benchmark::State& state) {
  MtStream m;
  std::vector<uint32_t> r(kValues);
  for (auto _ : state) {
    _vsliBRngMT19937(m.s, kValues, r.data());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

void BM_StdMt19937Words(benchmark::State& state) {
  std::mt19937 g(5489);
  std::vector<uint32_t> r(kValues);
  for (auto _ : state) {
    for (auto& x : r) x = uint32_t(g());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

void BM_Mt19937Doubles(benchmark::State& state) {
  MtStream m;
  std::vector<double> r(kValues);
  for (auto _ : state) {
    _vsldBRngMT19937(m.s, kValues, r.data(), 0.0, 1.0);
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

void BM_StdMt19937Doubles(benchmark::State& state) {
  std::mt19937 g(5489);
  std::uniform_real_distribution<double> u(0.0, 1.0);
  std::vector<double> r(kValues);
  for (auto _ : state) {
    for (auto& x : r) x = u(g);
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * kValues);
}

// Skip-ahead by count: just past the block-stepping threshold (where the
// jump polynomial takes over), a mid-size count and the largest count.
constexpr uint64_t kSkipCounts[] = {624 * 600, 1000000000000ull, ~uint64_t(0)};

void BM_Mt19937SkipAhead(benchmark::State& state) {
  const uint64_t count = kSkipCounts[state.range(0)];
  MtStream m;
  for (auto _ : state) {
    _vslSkipAheadStream(m.s, count);
    benchmark::ClobberMemory();
  }
  state.SetLabel(std::to_string(count));
}

// The stepping peer for the smallest count.
void BM_StdMt19937Discard(benchmark::State& state) {
  std::mt19937 g(5489);
  for (auto _ : state) {
    g.discard(kSkipCounts[0]);
    benchmark::DoNotOptimize(g);
  }
  state.SetLabel(std::to_string(kSkipCounts[0]));
}

BENCHMARK(BM_Mt19937Words);
BENCHMARK(BM_StdMt19937Words);
BENCHMARK(BM_Mt19937Doubles);
BENCHMARK(BM_StdMt19937Doubles);
BENCHMARK(BM_Mt19937SkipAhead)->DenseRange(0, 2)->Unit(benchmark::kMicrosecond);
BENCHMARK(BM_StdMt19937Discard)->Unit(benchmark::kMicrosecond);

}  // namespace
