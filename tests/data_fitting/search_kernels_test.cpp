// Every sequential search kernel, in every width, against the reference cell
// on random and adversarial partitions and sites.
#include <gtest/gtest.h>

#include <tuple>

#include "data_fitting/task.hpp"
#include "df_test_support.hpp"

namespace {

using df_test::reference_cell;

// The four members of one kernel family.
template <class T, class... P>
struct Family {
  oxa_status (*m32)(int64_t, const T*, int64_t, const T*, P..., int32_t*);
  oxa_status (*m64)(int64_t, const T*, int64_t, const T*, P..., int64_t*);
  oxa_status (*m64pack)(int64_t, const T*, int64_t, const T*, P..., int64_t*);
  oxa_status (*choose)(int64_t, const T*, int64_t, const T*, P..., int32_t, void*);
};

// Runs every member (the width-choosing entry with both flag words) and
// checks each cell against the reference on the breakpoints `ref`.
// `params` is called before each run and returns the method's parameters.
template <class T, class... P, class Params>
void check_family(const Family<T, P...>& f, const std::vector<T>& x, const std::vector<T>& ref,
                  const std::vector<T>& sites, Params params, const char* what) {
  const auto nx = static_cast<int64_t>(ref.size());
  const auto n = static_cast<int64_t>(sites.size());
  std::vector<int32_t> c32(sites.size(), -7);
  std::vector<int64_t> c64(sites.size(), -7);
  auto expect_all = [&](auto& cells, const char* member) {
    for (size_t i = 0; i < sites.size(); ++i)
      ASSERT_EQ(cells[i], reference_cell(ref, sites[i]))
          << what << " " << member << " nx=" << nx << " site[" << i << "]=" << sites[i];
  };
  auto call = [&](auto fn, auto... tail) {
    return std::apply([&](auto... p) { return fn(nx, x.data(), n, sites.data(), p..., tail...); },
                      params());
  };
  ASSERT_EQ(call(f.m32, c32.data()), DF_OK);
  expect_all(c32, "32");
  ASSERT_EQ(call(f.m64, c64.data()), DF_OK);
  expect_all(c64, "64");
  std::fill(c64.begin(), c64.end(), -7);
  ASSERT_EQ(call(f.m64pack, c64.data()), DF_OK);
  expect_all(c64, "64Pack");
  std::fill(c32.begin(), c32.end(), -7);
  ASSERT_EQ(call(f.choose, int32_t{DF_CELL_32}, static_cast<void*>(c32.data())), DF_OK);
  expect_all(c32, "choose32");
  std::fill(c64.begin(), c64.end(), -7);
  ASSERT_EQ(call(f.choose, int32_t{3}, static_cast<void*>(c64.data())), DF_OK);  // bit 1 set: 64
  expect_all(c64, "choose64");
}

template <class T>
struct Api;
template <>
struct Api<double> {
  static constexpr Family<double, double> uniform{
      oxa_df_kernel_dDFUniformSearch1D32, oxa_df_kernel_dDFUniformSearch1D64,
      oxa_df_kernel_dDFUniformSearch1D64Pack, oxa_df_kernel_dDFUniformSearch1D};
  static constexpr Family<double, double> quasi{
      oxa_df_kernel_dDFQuasiUniformSearch1D32, oxa_df_kernel_dDFQuasiUniformSearch1D64,
      oxa_df_kernel_dDFQuasiUniformSearch1D64Pack, oxa_df_kernel_dDFQuasiUniformSearch1D};
  static constexpr Family<double, int64_t*> sorted{
      oxa_df_kernel_dDFSortedSearch1D32, oxa_df_kernel_dDFSortedSearch1D64,
      oxa_df_kernel_dDFSortedSearch1D64Pack, oxa_df_kernel_dDFSortedSearch1D};
  static constexpr Family<double, int64_t> peak{
      oxa_df_kernel_dDFPeakSearch1D32, oxa_df_kernel_dDFPeakSearch1D64,
      oxa_df_kernel_dDFPeakSearch1D64Pack, oxa_df_kernel_dDFPeakSearch1D};
  static constexpr Family<double, const DfSearchBin*, double> hybrid{
      oxa_df_kernel_dDFHybridSearch1D32, oxa_df_kernel_dDFHybridSearch1D64,
      oxa_df_kernel_dDFHybridSearch1D64Pack, oxa_df_kernel_dDFHybridSearch1D};
  static constexpr Family<double, oxa_df_dsearch_callback, void*> user{
      oxa_df_kernel_dDFUserDefSearch1D32, oxa_df_kernel_dDFUserDefSearch1D64,
      oxa_df_kernel_dDFUserDefSearch1D64Pack, oxa_df_kernel_dDFUserDefSearch1D};
  static constexpr Family<double, oxa_df_dsearch_callback, void*> uni_user{
      oxa_df_kernel_dDFUniUserDefSearch1D32, oxa_df_kernel_dDFUniUserDefSearch1D64,
      oxa_df_kernel_dDFUniUserDefSearch1D64Pack, oxa_df_kernel_dDFUniUserDefSearch1D};
  static constexpr auto new_task = oxa_df_kernel_dNewTask1D;
  static constexpr auto search = oxa_df_kernel_dDFSearch1D;
};
template <>
struct Api<float> {
  static constexpr Family<float, float> uniform{
      oxa_df_kernel_sDFUniformSearch1D32, oxa_df_kernel_sDFUniformSearch1D64,
      oxa_df_kernel_sDFUniformSearch1D64Pack, oxa_df_kernel_sDFUniformSearch1D};
  static constexpr Family<float, float> quasi{
      oxa_df_kernel_sDFQuasiUniformSearch1D32, oxa_df_kernel_sDFQuasiUniformSearch1D64,
      oxa_df_kernel_sDFQuasiUniformSearch1D64Pack, oxa_df_kernel_sDFQuasiUniformSearch1D};
  static constexpr Family<float, int64_t*> sorted{
      oxa_df_kernel_sDFSortedSearch1D32, oxa_df_kernel_sDFSortedSearch1D64,
      oxa_df_kernel_sDFSortedSearch1D64Pack, oxa_df_kernel_sDFSortedSearch1D};
  static constexpr Family<float, int64_t> peak{
      oxa_df_kernel_sDFPeakSearch1D32, oxa_df_kernel_sDFPeakSearch1D64,
      oxa_df_kernel_sDFPeakSearch1D64Pack, oxa_df_kernel_sDFPeakSearch1D};
  static constexpr Family<float, const DfSearchBin*, float> hybrid{
      oxa_df_kernel_sDFHybridSearch1D32, oxa_df_kernel_sDFHybridSearch1D64,
      oxa_df_kernel_sDFHybridSearch1D64Pack, oxa_df_kernel_sDFHybridSearch1D};
  static constexpr Family<float, oxa_df_ssearch_callback, void*> user{
      oxa_df_kernel_sDFUserDefSearch1D32, oxa_df_kernel_sDFUserDefSearch1D64,
      oxa_df_kernel_sDFUserDefSearch1D64Pack, oxa_df_kernel_sDFUserDefSearch1D};
  static constexpr Family<float, oxa_df_ssearch_callback, void*> uni_user{
      oxa_df_kernel_sDFUniUserDefSearch1D32, oxa_df_kernel_sDFUniUserDefSearch1D64,
      oxa_df_kernel_sDFUniUserDefSearch1D64Pack, oxa_df_kernel_sDFUniUserDefSearch1D};
  static constexpr auto new_task = oxa_df_kernel_sNewTask1D;
  static constexpr auto search = oxa_df_kernel_sDFSearch1D;
};

// A call-back that guesses wrong on purpose (negative, beyond nx, a few
// cells off) and settles every third site itself with the true cell.
template <class T>
struct Guesser {
  const std::vector<T>* ref;
  int32_t status;
  static int64_t wrong_guess(int64_t i, int64_t truth, int64_t nx) {
    if (i % 10 == 1) return -2;
    if (i % 10 == 2) return nx + 3;
    return truth + (i * 7919) % 7 - 3;
  }
  static int32_t call(int64_t n, const T* site, void* cell, int32_t bits, int32_t* flag, void* p) {
    auto* g = static_cast<Guesser*>(p);
    const auto nx = static_cast<int64_t>(g->ref->size());
    for (int64_t i = 0; i < n; ++i) {
      EXPECT_EQ(flag[i], 0);
      int64_t v = wrong_guess(i, reference_cell(*g->ref, site[i]), nx);
      if (i % 3 == 0) {
        v = reference_cell(*g->ref, site[i]);
        flag[i] = 1;
      }
      if (bits == 32)
        static_cast<int32_t*>(cell)[i] = static_cast<int32_t>(v);
      else
        static_cast<int64_t*>(cell)[i] = v;
    }
    return g->status;
  }
};

template <class T>
class SearchKernels : public ::testing::Test {};
using Reals = ::testing::Types<double, float>;
TYPED_TEST_SUITE(SearchKernels, Reals);

// Partitions: nx = 2, small random, clustered, just above 16·1024, and one
// whose last breakpoints repeat the right end.
template <class T>
std::vector<std::vector<T>> partitions(std::mt19937_64& g) {
  std::vector<std::vector<T>> p;
  p.push_back({T(0), T(1)});
  p.push_back(df_test::random_partition<T>(50, g));
  p.push_back(df_test::clustered_partition<T>(3000, g));
  p.push_back(df_test::random_partition<T>(16 * 1024 + 3, g));
  auto dup = df_test::random_partition<T>(40, g);
  dup[37] = dup[38] = dup[39];
  p.push_back(dup);
  return p;
}

TYPED_TEST(SearchKernels, NonUniformMethodsMatchReference) {
  using T = TypeParam;
  std::mt19937_64 g(42);
  for (const auto& x : partitions<T>(g)) {
    const auto nx = static_cast<int64_t>(x.size());
    const auto sites = df_test::awkward_sites(x, g, 500);
    auto sorted_sites = sites;
    sorted_sites.erase(
        std::remove_if(sorted_sites.begin(), sorted_sites.end(), [](T v) { return std::isnan(v); }),
        sorted_sites.end());
    for (int k = 0; k < 5; ++k) sorted_sites.push_back(x[x.size() / 2]);  // repeated sites
    std::sort(sorted_sites.begin(), sorted_sites.end());

    const T inv = static_cast<T>(nx - 1) / (x.back() - x.front());
    check_family(
        Api<T>::quasi, x, x, sites, [&] { return std::tuple{inv}; }, "quasi-uniform");

    int64_t state = 0;
    check_family(
        Api<T>::sorted, x, x, sorted_sites,
        [&] {
          state = 0;
          return std::tuple{&state};
        },
        "sorted");

    // A peak walk costs up to nx steps per site: a few hundred sites do.
    const std::vector<T> peak_sites(sites.begin(),
                                    sites.begin() + std::min<size_t>(sites.size(), 400));
    for (int64_t p : {int64_t{0}, nx / 3, nx - 1, nx})
      check_family(
          Api<T>::peak, x, x, peak_sites, [&] { return std::tuple{p}; }, "peak");

    DfTask* task = nullptr;
    ASSERT_EQ(Api<T>::new_task(&task, nx, x.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0), DF_OK);
    const DfSearchBin* bins = task->bins;
    const T ibw = oxa::df::inv_bin_width<T>(*task);
    check_family(
        Api<T>::hybrid, x, x, sites,
        [&] {
          return std::tuple{bins, ibw};
        },
        "hybrid");
    oxa_df_kernel_DeleteTask(&task);

    Guesser<T> guesser{&x, 0};
    auto cb = &Guesser<T>::call;
    check_family(
        Api<T>::user, x, x, sites,
        [&] {
          return std::tuple{cb, static_cast<void*>(&guesser)};
        },
        "user");
  }
}

TYPED_TEST(SearchKernels, UniformMethodsMatchReference) {
  using T = TypeParam;
  std::mt19937_64 g(7);
  for (int64_t nx : {2, 3, 11, 4099}) {
    // Quarter steps from -8: every breakpoint and the inverse step are exact.
    const std::vector<T> ends{T(-8), static_cast<T>(-8 + 0.25 * static_cast<double>(nx - 1))};
    std::vector<T> ref(static_cast<size_t>(nx));
    for (int64_t i = 0; i < nx; ++i)
      ref[static_cast<size_t>(i)] = static_cast<T>(-8 + 0.25 * static_cast<double>(i));
    const auto sites = df_test::awkward_sites(ref, g, 500);
    const T inv = static_cast<T>(nx - 1) / (ends[1] - ends[0]);
    check_family(
        Api<T>::uniform, ends, ref, sites, [&] { return std::tuple{inv}; }, "uniform");
    Guesser<T> guesser{&ref, 0};
    auto cb = &Guesser<T>::call;
    check_family(
        Api<T>::uni_user, ends, ref, sites,
        [&] {
          return std::tuple{cb, static_cast<void*>(&guesser)};
        },
        "uniform user");
  }
}

// Uniform partitions whose breakpoints are not binary fractions, and one whose
// breakpoints are (-3 + i/128) but whose inverse step is not.
struct EvenCase {
  double x0, x1;
  int64_t nx;
};
const EvenCase kEvenCases[] = {{-3, 5, 3},          {-3, 5, 7},
                               {0.1, 0.7, 1000},    {-1.7, 2.9, 100000},
                               {-3, -3 + 99999.0 / 128, 100000}};

// x0 + i·(x1 − x0)/(nx − 1) in T, left to right; the last one is x1.
template <class T>
std::vector<T> even_breakpoints(T x0, T x1, int64_t nx) {
  std::vector<T> b(static_cast<size_t>(nx));
  for (int64_t i = 0; i < nx; ++i)
    b[static_cast<size_t>(i)] = x0 + static_cast<T>(i) * (x1 - x0) / static_cast<T>(nx - 1);
  b.back() = x1;
  return b;
}

// Every value within 2 ulps of every breakpoint, then random sites.
template <class T>
std::vector<T> sites_near(const std::vector<T>& b) {
  std::vector<T> s;
  std::mt19937_64 g(b.size());
  std::uniform_real_distribution<double> u(b.front() - 1, b.back() + 1);
  for (int k = 0; k < 4000; ++k) s.push_back(static_cast<T>(u(g)));
  for (T v : b) {
    T lo = v, hi = v;
    for (int k = 0; k < 2; ++k) lo = std::nextafter(lo, T(-1e30)), hi = std::nextafter(hi, T(1e30));
    for (T t = lo; t <= hi; t = std::nextafter(t, T(1e30))) s.push_back(t);
  }
  return s;
}

// Sites next to the breakpoints of uniform partitions: the uniform methods
// (kernels and dispatcher, both widths) and the methods on the breakpoints
// stored must give the cells of the breakpoints as the partition defines them.
TYPED_TEST(SearchKernels, UniformCellsNearEveryBreakpoint) {
  using T = TypeParam;
  for (const EvenCase& c : kEvenCases) {
    const std::vector<T> ends{static_cast<T>(c.x0), static_cast<T>(c.x1)};
    const auto ref = even_breakpoints(ends[0], ends[1], c.nx);
    const auto sites = sites_near(ref);
    const T inv = static_cast<T>(c.nx - 1) / (ends[1] - ends[0]);
    auto with_inv = [&] { return std::tuple{inv}; };
    check_family(Api<T>::uniform, ends, ref, sites, with_inv, "uniform");
    check_family(Api<T>::quasi, ref, ref, sites, with_inv, "quasi-uniform on stored");
    Guesser<T> guesser{&ref, 0};
    auto user = [&] { return std::tuple{&Guesser<T>::call, static_cast<void*>(&guesser)}; };
    if (c.nx <= 1000)  // walks from guesses beyond the ends cost nx steps
      check_family(Api<T>::uni_user, ends, ref, sites, user, "uniform user");

    DfTask* task = nullptr;
    ASSERT_EQ(Api<T>::new_task(&task, c.nx, ref.data(), DF_X_NON_UNIFORM, 0, nullptr, 0, 0), DF_OK);
    auto with_bins = [&] { return std::tuple{task->bins, oxa::df::inv_bin_width<T>(*task)}; };
    check_family(Api<T>::hybrid, ref, ref, sites, with_bins, "hybrid on stored");
    oxa_df_kernel_DeleteTask(&task);

    ASSERT_EQ(Api<T>::new_task(&task, c.nx, ends.data(), DF_X_UNIFORM, 0, nullptr, 0, 0), DF_OK);
    const auto n = static_cast<int64_t>(sites.size());
    std::vector<int32_t> c32(sites.size());
    std::vector<int64_t> c64(sites.size());
    ASSERT_EQ(Api<T>::search(task, DF_CELL_32, n, sites.data(), 0, nullptr, c32.data(), nullptr,
                             nullptr, nullptr),
              DF_OK);
    ASSERT_EQ(Api<T>::search(task, DF_CELL_64, n, sites.data(), 0, nullptr, c64.data(), nullptr,
                             nullptr, nullptr),
              DF_OK);
    oxa_df_kernel_DeleteTask(&task);
    for (size_t i = 0; i < sites.size(); ++i) {
      ASSERT_EQ(c32[i], reference_cell(ref, sites[i])) << "search nx=" << c.nx << " " << sites[i];
      ASSERT_EQ(c64[i], c32[i]) << "search nx=" << c.nx << " " << sites[i];
    }
  }
}

// The call-back's status: 1000 keeps its cells as written, a negative status
// is passed on with nothing corrected, any other value is passed on after the
// correction. nsite < 1 never calls it.
TYPED_TEST(SearchKernels, UserCallbackProtocol) {
  using T = TypeParam;
  const std::vector<T> x{0, 1, 2, 3};
  const std::vector<T> sites{T(0.5), T(1), T(2.5), T(3), T(7)};
  struct Case {
    int32_t status;
    oxa_status returned;
    bool corrected;
  };
  for (const Case c :
       {Case{1000, DF_OK, false}, Case{-5, -5, false}, Case{0, DF_OK, true}, Case{12, 12, true}}) {
    Guesser<T> guesser{&x, c.status};
    std::vector<int64_t> cells(sites.size(), -1);
    ASSERT_EQ(
        Api<T>::user.m64(4, x.data(), 5, sites.data(), &Guesser<T>::call, &guesser, cells.data()),
        c.returned);
    for (size_t i = 0; i < sites.size(); ++i) {
      const int64_t truth = reference_cell(x, sites[i]);
      const int64_t want = (c.corrected || i % 3 == 0)
                               ? truth
                               : Guesser<T>::wrong_guess(static_cast<int64_t>(i), truth, 4);
      EXPECT_EQ(cells[i], want) << "status " << c.status << " site " << i;
    }
  }
  int64_t untouched = -9;
  EXPECT_EQ(Api<T>::user.m64(4, x.data(), 0, sites.data(), nullptr, nullptr, &untouched), DF_OK);
  EXPECT_EQ(untouched, -9);
}

// The sorted hint is a promise: a start state beyond the sites' cells is
// never scanned back from, and the state records where the scan stopped.
TYPED_TEST(SearchKernels, SortedStateIsThePromise) {
  using T = TypeParam;
  std::vector<T> x(20);
  for (size_t i = 0; i < x.size(); ++i) x[i] = static_cast<T>(i);
  const std::vector<T> sites{T(1.5), T(2.5), T(3.5)};
  std::vector<int64_t> cells(3);
  int64_t state = 19;
  ASSERT_EQ(Api<T>::sorted.m64(20, x.data(), 3, sites.data(), &state, cells.data()), DF_OK);
  EXPECT_EQ(cells, (std::vector<int64_t>{19, 19, 19}));
  state = 0;
  ASSERT_EQ(Api<T>::sorted.m64(20, x.data(), 3, sites.data(), &state, cells.data()), DF_OK);
  EXPECT_EQ(cells, (std::vector<int64_t>{2, 3, 4}));
  EXPECT_EQ(state, 4);
  state = 11;
  ASSERT_EQ(Api<T>::sorted.m64(20, x.data(), 0, sites.data(), &state, cells.data()), DF_OK);
  EXPECT_EQ(state, 11);  // no sites: state unchanged
}

}  // namespace
