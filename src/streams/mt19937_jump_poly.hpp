// Powers of x modulo the characteristic polynomial p of the MT19937
// transition (degree 19937): the jump polynomials of the skip-ahead.
#pragma once

#include <cstdint>

namespace oxa::streams {

inline constexpr int kMtDegree = 19937;
inline constexpr int kMtPolyWords = 312;  // 64-bit words of a reduced polynomial

// g = x^e mod p; bit i of g is the coefficient of x^i, bits above 19936 zero.
void mt19937_x_pow_mod(unsigned __int128 e, uint64_t g[kMtPolyWords]);

}  // namespace oxa::streams
