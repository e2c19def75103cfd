// Turning the full cross-product accumulator into the cross-product,
// covariance or correlation result in the result's storage word, and back.
#pragma once

#include <cstdint>

namespace oxa::ss {

// Position of element (i, j) of a p x p result stored as `storage`:
// full (row-major), bit 0x1 upper triangle packed row by row, bit 0x2 lower
// triangle packed row by row (0x1 wins when both are set). Packed forms take
// the element of the stored triangle for (i, j) and (j, i) alike.
int64_t matrix_index(int64_t storage, int64_t p, int64_t i, int64_t j);

// The selected components' block of a result: accumulator upper triangle cp
// (pc x pc, row stride ps) scaled by `factor`, written at rows and columns comp.
template <class T>
void _vSSFullCP2PackCP(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                       int64_t storage, T* out);
template <class T>
void _vSSFullCP2PackCov(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                        int64_t storage, T factor, T* out);
// cp_ab / sqrt(cp_aa cp_bb); -4000 when its work buffer cannot be allocated.
template <class T>
int32_t _vSSFullCP2PackCor(const T* cp, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                           int64_t storage, T* out);

// The inverse: reads the selected block of a result into the accumulator's
// upper triangle, multiplied by `scale`.
template <class T>
void unpack_to_cp(const T* in, int64_t pc, int64_t ps, const int64_t* comp, int64_t p,
                  int64_t storage, T scale, T* cp);

}  // namespace oxa::ss
