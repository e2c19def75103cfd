// Every transforming generator behind one call shape, for the table-driven
// tests: call(stream, n) runs it with fixed parameters and returns the status
// and the values as doubles.
#pragma once

#include <cstdint>
#include <functional>
#include <string>
#include <vector>

#include "oxa/distributions.h"

namespace oxa_test {

struct Outcome {
  int32_t status;
  std::vector<double> values;
};

struct Transform {
  std::string name;
  std::function<Outcome(StreamState*, int32_t)> call;
  bool installs_callback;  // false: the generator leaves the error mode alone
};

template <class T, class F>
std::function<Outcome(StreamState*, int32_t)> wrap(F f) {
  return [f](StreamState* s, int32_t n) {
    std::vector<T> r(static_cast<size_t>(n > 0 ? n : 1));
    const int32_t status = f(s, n, r.data());
    return Outcome{status, std::vector<double>(r.begin(), r.begin() + (n > 0 ? n : 0))};
  };
}

// Both precisions of a generator whose parameters are (a, b).
template <class D, class S>
void add_pair(std::vector<Transform>& g, const std::string& name, D d, S s, bool cb = true) {
  g.push_back({"d" + name, wrap<double>(d), cb});
  g.push_back({"s" + name, wrap<float>(s), cb});
}

inline std::vector<Transform> transforming_generators() {
  std::vector<Transform> g;
  for (uint32_t m = 0; m < 3; ++m) {
    add_pair(g, "Gaussian" + std::to_string(m),
             [m](StreamState* s, int32_t n, double* r) { return _vsldRngGaussian(m, s, n, r, 1.0, 2.0); },
             [m](StreamState* s, int32_t n, float* r) { return _vslsRngGaussian(m, s, n, r, 1.0f, 2.0f); });
  }
  for (uint32_t m = 0; m < 2; ++m) {
    add_pair(g, "Lognormal" + std::to_string(m),
             [m](StreamState* s, int32_t n, double* r) { return _vsldRngLognormal(m, s, n, r, 0.0, 0.5, 1.0, 2.0); },
             [m](StreamState* s, int32_t n, float* r) { return _vslsRngLognormal(m, s, n, r, 0.0f, 0.5f, 1.0f, 2.0f); });
  }
  add_pair(g, "Exponential",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngExponential(0, s, n, r, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngExponential(0, s, n, r, 1.0f, 2.0f); });
  add_pair(g, "Laplace",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngLaplace(0, s, n, r, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngLaplace(0, s, n, r, 1.0f, 2.0f); });
  add_pair(g, "Weibull",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngWeibull(0, s, n, r, 2.0, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngWeibull(0, s, n, r, 2.0f, 1.0f, 2.0f); });
  add_pair(g, "Cauchy",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngCauchy(0, s, n, r, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngCauchy(0, s, n, r, 1.0f, 2.0f); },
           false);
  add_pair(g, "Rayleigh",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngRayleigh(0, s, n, r, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngRayleigh(0, s, n, r, 1.0f, 2.0f); });
  add_pair(g, "Gumbel",
           [](StreamState* s, int32_t n, double* r) { return _vsldRngGumbel(0, s, n, r, 1.0, 2.0); },
           [](StreamState* s, int32_t n, float* r) { return _vslsRngGumbel(0, s, n, r, 1.0f, 2.0f); });
  g.push_back({"Geometric", wrap<int32_t>([](StreamState* s, int32_t n, int32_t* r) {
                 return _vsliRngGeometric(0, s, n, r, 0.25);
               }), true});
  g.push_back({"Bernoulli", wrap<int32_t>([](StreamState* s, int32_t n, int32_t* r) {
                 return _vsliRngBernoulli(0, s, n, r, 0.25);
               }), false});
  return g;
}

}  // namespace oxa_test
