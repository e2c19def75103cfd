// Spline construction, evaluation and integration by their properties:
// polynomial reproduction per type, interpolation and smoothness on minimal
// partitions, the same coefficients whatever the storage, lane grouping or
// threading, failures that leave the coefficients alone, the evaluation's
// hints, layouts and call-backs, and the step-wise interpolants.
#include <gtest/gtest.h>

#include <cmath>
#include <functional>
#include <limits>
#include <string>

#include "data_fitting/df_test_support.hpp"
#include "data_fitting/spline_test_support.hpp"

namespace {

using df_test::CountingThreading;
using spline_test::Spline;

// p(t) = 1 − 2t + 0.5t² + 0.25t³ cut to `degree`, and its derivatives.
double poly(int degree, int d, double t) {
  const double c[4] = {1, -2, 0.5, 0.25};
  double s = 0;
  for (int p = degree; p >= d; --p) {
    double f = c[p];
    for (int k = 0; k < d; ++k) f *= p - k;
    s = s * t + f;
  }
  return s;
}

std::vector<double> random_x(int64_t n, uint64_t seed) {
  std::mt19937_64 g(seed);
  return df_test::random_partition<double>(n, g);
}

struct TypeRow {
  const char* name;
  int64_t type, bc_type;
  int degree;        // highest degree reproduced exactly
  int64_t exact_nx;  // from this many breakpoints
  int smooth;        // continuous derivatives at the interior breakpoints
};

// bc values are filled from the polynomial where the row's bits ask for them.
const TypeRow kTypes[] = {
    {"natural", DF_TYPE_NATURAL, DF_BC_FREE_END, 1, 2, 2},
    {"default", DF_TYPE_DEFAULT, 0, 1, 2, 2},
    {"not-a-knot", DF_TYPE_NATURAL, DF_BC_NOT_A_KNOT, 3, 4, 2},
    {"clamped", DF_TYPE_NATURAL, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT, 3, 2, 2},
    {"second", DF_TYPE_NATURAL, DF_BC_SECOND_LEFT | DF_BC_SECOND_RIGHT, 3, 2, 2},
    {"first-second", DF_TYPE_NATURAL, DF_BC_FIRST_LEFT | DF_BC_SECOND_RIGHT, 3, 2, 2},
    {"second-first", DF_TYPE_NATURAL, DF_BC_SECOND_LEFT | DF_BC_FIRST_RIGHT, 3, 2, 2},
    {"periodic", DF_TYPE_NATURAL, DF_BC_PERIODIC, 0, 2, 2},
    {"hermite", DF_TYPE_HERMITE, 0, 3, 2, 1},
    {"bessel", DF_TYPE_BESSEL, 0, 2, 3, 1},
    {"akima", DF_TYPE_AKIMA, 0, 1, 2, 1},
};

// Sets a row's conditions from the polynomial of `degree` (the Hermite
// derivatives for `ny` functions) and builds its spline on x.
oxa_status build_row(Spline& s, const TypeRow& row, int degree, int64_t n, int64_t ny = 1,
                     const DfThreading* th = nullptr) {
  const double a = s.x.front(), b = s.x.back();
  s.bc.clear();
  if (row.bc_type & DF_BC_FIRST_LEFT) s.bc.push_back(poly(degree, 1, a));
  if (row.bc_type & DF_BC_SECOND_LEFT) s.bc.push_back(poly(degree, 2, a));
  if (row.bc_type & DF_BC_FIRST_RIGHT) s.bc.push_back(poly(degree, 1, b));
  if (row.bc_type & DF_BC_SECOND_RIGHT) s.bc.push_back(poly(degree, 2, b));
  s.ic.clear();
  for (int64_t j = 0; j < ny; ++j)
    for (double t : s.x) s.ic.push_back(poly(degree, 1, t));
  return s.build(n, row.type, row.bc_type, row.type == DF_TYPE_HERMITE ? DF_IC_FIRST_DER : 0, th);
}

TEST(SplineProperties, ReproducesPolynomialsOfItsDegree) {
  for (const auto& row : kTypes)
    for (int64_t n : {2, 3, 4, 9, 40}) {
      if (n < row.exact_nx) continue;
      SCOPED_TRACE(std::string(row.name) + " nx=" + std::to_string(n));
      auto x = random_x(n, 7);
      std::vector<double> y;
      for (double t : x) y.push_back(poly(row.degree, 0, t));
      Spline s(x, y, 1, 4);
      ASSERT_EQ(build_row(s, row, row.degree, n), DF_OK);
      double size = 1;
      for (double v : y) size = std::max(size, std::fabs(v));
      for (int64_t m = 0; m + 1 < n; ++m)
        for (int q = 0; q < 4; ++q) {
          const double want = poly(row.degree, q, x[m]) / (q == 2 ? 2 : q == 3 ? 6 : 1);
          EXPECT_NEAR(s.cell(0, m)[q], want, 1e-13 * size / std::pow(x[m + 1] - x[m], q))
              << "cell " << m << " c" << q;
        }
    }
}

// Interpolation, and continuity of the row's derivatives, on 2 to 4 points.
TEST(SplineProperties, MinimalPartitionsInterpolateAndJoin) {
  for (const auto& row : kTypes)
    for (int64_t n : {2, 3, 4}) {
      SCOPED_TRACE(std::string(row.name) + " nx=" + std::to_string(n));
      auto x = random_x(n, 11 + n);
      std::vector<double> y{0.3, -1.1, 0.8, 2.0};
      y.resize(static_cast<size_t>(n));
      if (row.bc_type == DF_BC_PERIODIC) y.back() = y.front();
      Spline s(x, y, 1, 4);
      ASSERT_EQ(build_row(s, row, 3, n), DF_OK);
      auto at = [&](int64_t m, int d, double u) {
        const double* c = s.cell(0, m);
        const double v[4] = {c[0] + u * (c[1] + u * (c[2] + u * c[3])),
                             c[1] + u * (2 * c[2] + 3 * u * c[3]), 2 * c[2] + 6 * u * c[3], 0};
        return v[d];
      };
      for (int64_t m = 0; m + 1 < n; ++m) {
        const double h = x[m + 1] - x[m];
        SCOPED_TRACE(m);
        EXPECT_DOUBLE_EQ(at(m, 0, 0), y[m]);
        EXPECT_NEAR(at(m, 0, h), y[m + 1], 1e-13 * 8);
        for (int d = 1; d <= row.smooth && m + 2 < n; ++d)
          EXPECT_NEAR(at(m, d, h), at(m + 1, d, 0), 1e-11 * (1 + std::fabs(at(m, d, h))));
      }
      const double h_last = x[n - 1] - x[n - 2];
      for (int d = 1; d <= 2 && row.bc_type == DF_BC_PERIODIC; ++d)
        EXPECT_NEAR(at(n - 2, d, h_last), at(0, d, 0), 1e-11);
      if (row.type == DF_TYPE_HERMITE) {
        EXPECT_NEAR(at(n - 2, 1, h_last), s.ic.back(), 1e-12);
      }
    }
}

// Four functions per vector, a partial last group, column storage and
// threads all give the coefficients of each function built alone.
TEST(SplineProperties, SameCoefficientsWhateverTheGrouping) {
  const int64_t n = 300, ny = 7;
  auto x = random_x(n, 3);
  std::mt19937_64 g(5);
  std::uniform_real_distribution<double> u(-1, 1);
  std::vector<double> rows(static_cast<size_t>(n * ny)), cols(rows.size());
  for (int64_t j = 0; j < ny; ++j)
    for (int64_t i = 0; i < n; ++i) cols[i * ny + j] = rows[j * n + i] = u(g);
  for (int64_t j = 0; j < ny; ++j) rows[j * n + n - 1] = rows[j * n], cols[(n - 1) * ny + j] = cols[j];
  for (const auto& row : kTypes) {
    SCOPED_TRACE(row.name);
    Spline all(x, rows, ny, 4), by_cols(x, cols, ny, 4);
    by_cols.yhint = DF_STORE_COLS;
    const DfThreading th = CountingThreading::record(3);
    ASSERT_EQ(build_row(all, row, 3, n, ny, &th), DF_OK);
    ASSERT_EQ(build_row(by_cols, row, 3, n, ny), DF_OK);
    for (int64_t j = 0; j < ny; ++j) {
      Spline one(x, std::vector<double>(rows.begin() + j * n, rows.begin() + (j + 1) * n), 1, 4);
      ASSERT_EQ(build_row(one, row, 3, n), DF_OK);
      for (int64_t k = 0; k < 4 * (n - 1); ++k) {
        ASSERT_EQ(all.cell(j, 0)[k], one.cell(0, 0)[k]) << "function " << j << " at " << k;
        ASSERT_EQ(by_cols.cell(j, 0)[k], one.cell(0, 0)[k]) << "function " << j << " at " << k;
      }
    }
  }
}

TEST(SplineProperties, SinglePrecisionFollowsDouble) {
  const int64_t n = 100;
  auto x = random_x(n, 9);
  std::vector<float> xf(x.begin(), x.end()), yf(static_cast<size_t>(n)), cf(4 * (n - 1));
  std::vector<double> y(yf.size());
  for (int64_t i = 0; i < n; ++i) yf[i] = static_cast<float>(std::sin(x[i])), y[i] = yf[i];
  xf.assign(x.begin(), x.end());
  for (int64_t i = 0; i < n; ++i) x[i] = xf[i];
  Spline s(x, y, 1, 4);
  ASSERT_EQ(s.build(n, DF_TYPE_NATURAL, DF_BC_NOT_A_KNOT), DF_OK);
  DfTask* t = nullptr;
  ASSERT_EQ(oxa_df_kernel_sNewTask1D(&t, n, xf.data(), DF_X_NON_UNIFORM, 1, yf.data(), 0, 0), DF_OK);
  oxa_df_kernel_sEditPPSpline1D(t, 4, DF_TYPE_NATURAL, DF_BC_NOT_A_KNOT, nullptr, 0, nullptr,
                                cf.data(), 0);
  ASSERT_EQ(oxa_df_kernel_sDFCubicSpline1D(t, 0, nullptr, nullptr), DF_OK);
  for (int64_t m = 0; m + 1 < n; ++m)
    for (int q = 0; q < 4; ++q)
      EXPECT_NEAR(cf[4 * m + q], s.cell(0, m)[q], 1e-5 / std::pow(x[m + 1] - x[m], q));
  const float site[2] = {xf[3] + 0.1f, xf[50]};
  float r[2];
  ASSERT_EQ(oxa_df_kernel_sDFInterpolate1D(t, 2, site, 0, nullptr, 0, nullptr, 0, nullptr, r, 0,
                                           nullptr, nullptr, nullptr, nullptr, nullptr),
            DF_OK);
  EXPECT_NEAR(r[0], std::sin(static_cast<double>(site[0])), 1e-3);
  EXPECT_EQ(r[1], yf[50]);
  oxa_df_kernel_DeleteTask(&t);
}

// ---- Failures: a status, and the coefficients untouched -------------------

struct FailRow {
  const char* what;
  int64_t type, bc_type;
  bool bc, ic;
  std::function<void(Spline&)> edit;  // after the task is set up
  oxa_status want;
};

TEST(SplineProperties, BadInputFailsBeforeWriting) {
  auto none = [](Spline&) {};
  const FailRow rows[] = {
      {"akima with a condition", DF_TYPE_AKIMA, DF_BC_FREE_END, false, false, none,
       DF_ERR_BAD_BC_TYPE},
      {"bessel with a derivative", DF_TYPE_BESSEL, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT, true,
       false, none, DF_ERR_BAD_BC_TYPE},
      {"left bit only", DF_TYPE_NATURAL, DF_BC_FIRST_LEFT, true, false, none, DF_ERR_BAD_BC_TYPE},
      {"unknown bit", DF_TYPE_NATURAL, 128, true, false, none, DF_ERR_BAD_BC_TYPE},
      {"values missing", DF_TYPE_NATURAL, 0, false, false,
       [](Spline& s) {
         oxa_df_kernel_iEditVal(s.task, DF_PARAM_BC_TYPE, DF_BC_FIRST_LEFT | DF_BC_SECOND_RIGHT);
       },
       DF_ERR_BAD_BC},
      {"hermite without ic type", DF_TYPE_HERMITE, 0, false, false, none, DF_ERR_BAD_IC_TYPE},
      {"hermite without derivatives", DF_TYPE_HERMITE, 0, false, false,
       [](Spline& s) { oxa_df_kernel_iEditVal(s.task, DF_PARAM_IC_TYPE, DF_IC_FIRST_DER); },
       DF_ERR_BAD_IC},
      {"periodic values differ", DF_TYPE_NATURAL, DF_BC_PERIODIC, false, false, none,
       DF_ERR_PERIODIC_VALUES},
      {"subbotin type", 1, 0, false, false, none, DF_ERR_BAD_TYPE},
      {"order 3", DF_TYPE_NATURAL, 0, false, false,
       [](Spline& s) { oxa_df_kernel_iEditVal(s.task, DF_PARAM_ORDER, 3); }, DF_ERR_BAD_ORDER},
      {"ny raised", DF_TYPE_NATURAL, 0, false, false,
       [](Spline& s) { oxa_df_kernel_iEditVal(s.task, DF_PARAM_NY, 5); }, DF_ERR_BAD_Y},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.what);
    Spline s(random_x(6, 1), {1, 2, 3, 4, 5, 6}, 1, 4);
    if (row.bc) s.bc = {1.0, 2.0};
    s.nx = 6;
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&s.task, 6, s.x.data(), 1, 1, s.y.data(), 0, 0), DF_OK);
    s.coeff.assign(20, -777.0);
    ASSERT_EQ(oxa_df_kernel_dEditPPSpline1D(s.task, 4, row.type, row.bc_type,
                                            s.bc.empty() ? nullptr : s.bc.data(), 0, nullptr,
                                            s.coeff.data(), 0),
              DF_OK);
    row.edit(s);
    EXPECT_EQ(oxa_df_kernel_dDFCubicSpline1D(s.task, 0, nullptr, nullptr), row.want);
    for (double c : s.coeff) ASSERT_EQ(c, -777.0);
  }
  EXPECT_EQ(oxa_df_kernel_dDFCubicSpline1D(nullptr, 0, nullptr, nullptr), DF_ERR_NULL_TASK);
  Spline s(random_x(6, 1), {1, 2, 3, 4, 5, 6}, 1, 4);
  ASSERT_EQ(s.build(6, DF_TYPE_NATURAL, 0), DF_OK);
  int dummy = 0;
  EXPECT_EQ(oxa_df_kernel_dDFCubicSpline1D(s.task, 0, &dummy, nullptr), DF_ERR_UNEXPECTED_ARG);
}

