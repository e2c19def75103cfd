// The dispatcher: method choice, data-hint checks, uniform sites, and the
// threaded drivers' thresholds and splits, all checked against the
// reference cell.
#include <gtest/gtest.h>

#include "df_test_support.hpp"

namespace {

using df_test::CountingThreading;
using df_test::reference_cell;

enum class Kind { kUniform, kQuasi, kSorted, kPeak, kHybrid, kUser };

// The call-back of the user-defined methods: guesses cell 0 for every site
// and leaves the correction to the kernel.
int32_t guess_zero(int64_t n, const double* site, void* cell, int32_t bits, int32_t*, void*) {
  for (int64_t i = 0; i < n; ++i) {
    (void)site;
    if (bits == 32)
      static_cast<int32_t*>(cell)[i] = 0;
    else
      static_cast<int64_t*>(cell)[i] = 0;
  }
  return 0;
}

// A task of the given kind over nx breakpoints, its reference breakpoints,
// and the search arguments that select the kind's method.
struct SearchSetup {
  std::vector<double> x;    // what the task holds
  std::vector<double> ref;  // every breakpoint
  DfTask* task = nullptr;
  int64_t sitehint = 0;
  std::vector<double> datahint;
  oxa_df_dsearch_callback callback = nullptr;

  SearchSetup(Kind kind, int64_t nx, std::mt19937_64& g) {
    int64_t xhint = DF_X_NON_UNIFORM;
    if (kind == Kind::kUniform) {
      x = {-2.0, -2.0 + 0.5 * static_cast<double>(nx - 1)};
      for (int64_t i = 0; i < nx; ++i) ref.push_back(-2.0 + 0.5 * static_cast<double>(i));
      xhint = DF_X_UNIFORM;
    } else {
      x = ref = df_test::random_partition<double>(nx, g);
      if (kind == Kind::kQuasi) xhint = DF_X_QUASI_UNIFORM;
    }
    if (kind == Kind::kSorted) sitehint = DF_SITE_SORTED;
    if (kind == Kind::kPeak) datahint = {0, 1, 0, 0, static_cast<double>(nx / 2)};
    if (kind == Kind::kUser) callback = &guess_zero;
    EXPECT_EQ(oxa_df_kernel_dNewTask1D(&task, nx, x.data(), xhint, 0, nullptr, 0, 0), DF_OK);
  }
  ~SearchSetup() { oxa_df_kernel_DeleteTask(&task); }

  std::vector<double> sites(int64_t n, std::mt19937_64& g) const {
    auto s = df_test::awkward_sites(ref, g, static_cast<size_t>(n));
    s.resize(static_cast<size_t>(n));
    if (sitehint == DF_SITE_SORTED) {
      for (auto& v : s)
        if (std::isnan(v)) v = ref.front();
      std::sort(s.begin(), s.end());
    }
    return s;
  }

