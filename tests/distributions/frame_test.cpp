// What every transforming generator owes its caller besides the values: how
// many uniforms it draws and in which requests, the stream position it
// leaves, the finite stand-ins for special kernel results, and the caller's
// vector-math mode and callback put back on every path.
#include <gtest/gtest.h>

#include <cmath>
#include <thread>
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
  for (const Plan& p : kPlans)
    if (generator == p.name) return p;
  ADD_FAILURE() << "no plan for " << generator;
  return kPlans[0];
}

int32_t total(const std::vector<int32_t>& v) {
  int32_t t = 0;
  for (int32_t x : v) t += x;
  return t;
}

// Each generator in each precision it has.
template <class F>
void for_each_generator(F f) {
  for (const auto& g : oxa_test::transforms())
    for (bool single : {false, true})
      if (!(single && g.discrete)) f(g, single, g.name + (single ? " single" : " double"));
}

int32_t run(const oxa_test::Transform& g, StreamState* s, int32_t n, bool single) {
  std::vector<double> out;
  return g.run(s, n, out, 0, single);
}

TEST(Generators, DrawUniformsInTheirBlocksAndAdvanceTheStreamByThem) {
  for_each_generator([](const oxa_test::Transform& g, bool single, const std::string& what) {
    const Plan& plan = plan_of(g.name);
    for (size_t k = 0; k < kCounts.size(); ++k) {
      const int32_t n = kCounts[k];
      Stream fake(oxa_test::scripted_id(), {});
      script().reset({0.3, 0.7, 0.1, 0.9});
      ASSERT_EQ(run(g, fake.get(), n, single), 0) << what;
      EXPECT_EQ(script().counts(), plan.requests[k]) << what << " n=" << n;
      for (const auto& r : script().requests) EXPECT_EQ(r.single, single || g.discrete) << what;

      // A real stream ends where a copy skipped by the same count ends.
      Stream s(OXA_BRNG_MCG31M1, {20261121}), copy(s);
      ASSERT_EQ(run(g, s.get(), n, single), 0);
      ASSERT_EQ(_vslSkipAheadStream(copy.get(), static_cast<uint64_t>(total(plan.requests[k]))), 0);
      EXPECT_EQ(oxa_test::reals(s, 3), oxa_test::reals(copy, 3)) << what << " n=" << n;
    }
    Stream fake(oxa_test::scripted_id(), {});
    script().reset({0.5});
    for (int32_t n : {0, -5}) EXPECT_EQ(run(g, fake.get(), n, single), 0) << what;
    EXPECT_TRUE(script().requests.empty()) << what << ": n < 1 draws nothing";
  });
}

int32_t user_callback(VmlErrorContext*) { return 1; }

TEST(Generators, PutBackTheCallersModeAndCallbackOnEveryPath) {
  const uint32_t modes[] = {OXA_VML_DEFAULT_MODE,  // empty denormal field
                            OXA_VML_LA | OXA_VML_ERRMODE_ERRNO | OXA_VML_DENORMAL_FLUSH};
  // Never fail; fail at the first request; fail at the second (a block done).
  const int32_t failures[] = {-1, 0, 1};
  for_each_generator([&](const oxa_test::Transform& g, bool single, const std::string& what) {
    for (uint32_t mode : modes) {
      for (VmlErrorCallBack cb : {static_cast<VmlErrorCallBack>(nullptr), &user_callback}) {
        for (int32_t fail : failures) {
          oxa_vml_kernel_SetErrorCallBack(cb);
          oxa_vml_kernel_SetMode(mode);
          const uint32_t before = oxa_vml_kernel_GetMode();
          Stream fake(oxa_test::scripted_id(), {});
          script().reset({0.0, 0.25, 0.5, 0.999}, fail);
          const int32_t status = run(g, fake.get(), 2049, single);
          const bool failed = fail >= 0 && fail < static_cast<int32_t>(script().requests.size());
          EXPECT_EQ(status, failed ? oxa_test::kScriptedFailure : 0) << what;
          EXPECT_EQ(oxa_vml_kernel_GetMode(), before) << what << " fail=" << fail;
          EXPECT_EQ(oxa_vml_kernel_GetErrorCallBack(), cb) << what << " fail=" << fail;
          // While drawing, the generator's own frame was in force.
          for (const auto& r : script().requests) {
            if (g.installs_callback) {
              EXPECT_EQ(r.mode & OXA_VML_ERRMODE_MASK, uint32_t{OXA_VML_ERRMODE_CALLBACK}) << what;
              EXPECT_NE(r.callback, cb) << what;
            } else {
              EXPECT_EQ(r.mode, before) << what;
            }
          }
        }
      }
    }
  });
  oxa_vml_kernel_ClearErrorCallBack();
  oxa_vml_kernel_SetMode(OXA_VML_DEFAULT_MODE);
}

