// ARS5: five AES rounds over a 128-bit counter (needs the AES instructions).
// Block:   v = ctr ^ key; four aesenc and one aesenclast with round keys
//          key + j*w (j = 1..5), w = (0x9E3779B97F4A7C15, 0xBB67AE8584CAA73B)
//          added to the key's two 64-bit halves (_vslARS5Tab).
// Seeding: key words = seed[0..3], counter words = seed[4..7]; absent words 0.
// Vector:  eight blocks in flight to cover the latency of aesenc; reals are
//          converted straight from the block registers.
// Reals:   centred mapping (a + b)/2 + (b - a)*2^-32*x of the signed word x.
// Without AES, generation and skip-ahead return -1140 and change nothing.
#include <immintrin.h>

#include "streams/counter_generator.hpp"
#include "streams/cpu_features.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {

struct Ars5State {
  uint32_t key[4];
  uint32_t ctr[4];
  uint32_t out[4];
  uint32_t left;
};
static_assert(sizeof(StreamState) + sizeof(Ars5State) <= 72, "ARS5 block is 72 bytes");

// The Weyl increment of the round keys, low 64-bit half first.
alignas(16) const uint64_t _vslARS5Tab[2] = {0x9E3779B97F4A7C15u, 0xBB67AE8584CAA73Bu};

namespace {

template <int N>
[[gnu::target("aes"), gnu::always_inline]] inline void ars5_rounds(__m128i (&v)[N], __m128i key) {
  // Fully unrolled so the N blocks stay in registers and interleave.
  const __m128i w = _mm_load_si128(reinterpret_cast<const __m128i*>(_vslARS5Tab));
#pragma GCC unroll 8
  for (int i = 0; i < N; ++i) v[i] = _mm_xor_si128(v[i], key);
  __m128i k = key;
#pragma GCC unroll 4
  for (int round = 1; round < 5; ++round) {
    k = _mm_add_epi64(k, w);
#pragma GCC unroll 8
    for (int i = 0; i < N; ++i) v[i] = _mm_aesenc_si128(v[i], k);
  }
  k = _mm_add_epi64(k, w);
#pragma GCC unroll 8
  for (int i = 0; i < N; ++i) v[i] = _mm_aesenclast_si128(v[i], k);
}

}  // namespace

// Blocks ctr, ctr+1, ... (n of them): eights go to sink8(v, index of the first
// word) as eight registers, the rest one by one to sink1(v, index).
template <class Sink8, class Sink1>
[[gnu::target("aes")]] void ars5_run(const uint32_t key[4], const uint32_t ctr[4], std::size_t n,
                                     const Sink8& sink8, const Sink1& sink1) {
  const __m128i k = _mm_loadu_si128(reinterpret_cast<const __m128i*>(key));
  __m128i c = _mm_loadu_si128(reinterpret_cast<const __m128i*>(ctr));
  const __m128i one = _mm_set_epi64x(0, 1);
  auto low = [](__m128i x) { return uint64_t(_mm_cvtsi128_si64(x)); };
  auto next = [&](__m128i x) {  // x + 1 as a 128-bit number
    const __m128i sum = _mm_add_epi64(x, one);
    return low(sum) == 0 ? _mm_add_epi64(sum, _mm_set_epi64x(1, 0)) : sum;
  };
  std::size_t word = 0;
  for (; n >= 8; n -= 8, word += 32) {
    __m128i v[8];
    if (low(c) <= ~uint64_t(0) - 8) {
#pragma GCC unroll 8
      for (int i = 0; i < 8; ++i) v[i] = _mm_add_epi64(c, _mm_set_epi64x(0, i));
      c = _mm_add_epi64(c, _mm_set_epi64x(0, 8));
    } else {
      for (int i = 0; i < 8; ++i) v[i] = c, c = next(c);
    }
    ars5_rounds(v, k);
    sink8(v, word);
  }
  for (; n > 0; --n, word += 4) {
    __m128i v[1] = {c};
    c = next(c);
    ars5_rounds(v, k);
    sink1(v[0], word);
  }
}

// The raw word kernel: blocks ctr, ctr+1, ... (n of them) into words.
[[gnu::target("aes")]] void _viARS5(const uint32_t key[4], const uint32_t ctr[4], std::size_t n,
                                    uint32_t* words) {
  auto* out = reinterpret_cast<__m128i*>(words);
  ars5_run(
      key, ctr, n,
      [=](const __m128i(&v)[8], std::size_t w) {
#pragma GCC unroll 8
        for (int i = 0; i < 8; ++i) _mm_storeu_si128(out + w / 4 + i, v[i]);
      },
      [=](__m128i v, std::size_t w) { _mm_storeu_si128(out + w / 4, v); });
}

// Reals straight from the block registers.
template <class T, class Map>
[[gnu::target("aes")]] void ars5_reals(const uint32_t key[4], const uint32_t ctr[4],
                                       std::size_t n, T* out, const Map& map) {
  ars5_run(
      key, ctr, n,
      [&](const __m128i(&v)[8], std::size_t w) {
#pragma GCC unroll 4
        for (int i = 0; i < 4; ++i) map.eight(out + w + 8 * i, _mm256_set_m128i(v[2 * i + 1], v[2 * i]));
      },
      [&](__m128i v, std::size_t w) {
        alignas(16) uint32_t b[4];
        _mm_store_si128(reinterpret_cast<__m128i*>(b), v);
        for (int j = 0; j < 4; ++j) out[w + std::size_t(j)] = map(b[j]);
      });
}

namespace {

struct Ars5 {
  using State = Ars5State;
  static constexpr int kKeyWords = 4;
  static int32_t usable() { return cpu_has_aes() ? 0 : VSL_RNG_ERROR_NO_AES; }
  static void blocks(const State& s, const uint32_t ctr[4], std::size_t n, uint32_t* words) {
    _viARS5(s.key, ctr, n, words);
  }
  template <class T, class Map>
  static void blocks_reals(const State& s, const uint32_t ctr[4], std::size_t n, T* out,
                           const Map& map) {
    ars5_reals(s.key, ctr, n, out, map);
  }
};

using Frame = CounterGenerator<Ars5>;

Ars5State& state_of(StreamState* stream) { return *generator_state<Ars5State>(stream); }

}  // namespace

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngARS5InitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]) {
  return Frame::init(state_of(stream), method, n, params);
}

int32_t _vsldBRngARS5(StreamState* stream, int32_t n, double r[], double a, double b) {
  if (const int32_t refused = Ars5::usable(); refused != 0) return refused;
  Frame::reals(state_of(stream), n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vslsBRngARS5(StreamState* stream, int32_t n, float r[], float a, float b) {
  if (const int32_t refused = Ars5::usable(); refused != 0) return refused;
  Frame::reals(state_of(stream), n, r, a, b);
  return VSL_STATUS_OK;
}

int32_t _vsliBRngARS5(StreamState* stream, int32_t n, uint32_t r[]) {
  if (const int32_t refused = Ars5::usable(); refused != 0) return refused;
  if (n > 0) Frame::words(state_of(stream), std::size_t(n), r);
  return VSL_STATUS_OK;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryARS5 = {_vslBRngARS5InitStream, _vslsBRngARS5,
                                                  _vsldBRngARS5, _vsliBRngARS5};
}  // namespace oxa::streams
