// Behaviour of the power kernels: the C99 pow special cases with their
// statuses, each placed in every block position, signs of negative bases,
// exact results, and the dispatch entries.
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <string>

#include "oxa/vector_math.h"
#include "vector_math/edge_value_harness.hpp"

namespace {

template <class T>
using Powx = void (*)(int64_t, const T*, T, T*);

template <class T>
struct Named {
  const char* name;
  Powx<T> kernel;
};

const Named<double> kDouble[] = {{"dHA", oxa_vml_kernel_dPowx_E9HAynn},
                                 {"dLA", oxa_vml_kernel_dPowx_E9LAynn},
                                 {"dEP", oxa_vml_kernel_dPowx_E9EPnnn}};
const Named<float> kSingle[] = {{"sHA", oxa_vml_kernel_sPowx_E9HAynn},
                                {"sLA", oxa_vml_kernel_sPowx_E9LAynn},
                                {"sEP", oxa_vml_kernel_sPowx_E9EPnnn}};

template <class T>
struct PowCase {
  T a, b, expected;
  int32_t status;
};

// C99 pow; `big` overflows (big^2 = inf) and `small` underflows to zero.
template <class T>
std::vector<PowCase<T>> pow_cases() {
  constexpr T inf = std::numeric_limits<T>::infinity(), nan = std::numeric_limits<T>::quiet_NaN();
  const T max_exp = static_cast<T>(std::numeric_limits<T>::max_exponent);  // 1024 or 128
  const T tiny = std::numeric_limits<T>::denorm_min();
  const T min_exp = static_cast<T>(std::numeric_limits<T>::min_exponent - std::numeric_limits<T>::digits);
  return {
      // b = +-0 and a = 1 give 1 whatever the other argument.
      {nan, 0, 1, 0}, {inf, -T(0), 1, 0}, {1, nan, 1, 0}, {1, -inf, 1, 0}, {1, T(1e30), 1, 0},
      // Other NaNs propagate quietly.
      {nan, 2, nan, 0}, {2, nan, nan, 0}, {-2, nan, nan, 0},
      // Zero bases: sign kept for odd integer b; negative b is a singularity.
      {T(0), -3, inf, 2}, {-T(0), -3, -inf, 2}, {-T(0), -2, inf, 2}, {-T(0), T(-0.5), inf, 2},
      {T(0), -inf, inf, 2}, {-T(0), 3, -T(0), 0}, {-T(0), 2, T(0), 0}, {-T(0), T(0.5), T(0), 0},
      {T(0), inf, T(0), 0},
      // Infinite exponents.
      {-1, inf, 1, 0}, {-1, -inf, 1, 0}, {T(0.5), -inf, inf, 0}, {2, -inf, T(0), 0}, {T(-0.5), inf, T(0), 0},
      {-2, inf, inf, 0},
      // Infinite bases.
      {-inf, -3, -T(0), 0}, {-inf, -2, T(0), 0}, {-inf, 3, -inf, 0}, {-inf, T(2.5), inf, 0},
      {inf, -1, T(0), 0}, {inf, T(0.5), inf, 0},
      // Negative bases: integer b only; the sign follows b's parity.
      {-2, T(0.5), nan, 1}, {-inf, T(0.5), inf, 0}, {-2, 3, -8, 0}, {-2, 2, 4, 0}, {-2, -1, T(-0.5), 0},
      {-tiny, T(1.5), nan, 1},
      // Exact results, overflow and underflow.
      {4, T(0.5), 2, 0}, {2, 10, 1024, 0}, {T(0.25), T(-1.5), 8, 0},
      // (2^(min_exp - 1) is a tie between 0 and the smallest subnormal: left out.)
      {2, max_exp + 1, inf, 3}, {-2, max_exp + 1, -inf, 3}, {T(1e10), T(1e10), inf, 3},
      {2, min_exp - 2, T(0), 4}, {2, min_exp, tiny, 4}, {T(1e-10), T(1e10), T(0), 4},
      {-2, min_exp - 2, std::fmod(min_exp - 2, T(2)) != 0 ? -T(0) : T(0), 4},
  };
}

// The kernel under test with the exponent of the current case, in the
// one-input shape the special harness expects.
template <class T>
struct Bound {
  static inline Powx<T> kernel;
  static inline T b;
  static void call(int64_t n, const T* a, T* r) { kernel(n, a, b, r); }
};

template <class T>
void check_all(const Named<T>& k, int length) {
  // Ordinary bases 1 + i/n for moderate exponents; 1 for huge ones, whose
  // other powers would over- or underflow themselves.
  std::vector<T> moderate, ones(length, T(1));
  for (int i = 0; i < length; ++i) moderate.push_back(T(1) + T(i) / T(length));
  Bound<T>::kernel = k.kernel;
  for (const PowCase<T>& c : pow_cases<T>()) {
    Bound<T>::b = c.b;
    const std::vector<T>& ordinary = std::fabs(c.b) <= 64 ? moderate : ones;
    // EP is not exact on ordinary finite results.
    const bool approximate = std::isfinite(c.expected) && c.expected != 0 && c.expected != 1 && c.status == 0;
    if (approximate && std::string(k.name).ends_with("EP")) continue;
    SCOPED_TRACE(testing::Message() << k.name << " a=" << c.a << " b=" << c.b);
    oxa::test::check_specials<T>(k.name, &Bound<T>::call, {{c.a, c.expected, c.status}}, ordinary);
  }
}

TEST(Powx, C99SpecialCasesInEveryPosition) {
  for (const auto& k : kDouble) check_all<double>(k, 13);
  for (const auto& k : kSingle) check_all<float>(k, 29);
}

// Negative bases with integer exponents in the fast path keep |a|^b exactly
// symmetric; odd exponents flip the sign.
TEST(Powx, NegativeBasesMirrorPositiveOnes) {
  const double a[6] = {1.5, 2.25, 3.75, 0.3, 7.0, 123.456};
  for (const auto& k : kDouble) {
    for (double b : {2.0, 3.0, -5.0, 17.0, -100.0}) {
      double pos[6], neg_a[6], neg[6];
      for (int i = 0; i < 6; ++i) neg_a[i] = -a[i];
      k.kernel(6, a, b, pos);
      k.kernel(6, neg_a, b, neg);
      const bool odd = std::fmod(b, 2.0) != 0;
      for (int i = 0; i < 6; ++i) EXPECT_EQ(neg[i], odd ? -pos[i] : pos[i]) << k.name << " b=" << b;
    }
  }
}

// The scalar exponent reaches the error report as the second argument.
TEST(Powx, ErrorReportCarriesTheExponent) {
  static std::string name;
  static double arg2;
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_CALLBACK);
  oxa_vml_kernel_SetErrorCallBack([](VmlErrorContext* c) -> int32_t {
    name = c->func_name;
    arg2 = c->arg2;
    return 1;
  });
  const double a[2] = {2, -2};
  double r[2];
  _vmldPowx(2, a, 0.5, r);
  EXPECT_EQ(name, "vdPowx");
  EXPECT_EQ(arg2, 0.5);  // the scalar exponent is reported as the second argument
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_DEFAULT);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace
