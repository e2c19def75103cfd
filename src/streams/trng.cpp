// TRNG: non-deterministic words from the processor's RDRAND instruction.
// State:   a zero word and the retry count (extra attempts a failing read may
//          make): 10, or seed[1] when two or more seeds are given and it is
//          not 0. seed[0] is not used.
// Words:   64-bit reads fill two words each, a 32-bit read an odd last word.
//          A read that keeps failing gives -1131 with the words so far written.
// Reals:   one 64-bit read v per value, r = a + (b - a)*2^-64*v (v unsigned,
//          rounded once to the output precision).
// No leapfrog (-1002), no skip-ahead (-1003). Without RDRAND every entry
// returns -1130 and writes nothing.
#include <immintrin.h>

#include "streams/cpu_features.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {

struct TrngState {
  uint32_t zero;
  uint32_t retries;
};

namespace {

constexpr uint32_t kDefaultRetries = 10;

// One read with up to `retries` more attempts; false when all fail.
[[gnu::target("rdrnd")]] bool read64(uint32_t retries, uint64_t& v) {
  for (uint64_t attempt = 0; attempt <= retries; ++attempt) {
    unsigned long long x;
    if (_rdrand64_step(&x)) {
      v = x;
      return true;
    }
  }
  return false;
}
[[gnu::target("rdrnd")]] bool read32(uint32_t retries, uint32_t& v) {
  for (uint64_t attempt = 0; attempt <= retries; ++attempt) {
    unsigned x;
    if (_rdrand32_step(&x)) {
      v = x;
      return true;
    }
  }
  return false;
}

template <class T>
int32_t trng_reals(const TrngState& s, int32_t n, T r[], T a, T b) {
  const T scale = (b - a) * static_cast<T>(0x1p-64);
  for (int32_t i = 0; i < n; ++i) {
    uint64_t v;
    if (!read64(s.retries, v)) return VSL_RNG_ERROR_TRNG_FAILED;
    r[i] = a + scale * static_cast<T>(v);
  }
  return VSL_STATUS_OK;
}

const TrngState& state_of(const StreamState* stream) {
  return *generator_state<TrngState>(stream);
}

}  // namespace

// The raw word kernel.
int32_t _viTRNGRdRand(uint32_t retries, int32_t n, uint32_t r[]) {
  int32_t i = 0;
  for (; i + 2 <= n; i += 2) {
    uint64_t v;
    if (!read64(retries, v)) return VSL_RNG_ERROR_TRNG_FAILED;
    r[i] = uint32_t(v), r[i + 1] = uint32_t(v >> 32);
  }
  if (i < n && !read32(retries, r[i])) return VSL_RNG_ERROR_TRNG_FAILED;
  return VSL_STATUS_OK;
}

int32_t _vdTRNGRdRand(uint32_t retries, int32_t n, double r[], double a, double b) {
  return trng_reals(TrngState{0, retries}, n, r, a, b);
}

int32_t _vsTRNGRdRand(uint32_t retries, int32_t n, float r[], float a, float b) {
  return trng_reals(TrngState{0, retries}, n, r, a, b);
}

}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngTRNGInitStream(int32_t method, StreamState* stream, int32_t n,
                               const uint32_t params[]) {
  switch (method) {
    case OXA_INIT_SEED: {
      if (!cpu_has_rdrand()) return VSL_RNG_ERROR_NO_RDRAND;
      TrngState& s = *generator_state<TrngState>(stream);
      s.zero = 0;
      s.retries = n >= 2 && params[1] != 0 ? params[1] : kDefaultRetries;
      return VSL_STATUS_OK;
    }
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD:
      return VSL_RNG_ERROR_NO_SKIPAHEAD;
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vsldBRngTRNG(StreamState* stream, int32_t n, double r[], double a, double b) {
  if (!cpu_has_rdrand()) return VSL_RNG_ERROR_NO_RDRAND;
  return _vdTRNGRdRand(state_of(stream).retries, n, r, a, b);
}

int32_t _vslsBRngTRNG(StreamState* stream, int32_t n, float r[], float a, float b) {
  if (!cpu_has_rdrand()) return VSL_RNG_ERROR_NO_RDRAND;
  return _vsTRNGRdRand(state_of(stream).retries, n, r, a, b);
}

int32_t _vsliBRngTRNG(StreamState* stream, int32_t n, uint32_t r[]) {
  if (!cpu_has_rdrand()) return VSL_RNG_ERROR_NO_RDRAND;
  return _viTRNGRdRand(state_of(stream).retries, n, r);
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryTRNG = {_vslBRngTRNGInitStream, _vslsBRngTRNG,
                                                  _vsldBRngTRNG, _vsliBRngTRNG};
}  // namespace oxa::streams
