// The exported Sin kernels (the family is described in sin.hpp).
#include "vector_math/sin/sin.hpp"

namespace oxa::vml {

template void kernel_in1_out1<fam::Sin, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, double, Acc::EP>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Sin, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Sin, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Sin, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
