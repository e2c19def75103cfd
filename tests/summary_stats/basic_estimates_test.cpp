// The basic estimator's results against a long-double two-pass reference, for
// every method, storage, weighting and matrix storage; splitting into calls,
// threads, zero weights, conversion mode and component selection.
//
// Tolerances: the data have means up to p/2 and spread about 0.5, so raw and
// central quantities are well conditioned (relative error ~ eps log n) except
// the fast method's central sums, which are differences of raw moments; their
// error is about eps * (|mean| + spread)^k / spread^k, i.e. a factor ~10^3 for
// order 4 here.
#include <omp.h>

#include <algorithm>
#include <limits>

#include "oxa/vector_math.h"
#include "summary_stats/basic_fixture.hpp"
#include "summary_stats/task.hpp"

namespace {

using sstest::Data;
using sstest::Fixture;
using sstest::kAllEstimates;
using sstest::near;
using sstest::Reference;

template <class T>
double eps() {
  return std::numeric_limits<T>::epsilon();
}

// Position of (i, j) in a p x p result, enumerated independently of the
// library: row-major full, or the stored triangle packed row by row.
int64_t packed_position(int64_t storage, int64_t p, int64_t i, int64_t j) {
  if (storage == 0) return i * p + j;
  const bool upper = storage & 1;
  const int64_t r = upper ? std::min(i, j) : std::max(i, j);
  const int64_t c = upper ? std::max(i, j) : std::min(i, j);
  int64_t k = 0;
  for (int64_t a = 0; a < p; ++a)
    for (int64_t b = upper ? a : 0; b < (upper ? p : a + 1); ++b, ++k)
      if (a == r && b == c) return k;
  return -1;
}

// Checks every result of `f` against `ref`, the fast method's as tightly as
// the others'; `given_mean` expects the mean field unchanged.
template <class T>
void check_all(const Fixture<T>& f, const Reference& ref, bool given_mean,
               const std::vector<T>& mean_before) {
  const double tol = 200 * eps<T>();
  const long double W = ref.W, factor = ref.factor();
  near(f.accw[0], ref.W, ref.W, tol, "W", 0);
  near(f.accw[1], ref.W2, ref.W2, tol, "W2", 0);
  for (int64_t j = 0; j < f.p; ++j) {
    const long double m = ref.mean[j], s2 = ref.central[0][j];
    const long double spread = sqrtl(s2 / W);
    if (given_mean)
      EXPECT_EQ(f.mean[j], mean_before[j]);
    else
      near(f.mean[j], m, fabsl(m) + spread, tol, "mean", j);
    near(f.sum[j], ref.sum[j], W * (fabsl(m) + spread), tol, "sum", j);
    for (int k = 0; k < 3; ++k) {
      const long double scale_raw = ref.raw[k][j];
      near(f.raw_sum[k][j], ref.raw[k][j], scale_raw, tol, "raw sum", j);
      near(f.raw[k][j], ref.raw[k][j] / W, scale_raw / W, tol, "raw moment", j);
      const long double scale_c = W * powl(spread, k + 2);
      near(f.central_sum[k][j], ref.central[k][j], scale_c, tol, "central sum", j);
      const long double want = k == 0 ? ref.central[0][j] * factor : ref.central[k][j] / W;
      near(f.central[k][j], want, scale_c * (k == 0 ? factor : 1 / W), tol, "central moment", j);
    }
    const long double m2 = s2 / W, m3 = ref.central[1][j] / W, m4 = ref.central[2][j] / W;
    near(f.kurtosis[j], m4 / (m2 * m2) - 3, 3, tol, "kurtosis", j);
    near(f.skewness[j], m3 / powl(m2, 1.5L), 1, tol, "skewness", j);
    const long double var = sqrtl(s2 * factor) / m;
    near(f.variation[j], var, fabsl(var), tol, "variation", j);
  }
  for (int64_t a = 0; a < f.p; ++a)
    for (int64_t b = 0; b < f.p; ++b) {
      const long double c = ref.cp[a * f.p + b];
      const long double scale = sqrtl(ref.cp[a * f.p + a] * ref.cp[b * f.p + b]);
      near(f.cp[packed_position(f.cp_storage, f.p, a, b)], c, scale, tol, "cp", a * f.p + b);
      near(f.cov[packed_position(f.cov_storage, f.p, a, b)], c * factor, scale * factor, tol, "cov",
           a * f.p + b);
      near(f.cor[packed_position(f.cor_storage, f.p, a, b)], c / scale, 1, tol, "cor", a * f.p + b);
    }
}

template <class T>
void check_method(int64_t method, int64_t storage, bool weighted, int64_t matrix_storage) {
  SCOPED_TRACE(testing::Message() << "method " << method << " storage " << storage << " weighted "
                                  << weighted << " matrix " << matrix_storage << " size "
                                  << sizeof(T));
  const Data d(5, 1237, 7 + method + storage);
  Fixture<T> f(d, storage, weighted, matrix_storage);
  std::vector<double> given;
  if (method == 0x100) {  // the given mean: close to the sample mean, not equal
    for (int64_t j = 0; j < d.p; ++j) f.mean[j] = T(0.5 * j + 0.625);
    given.assign(f.mean.begin(), f.mean.end());
  }
  const std::vector<T> mean_before = f.mean;
  ASSERT_EQ(f.run(kAllEstimates, method), 0);
  const Reference ref(d, weighted, given.empty() ? nullptr : &given);
  check_all(f, ref, method == 0x100, mean_before);
}

TEST(SummaryStatsBasic, EveryMethodStorageWeightingAndMatrixForm) {
  for (int64_t method : {0x1, 0x2, 0x100})
    for (int64_t storage : {0x10000, 0x20000})
      for (bool weighted : {false, true}) {
        for (int64_t matrix : {0, 1, 2}) check_method<double>(method, storage, weighted, matrix);
        check_method<float>(method, storage, weighted, 0);
      }
}

// Many register tiles (p = 19: 24 padded columns, tiles straddling the
// diagonal and the padding) in both precisions and storages.
TEST(SummaryStatsBasic, CrossProductsOfManyComponents) {
  const Data d(19, 700, 17, false);
  for (int64_t storage : {0x10000, 0x20000})
    for (bool weighted : {false, true}) {
      const Reference ref(d, weighted);
      Fixture<double> fd(d, storage, weighted, 2);
      Fixture<float> fs(d, storage, weighted, 0);
      ASSERT_EQ(fd.run(0x1 | 0x1000 | 0x2000 | 0x100000000ull, 0x2), 0);
      ASSERT_EQ(fs.run(0x1 | 0x1000 | 0x100000000ull, 0x1), 0);
      for (int64_t a = 0; a < d.p; ++a)
        for (int64_t b = 0; b < d.p; ++b) {
          const long double c = ref.cp[a * d.p + b];
          const long double scale = sqrtl(ref.cp[a * d.p + a] * ref.cp[b * d.p + b]);
          near(fd.cp[packed_position(2, d.p, a, b)], c, scale, 1e-13, "cp", a * d.p + b);
          near(fd.cor[packed_position(2, d.p, a, b)], c / scale, 1, 1e-13, "cor", a * d.p + b);
          near(fs.cov[a * d.p + b], c * ref.factor(), scale * ref.factor(), 2e-5, "cov float",
               a * d.p + b);
        }
    }
}

// Runs `pieces` consecutive calls over consecutive slices of d.
template <class T>
void run_in_pieces(Fixture<T>& f, const Data& d, int pieces, uint64_t estimates, int64_t method) {
  std::vector<std::vector<T>> xs(pieces), ws(pieces);
  std::vector<int64_t> ns(pieces);
  for (int k = 0; k < pieces; ++k) {
    const int64_t i0 = d.n * k / pieces, i1 = d.n * (k + 1) / pieces;
    ns[k] = i1 - i0;
    for (int64_t i = i0; i < i1; ++i) ws[k].push_back(T(d.weights[i]));
    if (f.storage == 0x10000) {
      for (int64_t j = 0; j < d.p; ++j)
        for (int64_t i = i0; i < i1; ++i) xs[k].push_back(T(d.at(j, i)));
    } else {
      for (int64_t i = i0; i < i1; ++i)
        for (int64_t j = 0; j < d.p; ++j) xs[k].push_back(T(d.at(j, i)));
    }
    _vsliSSEditTask(f.task, 2, &ns[k]);
    f.edit(3, xs[k]);
    if (!f.w.empty()) f.edit(6, ws[k]);
    ASSERT_EQ(f.run(estimates, method), 0);
  }
}

TEST(SummaryStatsBasic, ConsecutiveCallsGiveTheEstimatesOfOneCall) {
  const Data d(4, 3001, 11);
  for (int64_t method : {0x1, 0x2, 0x100})
    for (int64_t storage : {0x10000, 0x20000})
      for (bool weighted : {false, true}) {
        SCOPED_TRACE(testing::Message() << method << " " << storage << " " << weighted);
        Fixture<double> whole(d, storage, weighted);
        for (int64_t j = 0; j < d.p; ++j) whole.mean[j] = 0.5 * j + 0.5;
        ASSERT_EQ(whole.run(kAllEstimates, method), 0);
        for (int pieces : {1, 2, 7}) {
          Fixture<double> f(d, storage, weighted);
          for (int64_t j = 0; j < d.p; ++j) f.mean[j] = 0.5 * j + 0.5;
          run_in_pieces(f, d, pieces, kAllEstimates, method);
          const double tol = 1e-12;
          auto same = [&](const std::vector<double>& a, const std::vector<double>& b,
                          const char* what) {
            for (size_t i = 0; i < a.size(); ++i)
              near(a[i], b[i], std::max(1.0, std::fabs(b[i])), tol, what, int64_t(i));
          };
          same(f.mean, whole.mean, "mean");
          same(f.accw, whole.accw, "W");
          for (int k = 0; k < 3; ++k) {
            same(f.central_sum[k], whole.central_sum[k], "central sum");
            same(f.raw_sum[k], whole.raw_sum[k], "raw sum");
            same(f.central[k], whole.central[k], "central moment");
          }
          same(f.cp, whole.cp, "cp");
          same(f.cor, whole.cor, "cor");
        }
      }
}

// Without sum or cross-product arrays the running state is recovered from the
// moments and the covariance between calls.
TEST(SummaryStatsBasic, ConsecutiveCallsContinueFromMomentsAlone) {
  const Data d(3, 2000, 13);
  const uint64_t moments = 0x1 | 0x2 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x80 | 0x1000;
  for (int64_t method : {0x1, 0x2})
    for (bool weighted : {false, true}) {
      SCOPED_TRACE(testing::Message() << method << " " << weighted);
      Fixture<double> whole(d, 0x20000, weighted), f(d, 0x20000, weighted);
      for (auto* task : {whole.task, f.task}) {
        task->sum = task->cross_product = nullptr;
        for (auto*& field : task->raw_sum) field = nullptr;
        for (auto*& field : task->central_sum) field = nullptr;
      }
      ASSERT_EQ(whole.run(moments, method), 0);
      run_in_pieces(f, d, 3, moments, method);
      for (int k = 0; k < 3; ++k)
        for (int64_t j = 0; j < d.p; ++j) {
          near(f.raw[k][j], whole.raw[k][j], whole.raw[k][j], 1e-12, "raw moment", j);
          near(f.central[k][j], whole.central[k][j], whole.central[0][j], 1e-10, "central", j);
        }
      for (size_t i = 0; i < f.cov.size(); ++i)
        near(f.cov[i], whole.cov[i], 1, 1e-12, "cov", int64_t(i));
      EXPECT_NEAR(f.kurtosis[1], whole.kurtosis[1], 1e-9);
    }
}

TEST(SummaryStatsBasic, ThreadCountDoesNotChangeTheEstimates) {
  const Data d(6, 40000, 5);
  const int saved = omp_get_max_threads();
  for (int64_t method : {0x1, 0x2})
    for (int64_t storage : {0x10000, 0x20000}) {
      std::vector<double> results[2];
      for (int threads : {1, 4}) {
        omp_set_num_threads(threads);
        Fixture<double> f(d, storage, true);
        ASSERT_EQ(f.run(kAllEstimates, method), 0);
        auto& r = results[threads == 4];
        for (const auto* v : {&f.mean, &f.central_sum[0], &f.central_sum[1], &f.central_sum[2],
                              &f.raw_sum[2], &f.cp, &f.accw})
          r.insert(r.end(), v->begin(), v->end());
      }
      for (size_t i = 0; i < results[0].size(); ++i)
        near(results[1][i], results[0][i], std::max(1.0, std::fabs(results[0][i])), 1e-12,
             "threaded", int64_t(i));
    }
  omp_set_num_threads(saved);
}

TEST(SummaryStatsBasic, LeadingAndInnerZeroWeightsChangeNothing) {
  const Data d(3, 500, 3);
  Data padded = d;  // five zero-weight observations first, two more inside
  padded.n = d.n + 7;
  padded.by_component.clear();
  padded.by_observation.clear();
  padded.weights.clear();
  auto push = [&](int64_t i, double w) {
    for (int64_t j = 0; j < d.p; ++j) padded.by_observation.push_back(i < 0 ? 9.0 + j : d.at(j, i));
    padded.weights.push_back(w);
  };
  for (int k = 0; k < 5; ++k) push(-1, 0.0);
  for (int64_t i = 0; i < d.n; ++i) {
    push(i, d.weights[i]);
    if (i == 100 || i == 101) push(-1, 0.0);
  }
  for (int64_t method : {0x1, 0x2}) {
    Fixture<double> plain(d, 0x20000, true), zeros(padded, 0x20000, true);
    ASSERT_EQ(plain.run(kAllEstimates, method), 0);
    ASSERT_EQ(zeros.run(kAllEstimates, method), 0);
    for (int64_t j = 0; j < d.p; ++j) {
      near(zeros.mean[j], plain.mean[j], 1, 1e-13, "mean", j);
      near(zeros.central_sum[2][j], plain.central_sum[2][j], plain.central_sum[2][j], 1e-12, "S4",
           j);
    }
    EXPECT_EQ(zeros.accw[0], plain.accw[0]);
    for (size_t i = 0; i < plain.cov.size(); ++i)
      near(zeros.cov[i], plain.cov[i], 1, 1e-13, "cov", int64_t(i));
  }
}

TEST(SummaryStatsBasic, ConversionFromAccumulatedSums) {
  const Data d(3, 200, 9);
  const Reference ref(d, true);
  Fixture<double> f(d, 0x20000, true);
  for (int64_t j = 0; j < d.p; ++j) {
    f.sum[j] = double(ref.sum[j]);
    for (int k = 0; k < 3; ++k) {
      f.raw_sum[k][j] = double(ref.raw[k][j]);
      f.central_sum[k][j] = double(ref.central[k][j]);
    }
  }
  for (size_t i = 0; i < f.cp.size(); ++i) f.cp[i] = double(ref.cp[i]);
  f.accw = {double(ref.W), double(ref.W2)};
  const std::vector<double> sums_before = f.sum;
  const uint64_t moments = 0x1 | 0x2 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x1000 | 0x2000;
  ASSERT_EQ(f.run(moments, 0x200), 0);
  ASSERT_EQ(f.run(0x80 | 0x100 | 0x200, 0x400), 0);  // from the moments just made
  EXPECT_EQ(f.sum, sums_before);
  check_all(f, ref, false, f.mean);

  // Nothing accumulated (W = 0): the covariance is the cross-product itself.
  f.accw = {0, 0};
  std::vector<double> cov_expected = f.cp;
  ASSERT_EQ(f.run(0x1000, 0x600), 0);
  EXPECT_EQ(f.cov, cov_expected);

  // No accumulated weights but n and no weights: W = W2 = n.
  Fixture<double> g(d, 0x20000, false);
  _vsldSSEditTask(g.task, 23, nullptr);  // refused: the field stays set
  g.task->accumulated_weights = nullptr;
  g.cp = f.cp;
  ASSERT_EQ(g.run(0x1000, 0x200), 0);
  EXPECT_DOUBLE_EQ(g.cov[0], f.cp[0] / double(d.n - 1));
}

TEST(SummaryStatsBasic, OnlySelectedComponentsAreComputedAndWritten) {
  const Data d(5, 300, 21);
  const int64_t flags[5] = {1, 0, 1, 1, 0};
  for (int64_t storage : {0x10000, 0x20000}) {
    Fixture<double> f(d, storage, true, 1);
    _vsliSSEditTask(f.task, 5, flags);
    const double sentinel = -12345;
    for (auto* v : {&f.mean, &f.central[1], &f.cov, &f.cor})
      std::fill(v->begin(), v->end(), sentinel);
    ASSERT_EQ(f.run(kAllEstimates, 0x2), 0);
    const Reference ref(d, true);
    for (int64_t j = 0; j < 5; ++j) {
      if (flags[j])
        near(f.mean[j], ref.mean[j], 1, 1e-13, "mean", j);
      else
        EXPECT_EQ(f.mean[j], sentinel);
    }
    const int64_t cells = 15;  // packed upper triangle of 5 x 5
    for (int64_t a = 0; a < 5; ++a)
      for (int64_t b = a; b < 5; ++b) {
        const int64_t at = packed_position(1, 5, a, b);
        ASSERT_LT(at, cells);
        if (flags[a] && flags[b])
          near(f.cov[at], ref.cp[a * 5 + b] * ref.factor(), 1, 1e-12, "cov", at);
        else
          EXPECT_EQ(f.cov[at], sentinel) << a << "," << b;
      }
    EXPECT_EQ(f.cov[cells], sentinel);
  }
}

}  // namespace

// A constant component has zero spread: its correlations are not finite, and
// computing them leaves the caller's vector-math mode and error status alone.
TEST(SummaryStatsBasic, ConstantComponentLeavesVectorMathStateAlone) {
  Data d(3, 200, 31);
  for (int64_t i = 0; i < d.n; ++i) {
    d.by_component[1 * d.n + i] = 2.5;
    d.by_observation[i * d.p + 1] = 2.5;
  }
  const uint32_t mode = OXA_VML_ERRMODE_STDERR | OXA_VML_ERRMODE_ERRNO | 0x2;
  const uint32_t saved = oxa_vml_kernel_SetMode(mode);
  oxa_vml_kernel_SetErrStatus(0);
  Fixture<double> f(d, 0x10000, false);
  ASSERT_EQ(f.run(kAllEstimates, 0x2), 0);
  EXPECT_EQ(oxa_vml_kernel_GetMode(), mode);
  EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), 0);
  EXPECT_FALSE(std::isfinite(f.cor[1 * 3 + 1]));
  EXPECT_NEAR(f.cor[0], 1.0, 1e-12);
  EXPECT_TRUE(std::isfinite(f.cor[2 * 3 + 0]));
  oxa_vml_kernel_SetMode(saved);
}
