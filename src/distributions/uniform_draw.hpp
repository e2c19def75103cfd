// Uniform draws of the transforming generators: always the standard method.
#pragma once

#include <cstdint>

#include "oxa/distributions.h"

namespace oxa::distributions {

template <class T>
int32_t draw_uniform(StreamState* stream, int32_t n, T* r, T a, T b) {
  if constexpr (sizeof(T) == sizeof(double)) {
    return _vsldRngUniform(OXA_RNG_METHOD_STANDARD, stream, n, r, a, b);
  } else {
    return _vslsRngUniform(OXA_RNG_METHOD_STANDARD, stream, n, r, a, b);
  }
}

}  // namespace oxa::distributions
