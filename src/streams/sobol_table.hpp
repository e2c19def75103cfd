// Built-in Sobol direction numbers (tools/sobol_table.py writes the table).
#pragma once

#include <cstdint>

namespace oxa::streams {

inline constexpr int kSobolBuiltinDims = 2600;
inline constexpr int kSobolInitCount = 34802;  // sum of the polynomial degrees

extern const uint16_t kSobolPoly[kSobolBuiltinDims];
extern const uint16_t kSobolInit[kSobolInitCount];

}  // namespace oxa::streams
