// Parameter sets of the WH generator: moduli, multipliers and reciprocals.
#pragma once

#include <cstdint>

namespace oxa::streams {

inline constexpr int kWhSetCount = 273;

extern const uint32_t _vsl_WH_M[kWhSetCount][4];
extern const uint8_t _vsl_WH_A[kWhSetCount][4];
extern const double _vsldWH_IM_Tab[kWhSetCount][4];

}  // namespace oxa::streams
