// WH: four multiplicative generators x_j <- a_j x_j mod m_j (moduli just below
// 2^24, multipliers below 256), one of 273 parameter sets chosen by the
// stream id's sub-index. Output from the current x, before the step:
//   s = (x0 c0 + x2 c2) + (x1 c1 + x3 c3),  c_j = 1/m_j,  u = s - trunc(s),
// and the real is a + (b - a) u, as fma(u, b - a, a). Words are 16 bytes: the
// four components of each step.
// Vector form: per component two vectors of lanes hold eight consecutive
// steps; each step multiplies them by a_j^8 mod m_j and reduces with
// p - m trunc(p c). Both factors stay below 2^24, so p is exact and the
// quotient is never off by one (p mod m is never 0 and the rounding error of
// p c is far below 1/m): the doubles agree with the integer recurrence.
#include <immintrin.h>

#include <cmath>
#include <cstring>

#include "streams/brng_frame.hpp"
#include "streams/registry.hpp"
#include "streams/stream_state.hpp"
#include "streams/wh_tables.hpp"

namespace oxa::streams {
namespace {

struct WhState {
  uint32_t x[4];
  uint32_t a[4];
};
static_assert(sizeof(StreamState) + sizeof(WhState) == 48, "StateBytes of the registry row");

inline uint32_t step(uint32_t x, uint32_t a, uint32_t m) {
  return static_cast<uint32_t>(uint64_t{x} * a % m);
}

inline double fraction(const double x[4], const double c[4]) {
  const double s = (x[0] * c[0] + x[2] * c[2]) + (x[1] * c[1] + x[3] * c[3]);
  return s - std::trunc(s);
}

template <class T>
int32_t generate(StreamState* stream, int32_t n, T* r, double a, double b) {
  WhState& st = *generator_state<WhState>(stream);
  const int32_t set = stream_sub_index(stream);
  const uint32_t* m = _vsl_WH_M[set];
  const double* c = _vsldWH_IM_Tab[set];
  const double width = b - a;
  int32_t i = 0;
  if (n >= 8) {
    constexpr int kLanes = 8;
    const __m256d va = _mm256_set1_pd(a), vw = _mm256_set1_pd(width);
    __m256d x[4][2], mul[4], mod[4], inv[4];
    for (int j = 0; j < 4; ++j) {
      alignas(32) double lane[kLanes];
      uint32_t v = st.x[j];
      for (int k = 0; k < kLanes; ++k) {
        lane[k] = v;
        v = step(v, st.a[j], m[j]);
      }
      x[j][0] = _mm256_load_pd(lane);
      x[j][1] = _mm256_load_pd(lane + 4);
      mul[j] = _mm256_set1_pd(_vsliPowMod(st.a[j], kLanes, m[j]));
      mod[j] = _mm256_set1_pd(m[j]);
      inv[j] = _mm256_set1_pd(c[j]);
    }
    for (; i + kLanes <= n; i += kLanes) {
      for (int h = 0; h < 2; ++h) {
        const __m256d s02 = _mm256_add_pd(_mm256_mul_pd(x[0][h], inv[0]), _mm256_mul_pd(x[2][h], inv[2]));
        const __m256d s13 = _mm256_add_pd(_mm256_mul_pd(x[1][h], inv[1]), _mm256_mul_pd(x[3][h], inv[3]));
        const __m256d s = _mm256_add_pd(s02, s13);
        const __m256d u = _mm256_sub_pd(s, _mm256_round_pd(s, _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC));
        store4(r + i + 4 * h, _mm256_fmadd_pd(u, vw, va));
        for (int j = 0; j < 4; ++j) {
          const __m256d p = _mm256_mul_pd(x[j][h], mul[j]);
          const __m256d q = _mm256_round_pd(_mm256_mul_pd(p, inv[j]), _MM_FROUND_TO_ZERO | _MM_FROUND_NO_EXC);
          x[j][h] = _mm256_sub_pd(p, _mm256_mul_pd(q, mod[j]));
        }
      }
    }
    for (int j = 0; j < 4; ++j) st.x[j] = static_cast<uint32_t>(_mm256_cvtsd_f64(x[j][0]));
  }
  for (; i < n; ++i) {
    const double xd[4] = {double(st.x[0]), double(st.x[1]), double(st.x[2]), double(st.x[3])};
    r[i] = static_cast<T>(std::fma(fraction(xd, c), width, a));
    for (int j = 0; j < 4; ++j) st.x[j] = step(st.x[j], st.a[j], m[j]);
  }
  return 0;
}

}  // namespace
}  // namespace oxa::streams

using namespace oxa::streams;

extern "C" {

int32_t _vslBRngWHInitStream(int32_t method, StreamState* stream, int32_t n,
                             const uint32_t params[]) {
  WhState& s = *generator_state<WhState>(stream);
  const int32_t set = stream_sub_index(stream);
  const uint32_t* m = _vsl_WH_M[set];
  switch (method) {
    case OXA_INIT_SEED:
      for (int j = 0; j < 4; ++j) {
        const uint32_t v = j < n ? params[j] % m[j] : 1;
        s.x[j] = v == 0 ? 1 : v;
        s.a[j] = _vsl_WH_A[set][j];
      }
      return 0;
    case OXA_INIT_LEAPFROG:
      for (int j = 0; j < 4; ++j) {
        s.x[j] = step(s.x[j], _vsliPowMod(s.a[j], params[0], m[j]), m[j]);
        s.a[j] = _vsliPowMod(s.a[j], static_cast<uint32_t>(n), m[j]);
      }
      return 0;
    case OXA_INIT_SKIPAHEAD: {
      const uint64_t nskip = read_skip_count(params);
      for (int j = 0; j < 4; ++j) s.x[j] = step(s.x[j], _vsliPowMod(s.a[j], nskip, m[j]), m[j]);
      return 0;
    }
    default:
      return VSL_ERROR_BAD_INIT_METHOD;
  }
}

int32_t _vslsBRngWH(StreamState* stream, int32_t n, float r[], float a, float b) {
  return generate(stream, n, r, a, b);
}

int32_t _vsldBRngWH(StreamState* stream, int32_t n, double r[], double a, double b) {
  return generate(stream, n, r, a, b);
}

// n words of 16 bytes: the four components of each step.
int32_t _vsliBRngWH(StreamState* stream, int32_t n, uint32_t r[]) {
  WhState& s = *generator_state<WhState>(stream);
  const uint32_t* m = _vsl_WH_M[stream_sub_index(stream)];
  for (int32_t i = 0; i < n; ++i) {
    std::memcpy(r + 4 * i, s.x, sizeof s.x);
    for (int j = 0; j < 4; ++j) s.x[j] = step(s.x[j], s.a[j], m[j]);
  }
  return 0;
}

}  // extern "C"

namespace oxa::streams {
constinit const BrngEntryPoints kBrngEntryWH = {_vslBRngWHInitStream, _vslsBRngWH, _vsldBRngWH,
                                                _vsliBRngWH};
}
