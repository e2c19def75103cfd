// The kernel tables of both precisions, instantiated from basic_kernel, and
// the names of their members.
#include <array>
#include <utility>

#include "summary_stats/basic_kernel.hpp"

namespace oxa::ss {
namespace {

template <class T, size_t... I>
constexpr auto one_pass_row(std::index_sequence<I...>) {
  // index = weighted * 8 + by_observation * 16 + level * 2 + cp
  return std::array<BasicKernel<T>, sizeof...(I)>{
      &basic_kernel<T, Method::OnePass, ((I >> 4) & 1) != 0, ((I >> 3) & 1) != 0, int((I >> 1) & 3),
                    (I & 1) != 0>...};
}

template <class T, Method M, bool CP, size_t... I>
constexpr auto four_level_row(std::index_sequence<I...>) {
  // index = weighted * 4 + by_observation * 8 + level
  return std::array<BasicKernel<T>, sizeof...(I)>{
      &basic_kernel<T, M, ((I >> 3) & 1) != 0, ((I >> 2) & 1) != 0, int(I & 3), CP>...};
}

template <class T, size_t N>
void copy_row(BasicKernel<T> (&to)[N], const std::array<BasicKernel<T>, N>& from) {
  for (size_t i = 0; i < N; ++i) to[i] = from[i];
}

template <class T>
BasicKernelTables<T> make_tables() {
  BasicKernelTables<T> t{};
  copy_row(t.one_pass, one_pass_row<T>(std::make_index_sequence<32>{}));
  copy_row(t.fast, four_level_row<T, Method::Fast, false>(std::make_index_sequence<16>{}));
  copy_row(t.given_mean,
           four_level_row<T, Method::GivenMean, false>(std::make_index_sequence<16>{}));
  copy_row(t.fast_cp, four_level_row<T, Method::Fast, true>(std::make_index_sequence<16>{}));
  copy_row(t.given_mean_cp,
           four_level_row<T, Method::GivenMean, true>(std::make_index_sequence<16>{}));
  return t;
}

const BasicKernelTables<double> kTablesD = make_tables<double>();
const BasicKernelTables<float> kTablesS = make_tables<float>();

}  // namespace

template <>
const BasicKernelTables<double>& basic_kernel_tables<double>() {
  return kTablesD;
}
template <>
const BasicKernelTables<float>& basic_kernel_tables<float>() {
  return kTablesS;
}

const char* const kBasicKernelNames[64] = {
    "_vSSBasic1pR_R1___C____", "_vSSBasic1pR_R1___C___C", "_vSSBasic1pR_R1___C2___",
    "_vSSBasic1pR_R1___C2__C", "_vSSBasic1pR_R12__C2___", "_vSSBasic1pR_R12__C2__C",
    "_vSSBasic1pR_R1234C234_", "_vSSBasic1pR_R1234C234C", "_vSSBasic1pRWR1___C____",
    "_vSSBasic1pRWR1___C___C", "_vSSBasic1pRWR1___C2___", "_vSSBasic1pRWR1___C2__C",
    "_vSSBasic1pRWR12__C2___", "_vSSBasic1pRWR12__C2__C", "_vSSBasic1pRWR1234C234_",
    "_vSSBasic1pRWR1234C234C", "_vSSBasic1pC_R1___C____", "_vSSBasic1pC_R1___C___C",
    "_vSSBasic1pC_R1___C2___", "_vSSBasic1pC_R1___C2__C", "_vSSBasic1pC_R12__C2___",
    "_vSSBasic1pC_R12__C2__C", "_vSSBasic1pC_R1234C234_", "_vSSBasic1pC_R1234C234C",
    "_vSSBasic1pCWR1___C____", "_vSSBasic1pCWR1___C___C", "_vSSBasic1pCWR1___C2___",
    "_vSSBasic1pCWR1___C2__C", "_vSSBasic1pCWR12__C2___", "_vSSBasic1pCWR12__C2__C",
    "_vSSBasic1pCWR1234C234_", "_vSSBasic1pCWR1234C234C", "_vSSBasicFastR_R1___",
    "_vSSBasicFastR_R12__",    "_vSSBasicFastR_R123_",    "_vSSBasicFastR_R1234",
    "_vSSBasicFastRWR1___",    "_vSSBasicFastRWR12__",    "_vSSBasicFastRWR123_",
    "_vSSBasicFastRWR1234",    "_vSSBasicFastC_R1___",    "_vSSBasicFastC_R12__",
    "_vSSBasicFastC_R123_",    "_vSSBasicFastC_R1234",    "_vSSBasicFastCWR1___",
    "_vSSBasicFastCWR12__",    "_vSSBasicFastCWR123_",    "_vSSBasicFastCWR1234",
    "_vSSBasic2pR_R____C2__",  "_vSSBasic2pR_R____C23_",  "_vSSBasic2pR_R____C234",
    "_vSSBasic2pR_R_234C234",  "_vSSBasic2pRWR____C2__",  "_vSSBasic2pRWR____C23_",
    "_vSSBasic2pRWR____C234",  "_vSSBasic2pRWR_234C234",  "_vSSBasic2pC_R____C2__",
    "_vSSBasic2pC_R____C23_",  "_vSSBasic2pC_R____C234",  "_vSSBasic2pC_R_234C234",
    "_vSSBasic2pCWR____C2__",  "_vSSBasic2pCWR____C23_",  "_vSSBasic2pCWR____C234",
    "_vSSBasic2pCWR_234C234"};

}  // namespace oxa::ss
