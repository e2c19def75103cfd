// Inverse error function: our kernels against Boost.Math's erf_inv in a
// scalar loop (0.5 ulp); there is no vector peer.
#if __has_include(<boost/math/special_functions/erf.hpp>)
#include <boost/math/special_functions/erf.hpp>
#define OXA_BENCH_HAVE_BOOST 1
#endif

#include "oxa/vector_math.h"
#include "vector_math/vml_bench_harness.hpp"

namespace {

#ifdef OXA_BENCH_HAVE_BOOST
double boost_erf_inv(double x) { return boost::math::erf_inv(x); }
float boost_erf_inv_f(float x) { return boost::math::erf_inv(x); }
#endif

const oxa::bench::Registrar registrar([] {
  using oxa::bench::add;
  using oxa::bench::kernel;
  const auto fill_d = oxa::bench::uniform<double>(-0.999999, 0.999999);
  const auto fill_s = oxa::bench::uniform<float>(-0.999999f, 0.999999f);
  add({"dErfInv", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_dErfInv_E9HAynn), fill_d});
  add({"dErfInv", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_dErfInv_E9LAynn), fill_d});
  add({"dErfInv", "2^-26", "oxa EP", true, kernel(oxa_vml_kernel_dErfInv_E9EPnnn), fill_d});
  add({"sErfInv", "1ulp", "oxa HA", true, kernel(oxa_vml_kernel_sErfInv_E9HAynn), fill_s, true});
  add({"sErfInv", "4ulp", "oxa LA", true, kernel(oxa_vml_kernel_sErfInv_E9LAynn), fill_s, true});
  add({"sErfInv", "2^-11", "oxa EP", true, kernel(oxa_vml_kernel_sErfInv_E9EPnnn), fill_s, true});
#ifdef OXA_BENCH_HAVE_BOOST
  add({"dErfInv", "1ulp", "Boost erf_inv loop", false, oxa::bench::scalar_loop(boost_erf_inv), fill_d});
  add({"sErfInv", "1ulp", "Boost erf_inv loop", false, oxa::bench::scalar_loop(boost_erf_inv_f), fill_s, true});
#endif
});

}  // namespace
