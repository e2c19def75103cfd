// Copy and fill of 2^25 doubles (256 MiB, far above the non-temporal
// threshold) side by side with memcpy and memset, and with the write floor:
// a bare loop of aligned non-temporal vector stores over the same array.
// Fills are measured with zero and with a nonzero value (3.0, and the byte
// 0x40 for memset): storing zeros is cheaper on some machines.
#include <benchmark/benchmark.h>
#include <immintrin.h>

#include <cstring>
#include <vector>

#include "oxa/primitives.h"

namespace {

constexpr int64_t kElements = int64_t(1) << 25;

struct Arrays {
  std::vector<double> src = std::vector<double>(kElements, 1.5);
  std::vector<double> dst = std::vector<double>(kElements, 0.0);
};
Arrays& arrays() {
  static Arrays a;
  return a;
}

void finish(benchmark::State& state) {
  state.SetBytesProcessed(state.iterations() * kElements * int64_t(sizeof(double)));
}

void BM_PrimCopy(benchmark::State& state) {
  auto& a = arrays();
  for (auto _ : state) {
    oxa_prim_copy(OXA_PRIM_DOUBLE, kElements, a.src.data(), 1, a.dst.data(), 1);
    benchmark::ClobberMemory();
  }
  finish(state);
}
void BM_Memcpy(benchmark::State& state) {
  auto& a = arrays();
  for (auto _ : state) {
    std::memcpy(a.dst.data(), a.src.data(), kElements * sizeof(double));
    benchmark::ClobberMemory();
  }
  finish(state);
}
void BM_PrimFill(benchmark::State& state) {
  auto& a = arrays();
  const double value = double(state.range(0));
  for (auto _ : state) {
    oxa_prim_fill(OXA_PRIM_DOUBLE, kElements, &value, a.dst.data(), 1);
    benchmark::ClobberMemory();
  }
  finish(state);
}
void BM_Memset(benchmark::State& state) {
  auto& a = arrays();
  for (auto _ : state) {
    std::memset(a.dst.data(), int(state.range(0)), kElements * sizeof(double));
    benchmark::ClobberMemory();
  }
  finish(state);
}
void BM_StreamStoreFloor(benchmark::State& state) {
  auto& a = arrays();
  auto* p = reinterpret_cast<char*>(a.dst.data());
  const size_t head = (0 - reinterpret_cast<uintptr_t>(p)) & 31;
  const size_t bytes = (kElements * sizeof(double) - head) & ~size_t(31);
  const __m256i v = _mm256_castpd_si256(_mm256_set1_pd(double(state.range(0))));
  for (auto _ : state) {
    for (size_t i = 0; i < bytes; i += 32) _mm256_stream_si256(reinterpret_cast<__m256i*>(p + head + i), v);
    _mm_sfence();
    benchmark::ClobberMemory();
  }
  finish(state);
}

BENCHMARK(BM_PrimCopy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memcpy)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_PrimFill)->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_Memset)->Arg(0)->Arg(0x40)->Unit(benchmark::kMillisecond);
BENCHMARK(BM_StreamStoreFloor)->Arg(0)->Arg(3)->Unit(benchmark::kMillisecond);

}  // namespace