TEST(SplineProperties, BadRequestsOfEvaluationAndIntegration) {
  Spline s(random_x(6, 1), {1, 2, 3, 4, 5, 6}, 1, 4);
  ASSERT_EQ(s.build(6, DF_TYPE_NATURAL, 0), DF_OK);
  const double site[2] = {1, 2}, bad_hint[5] = {0, 2, 0, 0, 0};
  const int64_t d9[9] = {1, 1, 1, 1, 1, 1, 1, 1, 1}, far[1] = {1};
  double r[64];
  auto eval = [&](int64_t n, const double* t, const double* dh, int64_t nf, const int64_t* f,
                  int64_t nd, double* out, int64_t rhint) {
    return oxa_df_kernel_dDFInterpolate1D(s.task, n, t, 0, dh, nf, f, nd, d9, out, rhint, nullptr,
                                          nullptr, nullptr, nullptr, nullptr);
  };
  EXPECT_EQ(eval(-1, site, nullptr, 0, nullptr, 1, r, 0), DF_ERR_BAD_NSITE);
  EXPECT_EQ(eval(2, nullptr, nullptr, 0, nullptr, 1, r, 0), DF_ERR_BAD_SITE);
  EXPECT_EQ(eval(2, site, nullptr, 0, nullptr, 1, nullptr, 0), DF_ERR_BAD_RESULT);
  EXPECT_EQ(eval(2, site, nullptr, 0, nullptr, 9, r, 0), DF_ERR_BAD_DORDER);
  EXPECT_EQ(eval(2, site, nullptr, 0, nullptr, 1, r, 7), DF_ERR_BAD_RESULT_HINT);
  EXPECT_EQ(eval(2, site, bad_hint, 0, nullptr, 1, r, 0), DF_ERR_BAD_DATA_HINT);
  EXPECT_EQ(eval(2, site, nullptr, 1, far, 1, r, 0), DF_ERR_BAD_INDEX);
  EXPECT_EQ(eval(0, nullptr, nullptr, 0, nullptr, 1, nullptr, 0), DF_OK);
  auto integ = [&](int64_t n, const double* l, int64_t rhint) {
    return oxa_df_kernel_dDFIntegrate1D(s.task, n, l, 0, site, 0, nullptr, nullptr, 0, nullptr, r,
                                        rhint, nullptr);
  };
  EXPECT_EQ(integ(-1, site, 0), DF_ERR_BAD_NSITE);
  EXPECT_EQ(integ(2, nullptr, 0), DF_ERR_BAD_SITE);
  EXPECT_EQ(integ(2, site, 64), DF_ERR_BAD_RESULT_HINT);
  oxa_df_kernel_iEditVal(s.task, DF_PARAM_ORDER, 5);
  EXPECT_EQ(eval(2, site, nullptr, 0, nullptr, 1, r, 0), DF_ERR_BAD_ORDER);
}

