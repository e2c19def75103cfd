// R250: x(n) = x(n-250) XOR x(n-147) on 32-bit words.
// State: the last 250 words in a ring, i = slot of the oldest word (the one
// replaced next), j = i + 103 (mod 250) = slot of the lag-147 partner.
// Words are the 32-bit values; reals are a + (b - a) 2^-32 x. Batches of 250
// or more are made in the output buffer (out[t] = out[t-250] ^ out[t-147]) and
// the last 250 become the state. Leapfrog and skip-ahead are refused.
#include <cstring>

#include "streams/brng_frame.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr int32_t kLong = 250, kShort = 147, kGap = kLong - kShort;  // 103
constexpr uint32_t kSeedMul = 69069u, kSeedMul2 = 475559465u;     // 69069^2 mod 2^32

struct R250State {
  uint32_t x[kLong];
  int32_t i;
  int32_t j;
};
static_assert(sizeof(StreamState) + sizeof(R250State) == 1024, "StateBytes of the registry row");

void words(R250State& s, int32_t n, uint32_t* out) {
  if (n < kLong) {
    int32_t i = s.i, j = s.j;
    for (int32_t t = 0; t < n; ++t) {
      out[t] = s.x[i] ^= s.x[j];
      i = i + 1 == kLong ? 0 : i + 1;
      j = j + 1 == kLong ? 0 : j + 1;
    }
    s.i = i, s.j = j;
    return;
  }
  // Unroll the ring so that ring[k] is the word 250 - k places back.
  uint32_t ring[kLong];
  std::memcpy(ring, s.x + s.i, sizeof(uint32_t) * (kLong - s.i));
  std::memcpy(ring + (kLong - s.i), s.x, sizeof(uint32_t) * s.i);
  int32_t t = 0;
  for (; t < kShort; ++t) out[t] = ring[t] ^ ring[t + kGap];
  for (; t < kLong; ++t) out[t] = ring[t] ^ out[t - kShort];
  // out[t - 250] and out[t - 147] are both at least 103 back: 16 at a time is safe.
  for (; t + 16 <= n; t += 16) {
    for (int32_t k = 0; k < 16; ++k) out[t + k] = out[t + k - kLong] ^ out[t + k - kShort];
  }
  for (; t < n; ++t) out[t] = out[t - kLong] ^ out[t - kShort];
  std::memcpy(s.x, out + n - kLong, sizeof(uint32_t) * kLong);
  s.i = 0;
  s.j = kGap;
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  R250State& s = *generator_state<R250State>(stream);
  constexpr int32_t kBlock = 1024;
  alignas(32) uint32_t w[kBlock];
  const double scale = (b - a) * 0x1p-32;
  for (int32_t i = 0; i < n; i += kBlock) {
    const int32_t m = n - i < kBlock ? n - i : kBlock;
    words(s, m, w);
    words_to_uniform(w, m, r + i, a, scale);
  }
  return 0;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngR250InitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]) {
  R250State& s = *generator_state<R250State>(stream);
  switch (method) {
    case OXA_INIT_SEED:
      if (n >= kLong) {
        std::memcpy(s.x, params, sizeof s.x);
      } else {
        uint32_t seed = n >= 1 ? params[0] : 1;
        if (seed == 0) seed = 1;
        // x[t] = seed 69069^(t+1) mod 2^32, two words per step.
        uint32_t even = seed * kSeedMul, odd = even * kSeedMul;
        for (int32_t t = 0; t < kLong; t += 2) {
          s.x[t] = even;
          s.x[t + 1] = odd;
          even *= kSeedMul2;
          odd *= kSeedMul2;
        }
        // Make words 3, 10, ..., 220 linearly independent: word 7k + 3 keeps
        // bit 31 - k set and nothing above it.
        for (uint32_t k = 0; k < 32; ++k) {
          const uint32_t bit = 0x80000000u >> k;
          uint32_t& w = s.x[7 * k + 3];
          w = (w & (bit - 1)) | bit;
        }
      }
      s.i = 0;
      s.j = kGap;
      return 0;
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD:
      return VSL_RNG_ERROR_NO_SKIPAHEAD;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vslsBRngR250(StreamState* stream, int32_t n, float r[], float a, float b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsldBRngR250(StreamState* stream, int32_t n, double r[], double a, double b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsliBRngR250(StreamState* stream, int32_t n, uint32_t r[]) {
  if (n > 0) words(*generator_state<R250State>(stream), n, r);
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryR250 = {_vslBRngR250InitStream, _vslsBRngR250,
                                                  _vsldBRngR250, _vsliBRngR250};
}
