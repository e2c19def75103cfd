// The one definition of the inverse-normal tables, shared by the CdfNormInv
// and ErfInv kernels (declared in cdfnorminv_rows.hpp).
#include "vector_math/cdfnorminv/cdfnorminv_rows.hpp"

namespace oxa::vml {
namespace {
constexpr double kInf = __builtin_inf();
constexpr float kInfF = __builtin_inff();
}  // namespace

#include "vector_math/cdfnorminv/cdfnorminv_tables.inc"

}  // namespace oxa::vml
