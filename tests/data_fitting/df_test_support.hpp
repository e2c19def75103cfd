// Shared helpers of the data-fitting tests: the reference cell, partitions
// and sites with their awkward cases, and a threading record that counts.
#pragma once

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <random>
#include <vector>

#include "oxa/data_fitting.h"
#include "oxa/service.h"

namespace df_test {

// Number of breakpoints <= t, except a site equal to the right end (cell
// nx-1) and NaN (cell 0).
template <class T>
int64_t reference_cell(const std::vector<T>& x, T t) {
  const auto nx = static_cast<int64_t>(x.size());
  if (t == x.back()) return nx - 1;
  if (std::isnan(t)) return 0;
  return std::upper_bound(x.begin(), x.end(), t) - x.begin();
}

template <class T>
std::vector<T> random_partition(int64_t nx, std::mt19937_64& g) {
  std::uniform_real_distribution<double> step(0.01, 1.0);
  std::vector<T> x(static_cast<size_t>(nx));
  double v = -3.0;
  for (auto& e : x) e = static_cast<T>(v += step(g));
  for (size_t i = 1; i < x.size(); ++i)
    if (!(x[i] > x[i - 1])) x[i] = std::nextafter(x[i - 1], T(1e30));
  return x;
}

// Dense clusters separated by wide gaps: most bins of the accelerator table
// are empty, a few hold hundreds of breakpoints.
template <class T>
std::vector<T> clustered_partition(int64_t nx, std::mt19937_64& g) {
  std::vector<T> x(static_cast<size_t>(nx));
  std::uniform_real_distribution<double> tiny(1e-4, 2e-4);
  double v = 0.0;
  for (int64_t i = 0; i < nx; ++i) {
    v += (i % 500 == 0) ? 1000.0 : tiny(g);
    x[static_cast<size_t>(i)] = static_cast<T>(v);
  }
  for (size_t i = 1; i < x.size(); ++i)
    if (!(x[i] > x[i - 1])) x[i] = std::nextafter(x[i - 1], T(1e30));
  return x;
}

// Sites below, above and equal to every breakpoint, between neighbours, NaN
// and infinities, plus random ones.
template <class T>
std::vector<T> awkward_sites(const std::vector<T>& x, std::mt19937_64& g, size_t random_count) {
  const T inf = std::numeric_limits<T>::infinity();
  std::vector<T> s{x.front() - 1,
                   x.back() + 1,
                   -inf,
                   inf,
                   std::numeric_limits<T>::quiet_NaN(),
                   std::nextafter(x.front(), -inf),
                   std::nextafter(x.back(), inf)};
  for (size_t i = 0; i < x.size(); ++i) {
    s.push_back(x[i]);
    if (i + 1 < x.size()) s.push_back(x[i] + (x[i + 1] - x[i]) / 2);
  }
  std::uniform_real_distribution<double> u(static_cast<double>(x.front()) - 1,
                                           static_cast<double>(x.back()) + 1);
  for (size_t i = 0; i < random_count; ++i) s.push_back(static_cast<T>(u(g)));
  return s;
}

// A threading record with a chosen thread count; the parallel-for runs the
// iterations on the calling thread in reverse order, so a body that depends
// on running order or on the calling thread shows up.
struct CountingThreading {
  static inline int32_t threads = 1;
  static inline int64_t parallel_calls = 0;
  static inline int64_t last_iterations = 0;
  static inline int32_t last_threads = 0;
  static inline bool hint_seen = false;
  static void parallel_for(int64_t n, int32_t nthreads, void* ctx, oxa_parallel_body body) {
    ++parallel_calls;
    last_iterations = n;
    last_threads = nthreads;
    for (int64_t i = n - 1; i >= 0; --i) body(ctx, i, static_cast<int32_t>(i % nthreads), nthreads);
  }
  static int32_t get_num_threads(const DfThreadingHint* hint) {
    hint_seen = hint != nullptr;
    return threads;
  }
  static DfThreading record(int32_t t) {
    threads = t;
    parallel_calls = 0;
    return DfThreading{&parallel_for, nullptr, nullptr, nullptr, &get_num_threads};
  }
};

}  // namespace df_test
