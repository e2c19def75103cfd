// The exported Exp kernels (the family is described in exp.hpp).
#include "vector_math/exp/exp.hpp"

#include "vector_math/exp/exp_kernels.inc"
