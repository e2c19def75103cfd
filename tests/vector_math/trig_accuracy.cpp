// Accuracy of the Sin, Cos, SinCos and Tan kernels against MPFR, all levels,
// both precisions: random inputs up to 1e300 (all finite floats), a dense
// band around the fast range, and arguments known to be close to multiples
// of pi/2.
#include <cfloat>
#include <cmath>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace {

using oxa::test::Bound;
using oxa::test::Domain;
using oxa::test::Level;

// One output of a two-output kernel as a one-output kernel.
template <class T, void (*K)(int64_t, const T*, T*, T*), int Which>
void one_of(int64_t n, const T* a, T* r) {
  std::vector<T> other(static_cast<size_t>(n));
  if (Which == 0)
    K(n, a, r, other.data());
  else
    K(n, a, other.data(), r);
}

template <class T>
std::vector<T> hard_inputs() {
  std::vector<T> v = {T(1e-30), T(0x1p-27), T(0.7853981), T(1.5707963), T(3.1415927), T(4.712389),
                      T(1e5), T(1e6), T(12345678.0), T(0x1p30), T(-0x1p30), T(1e10), T(1e22),
                      std::nextafter(T(0x1p30), T(0))};
  if constexpr (sizeof(T) == 8) {
    // 6381956970095103 * 2^797 is the double closest to a multiple of pi/2
    // (|r| about 2^-61); k * pi/2 rounded lies within a few ulps of one.
    for (double x : {6381956970095103.0 * 0x1p797, 0x1.fffffffffffffp+1023, 0x1p-1022, 0x1p-1000})
      v.push_back(x), v.push_back(-x);
    for (double k = 1; k < 0x1p29; k = k * 3 + 1) v.push_back(k * 0x1.921fb54442d18p+0);
  } else {
    for (float x : {0x1.fffffep+127f, 0x1p-126f, 0x1p-149f}) v.push_back(x), v.push_back(-x);
    for (float k = 1; k < 0x1p29f; k = k * 3 + 1) v.push_back(k * 0x1.921fb6p+0f);
  }
  return v;
}

template <class T>
void check(const char* name, const std::vector<Level<T>>& levels, oxa::test::Reference ref, T big) {
  const int64_t count = oxa::test::sample_count(6000);
  const std::vector<T> hard = hard_inputs<T>();
  for (const Domain<T>& d : {Domain<T>{0, big}, Domain<T>{-big, 0}, Domain<T>{0, T(100)}, Domain<T>{T(-4096), 0},
                             Domain<T>{T(-0x1p30), T(-0x1p20)}})
    oxa::test::expect_within(oxa::test::measure<T>(levels, ref, d, hard, count), name);
}

constexpr double kEpD = 0x1p-26;
constexpr double kEpS = 0x1p-11;

TEST(TrigAccuracy, Sin) {
  check<double>("dSin",
                {{"HA", oxa_vml_kernel_dSin_E9HAynn, Bound::ulps(1.0)},
                 {"LA", oxa_vml_kernel_dSin_E9LAynn, Bound::ulps(4.0)},
                 {"EP", oxa_vml_kernel_dSin_E9EPnnn, Bound::relative(kEpD)},
                 {"SinCosHA", one_of<double, oxa_vml_kernel_dSinCos_E9HAynn, 0>, Bound::ulps(1.0)},
                 {"SinCosEP", one_of<double, oxa_vml_kernel_dSinCos_E9EPnnn, 0>, Bound::relative(kEpD)}},
                mpfr_sin, 1e300);
  check<float>("sSin",
               {{"HA", oxa_vml_kernel_sSin_E9HAynn, Bound::ulps(1.0)},
                {"LA", oxa_vml_kernel_sSin_E9LAynn, Bound::ulps(4.0)},
                {"EP", oxa_vml_kernel_sSin_E9EPnnn, Bound::relative(kEpS)},
                {"SinCosLA", one_of<float, oxa_vml_kernel_sSinCos_E9LAynn, 0>, Bound::ulps(4.0)},
                {"SinCosEP", one_of<float, oxa_vml_kernel_sSinCos_E9EPnnn, 0>, Bound::relative(kEpS)}},
               mpfr_sin, FLT_MAX);
}

TEST(TrigAccuracy, Cos) {
  check<double>("dCos",
                {{"HA", oxa_vml_kernel_dCos_E9HAynn, Bound::ulps(1.0)},
                 {"LA", oxa_vml_kernel_dCos_E9LAynn, Bound::ulps(4.0)},
                 {"EP", oxa_vml_kernel_dCos_E9EPnnn, Bound::relative(kEpD)},
                 {"SinCosLA", one_of<double, oxa_vml_kernel_dSinCos_E9LAynn, 1>, Bound::ulps(4.0)}},
                mpfr_cos, 1e300);
  check<float>("sCos",
               {{"HA", oxa_vml_kernel_sCos_E9HAynn, Bound::ulps(1.0)},
                {"LA", oxa_vml_kernel_sCos_E9LAynn, Bound::ulps(4.0)},
                {"EP", oxa_vml_kernel_sCos_E9EPnnn, Bound::relative(kEpS)},
                {"SinCosHA", one_of<float, oxa_vml_kernel_sSinCos_E9HAynn, 1>, Bound::ulps(1.0)},
                {"SinCosLA", one_of<float, oxa_vml_kernel_sSinCos_E9LAynn, 1>, Bound::ulps(4.0)},
                {"SinCosEP", one_of<float, oxa_vml_kernel_sSinCos_E9EPnnn, 1>, Bound::relative(kEpS)}},
               mpfr_cos, FLT_MAX);
}

TEST(TrigAccuracy, Tan) {
  check<double>("dTan",
                {{"HA", oxa_vml_kernel_dTan_E9HAynn, Bound::ulps(1.0)},
                 {"LA", oxa_vml_kernel_dTan_E9LAynn, Bound::ulps(4.0)},
                 {"EP", oxa_vml_kernel_dTan_E9EPnnn, Bound::relative(kEpD)}},
                mpfr_tan, 1e300);
  check<float>("sTan",
               {{"HA", oxa_vml_kernel_sTan_E7HAynn, Bound::ulps(1.0)},
                {"LA", oxa_vml_kernel_sTan_E9LAynn, Bound::ulps(4.0)},
                {"EP", oxa_vml_kernel_sTan_E9EPnnn, Bound::relative(kEpS)}},
               mpfr_tan, FLT_MAX);
}

}  // namespace
