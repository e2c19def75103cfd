// The exported Ln kernels (the family is described in ln.hpp).
#include "vector_math/ln/ln.hpp"

namespace oxa::vml {

template void kernel_in1_out1<fam::Ln, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Ln, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Ln, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Ln, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
