// The exported Exp kernels (the family is described in exp.hpp).
#include "vector_math/exp/exp.hpp"

namespace oxa::vml {

template void kernel_in1_out1<fam::Exp, double, Acc::HA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Exp, double, Acc::LA>(int64_t, const double*, double*);
template void kernel_in1_out1<fam::Exp, float, Acc::HA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Exp, float, Acc::LA>(int64_t, const float*, float*);
template void kernel_in1_out1<fam::Exp, float, Acc::EP>(int64_t, const float*, float*);

}  // namespace oxa::vml
