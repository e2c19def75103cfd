// Scalar pieces of the inverse normal CDF shared by its kernels.
#pragma once

#include <cstdint>

#include "vector_math/frame/kernel.hpp"

namespace oxa::vml {

namespace fam {
struct CdfNormInv {
  static constexpr const char* kName = "CdfNormInv";
};
}  // namespace fam

// Phi^-1(x) for 0 < x < 2^-54 (down to the smallest subnormal), within about
// 0.6 ulp.
double dCdfNormInv_Tail(double x);

}  // namespace oxa::vml
