// Generators that other generators build on.
#pragma once

#include <cstdint>

#include "oxa/distributions.h"

namespace oxa::distributions {

// n exponential variates max(a, a - beta·ln u) in the logarithm's error frame.
template <class T>
int32_t exponential(StreamState* stream, int32_t n, T* r, T a, T beta);

}  // namespace oxa::distributions
