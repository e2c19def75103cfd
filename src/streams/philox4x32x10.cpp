// PHILOX4X32X10: the Philox-4x32 counter-based function with 10 rounds.
// Rounds:  (x0, x1, x2, x3) -> (hi(M1*x2) ^ x1 ^ k0, lo(M1*x2), hi(M0*x0) ^ x3 ^ k1,
//          lo(M0*x0)), M0 = 0xD2511F53, M1 = 0xCD9E8D57; the key words grow by
//          0x9E3779B9 and 0xBB67AE85 between rounds.
// Seeding: k0, k1 = seed[0], seed[1]; counter words = seed[2..5]; absent words 0.
// Vector:  sixteen counters at a time, one per 32-bit lane of two pairs of
//          AVX2 registers, transposed back to four words per block.
// Reals:   centred mapping (a + b)/2 + (b - a)*2^-32*x of the signed word x.
// Skip-ahead: counter arithmetic of counter_generator.hpp; leapfrog -1002.
#include <immintrin.h>

#include "streams/counter_generator.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {

struct PhiloxState {
  uint32_t key[2];
  uint32_t ctr[4];
  uint32_t out[4];
  uint32_t left;
};
static_assert(sizeof(StreamState) + sizeof(PhiloxState) <= 64, "PHILOX4X32X10 block is 64 bytes");

