// The data-fitting task: constructor checks, the accelerator table, editors
// and queries with their codes and side effects.
#include "data_fitting/task.hpp"

#include <gtest/gtest.h>

#include <cstring>

#include "df_test_support.hpp"

namespace {

struct TaskHolder {
  DfTask* t = nullptr;
  ~TaskHolder() {
    if (t) oxa_df_kernel_DeleteTask(&t);
  }
};

TEST(DfTaskCreate, ChecksInOrder) {
  const double x[4] = {0, 1, 2, 3};
  const double y[8] = {};
  struct Case {
    int64_t nx;
    const double* x;
    int64_t xhint, ny;
    const double* y;
    int64_t yhint;
    oxa_status status;
  };
  const Case cases[] = {
      {1, nullptr, 3, 1, nullptr, 5, DF_ERR_BAD_NX},
      {4, nullptr, 3, 1, nullptr, 5, DF_ERR_BAD_X},
      {4, x, 3, 1, nullptr, 5, DF_ERR_BAD_X_HINT},
      {4, x, 2, 1, nullptr, 5, DF_ERR_BAD_Y},
      {4, x, 2, 0, y, 5, DF_ERR_BAD_NY},  // before the storage hint
      {4, x, 2, 2, y, 5, DF_ERR_BAD_Y_HINT},
      {4, x, 0, 0, nullptr, 0, DF_OK},
      {4, x, 4, 2, y, DF_STORE_COLS, DF_OK},
  };
  for (const Case& c : cases) {
    TaskHolder h;
    EXPECT_EQ(oxa_df_kernel_dNewTask1D(&h.t, c.nx, c.x, c.xhint, c.ny, c.y, c.yhint, 0), c.status);
    EXPECT_EQ(h.t != nullptr, c.status == DF_OK);
  }
  EXPECT_EQ(oxa_df_kernel_dNewTask1D(nullptr, 4, x, 1, 0, nullptr, 0, 1), DF_ERR_NULL_TASK);
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 4, x, 1, 0, nullptr, 0, 1), DF_OK);
  EXPECT_EQ(h.t->y, nullptr);
  EXPECT_EQ(h.t->kind, 4);
  EXPECT_EQ(h.t->precision, 1);
  EXPECT_EQ(h.t->dimension, 1);
  EXPECT_EQ(h.t->int64_output, 1u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(h.t) % 128, 0u);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(h.t->bins) % 128, 0u);

  for (int64_t hint : {DF_STORE_DEFAULT, DF_STORE_ROWS, DF_STORE_COLS, DF_STORE_SEPARATE}) {
    TaskHolder v;  // row storage points at each function's row, the others only at the start
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&v.t, 4, x, 0, 2, y, hint, 0), DF_OK);
    EXPECT_EQ(v.t->y[0], y);
    EXPECT_EQ(v.t->y[1], hint <= DF_STORE_ROWS ? static_cast<const void*>(y + 4) : nullptr) << hint;
  }
  DfTask* none = nullptr;
  EXPECT_EQ(oxa_df_kernel_DeleteTask(&none), DF_ERR_NULL_TASK);
  EXPECT_EQ(oxa_df_kernel_DeleteTask(nullptr), DF_ERR_NULL_TASK);
  EXPECT_EQ(oxa_df_kernel_DeleteTask(&h.t), DF_OK);
  EXPECT_EQ(h.t, nullptr);
}

