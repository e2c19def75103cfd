// MRG32K3A: two order-3 recurrences combined.
//   x1(n) = (1403580 x1(n-2) - 810728 x1(n-3)) mod m1,  m1 = 2^32 - 209
//   x2(n) = (527612 x2(n-1) - 1370589 x2(n-3)) mod m2,  m2 = 2^32 - 22853
// Output z = x1(n) - x2(n) (+ m1 when not positive, so z = m1 when equal).
// Words are z; reals are a + (b - a) z / m1, as fma(z, (b - a) c, a), which
// gives b when z = m1. Every term stays below 2^53, so the integer recurrence
// is exact. Leapfrog is refused; skip-ahead raises each component's companion
// matrix to the skip count.
// Vector form (blocks of 1024): eight lanes each make 128 consecutive outputs
// of the block, starting from the state jumped ahead by 0, 128, ..., 896 steps
// with precomputed matrix powers (applied in doubles, the matrix entries split
// into 16-bit halves, so lanes never leave the vector registers). Lanes keep their words as doubles in the
// centred range |x| <= m/2 + 2 (p - m round(p/m)), so every product and the
// recurrence stay exact below 2^53 without range corrections; words are made
// canonical only for the output. Four steps are transposed into four
// consecutive outputs of each lane. The result equals the scalar recurrence.
#include <immintrin.h>

#include <array>

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
static_assert(sizeof(StreamState) + sizeof(MrgState) == 40, "StateBytes of the registry row");

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

// ---- vector form ----------------------------------------------------------

constexpr int kLanes = 8, kSteps = 128, kVectorBlock = kLanes * kSteps;

using Matrix = std::array<uint64_t, 9>;

constexpr Matrix mat_mul(const Matrix& x, const Matrix& y, uint64_t m) {
  Matrix z{};
  for (int i = 0; i < 3; ++i)
    for (int j = 0; j < 3; ++j) {
      unsigned __int128 acc = 0;
      for (int k = 0; k < 3; ++k) acc += static_cast<unsigned __int128>(x[3 * i + k]) * y[3 * k + j];
      z[3 * i + j] = static_cast<uint64_t>(acc % m);
    }
  return z;
}

constexpr Matrix mat_pow(Matrix x, uint64_t e, uint64_t m) {
  Matrix r{1, 0, 0, 0, 1, 0, 0, 0, 1};
  for (; e; e >>= 1) {
    if (e & 1) r = mat_mul(r, x, m);
    x = mat_mul(x, x, m);
  }
  return r;
}

// Jumps for lane starts: kJumpN[j] = A^(j * kSteps). The last one also takes a
// lane from its end to its start in the next block.
template <uint64_t M, uint64_t C1, uint64_t C3, bool kFirstLag>
constexpr std::array<Matrix, kLanes> make_jumps() {
  const Matrix a = kFirstLag ? Matrix{0, C1, M - C3, 1, 0, 0, 0, 1, 0}
                             : Matrix{C1, 0, M - C3, 1, 0, 0, 0, 1, 0};
  std::array<Matrix, kLanes> j{};
  for (int k = 0; k < kLanes; ++k) j[k] = mat_pow(a, static_cast<uint64_t>(k) * kSteps, M);
  return j;
}
constexpr auto kJump1 = make_jumps<kM1, kA12, kA13, true>();
constexpr auto kJump2 = make_jumps<kM2, kA21, kA23, false>();

// Jump matrices split into 16-bit halves (entry = hi 2^16 + lo) as doubles,
// laid out per lane for vector loads. Products of a half with a centred word
// stay below 2^47, so the vector jump is exact.
struct SplitJump {
  alignas(32) double hi[9][kLanes];
  alignas(32) double lo[9][kLanes];
};

