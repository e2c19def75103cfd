// Uniform draws of the transforming generators: always the standard method.
#pragma once

#include <cstdint>

#include "distributions/vml_calls.hpp"
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

// r[i] = ln u[i] for n uniforms u on [0, 1), by the EP logarithm in place.
// n >= 1. Returns the uniform status; on failure r holds what the draw left.
template <class T>
int32_t draw_log_uniform(StreamState* stream, int32_t n, T* r) {
  const int32_t status = draw_uniform<T>(stream, n, r, T(0), T(1));
  if (status >= 0) call_kernel(Vml<T>::ln[kSlotEP], n, r, r);
  return status;
}

}  // namespace oxa::distributions