// ---- Evaluation: hints, layouts, threads and call-backs agree -------------

TEST(SplineProperties, EvaluationHintsLayoutsAndThreadsAgree) {
  const int64_t n = 500, ny = 3, ns = 9001;
  auto x = random_x(n, 21);
  std::mt19937_64 g(4);
  std::uniform_real_distribution<double> u(x.front() - 2, x.back() + 2);
  std::vector<double> y(static_cast<size_t>(n * ny)), t(static_cast<size_t>(ns));
  for (auto& v : y) v = u(g);
  for (auto& v : t) v = u(g);
  Spline s(x, y, ny, 4);
  ASSERT_EQ(s.build(n, DF_TYPE_NATURAL, DF_BC_NOT_A_KNOT), DF_OK);
  const auto ref = s.eval(t);
  for (int64_t j = 0; j < ny; ++j)  // against the coefficients directly
    for (int64_t i = 0; i < ns; i += 97) {
      const int64_t m = std::clamp<int64_t>(df_test::reference_cell(x, t[i]) - 1, 0, n - 2);
      const double* c = s.cell(j, m);
      const double w = t[i] - x[m];
      EXPECT_NEAR(ref[(j * 4) * ns + i], c[0] + w * (c[1] + w * (c[2] + w * c[3])),
                  1e-12 * (1 + std::fabs(ref[(j * 4) * ns + i])));
      EXPECT_NEAR(ref[(j * 4 + 2) * ns + i], 2 * c[2] + 6 * w * c[3], 1e-9);
    }
  const DfThreading th = CountingThreading::record(2);
  EXPECT_EQ(s.eval(t, 0, &th), ref);
  EXPECT_GE(CountingThreading::parallel_calls, 1);
  auto sorted = t;
  std::sort(sorted.begin(), sorted.end());
  const auto by_sorted_hint = s.eval(sorted, DF_SITE_SORTED);
  EXPECT_EQ(by_sorted_hint, s.eval(sorted));
  // By site, for functions {2, 0}, derivatives {0, 2}.
  const int64_t func[2] = {2, 0}, dorder[3] = {1, 0, 1};
  std::vector<double> r(static_cast<size_t>(ns * 4));
  ASSERT_EQ(oxa_df_kernel_dDFInterpolate1D(s.task, ns, t.data(), 0, nullptr, 2, func, 3, dorder,
                                           r.data(), DF_STORE_COLS, nullptr, nullptr, nullptr,
                                           nullptr, nullptr),
            DF_OK);
  for (int64_t i = 0; i < ns; ++i)
    for (int f = 0; f < 2; ++f)
      for (int k = 0; k < 2; ++k)
        ASSERT_EQ(r[(i * 2 + f) * 2 + k], ref[(func[f] * 4 + 2 * k) * ns + i]);
  // Uniform sites: the two ends stand for 1000 equally spaced sites.
  const std::vector<double> ends{x.front() - 1, x.back() + 1};
  std::vector<double> even(1000);
  for (int64_t i = 0; i < 1000; ++i) even[i] = ends[0] + static_cast<double>(i) * (ends[1] - ends[0]) / 999.0;
  const int64_t d1[4] = {1, 1, 1, 1};
  EXPECT_EQ(s.eval_n(ends, 1000, DF_SITE_UNIFORM, d1, nullptr, nullptr), s.eval(even));
}

