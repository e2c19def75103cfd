// The exported Sin kernels (the family is described in sin.hpp).
#include "vector_math/sin/sin.hpp"

#include "vector_math/sin/sin_kernels.inc"
