// The exported Ln kernels (the family is described in ln.hpp).
#include "vector_math/ln/ln.hpp"

#include "vector_math/ln/ln_kernels.inc"
