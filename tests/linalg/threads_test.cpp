// The kernel library starts no thread of its own when it is loaded, nor when it
// generates, with or without BLAS: the thread count of this process (one entry
// per thread in /proc/self/task) stays what it was before the library came in.
// A threaded BLAS would start its pool at load time.
#include <dirent.h>
#include <dlfcn.h>
#include <gtest/gtest.h>

#include <vector>

#include "oxa/oxa.h"

namespace {

int thread_count() {
  DIR* dir = opendir("/proc/self/task");
  if (dir == nullptr) return -1;
  int n = 0;
  while (const dirent* e = readdir(dir)) n += e->d_name[0] != '.';
  closedir(dir);
  return n;
}

template <class F>
F entry(void* lib, const char* name, F) {
  return reinterpret_cast<F>(dlsym(lib, name));
}

TEST(LinalgThreads, KernelLibraryStartsNoThread) {
  const int before = thread_count();
  ASSERT_GT(before, 0);
  void* lib = dlopen(OXA_KERNEL_LIBRARY, RTLD_NOW | RTLD_LOCAL);
  ASSERT_NE(lib, nullptr) << dlerror();
  EXPECT_EQ(thread_count(), before) << "after loading";

  const auto new_stream = entry(lib, "_vslNewStreamEx", &_vslNewStreamEx);
  const auto delete_stream = entry(lib, "_vslDeleteStream", &_vslDeleteStream);
  const auto gaussian = entry(lib, "_vsldRngGaussian", &_vsldRngGaussian);
  const auto gaussian_mv = entry(lib, "_vsldRngGaussianMV", &_vsldRngGaussianMV);
  ASSERT_TRUE(new_stream && delete_stream && gaussian && gaussian_mv);
  StreamState* stream = nullptr;
  const uint32_t seed = 1;
  ASSERT_EQ(new_stream(&stream, OXA_BRNG_MCG59, 1, &seed), 0);

  constexpr int32_t d = 64, n = 2000;
  std::vector<double> r(size_t{n} * d), mean(d, 0.0), factor(d * d, 0.0);
  EXPECT_EQ(gaussian(0, stream, n, r.data(), 0.0, 1.0), 0);
  EXPECT_EQ(thread_count(), before) << "after a univariate Gaussian";
  for (int i = 0; i < d; ++i)
    for (int j = 0; j <= i; ++j) factor[i * d + j] = 1.0 / (1 + i + j);
  EXPECT_EQ(gaussian_mv(0, stream, n, r.data(), d, OXA_MATRIX_STORAGE_FULL, mean.data(), factor.data()), 0);
  EXPECT_EQ(thread_count(), before) << "after a multivariate Gaussian (BLAS)";

  delete_stream(&stream);
  // Stays loaded: what the library keeps for the process stays reachable.
}

}  // namespace