struct CallbackLog {
  int64_t left = 0, right = 0;
};

int32_t left_end(int64_t n, int64_t cell, double, double* r, void* p) {
  ++static_cast<CallbackLog*>(p)->left;
  for (int64_t k = 0; k < n; ++k) r[k] = 100.0 + static_cast<double>(k + cell);
  return 0;
}
int32_t right_end(int64_t n, int64_t cell, double site, double* r, void* p) {
  ++static_cast<CallbackLog*>(p)->right;
  for (int64_t k = 0; k < n; ++k) r[k] = -static_cast<double>(cell);
  return site > 100 ? -5 : 0;
}

TEST(SplineProperties, CallBacksReplaceResultsBeyondTheEnds) {
  Spline s({0, 1, 2, 3}, {1, 0, 2, 1, 5, 4, 3, 2}, 2, 4);
  ASSERT_EQ(s.build(4, DF_TYPE_NATURAL, 0), DF_OK);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const double site[5] = {-1, 0.5, 3, 4, nan};
  const int64_t dorder[2] = {1, 1};
  double r[20], plain[20];
  CallbackLog log;
  ASSERT_EQ(oxa_df_kernel_dDFInterpolate1D(s.task, 5, site, 0, nullptr, 0, nullptr, 2, dorder,
                                           plain, DF_STORE_COLS, nullptr, nullptr, nullptr,
                                           nullptr, nullptr),
            DF_OK);
  ASSERT_EQ(oxa_df_kernel_dDFInterpolate1D(s.task, 5, site, 0, nullptr, 0, nullptr, 2, dorder, r,
                                           DF_STORE_COLS, &left_end, &log, &right_end, &log,
                                           nullptr),
            DF_OK);
  EXPECT_EQ(log.left, 1);
  EXPECT_EQ(log.right, 1);
  for (int k = 0; k < 4; ++k) {
    EXPECT_EQ(r[k], 100.0 + k);  // site −1, cell 0
    EXPECT_EQ(r[12 + k], -4.0);  // site 4, cell nx
    EXPECT_EQ(r[4 + k], plain[4 + k]);
    EXPECT_EQ(r[8 + k], plain[8 + k]);  // the right end itself is inside
    EXPECT_TRUE(std::isnan(r[16 + k]));
  }
  const double beyond[1] = {200};
  EXPECT_EQ(oxa_df_kernel_dDFInterpolate1D(s.task, 1, beyond, 0, nullptr, 0, nullptr, 2, dorder,
                                           r, 0, nullptr, nullptr, &right_end, &log, nullptr),
            -5);
}