namespace {

constexpr uint32_t kM0 = 0xD2511F53u, kM1 = 0xCD9E8D57u;
constexpr uint32_t kW0 = 0x9E3779B9u, kW1 = 0xBB67AE85u;
constexpr int kRounds = 10;

void philox_block(const uint32_t key[2], const uint32_t c[4], uint32_t* out) {
  uint32_t x0 = c[0], x1 = c[1], x2 = c[2], x3 = c[3], k0 = key[0], k1 = key[1];
  for (int r = 0; r < kRounds; ++r, k0 += kW0, k1 += kW1) {
    const uint64_t p0 = uint64_t(kM0) * x0, p1 = uint64_t(kM1) * x2;
    x0 = uint32_t(p1 >> 32) ^ x1 ^ k0;
    x1 = uint32_t(p1);
    x2 = uint32_t(p0 >> 32) ^ x3 ^ k1;
    x3 = uint32_t(p0);
  }
  out[0] = x0, out[1] = x1, out[2] = x2, out[3] = x3;
}

// High and low halves of m * x in each 32-bit lane.
inline void mulhilo8(__m256i x, __m256i m, __m256i& hi, __m256i& lo) {
  const __m256i even = _mm256_mul_epu32(x, m);
  const __m256i odd = _mm256_mul_epu32(_mm256_srli_epi64(x, 32), m);
  lo = _mm256_blend_epi32(even, _mm256_slli_epi64(odd, 32), 0xAA);
  hi = _mm256_blend_epi32(_mm256_srli_epi64(even, 32), odd, 0xAA);
}

// Blocks c, c+1, ..., c+8G-1 when the low counter word does not carry: G
// independent groups of eight lanes, interleaved to hide the multiply latency.
// sink(i, w) receives words 8i .. 8i+7 of the run in one register.
template <int G, class Sink>
inline void philox_lanes(const uint32_t key[2], const uint32_t c[4], const Sink& sink) {
  __m256i x0[G], x1[G], x2[G], x3[G];
#pragma GCC unroll 4
  for (int g = 0; g < G; ++g) {
    x0[g] = _mm256_add_epi32(_mm256_set1_epi32(int32_t(c[0] + 8u * unsigned(g))),
                             _mm256_setr_epi32(0, 1, 2, 3, 4, 5, 6, 7));
    x1[g] = _mm256_set1_epi32(int32_t(c[1]));
    x2[g] = _mm256_set1_epi32(int32_t(c[2]));
    x3[g] = _mm256_set1_epi32(int32_t(c[3]));
  }
  __m256i k0 = _mm256_set1_epi32(int32_t(key[0])), k1 = _mm256_set1_epi32(int32_t(key[1]));
  const __m256i m0 = _mm256_set1_epi32(int32_t(kM0)), m1 = _mm256_set1_epi32(int32_t(kM1));
  const __m256i w0 = _mm256_set1_epi32(int32_t(kW0)), w1 = _mm256_set1_epi32(int32_t(kW1));
  for (int r = 0; r < kRounds; ++r) {
#pragma GCC unroll 4
    for (int g = 0; g < G; ++g) {
      __m256i hi0, lo0, hi1, lo1;
      mulhilo8(x0[g], m0, hi0, lo0);
      mulhilo8(x2[g], m1, hi1, lo1);
      x0[g] = _mm256_xor_si256(_mm256_xor_si256(hi1, x1[g]), k0);
      x1[g] = lo1;
      x2[g] = _mm256_xor_si256(_mm256_xor_si256(hi0, x3[g]), k1);
      x3[g] = lo0;
    }
    k0 = _mm256_add_epi32(k0, w0);
    k1 = _mm256_add_epi32(k1, w1);
  }
  // Lanes hold word i of eight blocks; write each block's four words together.
#pragma GCC unroll 4
  for (int g = 0; g < G; ++g) {
    const __m256i t0 = _mm256_unpacklo_epi32(x0[g], x1[g]), t1 = _mm256_unpackhi_epi32(x0[g], x1[g]);
    const __m256i t2 = _mm256_unpacklo_epi32(x2[g], x3[g]), t3 = _mm256_unpackhi_epi32(x2[g], x3[g]);
    const __m256i b04 = _mm256_unpacklo_epi64(t0, t2), b15 = _mm256_unpackhi_epi64(t0, t2);
    const __m256i b26 = _mm256_unpacklo_epi64(t1, t3), b37 = _mm256_unpackhi_epi64(t1, t3);
    sink(4 * g + 0, _mm256_permute2x128_si256(b04, b15, 0x20));
    sink(4 * g + 1, _mm256_permute2x128_si256(b26, b37, 0x20));
    sink(4 * g + 2, _mm256_permute2x128_si256(b04, b15, 0x31));
    sink(4 * g + 3, _mm256_permute2x128_si256(b26, b37, 0x31));
  }
}

// Runs the blocks from ctr in sixteens (eights near a carry of the low counter
// word, single blocks where it carries), handing each register of words to
// sink_run(words8, index of its first word) and single blocks to sink_one.
template <class SinkRun, class SinkOne>
void philox_run(const uint32_t key[2], const uint32_t ctr[4], std::size_t n,
                const SinkRun& sink_run, const SinkOne& sink_one) {
  uint32_t c[4] = {ctr[0], ctr[1], ctr[2], ctr[3]};
  std::size_t word = 0;
  auto at = [&](int i, __m256i w) { sink_run(w, word + 8 * std::size_t(i)); };
  while (n > 0) {
    if (n >= 16 && c[0] <= 0xFFFFFFFFu - 15) {
      philox_lanes<2>(key, c, at);
      counter_add(c, 16), n -= 16, word += 64;
    } else if (n >= 8 && c[0] <= 0xFFFFFFFFu - 7) {
      philox_lanes<1>(key, c, at);
      counter_add(c, 8), n -= 8, word += 32;
    } else {
      uint32_t block[4];
      philox_block(key, c, block);
      sink_one(block, word);
      counter_add(c, 1), n -= 1, word += 4;
    }
  }
}

struct Philox {
  using State = PhiloxState;
  static constexpr int kKeyWords = 2;
  static int32_t usable() { return 0; }
  static void blocks(const State& s, const uint32_t ctr[4], std::size_t n, uint32_t* words) {
    philox_run(
        s.key, ctr, n,
        [=](__m256i w, std::size_t i) {
          _mm256_storeu_si256(reinterpret_cast<__m256i*>(words + i), w);
        },
        [=](const uint32_t* b, std::size_t i) { std::memcpy(words + i, b, 16); });
  }
  // Reals straight from the registers of words, without a word buffer.
  template <class T, class Map>
  static void blocks_reals(const State& s, const uint32_t ctr[4], std::size_t n, T* out,
                           const Map& map) {
    philox_run(
        s.key, ctr, n, [&](__m256i w, std::size_t i) { map.eight(out + i, w); },
        [&](const uint32_t* b, std::size_t i) {
          for (int j = 0; j < 4; ++j) out[i + std::size_t(j)] = map(b[j]);
        });
  }
};

using Frame = CounterGenerator<Philox>;

PhiloxState& state_of(StreamState* stream) { return *generator_state<PhiloxState>(stream); }

}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngPHILOX4X32X10InitStream(int32_t method, StreamState* stream, int32_t n,
                                        const uint32_t params[]) {
  return Frame::init(state_of(stream), method, n, params);
}

int32_t _vsldBRngPHILOX4X32X10(StreamState* stream, int32_t n, double r[], double a,
                               double b) {
  Frame::reals(state_of(stream), n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vslsBRngPHILOX4X32X10(StreamState* stream, int32_t n, float r[], float a, float b) {
  Frame::reals(state_of(stream), n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vsliBRngPHILOX4X32X10(StreamState* stream, int32_t n, uint32_t r[]) {
  if (n > 0) Frame::words(state_of(stream), std::size_t(n), r);
  return VSL_STATUS_OK;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryPHILOX4X32X10 = {
    _vslBRngPHILOX4X32X10InitStream, _vslsBRngPHILOX4X32X10, _vsldBRngPHILOX4X32X10,
    _vsliBRngPHILOX4X32X10};
}  // namespace oxa::streams