// Uniforms of exactly 0 (-1 for the inverse CDF) reach the output as the
// callbacks' finite stand-ins (parameter set 0: location 0, scale 1).
TEST(Generators, SpecialKernelResultsBecomeFiniteStandIns) {
  const double ln0 = -744.4400719213812, ln0f = -103.27893;
  const double erfinv1 = 5.8635847487551676, erfinv1f = 3.8325069;
  struct Case {
    const char* name;
    bool single;
    std::vector<double> units;
    double want;
  };
  const Case cases[] = {
      {"Gaussian0", false, {0.0, 0.25}, std::sqrt(-2 * ln0)},
      {"Gaussian0", true, {0.0, 0.25}, std::sqrt(-2 * ln0f)},
      {"Gaussian1", false, {0.0, 0.0}, std::sqrt(-2 * ln0)},  // odd count: cosine of a fresh pair
      {"Gaussian2", false, {0.0}, -std::sqrt(2.0) * erfinv1},
      {"Gaussian2", true, {0.0}, -std::sqrt(2.0) * erfinv1f},
      {"Exponential", false, {0.0}, -ln0},
      {"Exponential", true, {0.0}, -ln0f},
      {"Rayleigh", false, {0.0}, std::sqrt(-ln0)},
      {"Weibull", false, {0.0}, std::pow(-ln0, 1 / 1.7)},
      {"Laplace", false, {0.0, 0.25}, -ln0},
      {"Geometric", false, {0.0}, std::floor(ln0f / std::log(0.75))},
  };
  for (const Case& c : cases) {
    for (const auto& g : oxa_test::transforms()) {
      if (g.name != c.name) continue;
      Stream fake(oxa_test::scripted_id(), {});
      script().reset(c.units);
      std::vector<double> out;
      ASSERT_EQ(g.run(fake.get(), 1, out, 0, c.single), 0);
      EXPECT_NEAR(out[0], c.want, (c.single ? 1e-3 : 1e-7) * std::fabs(c.want)) << c.name << c.single;
    }
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

// Threads with their own streams and modes generate at once: each keeps its
// mode and gets the values a lone run gives.
TEST(Generators, ThreadsDoNotShareTheFrame) {
  auto work = [](uint32_t mode, uint32_t seed, std::vector<double>* out, bool* kept) {
    oxa_vml_kernel_SetMode(mode);
    const uint32_t before = oxa_vml_kernel_GetMode();
    Stream s(OXA_BRNG_MCG59, {seed});
    out->resize(5000);
    for (int round = 0; round < 20; ++round)
      _vsldRngGaussian(OXA_RNG_METHOD_GAUSSIAN_BOXMULLER2, s.get(), 5000, out->data(), 0.0, 1.0);
    *kept = oxa_vml_kernel_GetMode() == before;
  };
  std::vector<double> lone, a, b;
  bool lone_kept = false, a_kept = false, b_kept = false;
  work(OXA_VML_DEFAULT_MODE, 1, &lone, &lone_kept);
  std::thread ta(work, uint32_t{OXA_VML_DEFAULT_MODE}, 1u, &a, &a_kept);
  std::thread tb(work, uint32_t{OXA_VML_EP | OXA_VML_ERRMODE_IGNORE}, 2u, &b, &b_kept);
  ta.join();
  tb.join();
  EXPECT_TRUE(lone_kept && a_kept && b_kept);
  EXPECT_EQ(a, lone);
}

}  // namespace
