// Validation of basic-estimator calls: method words, missing result fields
// (lowest internal bit first), the data description, and the kernel tables.
#include <cstring>

#include "summary_stats/basic_fixture.hpp"
#include "summary_stats/basic_kernel.hpp"
#include "summary_stats/edit_task.hpp"
#include "summary_stats/task.hpp"

namespace {

using sstest::Data;
using sstest::Fixture;

TEST(SummaryStatsBasicValidation, MethodWords) {
  const Data d(2, 40, 1);
  struct Case {
    int64_t method;
    oxa_status expect;
  } cases[] = {{0x1, 0},       {0x2, 0},     {0x100, 0},     {0x3, -4029}, {0x101, -4029},
               {0x102, -4029}, {0x0, -4029}, {0x800, -4029}, {0x200, 0},   {0x400, 0},
               {0x600, 0},     {0x202, 0},   {0x4, -4029}};
  for (const Case& c : cases) {
    Fixture<double> f(d, 0x20000, false);
    EXPECT_EQ(f.run(0x1 | 0x10, c.method), c.expect) << std::hex << c.method;
  }
}

// Removing fields one at a time: the code is that of the lowest internal bit
// that is required (requested or implied) but absent.
TEST(SummaryStatsBasicValidation, LowestMissingFieldFirst) {
  const Data d(2, 40, 1);
  struct Case {
    uint64_t estimates;
    int64_t method;
    std::vector<int32_t> removed_ids;
    oxa_status expect;
  } cases[] = {
      {0x80, 0x2, {13}, -4012},         // kurtosis needs central 4
      {0x80, 0x2, {13, 11}, -4010},     // ... and central 2, a lower bit
      {0x80, 0x2, {14}, -4013},         // the kurtosis field itself
      {0x80, 0x2, {13, 14, 8}, -4007},  // raw 2 is implied by central 2
      {0x1000, 0x2, {7}, -4006},        // covariance needs the mean
      {0x2000, 0x2, {21, 19}, -4019},   // correlation does not need the covariance
      {0x20000000, 0x2, {8}, 0},        // one-pass central sum 2: mean only
      {0x20000000, 0x1, {8}, -4007},    // fast: from raw moment 2
      {0x80000000, 0x1, {9}, -4008},   {0x100000000, 0x2, {74}, -4081},
      {0x2000000, 0x2, {67}, -4074},  // the estimator's own code for the sum
      {0x10, 0x200, {71}, -4078},     // conversion: central moment from its sum
      {0x1, 0x200, {67}, -4074},       {0x2000000, 0x200, {}, -4029},  // sums cannot be converted
      {0x100000000, 0x400, {}, -4029}, {0x200, 0x200, {}, 0},  // variation from existing moments
  };
  for (const Case& c : cases) {
    Fixture<double> f(d, 0x20000, false);
    for (int32_t id : c.removed_ids) *oxa::ss::field_slot(*f.task, id) = nullptr;
    EXPECT_EQ(f.run(c.estimates, c.method), c.expect)
        << std::hex << c.estimates << " method " << c.method;
  }
}

TEST(SummaryStatsBasicValidation, DataDescriptionAndUntouchedResults) {
  const Data d(3, 50, 2);
  const int64_t zero = 0, bad_storage = 0x40000;
  for (int which = 0; which < 6; ++which) {
    Fixture<double> f(d, 0x10000, true);
    std::fill(f.mean.begin(), f.mean.end(), 7.0);
    oxa_status expect = 0;
    int64_t method = 0x2;
    switch (which) {
      case 0:
        f.task->n_observations = nullptr;
        expect = -4002;
        break;
      case 1:
        f.task->n_observations = &zero;
        expect = -4002;
        break;
      case 2:
        f.task->observations = nullptr;
        expect = -4032;
        break;
      case 3:
        f.task->x_storage = nullptr;
        expect = -4044;
        break;
      case 4:
        f.task->x_storage = &bad_storage;
        expect = -4003;
        break;
      case 5:  // conversion with weights but no accumulated weights
        f.task->accumulated_weights = nullptr;
        method = 0x200;
        expect = -4020;
        break;
    }
    EXPECT_EQ(f.run(0x1 | 0x1000, method), expect) << which;
    EXPECT_EQ(f.mean, std::vector<double>(3, 7.0)) << "results touched by a failed call";
    EXPECT_EQ(f.accw, std::vector<double>(2, 0.0));
  }
  EXPECT_EQ(_vsldSSBasic(nullptr, 1, 2), -4031);
}

TEST(SummaryStatsBasicValidation, ThirtyTwoBitIntegers) {
  const Data d(3, 64, 4);
  std::vector<double> x = d.by_observation, mean(3), cov(9), accw(2);
  const int32_t p = 3, n = 64, storage = 0x20000, cov_storage = 0;
  const int32_t flags[3] = {1, 0, 1};
  SSTask* task = nullptr;
  ASSERT_EQ(_vsldSSNewTask(&task, &p, &n, &storage, x.data(), nullptr, flags, 0), 0);
  _vsldSSEditCovCor(task, mean.data(), cov.data(), &cov_storage, nullptr, nullptr);
  _vsldSSEditTask(task, 23, accw.data());
  ASSERT_EQ(_vsldSSBasic(task, 0x1 | 0x1000, 0x2), 0);
  const sstest::Reference ref(d, false);
  EXPECT_NEAR(mean[2], double(ref.mean[2]), 1e-14);
  EXPECT_EQ(mean[1], 0.0);
  EXPECT_NEAR(cov[2], double(ref.cp[2] * ref.factor()), 1e-14);
  EXPECT_EQ(accw[0], 64.0);
  _vslSSDeleteTask(&task);
}

// The kernel tables: a plan's kernel sits at the index of the member whose
// name describes it.
TEST(SummaryStatsBasicValidation, KernelTableOrderMatchesNames) {
  using oxa::ss::kBasicKernelNames;
  using oxa::ss::Method;
  const auto& t = oxa::ss::basic_kernel_tables<double>();
  struct Case {
    Method method;
    bool by_obs, weighted, cp;
    int level;
    const char* name;
  } cases[] = {
      {Method::OnePass, false, true, true, 2, "_vSSBasic1pRWR12__C2__C"},
      {Method::OnePass, true, false, false, 3, "_vSSBasic1pC_R1234C234_"},
      {Method::Fast, true, true, false, 2, "_vSSBasicFastCWR123_"},
      {Method::GivenMean, true, false, false, 2, "_vSSBasic2pC_R____C234"},
      {Method::GivenMean, false, true, false, 3, "_vSSBasic2pRWR_234C234"},
  };
  for (const Case& c : cases) {
    const oxa::ss::Plan plan{c.method, c.level, c.cp, 1, 0};
    const auto kernel = oxa::ss::choose_kernel<double>(plan, c.by_obs, c.weighted);
    int index = -1;
    for (int i = 0; i < 32; ++i)
      if (t.one_pass[i] == kernel) index = i;
    for (int i = 0; i < 16; ++i)
      if (t.fast[i] == kernel) index = 32 + i;
    for (int i = 0; i < 16; ++i)
      if (t.given_mean[i] == kernel) index = 48 + i;
    ASSERT_GE(index, 0) << c.name;
    EXPECT_STREQ(kBasicKernelNames[index], c.name);
  }
}

}  // namespace
