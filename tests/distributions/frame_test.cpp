// What every transforming generator owes its caller besides the values: how
// many uniforms it draws and in which requests, the stream position it
// leaves, the finite stand-ins for special kernel results, and the caller's
// vector-math mode and callback put back on every path.
#include <gtest/gtest.h>

#include <cmath>
#include <vector>

#include "distributions/callbacks.hpp"
#include "distributions/generator_table.hpp"
#include "distributions/scripted_brng.hpp"
#include "oxa/distributions.h"
#include "streams/stream_fixture.hpp"

using oxa_test::Stream;
using oxa_test::script;

namespace {

const std::vector<int32_t> kCounts = {1, 1023, 1024, 1025, 2049};

// Requests per generator for each n of kCounts.
struct Plan {
  const char* name;
  std::vector<std::vector<int32_t>> requests;
};
const Plan kPlans[] = {
    {"Gaussian0", {{2}, {2046}, {2048}, {2048, 2}, {2048, 2048, 2}}},
    {"Gaussian1", {{2}, {1022, 2}, {1024}, {1024, 2}, {1024, 1024, 2}}},
    {"Gaussian2", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Lognormal0", {{2}, {1022, 2}, {1024}, {1024, 2}, {1024, 1024, 2}}},
    {"Lognormal1", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Exponential", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Laplace", {{2}, {2046}, {2048}, {2048, 2}, {2048, 2048, 2}}},
    {"Weibull", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Cauchy", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Rayleigh", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Gumbel", {{1}, {1023}, {1024}, {1025}, {2049}}},
    {"Geometric", {{1}, {1023}, {1024}, {1024, 1}, {1024, 1024, 1}}},
    {"Bernoulli", {{1}, {1023}, {1024}, {1025}, {2049}}},
};

const Plan& plan_of(const std::string& generator) {
  const std::string base = generator[0] == 'd' || generator[0] == 's' ? generator.substr(1) : generator;
  for (const Plan& p : kPlans)
    if (base == p.name) return p;
  ADD_FAILURE() << "no plan for " << generator;
  return kPlans[0];
}

int32_t total(const std::vector<int32_t>& v) {
  int32_t t = 0;
  for (int32_t x : v) t += x;
  return t;
}

TEST(Generators, DrawUniformsInTheirBlocksAndAdvanceTheStreamByThem) {
  const auto generators = oxa_test::transforming_generators();
  for (const auto& g : generators) {
    const Plan& plan = plan_of(g.name);
    const bool single = g.name[0] == 's' || g.name == "Geometric" || g.name == "Bernoulli";
    for (size_t k = 0; k < kCounts.size(); ++k) {
      const int32_t n = kCounts[k];
      Stream fake(oxa_test::scripted_id(), {});
      script().reset({0.3, 0.7, 0.1, 0.9});
      ASSERT_EQ(g.call(fake.get(), n).status, 0) << g.name;
      EXPECT_EQ(script().counts(), plan.requests[k]) << g.name << " n=" << n;
      for (const auto& r : script().requests) EXPECT_EQ(r.single, single) << g.name;

      // A real stream ends where a copy skipped by the same count ends.
      Stream s(OXA_BRNG_MCG31M1, {20261121}), copy(s);
      ASSERT_EQ(g.call(s.get(), n).status, 0);
      ASSERT_EQ(_vslSkipAheadStream(copy.get(), static_cast<uint64_t>(total(plan.requests[k]))), 0);
      EXPECT_EQ(oxa_test::reals(s, 3), oxa_test::reals(copy, 3)) << g.name << " n=" << n;
    }
    Stream fake(oxa_test::scripted_id(), {});
    script().reset({0.5});
    for (int32_t n : {0, -5}) {
      EXPECT_EQ(g.call(fake.get(), n).status, 0) << g.name;
    }
    EXPECT_TRUE(script().requests.empty()) << g.name << ": n < 1 draws nothing";
  }
}

int32_t user_callback(VmlErrorContext*) { return 1; }

TEST(Generators, PutBackTheCallersModeAndCallbackOnEveryPath) {
  const auto generators = oxa_test::transforming_generators();
  const uint32_t modes[] = {OXA_VML_DEFAULT_MODE,  // empty denormal field
                            OXA_VML_LA | OXA_VML_ERRMODE_ERRNO | OXA_VML_DENORMAL_FLUSH};
  // Fail at the first request, and at the second (after a block is done).
  const int32_t failures[] = {-1, 0, 1};
  for (const auto& g : generators) {
    for (uint32_t mode : modes) {
      for (VmlErrorCallBack cb : {static_cast<VmlErrorCallBack>(nullptr), &user_callback}) {
        for (int32_t fail : failures) {
          oxa_vml_kernel_SetErrorCallBack(cb);
          oxa_vml_kernel_SetMode(mode);
          const uint32_t before = oxa_vml_kernel_GetMode();
          Stream fake(oxa_test::scripted_id(), {});
          script().reset({0.0, 0.25, 0.5, 0.999}, fail);
          const int32_t status = g.call(fake.get(), 2049).status;
          EXPECT_EQ(status, fail < 0 || fail >= static_cast<int32_t>(script().requests.size())
                                ? 0
                                : oxa_test::kScriptedFailure)
              << g.name;
          EXPECT_EQ(oxa_vml_kernel_GetMode(), before) << g.name << " fail=" << fail;
          EXPECT_EQ(oxa_vml_kernel_GetErrorCallBack(), cb) << g.name << " fail=" << fail;
          // While drawing, the generator's own frame was in force.
          for (const auto& r : script().requests) {
            if (g.installs_callback) {
              EXPECT_EQ(r.mode & OXA_VML_ERRMODE_MASK, uint32_t{OXA_VML_ERRMODE_CALLBACK}) << g.name;
              EXPECT_NE(r.callback, cb) << g.name;
            } else {
              EXPECT_EQ(r.mode, before) << g.name;
            }
          }
        }
      }
    }
  }
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_DEFAULT_MODE);
}

// Uniforms of exactly 0 (and -1 for the inverse CDF) reach the output as the
// callbacks' finite stand-ins.
TEST(Generators, SpecialKernelResultsBecomeFiniteStandIns) {
  const double ln0 = -744.4400719213812, ln0f = -103.27893;
  const double erfinv1 = 5.8635847487551676, erfinv1f = 3.8325069;
  struct Case {
    const char* what;
    std::vector<double> units;
    std::function<double(StreamState*)> run;
    double want;
    double tolerance;
  };
  auto d1 = [](auto f) {
    return [f](StreamState* s) {
      double r[2] = {0, 0};
      EXPECT_EQ(f(s, r), 0);
      return r[0];
    };
  };
  auto f1 = [](auto f) {
    return [f](StreamState* s) {
      float r[2] = {0, 0};
      EXPECT_EQ(f(s, r), 0);
      return static_cast<double>(r[0]);
    };
  };
  const Case cases[] = {
      {"dBoxMuller", {0.0, 0.25}, d1([](StreamState* s, double* r) { return _vsldRngGaussian(0, s, 1, r, 1.0, 2.0); }),
       1.0 + 2.0 * std::sqrt(-2 * ln0), 1e-6},
      {"sBoxMuller", {0.0, 0.25}, f1([](StreamState* s, float* r) { return _vslsRngGaussian(0, s, 1, r, 1.0f, 2.0f); }),
       1.0 + 2.0 * std::sqrt(-2 * ln0f), 1e-3},
      {"dBoxMuller2 odd", {0.0, 0.0}, d1([](StreamState* s, double* r) { return _vsldRngGaussian(1, s, 1, r, 1.0, 2.0); }),
       1.0 + 2.0 * std::sqrt(-2 * ln0), 1e-6},
      {"dICDF", {0.0}, d1([](StreamState* s, double* r) { return _vsldRngGaussian(2, s, 1, r, 1.0, 2.0); }),
       1.0 - 2.0 * std::sqrt(2.0) * erfinv1, 1e-6},
      {"sICDF", {0.0}, f1([](StreamState* s, float* r) { return _vslsRngGaussian(2, s, 1, r, 1.0f, 2.0f); }),
       1.0 - 2.0 * std::sqrt(2.0) * erfinv1f, 1e-3},
      {"dExponential", {0.0}, d1([](StreamState* s, double* r) { return _vsldRngExponential(0, s, 1, r, 1.0, 2.0); }),
       1.0 - 2.0 * ln0, 1e-9},
      {"sExponential", {0.0}, f1([](StreamState* s, float* r) { return _vslsRngExponential(0, s, 1, r, 1.0f, 2.0f); }),
       1.0 - 2.0 * ln0f, 1e-3},
      {"dRayleigh", {0.0}, d1([](StreamState* s, double* r) { return _vsldRngRayleigh(0, s, 1, r, 1.0, 2.0); }),
       1.0 + 2.0 * std::sqrt(-ln0), 1e-6},
      {"dWeibull", {0.0}, d1([](StreamState* s, double* r) { return _vsldRngWeibull(0, s, 1, r, 0.5, 1.0, 2.0); }),
       1.0 + 2.0 * ln0 * ln0, 1e-3},
      {"dLaplace", {0.0, 0.25}, d1([](StreamState* s, double* r) { return _vsldRngLaplace(0, s, 1, r, 1.0, 2.0); }),
       1.0 - 2.0 * ln0, 1e-9},
      {"Geometric", {0.0}, [](StreamState* s) {
         int32_t r[1];
         EXPECT_EQ(_vsliRngGeometric(0, s, 1, r, 0.5), 0);
         return static_cast<double>(r[0]);
       }, std::floor(ln0f / std::log(0.5)), 0.0},
  };
  for (const Case& c : cases) {
    Stream fake(oxa_test::scripted_id(), {});
    script().reset(c.units);
    EXPECT_NEAR(c.run(fake.get()), c.want, c.tolerance * std::fabs(c.want)) << c.what;
  }
}

TEST(Callbacks, ReplaceOnlyTheStatusesTheyOwn) {
  struct Case {
    VmlErrorCallBack cb;
    int32_t code;
    double arg;
    double want;  // NaN: left alone
  };
  const double keep = std::nan(""), ln0 = -744.4400719213812, e1 = 5.8635847487551676;
  const float ln0f = -103.27893f, e1f = 3.8325069f;
  const Case cases[] = {
      {_vdCallBack, 2, 0.0, ln0},     {_vdCallBack, 2, 1.0, e1},   {_vdCallBack, 2, -1.0, -e1},
      {_vdCallBack, 1, -2.0, -e1},    {_vdCallBack, 1, 2.0, e1},   {_vdCallBack, 3, 1.0, keep},
      {_vdLnCallBack, 2, 0.0, ln0},   {_vdLnCallBack, 1, -1.0, keep},
      {_vsCallBack, 2, 0.0, ln0f},    {_vsCallBack, 2, -1.0, -e1f}, {_vsCallBack, 4, 1.0, keep},
      {_vsLnCallBack, 2, 0.0, ln0f},  {_vsLnCallBack, 1, -1.0, ln0f},
  };
  for (const Case& c : cases) {
    VmlErrorContext ctx{};
    ctx.code = c.code;
    ctx.arg1 = ctx.arg2 = c.arg;
    ctx.res1 = ctx.res2 = 42.0;
    EXPECT_EQ(c.cb(&ctx), 0);
    const double want = std::isnan(c.want) ? 42.0 : c.want;
    EXPECT_EQ(ctx.res1, want) << c.code << " " << c.arg;
    EXPECT_EQ(ctx.res2, want) << c.code << " " << c.arg;
  }
}

// Box-Muller2 writes the sine variate of a pair first and the cosine one
// after it; an odd count ends with a cosine variate of a fresh pair.
TEST(Gaussian, BoxMuller2PairsAndOddCount) {
  for (int32_t n : {7, 1024, 1027}) {
    Stream s(OXA_BRNG_MCG59, {99}), copy(s);
    std::vector<double> r(n);
    ASSERT_EQ(_vsldRngGaussian(OXA_RNG_METHOD_GAUSSIAN_BOXMULLER2, s.get(), n, r.data(), 0.0, 1.0), 0);
    const std::vector<double> u = oxa_test::reals(copy, n + (n & 1));
    for (int32_t k = 0; 2 * k < n; ++k) {
      const double q = std::sqrt(-2 * std::log(u[2 * k])), t = 2 * M_PI * u[2 * k + 1];
      if (2 * k + 1 < n) {
        ASSERT_NEAR(r[2 * k], q * std::sin(t), 1e-6) << n << " " << k;
        ASSERT_NEAR(r[2 * k + 1], q * std::cos(t), 1e-6) << n << " " << k;
      } else {
        ASSERT_NEAR(r[2 * k], q * std::cos(t), 1e-6) << n << " last";
      }
    }
  }
}

TEST(Generators, RejectParametersOutsideTheirDomain) {
  Stream fake(oxa_test::scripted_id(), {});
  script().reset({0.5});
  double d[4];
  int32_t i[4];
  const double mean[2] = {0, 0}, factor[4] = {1, 0, 0, 1};
  EXPECT_EQ(_vsldRngGaussian(3, fake.get(), 4, d, 0.0, 1.0), VSL_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(_vsldRngGaussianMV(0, fake.get(), 2, d, 0, OXA_MATRIX_STORAGE_FULL, mean, factor),
            VSL_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(_vsldRngGaussianMV(0, fake.get(), 2, d, 2, 3, mean, factor), VSL_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(_vsliRngBernoulli(0, fake.get(), 4, i, std::nan("")), VSL_ERROR_BAD_ARGUMENT);
  for (double p : {0.0, -0.5, 1.5, std::nan("")})
    EXPECT_EQ(_vsliRngGeometric(0, fake.get(), 4, i, p), VSL_ERROR_BAD_ARGUMENT) << p;
  EXPECT_TRUE(script().requests.empty()) << "rejected calls draw nothing";
}

}  // namespace
