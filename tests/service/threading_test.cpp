#include <gtest/gtest.h>

#include <atomic>
#include <mutex>
#include <set>
#include <thread>
#include <vector>

#include "oxa/service.h"

namespace {

oxa_parallel_for_fn load_for() {
  return reinterpret_cast<oxa_parallel_for_fn>(oxa_serv_load_thread_fun("oxa_vsl_serv_threader_for"));
}
oxa_num_threads_limit_fn load_limit() {
  return reinterpret_cast<oxa_num_threads_limit_fn>(
      oxa_serv_load_thread_fun("oxa_vsl_serv_threader_get_num_threads_limit"));
}

struct Tally {
  std::vector<std::atomic<int>> calls;
  std::mutex mutex;
  std::set<std::thread::id> threads;
  std::atomic<bool> bad_thread_index{false};
  explicit Tally(size_t n) : calls(n) {}
};

void count_call(void* context, int64_t index, int32_t thread, int32_t nthreads) {
  auto* t = static_cast<Tally*>(context);
  t->calls[index].fetch_add(1);
  if (thread < 0 || thread >= nthreads) t->bad_thread_index = true;
  // Hold each call briefly so that a second worker gets a share.
  std::this_thread::sleep_for(std::chrono::microseconds(200));
  std::lock_guard<std::mutex> lock(t->mutex);
  t->threads.insert(std::this_thread::get_id());
}

}  // namespace

TEST(ServiceThreading, LookupByNameOnly) {
  EXPECT_NE(load_for(), nullptr);
  EXPECT_NE(load_limit(), nullptr);
  EXPECT_EQ(oxa_serv_load_thread_fun("oxa_vsl_serv_threader"), nullptr);
  EXPECT_EQ(oxa_serv_load_thread_fun(""), nullptr);
  EXPECT_EQ(oxa_serv_load_thread_fun(nullptr), nullptr);
}

TEST(ServiceThreading, LimitIsAtLeastOne) { EXPECT_GE(load_limit()(), 1); }

TEST(ServiceThreading, BodyRunsOncePerIndexAndAllFinishBeforeReturn) {
  const auto parallel_for = load_for();
  for (int64_t n : {0, 1, 2, 7, 64, 1001}) {
    for (int32_t nthreads : {-1, 0, 1, 2, 4, 64}) {
      Tally tally(static_cast<size_t>(n));
      parallel_for(n, nthreads, &tally, count_call);
      for (int64_t i = 0; i < n; ++i) ASSERT_EQ(tally.calls[i].load(), 1) << "n=" << n << " i=" << i;
      EXPECT_FALSE(tally.bad_thread_index);
      EXPECT_LE(static_cast<int64_t>(tally.threads.size()), std::max<int64_t>(1, nthreads));
    }
  }
}

TEST(ServiceThreading, SpreadsOverSeveralThreadsWhenAllowed) {
  Tally tally(64);
  load_for()(64, 4, &tally, count_call);
  EXPECT_GT(tally.threads.size(), 1u);
}

TEST(ServiceThreading, ReadyMadeDfThreadingUsesTheSameLayer) {
  const DfThreading& t = oxa_serv_df_threading;
  ASSERT_NE(t.parallel_for, nullptr);
  ASSERT_NE(t.get_num_threads, nullptr);
  EXPECT_EQ(t.get_num_threads(nullptr), load_limit()());
  Tally tally(33);
  t.parallel_for(33, 3, &tally, count_call);
  for (auto& c : tally.calls) EXPECT_EQ(c.load(), 1);
}
