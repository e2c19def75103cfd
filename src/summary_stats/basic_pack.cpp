// Packing of matrix results.
#include "summary_stats/basic_pack.hpp"

#include <algorithm>

#include "oxa/service.h"
#include "oxa/summary_stats.h"
#include "summary_stats/inv_sqrt.hpp"

namespace oxa::ss {

int64_t matrix_index(int64_t storage, int64_t p, int64_t i, int64_t j) {
  if (storage & OXA_SS_MATRIX_PACKED_UPPER) {
    const int64_t r = std::min(i, j), c = std::max(i, j);
    return r * p - r * (r - 1) / 2 + (c - r);
  }
  if (storage & OXA_SS_MATRIX_PACKED_LOWER) {
    const int64_t r = std::max(i, j), c = std::min(i, j);
    return r * (r + 1) / 2 + c;
  }
  return i * p + j;
}

namespace {

// out(comp[a], comp[b]) = value(a, b) for a <= b, mirrored in full storage.
template <class T, class F>
void scatter(int64_t pc, const int64_t* comp, int64_t p, int64_t storage, T* out, F value) {
  const bool full = (storage & (OXA_SS_MATRIX_PACKED_UPPER | OXA_SS_MATRIX_PACKED_LOWER)) == 0;
  for (int64_t a = 0; a < pc; ++a)
    for (int64_t b = a; b < pc; ++b) {
      const T v = value(a, b);
      out[matrix_index(storage, p, comp[a], comp[b])] = v;
      if (full) out[comp[b] * p + comp[a]] = v;
    }
}

}  // namespace

template <class T>
void _vSSFullCP2PackCP(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                       int64_t storage, T* out) {
  scatter<T>(pc, comp, p, storage, out, [&](int64_t a, int64_t b) { return cp[a * ps + b]; });
}

template <class T>
void _vSSFullCP2PackCov(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                        int64_t storage, T factor, T* out) {
  scatter<T>(pc, comp, p, storage, out,
             [&](int64_t a, int64_t b) { return cp[a * ps + b] * factor; });
}

template <class T>
int32_t _vSSFullCP2PackCor(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                           int64_t storage, T* out) {
  auto* s = static_cast<T*>(oxa_serv_allocate(sizeof(T) * static_cast<size_t>(pc), 128));
  if (s == nullptr) return VSL_SS_ERROR_MEM_FAILURE;
  for (int64_t a = 0; a < pc; ++a) s[a] = cp[a * ps + a];
  inv_sqrt_block(pc, s, s);
  scatter<T>(pc, comp, p, storage, out,
             [&](int64_t a, int64_t b) { return cp[a * ps + b] * s[a] * s[b]; });
  oxa_serv_deallocate(s);
  return VSL_STATUS_OK;
}

template <class T>
void unpack_to_cp(const T* in, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                  int64_t storage, T scale, T* cp) {
  for (int64_t a = 0; a < pc; ++a)
    for (int64_t b = a; b < pc; ++b)
      cp[a * ps + b] = in[matrix_index(storage, p, comp[a], comp[b])] * scale;
}

template void _vSSFullCP2PackCP<double>(const double*, int64_t, int64_t, const int64_t*, int64_t,
                                        int64_t, double*);
template void _vSSFullCP2PackCP<float>(const float*, int64_t, int64_t, const int64_t*, int64_t,
                                       int64_t, float*);
template void _vSSFullCP2PackCov<double>(const double*, int64_t, int64_t, const int64_t*, int64_t,
                                         int64_t, double, double*);
template void _vSSFullCP2PackCov<float>(const float*, int64_t, int64_t, const int64_t*, int64_t,
                                        int64_t, float, float*);
template int32_t _vSSFullCP2PackCor<double>(const double*, int64_t, int64_t, const int64_t*,
                                            int64_t, int64_t, double*);
template int32_t _vSSFullCP2PackCor<float>(const float*, int64_t, int64_t, const int64_t*, int64_t,
                                           int64_t, float*);
template void unpack_to_cp<double>(const double*, int64_t, int64_t, const int64_t*, int64_t,
                                   int64_t, double, double*);
template void unpack_to_cp<float>(const float*, int64_t, int64_t, const int64_t*, int64_t, int64_t,
                                  float, float*);

}  // namespace oxa::ss
