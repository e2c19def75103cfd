// Built with -mavx512f -mavx512dq -mavx512bw -mavx512vl. Only kernel
// addresses leave this file, so nothing here runs on a processor without
// AVX-512 unless the test has checked for it first. (The inline scalar
// routines compiled here may stand in for the library's copies in this test
// program: same source, same results.)
#include "vector_math/avx512_kernels.hpp"

#include "vector_math/exp/exp.hpp"
#include "vector_math/ln/ln.hpp"
#include "vector_math/sin/sin.hpp"

namespace oxa::test {

using oxa::vml::Acc;
using oxa::vml::kernel_in1_out1;
using oxa::vml::simd::Avx512;
namespace fam = oxa::vml::fam;

template <class F>
constexpr Avx512Family family(const char* name, bool has_double_ep) {
  return {name,
          {kernel_in1_out1<F, double, Acc::LA, Avx512>, kernel_in1_out1<F, double, Acc::HA, Avx512>,
           has_double_ep ? kernel_in1_out1<F, double, Acc::EP, Avx512> : nullptr},
          {kernel_in1_out1<F, float, Acc::LA, Avx512>, kernel_in1_out1<F, float, Acc::HA, Avx512>,
           kernel_in1_out1<F, float, Acc::EP, Avx512>}};
}

const Avx512Family kAvx512Families[3] = {family<fam::Exp>("Exp", false), family<fam::Ln>("Ln", true),
                                         family<fam::Sin>("Sin", true)};

}  // namespace oxa::test
