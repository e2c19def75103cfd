// Shared by the basic-estimator tests: deterministic data, a task wired to a
// full set of result arrays, and a straightforward two-pass reference in long
// double.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <vector>

#include "oxa/summary_stats.h"

namespace sstest {

// Deterministic values in [0, 1) from a 64-bit LCG (no clock, no libm).
struct Lcg {
  uint64_t s;
  double next() {
    s = s * 6364136223846793005ull + 1442695040888963407ull;
    return double(s >> 11) * 0x1p-53;
  }
};

// p components, n observations, component j centred near j/2 with spread
// about 1; stored component-major (x[j * n + i]) and observation-major.
struct Data {
  int64_t p, n;
  std::vector<double> by_component, by_observation, weights;
  Data(int64_t p_, int64_t n_, uint64_t seed, bool skewed = true) : p(p_), n(n_) {
    Lcg g{seed};
    by_component.resize(p * n);
    by_observation.resize(p * n);
    weights.resize(n);
    for (int64_t i = 0; i < n; ++i) {
      const double common = g.next() - 0.5;  // correlates the components
      for (int64_t j = 0; j < p; ++j) {
        const double u = g.next();
        const double v = 0.5 * j + common + (skewed ? u * u * 2.0 : u);
        by_component[j * n + i] = v;
        by_observation[i * p + j] = v;
      }
      weights[i] = 0.25 + g.next();
    }
  }
  double at(int64_t j, int64_t i) const { return by_component[j * n + i]; }
};

// Reference state of a data set (weights optional), all in long double. The
// centre is the weighted mean, or `given` when it is non-null.
struct Reference {
  long double W = 0, W2 = 0;
  std::vector<long double> sum, mean, raw[3], central[3], cp;  // cp full p x p
  Reference(const Data& d, bool weighted, const std::vector<double>* given = nullptr) {
    const int64_t p = d.p;
    sum.assign(p, 0);
    mean.assign(p, 0);
    for (auto& r : raw) r.assign(p, 0);
    for (auto& c : central) c.assign(p, 0);
    cp.assign(p * p, 0);
    for (int64_t i = 0; i < d.n; ++i) {
      const long double w = weighted ? d.weights[i] : 1.0L;
      W += w;
      W2 += w * w;
      for (int64_t j = 0; j < p; ++j) {
        const long double x = d.at(j, i);
        sum[j] += w * x;
        const long double x2 = x * x;
        raw[0][j] += w * x2;
        raw[1][j] += w * x2 * x;
        raw[2][j] += w * x2 * x2;
      }
    }
    for (int64_t j = 0; j < p; ++j) mean[j] = given ? (*given)[j] : sum[j] / W;
    for (int64_t i = 0; i < d.n; ++i) {
      const long double w = weighted ? d.weights[i] : 1.0L;
      for (int64_t a = 0; a < p; ++a) {
        const long double da = d.at(a, i) - mean[a];
        const long double d2 = da * da;
        central[0][a] += w * d2;
        central[1][a] += w * d2 * da;
        central[2][a] += w * d2 * d2;
        for (int64_t b = 0; b < p; ++b) cp[a * p + b] += w * da * (d.at(b, i) - mean[b]);
      }
    }
  }
  long double factor() const { return W > 0 ? 1.0L / (W - W2 / W) : 1.0L; }
};

// A task over `d` with every basic result array attached. Matrix results use
// the storage words cov_storage, cor_storage, cp_storage.
template <class T>
struct Fixture {
  int64_t p, n;
  int64_t storage;
  std::vector<T> x, w;
  std::vector<T> mean, raw[3], central[3], sum, raw_sum[3], central_sum[3];
  std::vector<T> kurtosis, skewness, variation, cov, cor, cp, accw;
  int64_t cov_storage = 0, cor_storage = 0, cp_storage = 0;
  SSTask* task = nullptr;

  Fixture(const Data& d, int64_t storage_word, bool weighted, int64_t matrix_storage = 0)
      : p(d.p), n(d.n), storage(storage_word) {
    const auto& src = storage == 0x10000 ? d.by_component : d.by_observation;
    x.assign(src.begin(), src.end());
    if (weighted) w.assign(d.weights.begin(), d.weights.end());
    for (auto* v : {&mean, &sum, &kurtosis, &skewness, &variation}) v->assign(p, T(0));
    for (int k = 0; k < 3; ++k)
      for (auto* v : {&raw[k], &central[k], &raw_sum[k], &central_sum[k]}) v->assign(p, T(0));
    for (auto* v : {&cov, &cor, &cp}) v->assign(p * p, T(0));
    accw.assign(2, T(0));
    cov_storage = cor_storage = cp_storage = matrix_storage;
    EXPECT_EQ(new_task(), 0);
    for (int k = 0; k < 3; ++k) {
      edit(8 + k, raw[k]);
      edit(11 + k, central[k]);
      edit(68 + k, raw_sum[k]);
      edit(71 + k, central_sum[k]);
    }
    edit(7, mean);
    edit(67, sum);
    edit(14, kurtosis);
    edit(15, skewness);
    edit(18, variation);
    edit(19, cov);
    edit(21, cor);
    edit(74, cp);
    edit(23, accw);
    _vsliSSEditTask(task, 20, &cov_storage);
    _vsliSSEditTask(task, 22, &cor_storage);
    _vsliSSEditTask(task, 75, &cp_storage);
  }
  ~Fixture() { _vslSSDeleteTask(&task); }

  oxa_status new_task() {
    if constexpr (sizeof(T) == 8)
      return _vsldSSNewTask(&task, &p, &n, &storage, x.data(), w.empty() ? nullptr : w.data(),
                            nullptr, 1);
    else
      return _vslsSSNewTask(&task, &p, &n, &storage, x.data(), w.empty() ? nullptr : w.data(),
                            nullptr, 1);
  }
  void edit(int32_t id, std::vector<T>& v) {
    if constexpr (sizeof(T) == 8)
      _vsldSSEditTask(task, id, v.data());
    else
      _vslsSSEditTask(task, id, v.data());
  }
  oxa_status run(uint64_t estimates, int64_t method) {
    if constexpr (sizeof(T) == 8)
      return _vsldSSBasic(task, estimates, method);
    else
      return _vslsSSBasic(task, estimates, method);
  }
};

// Every estimate the basic estimator computes.
inline constexpr uint64_t kAllEstimates = 0x1ull | 0x2 | 0x4 | 0x8 | 0x10 | 0x20 | 0x40 | 0x80 |
                                          0x100 | 0x200 | 0x1000 | 0x2000 | 0x2000000 | 0x4000000 |
                                          0x8000000 | 0x10000000 | 0x20000000 | 0x40000000 |
                                          0x80000000 | 0x100000000ull;

// |got - want| <= tol * scale, reported with a label.
inline void near(long double got, long double want, long double scale, double tol, const char* what,
                 int64_t j) {
  EXPECT_LE(fabsl(got - want), tol * fabsl(scale))
      << what << "[" << j << "]: got " << double(got) << " want " << double(want);
}

}  // namespace sstest
