// Scalar pieces of the inverse normal CDF shared by its kernels.
#pragma once

#include <cstdint>

#include "vector_math/frame/kernel.hpp"

namespace oxa::vml {

namespace fam {
struct CdfNormInv;
}  // namespace fam

// Phi^-1(x) for 0 < x < 2^-54 (down to the smallest subnormal), within about
// 0.6 ulp.
double dCdfNormInv_Tail(double x);

// One element outside the fast range: writes Phi^-1(*x) and returns the
// status (0, VML_ERR_DOMAIN or VML_ERR_SINGULARITY). One instance per level;
// they differ only in the table whose constants they read.
template <Acc A>
int32_t dCdfNormInv_SC(const double* x, double* r);
template <Acc A>
int32_t sCdfNormInv_SC(const float* x, float* r);

}  // namespace oxa::vml