// ---- Order 0 and integration ----------------------------------------------

TEST(SplineProperties, StepAndLookUpInterpolants) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const std::vector<double> t{-1, 0, 0.5, 1, 2.5, 3, 4};
  struct Row {
    int64_t type;
    std::vector<double> values;
    double integral;  // over [−1, 4]
  };
  const Row rows[] = {
      {DF_TYPE_STEP_RIGHT, {10, 10, 10, 20, 30, 40, 40}, 110},
      {DF_TYPE_STEP_LEFT, {10, 10, 20, 20, 40, 40, 40}, 140},
      {DF_TYPE_LOOKUP, {nan, 10, nan, 20, nan, 40, nan}, 0},
  };
  for (const auto& row : rows) {
    SCOPED_TRACE(row.type);
    for (bool uniform : {false, true}) {
      Spline s(uniform ? std::vector<double>{0, 3} : std::vector<double>{0, 1, 2, 3},
               {10, 20, 30, 40}, 1, 0);
      if (uniform) s.xhint = DF_X_UNIFORM;
      ASSERT_EQ(s.build(4, row.type, 0), DF_OK);
      const auto r = s.eval(t);
      for (size_t i = 0; i < t.size(); ++i) {
        if (std::isnan(row.values[i])) {
          EXPECT_TRUE(std::isnan(r[i])) << t[i];
        } else {
          EXPECT_EQ(r[i], row.values[i]) << t[i];
          EXPECT_EQ(r[t.size() + i], 0.0);
        }
      }
      const auto in = s.integrate({-1, 4, 0.5}, {4, -1, 2.5});
      if (row.type == DF_TYPE_LOOKUP) {
        EXPECT_EQ(in[0], -999.0);  // refused: DF_ERR_BAD_TYPE
      } else {
        EXPECT_EQ(in[0], row.integral);
        EXPECT_EQ(in[1], -row.integral);
        EXPECT_EQ(in[2], row.type == DF_TYPE_STEP_RIGHT ? 5 + 20 + 15 : 10 + 30 + 20);
      }
    }
  }
}

