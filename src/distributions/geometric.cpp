// Geometric: r = floor(ln u · g), g = 1 / ln(1 - p), u single-precision
// uniform on [0, 1): the number of failures before the first success.
// Method: g in double precision (log1p(-p), ln(1 - p) without the rounding of
//         1 - p), rounded to single once; blocks of 1024 uniforms on the
//         stack, their logarithm by the LA Ln kernel, then product, floor and
//         conversion in single precision.
// Special: u = 0 gives ln 0 -> -103.27893 through the callback, so the
//          variate stays finite. Products beyond the 32-bit range (p below
//          about 5e-8) are held at the largest float below 2^31.
// Parameters: p must lie in (0, 1] (p = 1 gives zeros); anything else,
//          NaN included, returns VSL_ERROR_BAD_ARGUMENT before the stream is
//          touched.
#include <immintrin.h>

#include <algorithm>
#include <cmath>

#include "distributions/callbacks.hpp"
#include "distributions/uniform_draw.hpp"
#include "distributions/vml_calls.hpp"

namespace oxa::distributions {
namespace {

constexpr float kLargest = 0x1.fffffep+30f;  // largest float below 2^31

int32_t geometric(StreamState* stream, int32_t n, int32_t* r, double p) {
  if (!(p > 0.0 && p <= 1.0)) return VSL_ERROR_BAD_ARGUMENT;
  if (n < 1) return 0;
  const float g = static_cast<float>(1.0 / std::log1p(-p));
  constexpr int32_t kBlock = 1024;
  alignas(32) float u[kBlock];
  alignas(32) float log_u[kBlock];
  ErrorFrame frame(_vsLnCallBack);
  int32_t status = 0;
  const __m256 vg = _mm256_set1_ps(g), vmax = _mm256_set1_ps(kLargest);
  for (int32_t done = 0; done < n; done += kBlock) {
    const int32_t m = std::min(kBlock, n - done);
    status = draw_uniform<float>(stream, m, u, 0.0f, 1.0f);
    if (status < 0) return status;
    call_kernel(Vml<float>::ln[kSlotLA], m, static_cast<const float*>(u), log_u);
    int32_t* out = r + done;
    int32_t i = 0;
    for (; i + 8 <= m; i += 8) {
      const __m256 x = _mm256_min_ps(_mm256_floor_ps(_mm256_mul_ps(_mm256_load_ps(log_u + i), vg)), vmax);
      _mm256_storeu_si256(reinterpret_cast<__m256i*>(out + i), _mm256_cvttps_epi32(x));
    }
    for (; i < m; ++i) out[i] = static_cast<int32_t>(std::min(std::floor(log_u[i] * g), kLargest));
  }
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" int32_t _vsliRngGeometric(uint32_t, StreamState* stream, int32_t n, int32_t r[],
                                     double p) {
  return oxa::distributions::geometric(stream, n, r, p);
}