// Lane j gets jumps[j] (lane starts), or every lane gets jumps[kLanes - 1]
// (from a lane's end to its start in the next block).
constexpr SplitJump split(const std::array<Matrix, kLanes>& jumps, bool same_for_all) {
  SplitJump s{};
  for (int j = 0; j < kLanes; ++j) {
    const Matrix& m = jumps[same_for_all ? kLanes - 1 : j];
    for (int e = 0; e < 9; ++e) {
      s.hi[e][j] = static_cast<double>(m[e] >> 16);
      s.lo[e][j] = static_cast<double>(m[e] & 0xFFFF);
    }
  }
  return s;
}
constexpr SplitJump kStart1 = split(kJump1, false), kNext1 = split(kJump1, true);
constexpr SplitJump kStart2 = split(kJump2, false), kNext2 = split(kJump2, true);

inline double centred(uint32_t x, uint64_t m) {
  return x > m / 2 ? static_cast<double>(x) - static_cast<double>(m) : static_cast<double>(x);
}

inline uint32_t canonical(double x, uint64_t m) {
  return static_cast<uint32_t>(static_cast<int64_t>(x) + (x < 0 ? static_cast<int64_t>(m) : 0));
}

// p - m round(p / m): |result| <= m/2 + 2 for the products that occur here.
inline __m256d reduce(__m256d p, __m256d m, __m256d inv) {
  const __m256d k =
      _mm256_round_pd(_mm256_mul_pd(p, inv), _MM_FROUND_TO_NEAREST_INT | _MM_FROUND_NO_EXC);
  return _mm256_fnmadd_pd(k, m, p);
}

inline __m256d make_canonical(__m256d x, __m256d m) {
  return _mm256_add_pd(x, _mm256_and_pd(_mm256_cmp_pd(x, _mm256_setzero_pd(), _CMP_LT_OQ), m));
}

// Applies a split jump to lanes 4v..4v+3 of the history (x(n-3), x(n-2),
// x(n-1)); the matrices act on (x(n-1), x(n-2), x(n-3)).
inline void jump_lanes(__m256d& x0, __m256d& x1, __m256d& x2, const SplitJump& j, int v,
                       __m256d m, __m256d inv) {
  const __m256d in[3] = {x2, x1, x0};
  __m256d out[3];
  for (int i = 0; i < 3; ++i) {
    __m256d hi = _mm256_mul_pd(_mm256_load_pd(&j.hi[3 * i][4 * v]), in[0]);
    __m256d lo = _mm256_mul_pd(_mm256_load_pd(&j.lo[3 * i][4 * v]), in[0]);
    for (int k = 1; k < 3; ++k) {
      hi = _mm256_fmadd_pd(_mm256_load_pd(&j.hi[3 * i + k][4 * v]), in[k], hi);
      lo = _mm256_fmadd_pd(_mm256_load_pd(&j.lo[3 * i + k][4 * v]), in[k], lo);
    }
    out[i] = reduce(_mm256_fmadd_pd(reduce(hi, m, inv), _mm256_set1_pd(65536.0), lo), m, inv);
  }
  x0 = out[2], x1 = out[1], x2 = out[0];
}

inline void transpose4(__m256d& r0, __m256d& r1, __m256d& r2, __m256d& r3) {
  const __m256d t0 = _mm256_unpacklo_pd(r0, r1), t1 = _mm256_unpackhi_pd(r0, r1);
  const __m256d t2 = _mm256_unpacklo_pd(r2, r3), t3 = _mm256_unpackhi_pd(r2, r3);
  r0 = _mm256_permute2f128_pd(t0, t2, 0x20);
  r1 = _mm256_permute2f128_pd(t1, t3, 0x20);
  r2 = _mm256_permute2f128_pd(t0, t2, 0x31);
  r3 = _mm256_permute2f128_pd(t1, t3, 0x31);
}

