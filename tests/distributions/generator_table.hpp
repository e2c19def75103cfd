// Every transforming generator behind one call shape, for the table-driven
// tests: run(stream, n, out, k, single) draws n values with parameter set k
// (0 or 1) in double or single precision and widens them into out; cdf(x, k)
// is the exact distribution function (empty for the discrete generators,
// which have one precision).
#pragma once

#include <cmath>
#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "oxa/distributions.h"

namespace oxa_test {

struct Transform {
  std::string name;
  std::function<int32_t(StreamState*, int32_t, std::vector<double>&, int, bool)> run;
  std::function<double(double, int)> cdf;
  bool installs_callback = true;  // false: leaves the vector-math error mode alone
  bool discrete = false;
};

// Location and scale of the two parameter sets.
inline constexpr double kA[2] = {0.0, -3.0}, kB[2] = {1.0, 2.5};

// f(stream, n, r, k) for r of type double or float, chosen by `single`.
template <class F>
auto both(F f) {
  return [f](StreamState* s, int32_t n, std::vector<double>& out, int k, bool single) {
    const size_t size = static_cast<size_t>(n > 0 ? n : 0);
    int32_t status;
    if (single) {
      std::vector<float> r(size + 1);
      status = f(s, n, r.data(), k);
      out.assign(r.begin(), r.begin() + size);
    } else {
      out.assign(size + 1, 0.0);
      status = f(s, n, out.data(), k);
      out.resize(size);
    }
    return status;
  };
}

template <class F>
auto integers(F f) {
  return [f](StreamState* s, int32_t n, std::vector<double>& out, int k, bool) {
    std::vector<int32_t> r(static_cast<size_t>(n > 0 ? n : 0) + 1);
    const int32_t status = f(s, n, r.data(), k);
    out.assign(r.begin(), r.begin() + (n > 0 ? n : 0));
    return status;
  };
}

// One overload set per generator, so that `both` can call either precision.
template <class T>
T p(double v) { return static_cast<T>(v); }

inline double normal_cdf(double z) { return 0.5 * std::erfc(-z / std::sqrt(2.0)); }

inline std::vector<Transform> transforms() {
  std::vector<Transform> t;
  for (uint32_t m = 0; m < 3; ++m) {
    t.push_back({"Gaussian" + std::to_string(m), both([m](StreamState* s, int32_t n, auto* r, int k) {
                   using T = std::remove_pointer_t<decltype(r)>;
                   if constexpr (sizeof(T) == 8) return _vsldRngGaussian(m, s, n, r, kA[k], kB[k]);
                   else return _vslsRngGaussian(m, s, n, r, p<T>(kA[k]), p<T>(kB[k]));
                 }),
                 [](double x, int k) { return normal_cdf((x - kA[k]) / kB[k]); }});
  }
  // Lognormal: mean a, deviation 0.5 + k, displacement 1, scale 2.
  for (uint32_t m = 0; m < 2; ++m) {
    t.push_back({"Lognormal" + std::to_string(m), both([m](StreamState* s, int32_t n, auto* r, int k) {
                   using T = std::remove_pointer_t<decltype(r)>;
                   if constexpr (sizeof(T) == 8) return _vsldRngLognormal(m, s, n, r, kA[k], 0.5 + k, 1.0, 2.0);
                   else return _vslsRngLognormal(m, s, n, r, p<T>(kA[k]), 0.5f + k, 1.0f, 2.0f);
                 }),
                 [](double x, int k) {
                   return x <= 1.0 ? 0.0 : normal_cdf((std::log((x - 1.0) / 2.0) - kA[k]) / (0.5 + k));
                 }});
  }
  // Generators of the shape (method, stream, n, r, a, beta).
  auto ab = [&t](const char* name, auto fd, auto fs, std::function<double(double, int)> cdf, bool cb = true) {
    t.push_back({name, both([fd, fs](StreamState* s, int32_t n, auto* r, int k) {
                   using T = std::remove_pointer_t<decltype(r)>;
                   if constexpr (sizeof(T) == 8) return fd(0, s, n, r, kA[k], kB[k]);
                   else return fs(0, s, n, r, p<T>(kA[k]), p<T>(kB[k]));
                 }),
                 cdf, cb});
  };
  auto z = [](double x, int k) { return (x - kA[k]) / kB[k]; };
  ab("Exponential", _vsldRngExponential, _vslsRngExponential,
     [z](double x, int k) { return x <= kA[k] ? 0.0 : -std::expm1(-z(x, k)); });
  ab("Laplace", _vsldRngLaplace, _vslsRngLaplace, [z](double x, int k) {
    return z(x, k) < 0 ? 0.5 * std::exp(z(x, k)) : 1 - 0.5 * std::exp(-z(x, k));
  });
  ab("Cauchy", _vsldRngCauchy, _vslsRngCauchy, [z](double x, int k) { return 0.5 + std::atan(z(x, k)) / M_PI; },
     false);
  ab("Rayleigh", _vsldRngRayleigh, _vslsRngRayleigh,
     [z](double x, int k) { return x <= kA[k] ? 0.0 : -std::expm1(-z(x, k) * z(x, k)); });
  ab("Gumbel", _vsldRngGumbel, _vslsRngGumbel, [z](double x, int k) { return -std::expm1(-std::exp(z(x, k))); });
  // Weibull: shape 1.7, and 0.6 (an exponent above 1 for the power pass).
  static constexpr double kShape[2] = {1.7, 0.6};
  t.push_back({"Weibull", both([](StreamState* s, int32_t n, auto* r, int k) {
                 using T = std::remove_pointer_t<decltype(r)>;
                 if constexpr (sizeof(T) == 8) return _vsldRngWeibull(0, s, n, r, kShape[k], kA[k], kB[k]);
                 else return _vslsRngWeibull(0, s, n, r, p<T>(kShape[k]), p<T>(kA[k]), p<T>(kB[k]));
               }),
               [z](double x, int k) { return x <= kA[k] ? 0.0 : -std::expm1(-std::pow(z(x, k), kShape[k])); }});
  t.push_back({"Geometric", integers([](StreamState* s, int32_t n, int32_t* r, int k) {
                 return _vsliRngGeometric(0, s, n, r, k == 0 ? 0.25 : 0.6);
               }), nullptr, true, true});
  t.push_back({"Bernoulli", integers([](StreamState* s, int32_t n, int32_t* r, int k) {
                 return _vsliRngBernoulli(0, s, n, r, k == 0 ? 0.25 : 0.9);
               }), nullptr, false, true});
  return t;
}

}  // namespace oxa_test
