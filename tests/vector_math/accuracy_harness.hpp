// Accuracy harness for vector-math kernels: measures ulp and relative errors
// against an MPFR reference over random inputs drawn from the whole domain (by
// bit pattern, so subnormal and huge arguments appear, and by value), plus a
// family's own list of inputs. A family's accuracy test is a few lines:
//
//   const auto reports = oxa::test::measure<double>(
//       {{"HA", oxa_vml_kernel_dExp_E9HAynn, oxa::test::Bound::ulps(1.0)}, ...},
//       mpfr_exp, oxa::test::Domain<double>{-745.0, 709.0}, extra_inputs);
//   oxa::test::expect_within(reports);
//
// The number of random inputs is OXA_VML_ACCURACY_COUNT (default: a reduced
// count for CI; set it to 1000000 or more for a full run).
#pragma once

#include <gtest/gtest.h>
#include <mpfr.h>

#include <bit>
#include <cmath>
#include <cstdint>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <random>
#include <string>
#include <vector>

namespace oxa::test {

template <class T>
using Kernel = void (*)(int64_t, const T*, T*);

// Reference: rop = f(op), rounded at rop's precision. Like mpfr's own functions
// (mpfr_exp, mpfr_log, ...), so those can be passed directly.
using Reference = int (*)(mpfr_ptr rop, mpfr_srcptr op, mpfr_rnd_t rnd);

struct Bound {
  double max_ulp = 0.0;  // used when nonzero
  double max_rel = 0.0;  // used when nonzero
  static Bound ulps(double u) { return {u, 0.0}; }
  static Bound relative(double r) { return {0.0, r}; }
};

template <class T>
struct Level {
  std::string name;
  Kernel<T> kernel;
  Bound bound;
};

// Inputs in [lo, hi]; both ends finite and of one sign or zero.
template <class T>
struct Domain {
  T lo, hi;
};

template <class T>
struct Report {
  std::string name;
  Bound bound;
  int64_t count = 0;
  double max_ulp = 0.0, sum_ulp = 0.0, max_rel = 0.0;
  T worst_ulp_input = 0, worst_rel_input = 0;
  double mean_ulp() const { return count ? sum_ulp / static_cast<double>(count) : 0.0; }
};

inline int64_t sample_count(int64_t reduced) {
  if (const char* s = std::getenv("OXA_VML_ACCURACY_COUNT")) {
    const long long v = std::atoll(s);
    if (v > 0) return v;
  }
  return reduced;
}

namespace detail {

template <class T>
using Bits = std::conditional_t<sizeof(T) == 8, uint64_t, uint32_t>;

// Signed-magnitude bits mapped to a monotonic integer line and back.
template <class T>
int64_t ordinal(T x) {
  const auto b = std::bit_cast<Bits<T>>(x);
  constexpr Bits<T> sign = Bits<T>{1} << (sizeof(T) * 8 - 1);
  return (b & sign) ? -static_cast<int64_t>(b & ~sign) : static_cast<int64_t>(b);
}
template <class T>
T from_ordinal(int64_t o) {
  constexpr Bits<T> sign = Bits<T>{1} << (sizeof(T) * 8 - 1);
  return o < 0 ? std::bit_cast<T>(static_cast<Bits<T>>(-o) | sign)
               : std::bit_cast<T>(static_cast<Bits<T>>(o));
}

// ulp of the format T at the magnitude of the exact value y.
template <class T>
void ulp_of(mpfr_t ulp, const mpfr_t y) {
  constexpr int p = std::numeric_limits<T>::digits;           // 53 or 24
  constexpr int emin = std::numeric_limits<T>::min_exponent;  // -1021 or -125
  long e = mpfr_zero_p(y) ? emin : mpfr_get_exp(y);           // y = m 2^e, m in [1/2, 1)
  if (e < emin) e = emin;
  mpfr_set_ui_2exp(ulp, 1, e - p, MPFR_RNDN);
}

}  // namespace detail

// Runs every level on the same inputs: `count` random ones (half uniform over
// the bit patterns of the domain, half uniform in value) and `extra`.
template <class T>
std::vector<Report<T>> measure(const std::vector<Level<T>>& levels, Reference reference,
                               Domain<T> domain, const std::vector<T>& extra, int64_t count,
                               uint64_t seed = 0x5eed) {
  std::mt19937_64 rng(seed);
  std::vector<T> inputs(extra);
  const int64_t o_lo = detail::ordinal(domain.lo), o_hi = detail::ordinal(domain.hi);
  std::uniform_int_distribution<int64_t> by_bits(o_lo, o_hi);
  std::uniform_real_distribution<double> by_value(static_cast<double>(domain.lo),
                                                  static_cast<double>(domain.hi));
  for (int64_t k = 0; k < count; ++k) {
    T x = (k & 1) ? detail::from_ordinal<T>(by_bits(rng)) : static_cast<T>(by_value(rng));
    if (x < domain.lo || x > domain.hi) x = domain.lo;
    inputs.push_back(x);
  }

  std::vector<std::vector<T>> outputs(levels.size(), std::vector<T>(inputs.size()));
  for (size_t l = 0; l < levels.size(); ++l)
    levels[l].kernel(static_cast<int64_t>(inputs.size()), inputs.data(), outputs[l].data());

  std::vector<Report<T>> reports(levels.size());
  for (size_t l = 0; l < levels.size(); ++l) reports[l].name = levels[l].name, reports[l].bound = levels[l].bound;

  mpfr_t x, y, diff, ulp;
  mpfr_inits2(128, x, y, diff, ulp, static_cast<mpfr_ptr>(nullptr));
  for (size_t i = 0; i < inputs.size(); ++i) {
    mpfr_set_d(x, static_cast<double>(inputs[i]), MPFR_RNDN);
    reference(y, x, MPFR_RNDN);
    if (!mpfr_number_p(y)) continue;  // special results are checked elsewhere
    detail::ulp_of<T>(ulp, y);
    for (size_t l = 0; l < levels.size(); ++l) {
      const T got = outputs[l][i];
      Report<T>& rep = reports[l];
      double err_ulp = std::numeric_limits<double>::infinity(), err_rel = err_ulp;
      if (std::isfinite(got)) {
        mpfr_set_d(diff, static_cast<double>(got), MPFR_RNDN);
        mpfr_sub(diff, diff, y, MPFR_RNDN);
        mpfr_abs(diff, diff, MPFR_RNDN);
        err_rel = mpfr_zero_p(y) ? (mpfr_zero_p(diff) ? 0.0 : err_rel)
                                 : std::fabs(mpfr_get_d(diff, MPFR_RNDN) / mpfr_get_d(y, MPFR_RNDN));
        mpfr_div(diff, diff, ulp, MPFR_RNDN);
        err_ulp = mpfr_get_d(diff, MPFR_RNDN);
      }
      ++rep.count;
      rep.sum_ulp += err_ulp;
      if (err_ulp > rep.max_ulp) rep.max_ulp = err_ulp, rep.worst_ulp_input = inputs[i];
      if (err_rel > rep.max_rel) rep.max_rel = err_rel, rep.worst_rel_input = inputs[i];
    }
  }
  mpfr_clears(x, y, diff, ulp, static_cast<mpfr_ptr>(nullptr));
  return reports;
}

// Checks each report against its bound and prints the figures.
template <class T>
void expect_within(const std::vector<Report<T>>& reports, const char* function) {
  for (const Report<T>& r : reports) {
    std::printf("%-16s %-3s n=%lld  max %.3f ulp (at %a)  mean %.4f ulp  max rel %.3e (at %a)\n",
                function, r.name.c_str(), static_cast<long long>(r.count), r.max_ulp,
                static_cast<double>(r.worst_ulp_input), r.mean_ulp(), r.max_rel,
                static_cast<double>(r.worst_rel_input));
    if (r.bound.max_ulp > 0) {
      EXPECT_LE(r.max_ulp, r.bound.max_ulp) << function << " " << r.name << " at "
                                            << std::hexfloat << r.worst_ulp_input;
    }
    if (r.bound.max_rel > 0) {
      EXPECT_LE(r.max_rel, r.bound.max_rel) << function << " " << r.name << " at "
                                            << std::hexfloat << r.worst_rel_input;
    }
  }
}

}  // namespace oxa::test
