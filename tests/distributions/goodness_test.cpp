// Samples against their distributions: Kolmogorov-Smirnov against the exact
// CDF for the continuous generators (both precisions, two parameter sets),
// chi-square for Bernoulli and geometric, sample moments for the
// multivariate Gaussian. Fixed seeds; each threshold is set so that a correct
// generator fails with probability below 1e-6.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <functional>
#include <string>
#include <vector>

#include "distributions/generator_table.hpp"
#include "oxa/distributions.h"
#include "streams/stream_fixture.hpp"

using oxa_test::Stream;

namespace {

constexpr int32_t kSample = 20000;
// P(sqrt(n)·D > 2.72) ≈ 2·exp(-2·2.72²) = 7.4e-7 for a correct CDF.
constexpr double kKsLimit = 2.72;

double ks_statistic(std::vector<double> x, const std::function<double(double)>& cdf) {
  std::sort(x.begin(), x.end());
  const double n = static_cast<double>(x.size());
  double d = 0;
  for (size_t i = 0; i < x.size(); ++i) {
    const double f = cdf(x[i]);
    d = std::max({d, f - i / n, (i + 1) / n - f});
  }
  return std::sqrt(n) * d;
}

TEST(Goodness, ContinuousSamplesFollowTheirCdf) {
  for (const auto& d : oxa_test::transforms()) {
    if (d.discrete) continue;
    for (bool single : {false, true}) {
      for (int k = 0; k < 2; ++k) {
        Stream s(OXA_BRNG_MRG32K3A, {12345u + static_cast<uint32_t>(k)});
        std::vector<double> x;
        ASSERT_EQ(d.run(s.get(), kSample, x, k, single), 0) << d.name;
        const auto cdf = d.cdf;
        EXPECT_LT(ks_statistic(x, [&](double v) { return cdf(v, k); }), kKsLimit)
            << d.name << (single ? " single" : " double") << " set " << k;
      }
    }
  }
}

// Weibull with shape 1 is the exponential variate of the same uniforms.
TEST(Goodness, WeibullOfShapeOneIsExponential) {
  Stream s(OXA_BRNG_MCG31M1, {3}), copy(s);
  std::vector<double> w(777), e(777);
  ASSERT_EQ(_vsldRngWeibull(0, s.get(), 777, w.data(), 1.0, 0.5, 3.0), 0);
  ASSERT_EQ(_vsldRngExponential(0, copy.get(), 777, e.data(), 0.5, 3.0), 0);
  EXPECT_EQ(w, e);
}

// Chi-square statistic of observed counts against expected probabilities;
// the limit is the 1 - 1e-6 quantile by the Wilson-Hilferty cube with a
// margin (z = 5 instead of 4.75).
void expect_chi_square(const std::vector<int64_t>& counts, const std::vector<double>& p, int64_t n,
                       const std::string& what) {
  double chi2 = 0;
  for (size_t i = 0; i < counts.size(); ++i) {
    const double e = p[i] * n;
    chi2 += (counts[i] - e) * (counts[i] - e) / e;
  }
  const double df = static_cast<double>(counts.size() - 1), h = 2.0 / (9.0 * df);
  const double limit = df * std::pow(1 - h + 5.0 * std::sqrt(h), 3);
  EXPECT_LT(chi2, limit) << what;
}

TEST(Goodness, BernoulliAndGeometricFrequencies) {
  constexpr int32_t n = 100000;
  std::vector<int32_t> r(n), shifted(n + 1);
  for (double p : {0.3, 0.9}) {
    Stream s(OXA_BRNG_MCG31M1, {42}), copy(s);
    ASSERT_EQ(_vsliRngBernoulli(0, s.get(), n, r.data(), p), 0);
    ASSERT_EQ(_vsliRngBernoulli(0, copy.get(), n, shifted.data() + 1, p), 0);
    EXPECT_TRUE(std::equal(r.begin(), r.end(), shifted.begin() + 1)) << "alignment changes nothing";
    std::vector<int64_t> counts(2);
    for (int32_t v : r) {
      ASSERT_TRUE(v == 0 || v == 1);
      ++counts[v];
    }
    expect_chi_square(counts, {1 - p, p}, n, "Bernoulli " + std::to_string(p));
  }
  for (double p : {0.15, 0.6}) {
    Stream s(OXA_BRNG_R250, {42});
    ASSERT_EQ(_vsliRngGeometric(0, s.get(), n, r.data(), p), 0);
    // Bins 0..K-1 and a tail bin, K chosen so the tail expects >= 20.
    int32_t bins = 1;
    while (n * std::pow(1 - p, bins) >= 20) ++bins;
    std::vector<int64_t> counts(bins + 1);
    std::vector<double> probs(bins + 1);
    for (int32_t k = 0; k < bins; ++k) probs[k] = p * std::pow(1 - p, k);
    probs[bins] = std::pow(1 - p, bins);
    for (int32_t v : r) {
      ASSERT_GE(v, 0);
      ++counts[std::min(v, bins)];
    }
    expect_chi_square(counts, probs, n, "Geometric " + std::to_string(p));
  }
}

TEST(Goodness, BernoulliEdgesAndSinglePrecisionThreshold) {
  std::vector<int32_t> r(1000), q(1000);
  for (double p : {0.0, -0.0, -1.0, 1.0, 2.0}) {
    Stream s(OXA_BRNG_MCG59, {1});
    ASSERT_EQ(_vsliRngBernoulli(0, s.get(), 1000, r.data(), p), 0);
    for (int32_t v : r) ASSERT_EQ(v, p >= 1.0 ? 1 : 0) << p;
  }
  // p values equal after rounding to float give identical sequences.
  Stream s1(OXA_BRNG_MCG59, {5}), s2(s1);
  ASSERT_EQ(_vsliRngBernoulli(0, s1.get(), 1000, r.data(), 0.3), 0);
  ASSERT_EQ(_vsliRngBernoulli(0, s2.get(), 1000, q.data(), 0.3 + 1e-12), 0);
  EXPECT_EQ(r, q);
}

// Sample mean and covariance of x = mean + T·z against mean and T·Tᵀ, for
// each storage form of the same factor.
TEST(Goodness, MultivariateGaussianMoments) {
  constexpr int32_t d = 3, n = 60000;
  const double mean[d] = {1.0, -2.0, 0.5};
  const double full[d * d] = {2.0, 0, 0, 0.6, 1.5, 0, -0.4, 0.3, 0.8};  // lower, row-major
  const double packed[6] = {2.0, 0.6, 1.5, -0.4, 0.3, 0.8};
  double cov[d][d] = {};
  for (int i = 0; i < d; ++i)
    for (int j = 0; j < d; ++j)
      for (int k = 0; k < d; ++k) cov[i][j] += full[i * d + k] * full[j * d + k];

  std::vector<double> x(static_cast<size_t>(n) * d), y(x.size());
  for (uint32_t method = 0; method < 3; ++method) {
    Stream s(OXA_BRNG_MCG59, {2024}), copy(s);
    ASSERT_EQ(_vsldRngGaussianMV(method, s.get(), n, x.data(), d, OXA_MATRIX_STORAGE_FULL, mean, full), 0);
    ASSERT_EQ(_vsldRngGaussianMV(method, copy.get(), n, y.data(), d, OXA_MATRIX_STORAGE_PACKED, mean, packed), 0);
    EXPECT_EQ(x, y) << "packed and full storage agree";
    double m[d] = {}, c[d][d] = {};
    for (int32_t v = 0; v < n; ++v)
      for (int i = 0; i < d; ++i) m[i] += x[v * d + i] / n;
    for (int32_t v = 0; v < n; ++v)
      for (int i = 0; i < d; ++i)
        for (int j = 0; j < d; ++j) c[i][j] += (x[v * d + i] - m[i]) * (x[v * d + j] - m[j]) / (n - 1);
    // Six standard errors: a correct generator fails with probability ~1e-9
    // per entry.
    for (int i = 0; i < d; ++i) {
      EXPECT_NEAR(m[i], mean[i], 6 * std::sqrt(cov[i][i] / n)) << method << " mean " << i;
      for (int j = 0; j < d; ++j)
        EXPECT_NEAR(c[i][j], cov[i][j], 6 * std::sqrt((cov[i][i] * cov[j][j] + cov[i][j] * cov[i][j]) / n))
            << method << " cov " << i << j;
    }
  }
  // A diagonal factor scales each component by itself.
  const double diag[d] = {2.0, 0.5, 3.0};
  const double diag_full[d * d] = {2.0, 0, 0, 0, 0.5, 0, 0, 0, 3.0};
  Stream s(OXA_BRNG_MCG59, {8}), copy(s);
  ASSERT_EQ(_vsldRngGaussianMV(1, s.get(), 1001, x.data(), d, OXA_MATRIX_STORAGE_DIAGONAL, mean, diag), 0);
  ASSERT_EQ(_vsldRngGaussianMV(1, copy.get(), 1001, y.data(), d, OXA_MATRIX_STORAGE_FULL, mean, diag_full), 0);
  for (int32_t i = 0; i < 1001 * d; ++i) ASSERT_NEAR(x[i], y[i], 1e-12) << i;
  // Single precision: the same vectors to float accuracy.
  std::vector<float> xf(static_cast<size_t>(n) * d);
  const float meanf[d] = {1.0f, -2.0f, 0.5f}, fullf[d * d] = {2.0f, 0, 0, 0.6f, 1.5f, 0, -0.4f, 0.3f, 0.8f};
  Stream sd(OXA_BRNG_MRG32K3A, {77}), sf(sd);
  ASSERT_EQ(_vsldRngGaussianMV(2, sd.get(), 500, x.data(), d, OXA_MATRIX_STORAGE_FULL, mean, full), 0);
  ASSERT_EQ(_vslsRngGaussianMV(2, sf.get(), 500, xf.data(), d, OXA_MATRIX_STORAGE_FULL, meanf, fullf), 0);
  for (int32_t i = 0; i < 500 * d; ++i) ASSERT_NEAR(xf[i], x[i], 1e-4 * (1 + std::fabs(x[i]))) << i;
}

}  // namespace
