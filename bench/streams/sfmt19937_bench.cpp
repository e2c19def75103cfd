// SFMT19937 words beside std::mt19937 and the library's MT19937 on 2^14
// values (output stays in cache: the generators' own cost) and 2^20 values
// (bound by the output writes); doubles on [0, 1) beside the write floor (a plain loop writing the
// same number of doubles) at 16M values.
#include <benchmark/benchmark.h>

#include <random>
#include <vector>

#include "oxa/streams.h"

namespace {

constexpr int32_t kDoubles = 1 << 24;

struct Seeded {
  StreamState* s = nullptr;
  explicit Seeded(int32_t id) {
    const uint32_t seed = 5489;
    _vslNewStreamEx(&s, id, 1, &seed);
  }
  ~Seeded() { _vslDeleteStream(&s); }
};

void BM_Words(benchmark::State& state, int32_t id) {
  Seeded g(id);
  BrngProperties p;
  _vslGetBrngProperties(id, &p);
  const int32_t n = static_cast<int32_t>(state.range(0));
  std::vector<uint32_t> r(n);
  for (auto _ : state) {
    p.GenBits(g.s, n, r.data());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * n);
}

void BM_StdMtWords(benchmark::State& state) {
  std::mt19937 g(5489);
  std::vector<uint32_t> r(static_cast<size_t>(state.range(0)));
  for (auto _ : state) {
    for (auto& x : r) x = uint32_t(g());
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void BM_SfmtDoubles16M(benchmark::State& state) {
  Seeded g(OXA_BRNG_SFMT19937);
  std::vector<double> r(kDoubles);
  for (auto _ : state) {
    _vsldBRngSFMT19937(g.s, kDoubles, r.data(), 0.0, 1.0);
    benchmark::DoNotOptimize(r.data());
  }
  state.SetItemsProcessed(state.iterations() * kDoubles);
}

void BM_WriteFloor16M(benchmark::State& state) {
  std::vector<double> r(kDoubles);
  double v = 0.0;
  for (auto _ : state) {
    for (int32_t i = 0; i < kDoubles; ++i) r[i] = v + static_cast<double>(i) * 0x1p-32;
    v += 1.0;
    benchmark::DoNotOptimize(r.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * kDoubles);
}

BENCHMARK_CAPTURE(BM_Words, SFMT19937, OXA_BRNG_SFMT19937)->Arg(1 << 14)->Arg(1 << 20);
BENCHMARK_CAPTURE(BM_Words, MT19937, OXA_BRNG_MT19937)->Arg(1 << 14)->Arg(1 << 20);
BENCHMARK(BM_StdMtWords)->Arg(1 << 14)->Arg(1 << 20);
BENCHMARK(BM_SfmtDoubles16M)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_WriteFloor16M)->Unit(benchmark::kMillisecond);

}  // namespace
