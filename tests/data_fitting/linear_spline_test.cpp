// Linear spline coefficients against the direct formula for every routine,
// block boundaries, threading, the periodic check and the entry checks.
#include <gtest/gtest.h>

#include "data_fitting/task.hpp"
#include "df_test_support.hpp"

namespace {

using df_test::CountingThreading;

template <class T>
struct SplineCase {
  int64_t nx, ny;
  bool uniform, cols;
  std::vector<T> x, ref, y, coeff;
  DfTask* task = nullptr;

  SplineCase(int64_t nx_, int64_t ny_, bool uniform_, bool cols_, std::mt19937_64& g)
      : nx(nx_), ny(ny_), uniform(uniform_), cols(cols_) {
    if (uniform) {
      x = {T(-1), T(3)};
      for (int64_t i = 0; i < nx; ++i)
        ref.push_back(T(-1) + static_cast<T>(i) * T(4) / static_cast<T>(nx - 1));
    } else {
      x = ref = df_test::random_partition<T>(nx, g);
    }
    std::uniform_real_distribution<double> u(-5, 5);
    y.resize(static_cast<size_t>(nx * ny));
    for (auto& v : y) v = static_cast<T>(u(g));
    coeff.assign(static_cast<size_t>(2 * (nx - 1) * ny), T(-777));
    const int64_t xhint = uniform ? DF_X_UNIFORM : DF_X_NON_UNIFORM;
    const int64_t yhint = cols ? DF_STORE_COLS : DF_STORE_ROWS;
    if constexpr (std::is_same_v<T, double>) {
      EXPECT_EQ(oxa_df_kernel_dNewTask1D(&task, nx, x.data(), xhint, ny, y.data(), yhint, 0),
                DF_OK);
      EXPECT_EQ(oxa_df_kernel_dEditPPSpline1D(task, 2, 0, 0, nullptr, 0, nullptr, coeff.data(), 0),
                DF_OK);
    } else {
      EXPECT_EQ(oxa_df_kernel_sNewTask1D(&task, nx, x.data(), xhint, ny, y.data(), yhint, 0),
                DF_OK);
      EXPECT_EQ(oxa_df_kernel_sEditPPSpline1D(task, 2, 0, 0, nullptr, 0, nullptr, coeff.data(), 0),
                DF_OK);
    }
  }
  ~SplineCase() { oxa_df_kernel_DeleteTask(&task); }

  T value(int64_t j, int64_t i) const {
    return cols ? y[static_cast<size_t>(i * ny + j)] : y[static_cast<size_t>(j * nx + i)];
  }

  oxa_status build(const DfThreading* th) {
    if constexpr (std::is_same_v<T, double>)
      return oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, th);
    else
      return oxa_df_kernel_sDFLinearSpline1D(task, 0, nullptr, th);
  }

  // The slope forms: uniform dy·inv_h; several functions dy·(1/dx); one
  // function dy/dx, with dy·(1/dx) for the last cell of an odd count.
  void expect_coefficients() const {
    const T inv_h = static_cast<T>(nx - 1) / (x[1] - x[0]);
    for (int64_t j = 0; j < ny; ++j)
      for (int64_t m = 0; m + 1 < nx; ++m) {
        const T dy = value(j, m + 1) - value(j, m);
        const T dx = ref[static_cast<size_t>(m + 1)] - ref[static_cast<size_t>(m)];
        T slope;
        if (uniform)
          slope = dy * inv_h;
        else if (ny > 1 || ((nx - 1) % 2 == 1 && m == nx - 2))
          slope = dy * (T(1) / dx);
        else
          slope = dy / dx;
        const size_t at = static_cast<size_t>(j * 2 * (nx - 1) + 2 * m);
        ASSERT_EQ(coeff[at], value(j, m)) << "f " << j << " cell " << m;
        ASSERT_EQ(coeff[at + 1], slope) << "f " << j << " cell " << m;
      }
  }
};

template <class T>
class LinearSpline : public ::testing::Test {};
using Reals = ::testing::Types<double, float>;
TYPED_TEST_SUITE(LinearSpline, Reals);

// Every routine over sizes around the block edges; `iterations` is the
// number of 1024×4 blocks, parallel from 5 on.
TYPED_TEST(LinearSpline, EveryRoutineMatchesTheFormula) {
  using T = TypeParam;
  struct Size {
    int64_t nx, ny, iterations;
  };
  const Size sizes[] = {{2, 1, 1},    {2, 3, 1},    {127, 1, 1},  {128, 1, 1}, {1025, 4, 1},
                        {1026, 4, 2}, {1026, 9, 6}, {5000, 1, 5}, {3001, 7, 6}};
  std::mt19937_64 g(17);
  for (bool uniform : {false, true})
    for (bool cols : {false, true})
      for (const Size& s : sizes) {
        SplineCase<T> c(s.nx, s.ny, uniform, cols, g);
        const DfThreading th = CountingThreading::record(3);
        CountingThreading::hint_seen = false;
        ASSERT_EQ(c.build(&th), DF_OK);
        c.expect_coefficients();
        const bool parallel = s.iterations >= 5;
        EXPECT_EQ(CountingThreading::parallel_calls, parallel ? 1 : 0) << s.nx << "x" << s.ny;
        if (parallel) {
          EXPECT_EQ(CountingThreading::last_iterations, s.iterations);
          EXPECT_EQ(CountingThreading::last_threads, 3);
          EXPECT_TRUE(CountingThreading::hint_seen);
        }
      }
}