  oxa_status search(const std::vector<double>& s, int32_t flags, void* cells,
                    const DfThreading* th) const {
    return oxa_df_kernel_dDFSearch1D(task, flags, static_cast<int64_t>(s.size()), s.data(),
                                     sitehint, datahint.empty() ? nullptr : datahint.data(), cells,
                                     callback, nullptr, th);
  }
};

// Every method, thread count and width around each driver's threshold, and
// a large request: the cells never depend on how the work was split.
TEST(SearchDispatch, CellsDoNotDependOnTheSplit) {
  std::mt19937_64 g(3);
  for (Kind kind :
       {Kind::kUniform, Kind::kQuasi, Kind::kSorted, Kind::kPeak, Kind::kHybrid, Kind::kUser}) {
    const SearchSetup setup(kind, 700, g);
    for (int64_t n : {1, 31, 32, 300, 301, 601, 1201, 2001, 2181, 3001, 5001, 60000}) {
      const auto s = setup.sites(n, g);
      for (int32_t threads : {1, 2, 3, 8, 0}) {  // 0: the service layer's real threads
        const DfThreading counting = CountingThreading::record(threads);
        const DfThreading& th = threads ? counting : oxa_serv_df_threading;
        std::vector<int64_t> c64(s.size(), -1);
        std::vector<int32_t> c32(s.size(), -1);
        ASSERT_EQ(setup.search(s, DF_CELL_64, c64.data(), &th), DF_OK);
        ASSERT_EQ(setup.search(s, DF_CELL_32, c32.data(), &th), DF_OK);
        for (size_t i = 0; i < s.size(); ++i) {
          const int64_t want = reference_cell(setup.ref, s[i]);
          ASSERT_EQ(c64[i], want) << "kind " << int(kind) << " n " << n << " T " << threads << " i "
                                  << i;
          ASSERT_EQ(c32[i], want) << "kind " << int(kind) << " n " << n << " T " << threads << " i "
                                  << i;
        }
      }
    }
  }
}

// When each driver goes parallel, and with how many chunks.
TEST(SearchDispatch, DriverThresholds) {
  struct Case {
    Kind kind;
    int64_t nx, nsite;
    int32_t threads;
    int64_t chunks;  // 0: sequential
  };
  const Case cases[] = {
      {Kind::kUniform, 50, 5000, 2, 0}, {Kind::kUniform, 50, 5001, 2, 2},
      {Kind::kUniform, 50, 9000, 1, 0}, {Kind::kSorted, 50, 3000, 2, 0},
      {Kind::kSorted, 50, 3001, 3, 3},  {Kind::kQuasi, 700, 300, 2, 0},
      {Kind::kQuasi, 700, 301, 2, 2},   {Kind::kQuasi, 100, 301, 2, 0},
      {Kind::kQuasi, 100, 2000, 8, 2},  {Kind::kPeak, 700, 1200, 2, 0},
      {Kind::kPeak, 700, 1201, 2, 2},   {Kind::kPeak, 1300, 40, 2, 2},
      {Kind::kHybrid, 50, 2000, 8, 0},  {Kind::kHybrid, 50, 2001, 8, 8},
      {Kind::kHybrid, 50, 600, 4, 0},   {Kind::kHybrid, 50, 601, 4, 4},
      {Kind::kHybrid, 50, 601, 5, 0},   {Kind::kHybrid, 50, 301, 2, 2},
      {Kind::kHybrid, 50, 301, 3, 0},   {Kind::kHybrid, 50, 128 * 17 + 5, 32, 17},
      {Kind::kUser, 50, 9000, 8, 0},
  };
  std::mt19937_64 g(5);
  for (const Case& c : cases) {
    const SearchSetup setup(c.kind, c.nx, g);
    const auto s = setup.sites(c.nsite, g);
    const DfThreading th = CountingThreading::record(c.threads);
    std::vector<int64_t> cells(s.size());
    ASSERT_EQ(setup.search(s, 0, cells.data(), &th), DF_OK);
    EXPECT_EQ(CountingThreading::parallel_calls, c.chunks ? 1 : 0)
        << "kind " << int(c.kind) << " nsite " << c.nsite << " T " << c.threads;
    if (c.chunks) {
      EXPECT_EQ(CountingThreading::last_iterations, c.chunks) << "kind " << int(c.kind);
    }
    EXPECT_FALSE(CountingThreading::hint_seen);  // search drivers pass no hint
  }
}

TEST(SearchDispatch, SmallWorkedExamples) {
  struct Case {
    std::vector<double> x;
    int64_t nx, xhint;
    std::vector<double> sites;
    std::vector<int64_t> cells;
  };
  const Case cases[] = {
      {{0, 1}, 2, DF_X_NON_UNIFORM, {-1, 0, 0.5, 1, 2}, {0, 1, 1, 1, 2}},
      {{0, 1, 2, 3}, 4, DF_X_NO_HINT, {1, 3, 3.5}, {2, 3, 4}},
      {{0, 10}, 11, DF_X_UNIFORM, {10, 9.999, 10.001, -0.001}, {10, 10, 11, 0}},
  };
  for (const Case& c : cases) {
    DfTask* task = nullptr;
    ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, c.nx, c.x.data(), c.xhint, 0, nullptr, 0, 0), DF_OK);
    std::vector<int64_t> cells(c.sites.size());
    ASSERT_EQ(
        oxa_df_kernel_dDFSearch1D(task, 0, static_cast<int64_t>(c.sites.size()), c.sites.data(), 0,
                                  nullptr, cells.data(), nullptr, nullptr, nullptr),
        DF_OK);
    EXPECT_EQ(cells, c.cells);
    oxa_df_kernel_DeleteTask(&task);
  }
}

