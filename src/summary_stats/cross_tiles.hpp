// The cross-product tile kernel of the basic estimator (AVX2 + FMA).
//
// Cross tiles: cp[a][b] += sum_i dw[i][a] d[i][b] for the tiles touching the
//   upper triangle (a <= b); d and dw are blocks of centred observations,
//   rows of stride ps (a multiple of 8, padding columns zero).
// Method: register tiles of 4 x 8 (double) or 8 x 8 (float) accumulators over
//   the block's rows: per row, one load of 8 d values, a broadcast per tile
//   row, one FMA per vector.
// Accuracy: one rounding per FMA; a block's sums are merged pairwise.
#pragma once

#include <cstdint>

#include "summary_stats/lanes.hpp"

namespace oxa::ss {

template <class T>
void cross_tiles(int64_t nb, int64_t ps, const T* d, const T* dw, T* cp) {
  using L = Lanes<T>;
  using V = typename L::V;
  constexpr int R = L::kRows, C = 8 / L::kWidth;
  for (int64_t a0 = 0; a0 < ps; a0 += R)
    for (int64_t b0 = a0 & ~int64_t{7}; b0 < ps; b0 += 8) {
      V acc[R][C];
      for (int r = 0; r < R; ++r)
        for (int c = 0; c < C; ++c) acc[r][c] = L::zero();
      for (int64_t i = 0; i < nb; ++i) {
        const T* di = d + i * ps + b0;
        const T* ei = dw + i * ps + a0;
        V dv[C];
        for (int c = 0; c < C; ++c) dv[c] = L::load(di + c * L::kWidth);
        for (int r = 0; r < R; ++r) {
          const V e = L::broadcast(ei + r);
          for (int c = 0; c < C; ++c) acc[r][c] = L::fma(e, dv[c], acc[r][c]);
        }
      }
      for (int r = 0; r < R; ++r)
        for (int c = 0; c < C; ++c) L::add_to(cp + (a0 + r) * ps + b0 + c * L::kWidth, acc[r][c]);
    }
}

}  // namespace oxa::ss