// Outputs of 32 MiB and more are streamed past the caches; the stores must
// still match the formula, also for functions whose block is not aligned, on
// the service layer's threads and on the calling thread alone.
TYPED_TEST(LinearSpline, LargeOutputs) {
  using T = TypeParam;
  constexpr int64_t scale = sizeof(double) / sizeof(T);
  std::mt19937_64 g(23);
  struct Size {
    int64_t nx, ny;
    const DfThreading* threading;
  };
  for (const Size s :
       {Size{70002 * scale, 31, &oxa_serv_df_threading}, Size{2200001 * scale, 1, nullptr}}) {
    SplineCase<T> c(s.nx, s.ny, false, false, g);
    ASSERT_EQ(c.build(s.threading), DF_OK);
    c.expect_coefficients();
  }
}

// A periodic condition needs equal end values in every function; the first
// failure leaves the coefficient memory untouched.
TEST(LinearSplineChecks, PeriodicValues) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    std::vector<double> y;  // two functions of three values, by rows
    oxa_status status;
  };
  const Case cases[] = {{{1, 2, 1, 5, 0, 5}, DF_OK},
                        {{1, 2, 1, 1, 2, 3}, DF_ERR_PERIODIC_VALUES},
                        {{1, 2, 3, 1, 2, 1}, DF_ERR_PERIODIC_VALUES},
                        {{nan, 2, nan, 1, 2, 1}, DF_ERR_PERIODIC_VALUES}};
  const double x[3] = {0, 1, 2};
  for (const Case& k : cases) {
    std::vector<double> coeff(8, -777.0);
    DfTask* task = nullptr;
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, 3, x, DF_X_NON_UNIFORM, 2, k.y.data(), 0, 0), DF_OK);
    ASSERT_EQ(oxa_df_kernel_dEditPPSpline1D(task, 2, 0, DF_BC_PERIODIC, nullptr, 0, nullptr,
                                            coeff.data(), 0),
              DF_OK);
    EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), k.status);
    if (k.status != DF_OK) {
      EXPECT_EQ(coeff, std::vector<double>(8, -777.0));
    } else {
      EXPECT_EQ(coeff, (std::vector<double>{1, 1, 2, -1, 5, -5, 0, 5}));
    }
    oxa_df_kernel_DeleteTask(&task);
  }
}

TEST(LinearSplineChecks, EntryChecks) {
  const double x[3] = {0, 1, 2}, y[3] = {0, 1, 4};
  double coeff[4];
  DfTask* task = nullptr;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, 3, x, DF_X_NON_UNIFORM, 1, y, 0, 0), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr),
            DF_ERR_BAD_COEFF);  // nothing attached
  ASSERT_EQ(oxa_df_kernel_dEditPPSpline1D(task, 2, 0, 0, nullptr, 0, nullptr, coeff, 0), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, x, nullptr), DF_ERR_UNEXPECTED_ARG);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(nullptr, 0, nullptr, nullptr), DF_ERR_NULL_TASK);
  task->yhint = 5;  // only a front layer bypassing the editors gets here
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_ERR_BAD_Y_HINT);
  task->nx = 1;
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, x, nullptr), DF_ERR_UNEXPECTED_ARG);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_ERR_BAD_NX);
  task->nx = 3;
  task->yhint = 0;
  // More functions than pointers, or a function without its pointer.
  ASSERT_EQ(oxa_df_kernel_iEditVal(task, DF_PARAM_NY, 2), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_ERR_BAD_Y);
  ASSERT_EQ(oxa_df_kernel_iEditVal(task, DF_PARAM_YHINT, DF_STORE_SEPARATE), DF_OK);
  ASSERT_EQ(oxa_df_kernel_dEditPtr(task, DF_PTR_Y, y), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_ERR_BAD_Y);
  ASSERT_EQ(oxa_df_kernel_dEditIdxPtr(task, DF_PTR_Y, 1, y), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_ERR_BAD_COEFF);
  ASSERT_EQ(oxa_df_kernel_iEditVal(task, DF_PARAM_NY, 1), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dDFLinearSpline1D(task, 0, nullptr, nullptr), DF_OK);
  EXPECT_EQ(coeff[0], 0.0);
  EXPECT_EQ(coeff[1], 1.0);
  EXPECT_EQ(coeff[2], 1.0);
  EXPECT_EQ(coeff[3], 3.0);
  oxa_df_kernel_DeleteTask(&task);
}

}  // namespace