TEST(SearchDispatch, DataHintAndStatuses) {
  const std::vector<double> x{0, 1, 2, 3};
  DfTask* task = nullptr;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, 4, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0),
            DF_OK);
  const double nan = std::numeric_limits<double>::quiet_NaN();
  struct Case {
    std::vector<double> hint;
    oxa_status status;
  };
  const Case cases[] = {
      {{0, 0, 0, 0, 99}, DF_OK},
      {{0, 1, 0, 0, 0}, DF_OK},
      {{0, 1, 0, 0, 4}, DF_OK},
      {{0, 1, 0, 0, 5}, DF_ERR_BAD_DATA_HINT},
      {{0, 1, 0, 0, -0.5}, DF_ERR_BAD_DATA_HINT},
      {{0, 1, 0, 0, nan}, DF_ERR_BAD_DATA_HINT},
      {{0, 2, 0, 0, 0}, DF_ERR_BAD_DATA_HINT},
      {{0, nan, 0, 0, 0}, DF_ERR_BAD_DATA_HINT},
  };
  const double site = 1.5;
  for (const Case& c : cases) {
    int64_t cell = -1;
    EXPECT_EQ(oxa_df_kernel_dDFSearch1D(task, 0, 1, &site, 0, c.hint.data(), &cell, nullptr,
                                        nullptr, nullptr),
              c.status);
    if (c.status == DF_OK) {
      EXPECT_EQ(cell, 2);
    }
    // The check comes before the site count: an empty request fails alike.
    EXPECT_EQ(oxa_df_kernel_dDFSearch1D(task, 0, 0, &site, 0, c.hint.data(), &cell, nullptr,
                                        nullptr, nullptr),
              c.status);
  }
  EXPECT_EQ(oxa_df_kernel_dDFSearch1D(nullptr, 0, 1, &site, 0, nullptr, nullptr, nullptr, nullptr,
                                      nullptr),
            DF_ERR_NULL_TASK);
  oxa_df_kernel_DeleteTask(&task);

  // Created uniform (no table), then re-hinted without a rebuild: the hybrid
  // search still places sites on the array it is given.
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, 4, x.data(), DF_X_UNIFORM, 0, nullptr, 0, 0), DF_OK);
  ASSERT_EQ(oxa_df_kernel_iEditVal(task, DF_PARAM_XHINT, DF_X_NO_HINT), DF_OK);
  int64_t cell = -1;
  EXPECT_EQ(
      oxa_df_kernel_dDFSearch1D(task, 0, 1, &site, 0, nullptr, &cell, nullptr, nullptr, nullptr),
      DF_OK);
  EXPECT_EQ(cell, 2);
  oxa_df_kernel_DeleteTask(&task);
}

// Uniform sites are given by their two ends, on the stack up to 4096 sites
// and in an allocated buffer above.
TEST(SearchDispatch, UniformSites) {
  const std::vector<double> x{0, 0.5, 1};
  DfTask* task = nullptr;
  ASSERT_EQ(oxa_df_kernel_dNewTask1D(&task, 3, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0),
            DF_OK);
  const double ends[2] = {0, 1};
  std::vector<int64_t> cells(3);
  ASSERT_EQ(oxa_df_kernel_dDFSearch1D(task, 0, 3, ends, DF_SITE_UNIFORM, nullptr, cells.data(),
                                      nullptr, nullptr, nullptr),
            DF_OK);
  EXPECT_EQ(cells, (std::vector<int64_t>{1, 2, 2}));  // sites 0, 0.5, 1
  const double wide[2] = {-0.25, 1.25};
  for (int64_t n : {1, 4096, 4097, 10001}) {
    cells.assign(static_cast<size_t>(n), -1);
    ASSERT_EQ(oxa_df_kernel_dDFSearch1D(task, 0, n, wide, DF_SITE_UNIFORM, nullptr, cells.data(),
                                        nullptr, nullptr, &oxa_serv_df_threading),
              DF_OK);
    for (int64_t i = 0; i < n; ++i) {
      const double t = n == 1 ? wide[0]
                              : wide[0] + static_cast<double>(i) * (wide[1] - wide[0]) /
                                              static_cast<double>(n - 1);
      ASSERT_EQ(cells[static_cast<size_t>(i)], reference_cell(x, t)) << n << " " << i;
    }
  }
  // Too many uniform sites to materialise: refused before anything is written.
  int64_t untouched = -3;
  EXPECT_EQ(oxa_df_kernel_dDFSearch1D(task, 0, int64_t{1} << 45, wide, DF_SITE_UNIFORM, nullptr,
                                      &untouched, nullptr, nullptr, nullptr),
            DF_ERR_MEM);
  EXPECT_EQ(untouched, -3);
  oxa_df_kernel_DeleteTask(&task);
}

// The single-precision dispatcher follows the same choice.
TEST(SearchDispatch, SinglePrecision) {
  std::mt19937_64 g(13);
  const auto x = df_test::random_partition<float>(3000, g);
  DfTask* task = nullptr;
  ASSERT_EQ(oxa_df_kernel_sNewTask1D(&task, 3000, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0),
            DF_OK);
  const auto s = df_test::awkward_sites(x, g, 3000);
  std::vector<int32_t> cells(s.size());
  const DfThreading th = CountingThreading::record(2);
  ASSERT_EQ(oxa_df_kernel_sDFSearch1D(task, DF_CELL_32, static_cast<int64_t>(s.size()), s.data(), 0,
                                      nullptr, cells.data(), nullptr, nullptr, &th),
            DF_OK);
  for (size_t i = 0; i < s.size(); ++i) ASSERT_EQ(cells[i], reference_cell(x, s[i])) << i;
  const float peak_hint[5] = {0, 1, 0, 0, 3001};
  EXPECT_EQ(oxa_df_kernel_sDFSearch1D(task, 0, 1, s.data(), 0, peak_hint, cells.data(), nullptr,
                                      nullptr, &th),
            DF_ERR_BAD_DATA_HINT);
  oxa_df_kernel_DeleteTask(&task);
}

}  // namespace
