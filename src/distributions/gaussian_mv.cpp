// Multivariate Gaussian: n vectors x = mean + T·z of dimension d, z standard
// normal, T the lower-triangular factor of the covariance (C = T·Tᵀ).
// Method: chunks of vectors (about 8192 elements, an even number of vectors)
//         are filled with standard normals by the univariate Gaussian method
//         given, transformed in place by the BLAS triangular product (?trmm),
//         and shifted by the mean. A chunk's normals come from one Gaussian
//         call, so the stream consumption is that of those calls.
// Threads: the product runs on the calling thread, in the single-threaded
//         BLAS (linalg/blas.hpp says why); generation starts no thread.
// Storage of T (row-major, only the lower triangle is read):
//   OXA_MATRIX_STORAGE_FULL     d·d values, T[i][j] at i·d + j;
//   OXA_MATRIX_STORAGE_PACKED   d(d+1)/2 values, the lower triangle row by row,
//                               T[i][j] (j <= i) at i(i+1)/2 + j;
//   OXA_MATRIX_STORAGE_DIAGONAL d values, T[i][i] at i.
// A packed factor is unpacked into one heap block of d·d values for the
// product; the other forms allocate nothing.
#include <algorithm>
#include <cstddef>

#include "distributions/gaussian.hpp"
#include "linalg/blas.hpp"
#include "oxa/service.h"

namespace oxa::distributions {
namespace {

constexpr int64_t kChunkElements = 8192;

// Z <- T·Z for `count` column vectors of length d stored one after the other.
// Read column-major, the row-major full factor is Tᵀ, an upper triangle, so
// the product is op(A) = Aᵀ with A's upper triangle.
template <class T>
void triangular_product(int d, int count, const T* full, T* z) {
  linalg::trmm('L', 'U', 'T', 'N', d, count, T(1), full, d, z, d);
}

// Row-major full copy of a packed lower triangle (the upper part stays unread).
template <class T>
void unpack(int d, const T* packed, T* full) {
  for (int i = 0; i < d; ++i) std::copy(packed + i * (i + 1) / 2, packed + i * (i + 1) / 2 + i + 1, full + i * d);
}

template <class T>
int32_t gaussian_mv(uint32_t method, StreamState* stream, int32_t n, T* r, int32_t d,
                    int32_t storage, const T* mean, const T* factor) {
  if (method >= 3 || d < 1 || storage < OXA_MATRIX_STORAGE_FULL ||
      storage > OXA_MATRIX_STORAGE_DIAGONAL)
    return VSL_ERROR_BAD_ARGUMENT;
  if (n < 1) return 0;
  T* owned = nullptr;
  const T* full = factor;
  if (storage == OXA_MATRIX_STORAGE_PACKED) {
    owned = static_cast<T*>(oxa_serv_allocate(sizeof(T) * static_cast<size_t>(d) * d, 128));
    if (owned == nullptr) return VSL_ERROR_NO_MEMORY;
    unpack(d, factor, owned);
    full = owned;
  }
  int64_t per_chunk = std::max<int64_t>(2, kChunkElements / d) & ~int64_t{1};
  int32_t status = 0;
  for (int64_t done = 0; done < n; done += per_chunk) {
    const int32_t count = static_cast<int32_t>(std::min<int64_t>(per_chunk, n - done));
    T* z = r + done * d;
    const int64_t elements = int64_t{count} * d;
    status = gaussian<T>(method, stream, static_cast<int32_t>(elements), z, T(0), T(1));
    if (status < 0) break;
    if (storage == OXA_MATRIX_STORAGE_DIAGONAL) {
      for (int32_t v = 0; v < count; ++v)
        for (int32_t i = 0; i < d; ++i) z[v * d + i] = mean[i] + factor[i] * z[v * d + i];
    } else {
      triangular_product(d, count, full, z);
      for (int32_t v = 0; v < count; ++v)
        for (int32_t i = 0; i < d; ++i) z[v * d + i] += mean[i];
    }
  }
  oxa_serv_deallocate(owned);
  return status;
}

}  // namespace
}  // namespace oxa::distributions

extern "C" {

int32_t _vsldRngGaussianMV(uint32_t method, StreamState* stream, int32_t n, double r[],
                           int32_t dimen, int32_t mstorage, const double mean[],
                           const double factor[]) {
  return oxa::distributions::gaussian_mv(method, stream, n, r, dimen, mstorage, mean, factor);
}
int32_t _vslsRngGaussianMV(uint32_t method, StreamState* stream, int32_t n, float r[],
                           int32_t dimen, int32_t mstorage, const float mean[],
                           const float factor[]) {
  return oxa::distributions::gaussian_mv(method, stream, n, r, dimen, mstorage, mean, factor);
}

}  // extern "C"