// Whole blocks of kVectorBlock outputs; returns how many were written.
template <class T>
int32_t generate_blocks(MrgState& s, int32_t n, T* r, double a, double scale) {
  const int32_t blocks = n / kVectorBlock;
  if (blocks == 0) return 0;
  const __m256d m1 = _mm256_set1_pd(double(kM1)), m2 = _mm256_set1_pd(double(kM2));
  const __m256d inv1 = _mm256_set1_pd(1.0 / double(kM1)), inv2 = _mm256_set1_pd(1.0 / double(kM2));
  const __m256d c12 = _mm256_set1_pd(double(kA12)), c13 = _mm256_set1_pd(double(kA13));
  const __m256d c21 = _mm256_set1_pd(double(kA21)), c23 = _mm256_set1_pd(double(kA23));
  const __m256d va = _mm256_set1_pd(a), vs = _mm256_set1_pd(scale);
  // All lanes advance together: kVecs independent chains hide the latency of
  // each step. Every lane starts from the state, jumped to its place.
  constexpr int kVecs = kLanes / 4;
  __m256d x1[3][kVecs], x2[3][kVecs];
  for (int v = 0; v < kVecs; ++v) {
    for (int h = 0; h < 3; ++h) {
      x1[h][v] = _mm256_set1_pd(centred(s.x1[h], kM1));
      x2[h][v] = _mm256_set1_pd(centred(s.x2[h], kM2));
    }
    jump_lanes(x1[0][v], x1[1][v], x1[2][v], kStart1, v, m1, inv1);
    jump_lanes(x2[0][v], x2[1][v], x2[2][v], kStart2, v, m2, inv2);
  }
  for (int32_t blk = 0; blk < blocks; ++blk) {
    T* out = r + static_cast<int64_t>(blk) * kVectorBlock;
    for (int t = 0; t < kSteps; t += 4) {
      __m256d o[kVecs][4];
      for (int q = 0; q < 4; ++q) {
        for (int v = 0; v < kVecs; ++v) {
          const __m256d p1 =
              reduce(_mm256_fmsub_pd(c12, x1[1][v], _mm256_mul_pd(c13, x1[0][v])), m1, inv1);
          const __m256d p2 =
              reduce(_mm256_fmsub_pd(c21, x2[2][v], _mm256_mul_pd(c23, x2[0][v])), m2, inv2);
          x1[0][v] = x1[1][v], x1[1][v] = x1[2][v], x1[2][v] = p1;
          x2[0][v] = x2[1][v], x2[1][v] = x2[2][v], x2[2][v] = p2;
          __m256d z = _mm256_sub_pd(make_canonical(p1, m1), make_canonical(p2, m2));
          z = _mm256_add_pd(z, _mm256_and_pd(_mm256_cmp_pd(z, _mm256_setzero_pd(), _CMP_LE_OQ), m1));
          o[v][q] = _mm256_fmadd_pd(z, vs, va);
        }
      }
      for (int v = 0; v < kVecs; ++v) {
        transpose4(o[v][0], o[v][1], o[v][2], o[v][3]);
        for (int c = 0; c < 4; ++c) store4(out + (4 * v + c) * kSteps + t, o[v][c]);
      }
    }
    if (blk + 1 < blocks) {
      for (int v = 0; v < kVecs; ++v) {
        jump_lanes(x1[0][v], x1[1][v], x1[2][v], kNext1, v, m1, inv1);
        jump_lanes(x2[0][v], x2[1][v], x2[2][v], kNext2, v, m2, inv2);
      }
    }
  }
  // The last lane ends where the last block ends.
  for (int h = 0; h < 3; ++h) {
    alignas(32) double w1[4], w2[4];
    _mm256_store_pd(w1, x1[h][kVecs - 1]);
    _mm256_store_pd(w2, x2[h][kVecs - 1]);
    s.x1[h] = canonical(w1[3], kM1);
    s.x2[h] = canonical(w2[3], kM2);
  }
  return blocks * kVectorBlock;
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  MrgState& s = *generator_state<MrgState>(stream);
  const double scale = (b - a) * kInvM1;
  const int32_t done = generate_blocks(s, n, r, a, scale);
  n -= done;
  r += done;
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