// Every site of a bin lies within [x[lo], x[hi]], for random and clustered
// partitions in both precisions, and entry nbins repeats entry nbins-1.
template <class T>
void check_accelerator(const std::vector<T>& x, std::mt19937_64& g) {
  const auto nx = static_cast<int64_t>(x.size());
  TaskHolder h;
  if constexpr (std::is_same_v<T, double>)
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, nx, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0),
              DF_OK);
  else
    ASSERT_EQ(oxa_df_kernel_sNewTask1D(&h.t, nx, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0),
              DF_OK);
  const int64_t nbins = h.t->nbins;
  const DfSearchBin* e = h.t->bins;
  EXPECT_EQ(nbins, std::clamp<int64_t>(nx / 16, 16, 1024));
  EXPECT_EQ(e[nbins].lo, e[nbins - 1].lo);
  EXPECT_EQ(e[nbins].hi, e[nbins - 1].hi);
  for (int64_t b = 0; b <= nbins; ++b) {
    ASSERT_LE(0, e[b].lo);
    ASSERT_LE(e[b].lo, e[b].hi);
    ASSERT_LE(e[b].hi, nx - 1);
  }
  const T ibw = oxa::df::inv_bin_width<T>(*h.t);
  std::uniform_real_distribution<double> u(static_cast<double>(x.front()),
                                           static_cast<double>(x.back()));
  auto check_site = [&](T t) {
    const auto b = static_cast<int64_t>(ibw * (t - x[0]));
    ASSERT_LE(b, nbins);
    ASSERT_LE(x[static_cast<size_t>(e[b].lo)], t) << "bin " << b;
    ASSERT_LE(t, x[static_cast<size_t>(e[b].hi)]) << "bin " << b;
  };
  for (int i = 0; i < 20000; ++i) check_site(static_cast<T>(u(g)));
  for (T t : x) check_site(t);
}

TEST(DfAccelerator, SitesOfABinLieWithinItsBounds) {
  std::mt19937_64 g(1);
  for (int64_t nx : {2, 17, 300, 5000, 16 * 1024 + 1, 100000}) {
    check_accelerator(df_test::random_partition<double>(nx, g), g);
    check_accelerator(df_test::random_partition<float>(nx, g), g);
  }
  check_accelerator(df_test::clustered_partition<double>(20000, g), g);
  check_accelerator(df_test::clustered_partition<float>(20000, g), g);
}

TEST(DfAccelerator, AllButTheLastBreakpointInBinZero) {
  std::vector<double> x{0, 1e-9, 2e-9, 3e-9, 1.0};
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 5, x.data(), DF_X_NO_HINT, 0, nullptr, 0, 0), DF_OK);
  ASSERT_EQ(h.t->nbins, 16);
  for (int64_t b = 0; b <= 16; ++b) {
    EXPECT_EQ(h.t->bins[b].lo, 0) << b;
    EXPECT_EQ(h.t->bins[b].hi, 4) << b;
  }
}

TEST(DfTaskEdit, ValueParameters) {
  const double x[4] = {0, 1, 2, 3};
  struct Case {
    int64_t id, good, bad;
    oxa_status code;
  };
  const Case cases[] = {
      {DF_PARAM_NX, 3, 1, DF_ERR_BAD_NX},
      {DF_PARAM_XHINT, 2, 3, DF_ERR_BAD_X_HINT},
      {DF_PARAM_NY, 5, 0, DF_ERR_BAD_NY},
      {DF_PARAM_YHINT, 128, 64, DF_ERR_BAD_Y_HINT},
      {DF_PARAM_ORDER, 7, -1, DF_ERR_BAD_ORDER},
      {DF_PARAM_TYPE, 5, 6, DF_ERR_BAD_TYPE},
      {DF_PARAM_IC_TYPE, 8 | 1, 4, DF_ERR_BAD_IC_TYPE},
      {DF_PARAM_BC_TYPE, 64, -1, DF_ERR_BAD_BC_TYPE},
      {DF_PARAM_COEFF_HINT, 32, 1, DF_ERR_BAD_COEFF_HINT},
      {DF_PARAM_AUX_FLAG, 1, 2, DF_ERR_BAD_AUX_FLAG},
  };
  for (uint32_t wide : {0u, 1u}) {
    TaskHolder h;
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 4, x, 0, 0, nullptr, 0, wide), DF_OK);
    for (const Case& c : cases) {
      EXPECT_EQ(oxa_df_kernel_iEditVal(h.t, c.id, c.bad), c.code) << c.id;
      ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, c.id, c.good), DF_OK) << c.id;
      // The query writes 4 or 8 bytes; the sentinel bytes beyond stay.
      unsigned char out[16];
      std::memset(out, 0xAB, sizeof out);
      ASSERT_EQ(oxa_df_kernel_iQueryVal(h.t, c.id, out), DF_OK);
      int64_t v = 0;
      if (wide) {
        std::memcpy(&v, out, 8);
        EXPECT_EQ(out[8], 0xAB);
      } else {
        int32_t v32;
        std::memcpy(&v32, out, 4);
        v = v32;
        EXPECT_EQ(out[4], 0xAB);
      }
      EXPECT_EQ(v, c.good) << c.id;
    }
    EXPECT_EQ(oxa_df_kernel_iEditVal(h.t, 13, 0), DF_ERR_BAD_PARAM_ID);
    EXPECT_EQ(oxa_df_kernel_iEditVal(h.t, 24, 0), DF_ERR_BAD_PARAM_ID);
    int64_t out;
    EXPECT_EQ(oxa_df_kernel_iQueryVal(h.t, 24, &out), DF_ERR_BAD_PARAM_ID);
    EXPECT_EQ(oxa_df_kernel_iQueryVal(h.t, DF_PARAM_NX, nullptr), DF_ERR_NULL_OUTPUT);
    EXPECT_EQ(oxa_df_kernel_iQueryVal(nullptr, DF_PARAM_NX, &out), DF_ERR_NULL_TASK);
    EXPECT_EQ(oxa_df_kernel_iEditVal(nullptr, DF_PARAM_NX, 3), DF_ERR_NULL_TASK);
  }
}

