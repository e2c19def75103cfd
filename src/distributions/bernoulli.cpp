// Bernoulli: r = 1 if u < p, else 0, u single-precision uniform on [0, 1).
// Method: the uniforms are drawn straight into the output array; p is
//         rounded to single precision once and compared with each uniform as
//         signed 32-bit patterns, which order non-negative floats like their
//         values (no conversion back to floating point).
// Parameters: p <= 0 (including -0) gives all zeros, p >= 1 all ones, by the
//         same comparison; a NaN p is rejected (VSL_ERROR_BAD_ARGUMENT) before
//         the stream is touched.
#include <immintrin.h>

#include <bit>
#include <cmath>
#include <cstring>

#include "distributions/uniform_draw.hpp"

namespace oxa::distributions {
namespace {

int32_t bernoulli(StreamState* stream, int32_t n, int32_t* r, double p) {
  if (std::isnan(p)) return VSL_ERROR_BAD_ARGUMENT;
  if (n < 1) return 0;
  const int32_t status = draw_uniform<float>(stream, n, reinterpret_cast<float*>(r), 0.0f, 1.0f);
  if (status < 0) return status;
  const int32_t threshold = std::bit_cast<int32_t>(static_cast<float>(p));
  auto one = [&](int32_t i) {
    int32_t bits;
    std::memcpy(&bits, r + i, sizeof bits);
    r[i] = threshold > bits ? 1 : 0;
  };
  int32_t i = 0;
  if (reinterpret_cast<uintptr_t>(r) % sizeof(int32_t) == 0) {
    for (; i < n && reinterpret_cast<uintptr_t>(r + i) % 16 != 0; ++i) one(i);
  }
  const __m128i t = _mm_set1_epi32(threshold), ones = _mm_set1_epi32(1);
  for (; i + 4 <= n; i += 4) {
    __m128i* p4 = reinterpret_cast<__m128i*>(r + i);
    _mm_storeu_si128(p4, _mm_and_si128(_mm_cmpgt_epi32(t, _mm_loadu_si128(p4)), ones));
  }
  for (; i < n; ++i) one(i);
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" int32_t _vsliRngBernoulli(uint32_t, StreamState* stream, int32_t n, int32_t r[],
                                     double p) {
  return oxa::distributions::bernoulli(stream, n, r, p);
}
