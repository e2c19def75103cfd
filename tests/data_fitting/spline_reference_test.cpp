// Cubic and quadratic splines against scipy.interpolate (spline_reference.txt, made by
// spline_reference.py): coefficients, values and derivatives inside and
// beyond the partition, integrals, on random, graded and uniform partitions
// from 2 to 10^5 breakpoints.
#include <gtest/gtest.h>

#include <cmath>
#include <fstream>
#include <map>
#include <sstream>
#include <string>

#include "data_fitting/spline_test_support.hpp"

namespace {

using spline_test::Lcg;
using spline_test::Spline;

struct Kind {
  int64_t type, bc_type;
  std::vector<double> bc;
  int64_t order = 4;
};

const std::map<std::string, Kind> kKinds = {
    {"natural", {DF_TYPE_NATURAL, DF_BC_FREE_END, {}}},
    {"notaknot", {DF_TYPE_NATURAL, DF_BC_NOT_A_KNOT, {}}},
    {"clamped", {DF_TYPE_NATURAL, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT, {0.5, -1.25}}},
    {"second", {DF_TYPE_NATURAL, DF_BC_SECOND_LEFT | DF_BC_SECOND_RIGHT, {0.75, -0.5}}},
    {"mixed", {DF_TYPE_NATURAL, DF_BC_FIRST_LEFT | DF_BC_SECOND_RIGHT, {0.5, -0.5}}},
    {"periodic", {DF_TYPE_NATURAL, DF_BC_PERIODIC, {}}},
    {"akima", {DF_TYPE_AKIMA, 0, {}}},
    {"hermite", {DF_TYPE_HERMITE, 0, {}}},
    {"quad-left", {DF_TYPE_DEFAULT, DF_BC_FIRST_LEFT, {0.5}, 3}},
    {"quad-right", {DF_TYPE_DEFAULT, DF_BC_FIRST_RIGHT, {-0.75}, 3}},
    {"quad-second", {DF_TYPE_DEFAULT, DF_BC_SECOND_LEFT, {0.6}, 3}},
    {"subbotin", {DF_TYPE_SUBBOTIN, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT, {0.5, -0.75}, 3}},
    {"subbotin-second",
     {DF_TYPE_SUBBOTIN, DF_BC_SECOND_LEFT | DF_BC_SECOND_RIGHT, {0.6, -0.4}, 3}},
};

// Relative to the larger of the two magnitudes and of `scale` (the size of
// the quantity's neighbours, so a coefficient that cancels to near 0 is
// judged against its row).
constexpr double kTol = 1e-12;
void expect_close(double got, double want, double scale, const std::string& what) {
  const double bound = kTol * std::max({std::fabs(want), std::fabs(got), scale});
  EXPECT_LE(std::fabs(got - want), bound) << what << ": got " << got << " want " << want;
}

struct Case {
  std::string kind, part;
  int64_t nx = 0;
  uint64_t seed = 0;
  std::vector<std::vector<double>> coef, site, integral;
};

std::vector<Case> read_cases() {
  std::ifstream in(OXA_SPLINE_REFERENCE);
  std::vector<Case> cases;
  std::string line;
  while (std::getline(in, line)) {
    std::istringstream s(line);
    std::string tag;
    s >> tag;
    if (tag == "case") {
      cases.emplace_back();
      s >> cases.back().kind >> cases.back().part >> cases.back().nx >> cases.back().seed;
      continue;
    }
    std::vector<double> v;
    for (double d; s >> d;) v.push_back(d);
    auto& c = cases.back();
    (tag == "coef" ? c.coef : tag == "site" ? c.site : c.integral).push_back(v);
  }
  return cases;
}

TEST(SplineReference, AgainstScipy) {
  const auto cases = read_cases();
  ASSERT_GE(cases.size(), 30u);
  for (const auto& c : cases) {
    SCOPED_TRACE(c.kind + " " + c.part + " nx=" + std::to_string(c.nx));
    const int64_t n = c.nx;
    Lcg g{c.seed};
    std::vector<double> x(static_cast<size_t>(n)), y(x.size()), d(x.size());
    for (int64_t i = 0; i < n; ++i) {
      if (c.part == "uniform") {
        x[i] = i == n - 1 ? 3.0 : -2.0 + static_cast<double>(i) * 5.0 / static_cast<double>(n - 1);
      } else if (c.part == "graded") {
        const double a = static_cast<double>(i) / static_cast<double>(n - 1);
        x[i] = 10.0 * (a * a);
      }
    }
    if (c.part == "random")
      for (double v = 0; auto& e : x) e = v, v = v + (0.05 + g.next());
    for (auto& e : y) e = 2.0 * g.next() - 1.0;
    for (auto& e : d) e = 2.0 * g.next() - 1.0;
    if (c.kind == "periodic") y.back() = y.front();
    const Kind& k = kKinds.at(c.kind);
    Spline s(c.part == "uniform" ? std::vector<double>{-2.0, 3.0} : x, y, 1, k.order);
    if (c.part == "uniform") s.xhint = DF_X_UNIFORM;
    s.bc = k.bc;
    if (c.kind == "hermite") s.ic = d;
    ASSERT_EQ(s.build(n, k.type, k.bc_type, c.kind == "hermite" ? DF_IC_FIRST_DER : 0), DF_OK);
    for (const auto& row : c.coef) {
      const auto m = static_cast<int64_t>(row[0]);
      double scale = 0;
      for (size_t q = 1; q < row.size(); ++q) scale = std::max(scale, std::fabs(row[q]));
      for (int q = 0; q < k.order; ++q)
        expect_close(s.cell(0, m)[q], row[1 + q], 1e-3 * scale,
                     "cell " + std::to_string(m) + " c" + std::to_string(q));
    }
    std::vector<double> t;
    for (const auto& row : c.site) t.push_back(row[0]);
    const auto r = s.eval(t);
    for (size_t i = 0; i < t.size(); ++i)
      for (int q = 0; q < 4; ++q)
        expect_close(r[q * t.size() + i], c.site[i][1 + q],
                     1e-3 * std::max({std::fabs(c.site[i][1]), std::fabs(c.site[i][2]),
                                      std::fabs(c.site[i][3]), std::fabs(c.site[i][4])}),
                     "site " + std::to_string(t[i]) + " d" + std::to_string(q));
    std::vector<double> l, rr;
    for (const auto& row : c.integral) l.push_back(row[0]), rr.push_back(row[1]);
    const auto integral = s.integrate(l, rr);
    for (size_t i = 0; i < l.size(); ++i)
      expect_close(integral[i], c.integral[i][2], std::fabs(rr[i] - l[i]) * 1e-2,
                   "integral " + std::to_string(i));
  }
}

}  // namespace