// Only a new partition hint of 1 rebuilds the table, from the current nx and
// x, in the task's own precision.
TEST(DfTaskEdit, PartitionHintRebuildsTheTable) {
  std::mt19937_64 g(9);
  const auto small = df_test::random_partition<float>(20, g);
  const auto big = df_test::random_partition<float>(4000, g);
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_sNewTask1D(&h.t, 20, small.data(), DF_X_UNIFORM, 0, nullptr, 0, 0),
            DF_OK);
  EXPECT_EQ(h.t->precision, 0);
  EXPECT_EQ(h.t->nbins, 0);
  ASSERT_EQ(oxa_df_kernel_sEditPtr(h.t, DF_PTR_X, big.data()), DF_OK);
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NX, 4000), DF_OK);
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_XHINT, DF_X_QUASI_UNIFORM), DF_OK);
  EXPECT_EQ(h.t->nbins, 0);
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_XHINT, DF_X_NON_UNIFORM), DF_OK);
  EXPECT_EQ(h.t->nbins, 250);
  EXPECT_EQ(h.t->inv_bin_width.s, 1.0f / ((big.back() - big.front()) / 250.0f));
  EXPECT_EQ(h.t->bins[249].hi, 3999);
}

TEST(DfTaskEdit, Pointers) {
  const double x[3] = {0, 1, 2};
  double y[6] = {}, c[8] = {}, bc[2] = {}, ic[2] = {};
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 3, x, 0, 0, nullptr, 0, 0), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, DF_PTR_COEFF, c), DF_ERR_BAD_NY);  // no functions yet
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, DF_PTR_Y, y), DF_ERR_BAD_NY);
  struct Case {
    int64_t id;
    const double* p;
    oxa_status null_code;
  };
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NY, 2), DF_OK);
  for (const Case& k : {Case{DF_PTR_X, x, DF_ERR_BAD_X}, Case{DF_PTR_Y, y, DF_ERR_BAD_Y},
                        Case{DF_PTR_IC, ic, DF_ERR_BAD_IC}, Case{DF_PTR_BC, bc, DF_ERR_BAD_BC},
                        Case{DF_PTR_COEFF, c, DF_ERR_BAD_COEFF}}) {
    EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, k.id, nullptr), k.null_code) << k.id;
    ASSERT_EQ(oxa_df_kernel_dEditPtr(h.t, k.id, k.p), DF_OK) << k.id;
    const double* out = nullptr;
    ASSERT_EQ(oxa_df_kernel_dQueryPtr(h.t, k.id, &out), DF_OK);
    EXPECT_EQ(out, k.p) << k.id;
  }
  EXPECT_EQ(h.t->y[1], y + 3);
  EXPECT_EQ(h.t->scoeff[1], c);  // order 0: stride (nx-1)·0
  // A failed allocation leaves the old array released and the field null
  // (2^45 pointers are refused by the service layer up front).
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NY, int64_t{1} << 45), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, DF_PTR_COEFF, c), DF_ERR_MEM);
  EXPECT_EQ(h.t->scoeff, nullptr);
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NY, 2), DF_OK);
  const double* out;
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, 6, x), DF_ERR_BAD_PARAM_ID);
  EXPECT_EQ(oxa_df_kernel_dQueryPtr(h.t, 0, &out), DF_ERR_BAD_PARAM_ID);
  EXPECT_EQ(oxa_df_kernel_dQueryPtr(h.t, DF_PTR_X, nullptr), DF_ERR_NULL_OUTPUT);
  EXPECT_EQ(oxa_df_kernel_dEditPtr(nullptr, DF_PTR_X, x), DF_ERR_NULL_TASK);
}