TEST(SplineProperties, IntegralsOfLinearAndCubicSplines) {
  // Linear: the trapezoids; beyond the ends the end lines continue.
  Spline lin({0, 1, 3}, {1, 3, -1}, 1, 2);
  ASSERT_EQ(lin.build(3, 0, 0), DF_OK);
  const auto a = lin.integrate({0, -1, 3}, {3, 4, 0});
  EXPECT_DOUBLE_EQ(a[0], 2 + 2);
  EXPECT_DOUBLE_EQ(a[1], (1 + -1) / 2.0 * -1 * -1 + 4 + (-1 + -3) / 2.0);  // ∫_{-1}^0 (1+2t) + 4 + ∫_3^4
  EXPECT_DOUBLE_EQ(a[2], -4);
  // Cubic reproducing p: ∫ p exactly, across many cells and beyond.
  auto x = random_x(50, 2);
  std::vector<double> y;
  for (double t : x) y.push_back(poly(3, 0, t));
  Spline cub(x, y, 1, 4);
  ASSERT_EQ(build_row(cub, kTypes[3], 3, 50), DF_OK);
  auto P = [](double t) { return t - t * t + t * t * t / 6 + t * t * t * t / 16; };
  const std::vector<double> l{x[0] - 1, x[10] + 0.3, x[40]}, r{x[49] + 2, x[3], x[40] + 1e-3};
  const auto v = cub.integrate(l, r);
  for (size_t i = 0; i < l.size(); ++i)
    EXPECT_NEAR(v[i], P(r[i]) - P(l[i]), 1e-11 * std::fabs(P(x[49] + 2)));
}

}  // namespace

