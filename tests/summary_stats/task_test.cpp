// Task creation, the editors' parameter tables, grouped editors and deletion.
#include "summary_stats/task.hpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <vector>

#include "oxa/service.h"
#include "oxa/summary_stats.h"
#include "summary_stats/edit_task.hpp"

namespace {

using oxa::ss::FieldKind;

TEST(SummaryStatsTask, CreationChecksInOrder) {
  const int32_t p3 = 3, p0 = 0, n5 = 5, n0 = 0, rows = 0x10000, cols = 0x20000, bad = 0x30000;
  double x[15] = {};
  struct Case {
    const int32_t *p, *n, *storage;
    const double* x;
    int32_t width;
    oxa_status expect;
  } cases[] = {
      {nullptr, &n5, &rows, x, 0, -4001},
      {&p0, &n5, &rows, x, 0, -4001},
      {&p3, &n5, nullptr, x, 0, -4044},
      {&p3, &n5, &bad, x, 0, -4003},
      {&p3, nullptr, &rows, x, 0, -4002},
      {&p3, &n0, &cols, x, 0, -4002},
      {&p3, nullptr, nullptr, nullptr, 0, 0},  // data described later
      {&p3, &n0, &bad, nullptr, 0, 0},
      {&p3, &n5, &cols, x, 0, 0},
      {&p3, &n5, &rows, x, 2, -3},
  };
  for (const Case& c : cases) {
    SSTask* task = nullptr;
    const oxa_status s = _vsldSSNewTask(&task, c.p, c.n, c.storage, c.x, nullptr, nullptr, c.width);
    EXPECT_EQ(s, c.expect) << "case " << (&c - cases);
    EXPECT_EQ(task != nullptr, s == 0);
    if (task != nullptr) {
      EXPECT_EQ(task->work_a, 2);
      EXPECT_EQ(task->work_b, 1);
      EXPECT_EQ(task->observations, c.x);
      EXPECT_EQ(_vslSSDeleteTask(&task), 0);
      EXPECT_EQ(task, nullptr);
    }
  }
}

TEST(SummaryStatsTask, SixtyFourBitIntegersAndSignExtension) {
  // 64-bit p whose low 32 bits are 1 but whose value is huge negative: a
  // reader using the wrong width would accept it.
  const int64_t p_bad = INT64_MIN + 1, p_ok = 4, n = 10, rows = 0x10000;
  float x[40] = {};
  SSTask* task = nullptr;
  EXPECT_EQ(_vslsSSNewTask(&task, &p_bad, &n, &rows, x, nullptr, nullptr, 1), -4001);
  ASSERT_EQ(_vslsSSNewTask(&task, &p_ok, &n, &rows, x, nullptr, nullptr, 1), 0);
  EXPECT_EQ(oxa::ss::read_int(*task, task->dimension), 4);
  _vslSSDeleteTask(&task);
  const int32_t minus_one = -1;  // a 32-bit -1 must widen to -1, not 2^32 - 1
  EXPECT_EQ(_vsldSSNewTask(&task, &minus_one, nullptr, nullptr, nullptr, nullptr, nullptr, 0),
            -4001);
}

// Every id: which editor takes it, and the code it answers for a null address.
TEST(SummaryStatsTask, GenericEditorTables) {
  const int32_t p = 2;
  SSTask* task = nullptr;
  ASSERT_EQ(_vsldSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  const std::vector<int32_t> integer_ids = {1,  2,  4,  5,  20, 22, 24, 28, 29, 32, 34, 36, 37, 41,
                                            44, 45, 47, 49, 50, 52, 54, 56, 58, 61, 62, 64, 75, 79};
  const std::vector<std::pair<int32_t, int32_t>> null_codes = {
      {1, -4001},  {2, -4002},  {3, -4032},  {4, -4044},  {5, -4004},  {6, -4005},  {7, -4006},
      {10, -4009}, {13, -4012}, {14, -4013}, {16, -4015}, {18, -4017}, {19, -4018}, {23, -4020},
      {24, -4022}, {25, -4021}, {31, -4034}, {32, -4038}, {39, -4028}, {40, -4027}, {43, -4041},
      {50, -4049}, {51, -4048}, {54, -4055}, {55, -4054}, {58, -4061}, {59, -4062}, {60, -4071},
      {66, -4070}, {67, -4006}, {68, -4075}, {73, -4080}, {74, -4081}, {76, -4082}, {77, -4083},
      {78, -4084}, {79, -4044}};
  double real_value = 0;
  int32_t int_value = 0;
  for (int32_t id = -1; id <= 81; ++id) {
    const bool is_int = std::find(integer_ids.begin(), integer_ids.end(), id) != integer_ids.end();
    const bool is_real = id >= 3 && id <= 78 && !is_int;
    EXPECT_EQ(_vsldSSEditTask(task, id, &real_value), is_real ? 0 : -3) << id;
    EXPECT_EQ(_vslsSSEditTask(task, id, reinterpret_cast<float*>(&real_value)), is_real ? 0 : -3)
        << id;
    EXPECT_EQ(_vsliSSEditTask(task, id, &int_value), is_int ? 0 : -3) << id;
    if (is_real || is_int) {
      EXPECT_EQ(*oxa::ss::field_slot(*task, id), is_real ? static_cast<const void*>(&real_value)
                                                         : static_cast<const void*>(&int_value));
    }
  }
  for (auto [id, code] : null_codes) {
    const FieldKind kind = oxa::ss::field_kind(id);
    const void* before = *oxa::ss::field_slot(*task, id);
    const oxa_status s = kind == FieldKind::Real ? _vsldSSEditTask(task, id, nullptr)
                                                 : _vsliSSEditTask(task, id, nullptr);
    EXPECT_EQ(s, code) << id;
    EXPECT_EQ(*oxa::ss::field_slot(*task, id), before) << "null edit changed id " << id;
  }
  // Distinct ids set distinct fields, each within the record.
  std::vector<size_t> offsets;
  for (int32_t id = 1; id <= 79; ++id)
    if (oxa::ss::field_kind(id) != FieldKind::None) {
      const size_t at =
          reinterpret_cast<char*>(oxa::ss::field_slot(*task, id)) - reinterpret_cast<char*>(task);
      EXPECT_GE(at, 16u);
      EXPECT_LT(at, sizeof(SSTask));
      offsets.push_back(at);
    }
  std::sort(offsets.begin(), offsets.end());
  EXPECT_EQ(std::adjacent_find(offsets.begin(), offsets.end()), offsets.end());
  EXPECT_EQ(_vsldSSEditTask(nullptr, 7, &real_value), -4031);
  EXPECT_EQ(_vsliSSEditTask(nullptr, 1, &int_value), -4031);
  _vslSSDeleteTask(&task);
}

// Each grouped editor sets exactly its ids, in argument order, and never
// clears a field.
TEST(SummaryStatsTask, GroupedEditors) {
  const int32_t p = 2;
  SSTask* task = nullptr;
  ASSERT_EQ(_vsldSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  double a[12];
  float f[12];
  auto set_by = [&](std::vector<int32_t> ids, auto call) {
    SSTask before;
    std::memcpy(static_cast<void*>(&before), task, sizeof(SSTask));
    EXPECT_EQ(call(), 0);
    for (size_t k = 0; k < ids.size(); ++k)
      EXPECT_EQ(*oxa::ss::field_slot(*task, ids[k]), static_cast<const void*>(&a[k]))
          << "id " << ids[k];
    // Nothing else changed.
    SSTask copy;
    std::memcpy(static_cast<void*>(&copy), task, sizeof(SSTask));
    for (int32_t id : ids) *oxa::ss::field_slot(copy, id) = *oxa::ss::field_slot(before, id);
    EXPECT_EQ(std::memcmp(&copy, &before, sizeof(SSTask)), 0);
  };
  set_by({7, 8, 9, 10, 11, 12, 13},
         [&] { return _vsldSSEditMoments(task, a, a + 1, a + 2, a + 3, a + 4, a + 5, a + 6); });
  set_by({67, 68, 69, 70, 71, 72, 73},
         [&] { return _vsldSSEditSums(task, a, a + 1, a + 2, a + 3, a + 4, a + 5, a + 6); });
  set_by({7, 19, 20, 21, 22},
         [&] { return _vsldSSEditCovCor(task, a, a + 1, a + 2, a + 3, a + 4); });
  set_by({7, 67, 74, 75}, [&] { return _vsldSSEditCP(task, a, a + 1, a + 2, a + 3); });
  set_by({45, 19, 20, 21, 22, 46, 47, 48, 49}, [&] {
    return _vsldSSEditPartialCovCor(task, a, a + 1, a + 2, a + 3, a + 4, a + 5, a + 6, a + 7,
                                    a + 8);
  });
  set_by({24, 25, 26, 27, 44},
         [&] { return _vsldSSEditQuantiles(task, a, a + 1, a + 2, a + 3, a + 4); });
  set_by({64, 65, 66, 62, 63},
         [&] { return _vsldSSEditStreamQuantiles(task, a, a + 1, a + 2, a + 3, a + 4); });
  set_by({28, 30, 31, 32, 33, 35},
         [&] { return _vsldSSEditPooledCovariance(task, a, a + 1, a + 2, a + 3, a + 4, a + 5); });
  set_by({36, 37, 38, 39, 40},
         [&] { return _vsldSSEditRCov(task, a, a + 1, a + 2, a + 3, a + 4); });
  set_by({41, 42, 43}, [&] { return _vsldSSEditOutDetect(task, a, a + 1, a + 2); });
  set_by({50, 51, 52, 53, 58, 59, 54, 55, 56, 57}, [&] {
    return _vsldSSEditMissingVals(task, a, a + 1, a + 2, a + 3, a + 4, a + 5, a + 6, a + 7, a + 8,
                                  a + 9);
  });
  set_by({21, 22, 60, 61}, [&] { return _vsldSSEditMtxParametrz(task, a, a + 1, a + 2, a + 3); });
  // Single precision: same fields; all-null leaves the record as it was.
  EXPECT_EQ(_vslsSSEditMoments(task, f, nullptr, nullptr, nullptr, nullptr, nullptr, f + 1), 0);
  EXPECT_EQ(task->mean, static_cast<void*>(f));
  EXPECT_EQ(task->central_moment[2], static_cast<void*>(f + 1));
  SSTask before;
  std::memcpy(static_cast<void*>(&before), task, sizeof(SSTask));
  EXPECT_EQ(_vslsSSEditSums(task, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr, nullptr),
            0);
  EXPECT_EQ(_vslsSSEditMtxParametrz(task, nullptr, nullptr, nullptr, nullptr), 0);
  EXPECT_EQ(std::memcmp(&before, task, sizeof(SSTask)), 0);
  EXPECT_EQ(_vsldSSEditCP(nullptr, a, a, a, a), -4031);
  EXPECT_EQ(_vslsSSEditOutDetect(nullptr, a, f, f), -4031);
  _vslSSDeleteTask(&task);
}

std::vector<int> cleanup_log;
void cleanup_first(SSTask*) {
  cleanup_log.push_back(1);
}
void cleanup_second(SSTask*) {
  cleanup_log.push_back(2);
}

TEST(SummaryStatsTask, DeletionRunsCleanupInOrder) {
  EXPECT_EQ(_vslSSDeleteTask(nullptr), -4031);
  const int32_t p = 1;
  SSTask* task = nullptr;
  ASSERT_EQ(_vsldSSNewTask(&task, &p, nullptr, nullptr, nullptr, nullptr, nullptr, 0), 0);
  static SSCleanupRoutine routines[2] = {&cleanup_first, &cleanup_second};
  task->cleanup = routines;
  task->n_cleanup = 2;
  task->owned_buffer = oxa_serv_allocate(1000, 128);  // released by deletion (asan checks)
  cleanup_log.clear();
  EXPECT_EQ(_vslSSDeleteTask(&task), 0);
  EXPECT_EQ(task, nullptr);
  EXPECT_EQ(cleanup_log, (std::vector<int>{1, 2}));
}

}  // namespace