TEST(DfTaskEdit, PerFunctionPointers) {
  const double x[3] = {0, 1, 2};
  double y[6] = {}, c[8] = {}, other[4] = {};
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 3, x, 0, 2, y, DF_STORE_SEPARATE, 0), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditIdxPtr(h.t, DF_PTR_COEFF, 0, other),
            DF_ERR_BAD_COEFF);  // none attached
  ASSERT_EQ(oxa_df_kernel_dEditPPSpline1D(h.t, 2, 0, 0, nullptr, 0, nullptr, c, DF_STORE_SEPARATE),
            DF_OK);
  struct Case {
    int64_t id, index;
    const double* p;
    oxa_status code;
  };
  const Case edits[] = {
      {DF_PTR_X, 0, other, DF_ERR_BAD_PARAM_ID},
      {DF_PTR_Y, -1, other, DF_ERR_BAD_INDEX},
      {DF_PTR_Y, 2, other, DF_ERR_BAD_INDEX},
      {DF_PTR_Y, 1, nullptr, DF_ERR_BAD_Y},
      {DF_PTR_COEFF, 1, nullptr, DF_ERR_BAD_COEFF},
      {DF_PTR_Y, 1, other, DF_OK},
      {DF_PTR_COEFF, 1, other, DF_OK},
  };
  for (const Case& e : edits) EXPECT_EQ(oxa_df_kernel_dEditIdxPtr(h.t, e.id, e.index, e.p), e.code);
  const double* out = nullptr;
  for (int64_t id : {DF_PTR_Y, DF_PTR_COEFF}) {
    ASSERT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, id, 1, &out), DF_OK);
    EXPECT_EQ(out, other);
    out = other;
    ASSERT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, id, 2, &out), DF_OK);  // index ny is accepted
    EXPECT_EQ(out, nullptr);
    EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, id, 3, &out), DF_ERR_BAD_INDEX);
    EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, id, -1, &out), DF_ERR_BAD_INDEX);
  }
  EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, DF_PTR_BC, 0, &out), DF_ERR_BAD_PARAM_ID);
  EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, DF_PTR_Y, 0, nullptr), DF_ERR_NULL_OUTPUT);
  // Growing ny does not grow the pointer arrays; indices beyond them are refused.
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NY, 50), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditIdxPtr(h.t, DF_PTR_Y, 40, other), DF_ERR_BAD_INDEX);
  EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, DF_PTR_Y, 40, &out), DF_ERR_BAD_INDEX);
  ASSERT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_YHINT, DF_STORE_COLS), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditIdxPtr(h.t, DF_PTR_Y, 0, other), DF_ERR_BAD_Y_HINT);
  EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, DF_PTR_Y, 0, &out), DF_ERR_BAD_Y_HINT);
}