// ---- Quadratic splines ----------------------------------------------------

struct QuadRow {
  const char* name;
  int64_t type, bc_type;
  bool reproduces;  // quadratics, given exact conditions
};

const QuadRow kQuadratics[] = {
    {"first-left", DF_TYPE_DEFAULT, DF_BC_FIRST_LEFT, true},
    {"first-right", DF_TYPE_DEFAULT, DF_BC_FIRST_RIGHT, true},
    {"second-left", DF_TYPE_DEFAULT, DF_BC_SECOND_LEFT, true},
    {"second-right", DF_TYPE_DEFAULT, DF_BC_SECOND_RIGHT, true},
    {"not-a-knot", DF_TYPE_DEFAULT, DF_BC_NOT_A_KNOT, true},
    {"free end", DF_TYPE_DEFAULT, DF_BC_FREE_END, false},
    {"subbotin first", DF_TYPE_SUBBOTIN, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT, true},
    {"subbotin second", DF_TYPE_SUBBOTIN, DF_BC_SECOND_LEFT | DF_BC_SECOND_RIGHT, true},
    {"subbotin mixed", DF_TYPE_SUBBOTIN, DF_BC_SECOND_LEFT | DF_BC_FIRST_RIGHT, true},
};

// On 2 to 4 and on 30 points: interpolation at the breakpoints, continuous
// slopes where the cells meet, and quadratics reproduced (the not-a-knot
// condition from 3 points).
TEST(SplineProperties, QuadraticSplines) {
  for (const auto& row : kQuadratics)
    for (int64_t n : {2, 3, 4, 30}) {
      SCOPED_TRACE(std::string(row.name) + " nx=" + std::to_string(n));
      auto x = random_x(n, 40 + n);
      std::vector<double> y;
      for (double t : x) y.push_back(poly(2, 0, t));
      Spline s(x, y, 1, 3);
      for (int64_t bit : {DF_BC_FIRST_LEFT, DF_BC_SECOND_LEFT, DF_BC_FIRST_RIGHT,
                          DF_BC_SECOND_RIGHT})  // left value first
        if (row.bc_type & bit) {
          const bool left = bit == DF_BC_FIRST_LEFT || bit == DF_BC_SECOND_LEFT;
          const int d = bit == DF_BC_FIRST_LEFT || bit == DF_BC_FIRST_RIGHT ? 1 : 2;
          s.bc.push_back(poly(2, d, left ? x.front() : x.back()));
        }
      ASSERT_EQ(s.build(n, row.type, row.bc_type), DF_OK);
      const bool sub = row.type == DF_TYPE_SUBBOTIN;
      auto left_end = [&](int64_t m) {
        return !sub || m == 0 ? x[m] : m == n ? x[n - 1] : (x[m - 1] + x[m]) / 2;
      };
      for (int64_t m = 0; m < s.cells; ++m) {
        const double* c = s.cell(0, m);
        const double a = left_end(m), L = (sub ? left_end(m + 1) : x[m + 1]) - a;
        if (m + 1 < s.cells) {  // slope continuity at the right end
          EXPECT_NEAR(c[1] + 2 * c[2] * L, s.cell(0, m + 1)[1], 1e-10 * (1 + std::fabs(c[1])));
          EXPECT_NEAR(c[0] + L * (c[1] + L * c[2]), s.cell(0, m + 1)[0], 1e-12 * 64);
        }
        const double xi = sub ? x[m] - a : 0;  // the breakpoint in this cell
        EXPECT_NEAR(c[0] + xi * (c[1] + xi * c[2]), y[m], 1e-12 * 64);
        for (int q = 0; q < 3 && row.reproduces && (row.bc_type != DF_BC_NOT_A_KNOT || n >= 3); ++q)
          EXPECT_NEAR(c[q], poly(2, q, a) / (q == 2 ? 2 : 1), 1e-10) << "cell " << m;
      }
    }
  const int64_t bad[][2] = {{DF_TYPE_DEFAULT, DF_BC_FIRST_LEFT | DF_BC_FIRST_RIGHT},
                            {DF_TYPE_DEFAULT, DF_BC_PERIODIC},
                            {DF_TYPE_SUBBOTIN, DF_BC_FIRST_LEFT},
                            {DF_TYPE_SUBBOTIN, DF_BC_NOT_A_KNOT}};
  for (const auto& b : bad) {
    Spline s(random_x(5, 1), {1, 2, 3, 4, 1}, 1, 3);
    s.bc = {1, 2};
    EXPECT_EQ(s.build(5, b[0], b[1]), DF_ERR_BAD_BC_TYPE);
    for (double c : s.coeff) ASSERT_EQ(c, -777.0);
  }
}
