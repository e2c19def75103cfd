// MRG32K3A: two order-3 recurrences combined.
//   x1(n) = (1403580 x1(n-2) - 810728 x1(n-3)) mod m1,  m1 = 2^32 - 209
//   x2(n) = (527612 x2(n-1) - 1370589 x2(n-3)) mod m2,  m2 = 2^32 - 22853
// Output z = x1(n) - x2(n) (+ m1 when not positive, so z = m1 when equal).
// Words are z; reals are a + (b - a) z / m1, as fma(z, (b - a) c, a), which
// gives b when z = m1. Every term stays below 2^53, so the integer recurrence
// is exact. Leapfrog is refused; skip-ahead raises each component's companion
// matrix to the skip count.
#include "streams/brng_frame.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"

namespace oxa::streams {
namespace {

constexpr uint64_t kM1 = 4294967087u;
constexpr uint64_t kM2 = 4294944443u;
constexpr uint64_t kA12 = 1403580, kA13 = 810728, kA21 = 527612, kA23 = 1370589;
constexpr uint64_t kA13M1 = 3482050076509336u;  // 810728 m1
constexpr uint64_t kA23M2 = 5886603609186927u;  // 1370589 m2
constexpr double kInvM1 = 0x1.000000d10000bp-32;  // 1/m1 rounded, 2.328306549837829e-10
constexpr int kBlock = 256;

struct MrgState {
  uint32_t x1[3];  // x1(n-3), x1(n-2), x1(n-1)
  uint32_t x2[3];
};

// Produces n output words z into w and advances the state.
inline void words(MrgState& s, int32_t n, uint32_t* w) {
  uint64_t a0 = s.x1[0], a1 = s.x1[1], a2 = s.x1[2];
  uint64_t b0 = s.x2[0], b1 = s.x2[1], b2 = s.x2[2];
  for (int32_t i = 0; i < n; ++i) {
    const uint64_t p1 = (kA12 * a1 + kA13M1 - kA13 * a0) % kM1;
    const uint64_t p2 = (kA21 * b2 + kA23M2 - kA23 * b0) % kM2;
    a0 = a1, a1 = a2, a2 = p1;
    b0 = b1, b1 = b2, b2 = p2;
    w[i] = static_cast<uint32_t>(p1 > p2 ? p1 - p2 : p1 - p2 + kM1);
  }
  s.x1[0] = static_cast<uint32_t>(a0), s.x1[1] = static_cast<uint32_t>(a1),
  s.x1[2] = static_cast<uint32_t>(a2);
  s.x2[0] = static_cast<uint32_t>(b0), s.x2[1] = static_cast<uint32_t>(b1),
  s.x2[2] = static_cast<uint32_t>(b2);
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  MrgState& s = *generator_state<MrgState>(stream);
  const double scale = (b - a) * kInvM1;
  alignas(32) uint32_t w[kBlock];
  for (int32_t i = 0; i < n; i += kBlock) {
    const int32_t m = n - i < kBlock ? n - i : kBlock;
    words(s, m, w);
    words_to_uniform(w, m, r + i, a, scale);
  }
  return 0;
}

// Companion matrices with negative coefficients stored as m - c.
constexpr uint32_t kMatrix1[9] = {0, static_cast<uint32_t>(kA12), static_cast<uint32_t>(kM1 - kA13),
                                  1, 0, 0, 0, 1, 0};
constexpr uint32_t kMatrix2[9] = {static_cast<uint32_t>(kA21), 0, static_cast<uint32_t>(kM2 - kA23),
                                  1, 0, 0, 0, 1, 0};

// The companion matrices act on (x(n-1), x(n-2), x(n-3)); the state keeps the
// oldest word first, so reverse around the product.
void skip(uint32_t x[3], const uint32_t matrix[9], uint64_t nskip, uint64_t m) {
  uint32_t v[3] = {x[2], x[1], x[0]};
  _vsliVect3PowMod(v, matrix, nskip, static_cast<uint32_t>(m));
  x[0] = v[2], x[1] = v[1], x[2] = v[0];
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngMRG32K3AInitStream(int32_t method, StreamState* stream, int32_t n,
                                   const uint32_t params[]) {
  MrgState& s = *generator_state<MrgState>(stream);
  switch (method) {
    case OXA_INIT_SEED: {
      uint32_t v[6] = {1, 1, 1, 1, 1, 1};
      for (int32_t k = 0; k < n && k < 6; ++k) v[k] = params[k];
      for (int k = 0; k < 3; ++k) {
        s.x1[k] = v[k] >= kM1 ? static_cast<uint32_t>(v[k] - kM1) : v[k];
        s.x2[k] = v[3 + k] >= kM2 ? static_cast<uint32_t>(v[3 + k] - kM2) : v[3 + k];
      }
      if (s.x1[0] == 0 && s.x1[1] == 0 && s.x1[2] == 0) s.x1[0] = 1;
      if (s.x2[0] == 0 && s.x2[1] == 0 && s.x2[2] == 0) s.x2[0] = 1;
      return 0;
    }
    case OXA_INIT_LEAPFROG:
      return VSL_RNG_ERROR_NO_LEAPFROG;
    case OXA_INIT_SKIPAHEAD: {
      const uint64_t nskip = read_skip_count(params);
      skip(s.x1, kMatrix1, nskip, kM1);
      skip(s.x2, kMatrix2, nskip, kM2);
      return 0;
    }
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vslsBRngMRG32K3A(StreamState* stream, int32_t n, float r[], float a, float b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsldBRngMRG32K3A(StreamState* stream, int32_t n, double r[], double a, double b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsliBRngMRG32K3A(StreamState* stream, int32_t n, uint32_t r[]) {
  if (n > 0) words(*generator_state<MrgState>(stream), n, r);
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryMRG32K3A = {
    _vslBRngMRG32K3AInitStream, _vslsBRngMRG32K3A, _vsldBRngMRG32K3A, _vsliBRngMRG32K3A};
}