TEST(DfTaskEdit, SplineDescription) {
  const float x[5] = {0, 1, 2, 3, 4};
  float y[15] = {}, c[60] = {}, bc[2] = {}, ic[2] = {};
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_sNewTask1D(&h.t, 5, x, 0, 3, y, 0, 0), DF_OK);
  // Coefficient strides: (nx-1)·order, nx·order for the Subbotin type 1.
  for (int64_t type : {0, 1, 3}) {
    ASSERT_EQ(oxa_df_kernel_sEditPPSpline1D(h.t, 3, type, 0, nullptr, 0, nullptr, c, 0), DF_OK);
    const int64_t stride = type == 1 ? 15 : 12;
    EXPECT_EQ(h.t->scoeff[2], c + 2 * stride) << type;
  }
  ASSERT_EQ(oxa_df_kernel_sEditPPSpline1D(h.t, 4, 8, 0, nullptr, 0, nullptr, c, DF_STORE_SEPARATE),
            DF_OK);
  EXPECT_EQ(h.t->s_type, 8);  // types 6..8 only through this editor
  EXPECT_EQ(h.t->scoeff[1], nullptr);
  EXPECT_EQ(h.t->scoeffhint, DF_STORE_SEPARATE);

  struct Case {
    int64_t order, type, bct;
    const float* bc;
    int64_t ict;
    const float* ic;
    oxa_status code;
  };
  const Case cases[] = {
      {-1, 0, 0, nullptr, 0, nullptr, DF_ERR_BAD_ORDER},
      {2, -1, 0, nullptr, 0, nullptr, DF_ERR_BAD_TYPE},
      {2, 0, 64, nullptr, 0, nullptr, DF_OK},
      {5, 2, 4, nullptr, 0, nullptr, DF_ERR_BAD_BC},
      {2, 0, 4, bc, 0, ic, DF_ERR_BAD_IC_TYPE},
      {2, 0, 4, bc, 1, nullptr, DF_ERR_BAD_IC},
      {2, 0, 4, bc, 1, ic, DF_OK},
  };
  for (const Case& k : cases)
    EXPECT_EQ(
        oxa_df_kernel_sEditPPSpline1D(h.t, k.order, k.type, k.bct, k.bc, k.ict, k.ic, nullptr, 0),
        k.code);
  // What was stored before a failing check stays stored.
  EXPECT_EQ(oxa_df_kernel_sEditPPSpline1D(h.t, 5, 2, 4, nullptr, 0, nullptr, nullptr, 0),
            DF_ERR_BAD_BC);
  EXPECT_EQ(h.t->s_order, 5);
  EXPECT_EQ(h.t->s_type, 2);
  EXPECT_EQ(oxa_df_kernel_sEditPPSpline1D(nullptr, 2, 0, 0, nullptr, 0, nullptr, nullptr, 0),
            DF_ERR_NULL_TASK);

  TaskHolder empty;
  ASSERT_EQ(oxa_df_kernel_sNewTask1D(&empty.t, 5, x, 0, 0, nullptr, 0, 0), DF_OK);
  EXPECT_EQ(oxa_df_kernel_sEditPPSpline1D(empty.t, 2, 0, 0, nullptr, 0, nullptr, c, 0),
            DF_ERR_BAD_NY);
}

// A task whose dimension is not 1 accepts every edit silently and changes
// nothing; queries succeed without writing.
TEST(DfTaskEdit, OtherDimensionIsASilentSuccess) {
  const double x[3] = {0, 1, 2};
  double y[3] = {}, other[3] = {};
  TaskHolder h;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&h.t, 3, x, 0, 1, y, 0, 1), DF_OK);
  h.t->dimension = 2;
  const DfTask before = *h.t;
  EXPECT_EQ(oxa_df_kernel_iEditVal(h.t, DF_PARAM_NX, 1), DF_OK);
  EXPECT_EQ(oxa_df_kernel_iEditVal(h.t, 99, 1), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, DF_PTR_X, nullptr), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditPtr(h.t, DF_PTR_Y, other), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dEditIdxPtr(h.t, DF_PTR_Y, 0, other), DF_OK);
  EXPECT_EQ(std::memcmp(&before, h.t, sizeof before), 0);
  EXPECT_EQ(h.t->y[0], y);
  int64_t v = -5;
  const double* p = other;
  EXPECT_EQ(oxa_df_kernel_iQueryVal(h.t, DF_PARAM_NX, &v), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dQueryPtr(h.t, DF_PTR_X, &p), DF_OK);
  EXPECT_EQ(oxa_df_kernel_dQueryIdxPtr(h.t, DF_PTR_Y, 0, &p), DF_OK);
  EXPECT_EQ(v, -5);
  EXPECT_EQ(p, other);
  h.t->dimension = 1;
}

}  // namespace
