// Processor detection against what the kernel reports in /proc/cpuinfo and
// /sys (Linux), the cached answer, and the hiding hook.
#include <gtest/gtest.h>

#include <cstring>
#include <fstream>
#include <set>
#include <sstream>
#include <string>

#include "oxa/primitives.h"
#include "primitives/cpu_features.hpp"

namespace {

// The first processor's "key : value" lines.
std::string cpuinfo_field(const std::string& key) {
  std::ifstream in("/proc/cpuinfo");
  for (std::string line; std::getline(in, line);) {
    if (line.rfind(key, 0) == 0 && line.find(':') != std::string::npos) {
      const std::string rest = line.substr(line.find(':') + 1);
      return rest.empty() ? rest : rest.substr(1);
    }
  }
  return {};
}

TEST(CpuFeatures, AgreeWithProcCpuinfoFlags) {
  std::istringstream words(cpuinfo_field("flags"));
  std::set<std::string> flags;
  for (std::string w; words >> w;) flags.insert(w);
  if (flags.empty()) GTEST_SKIP() << "no /proc/cpuinfo flags";
  OxaCpuInfo info{};
  ASSERT_EQ(oxa_prim_cpu_query(&info), 0);
  const struct {
    uint64_t bit;
    const char* flag;
  } table[] = {{OXA_CPU_SSE42, "sse4_2"},       {OXA_CPU_AVX, "avx"},
               {OXA_CPU_AVX2, "avx2"},          {OXA_CPU_FMA, "fma"},
               {OXA_CPU_AVX512F, "avx512f"},    {OXA_CPU_AVX512DQ, "avx512dq"},
               {OXA_CPU_AVX512BW, "avx512bw"},  {OXA_CPU_AVX512VL, "avx512vl"},
               {OXA_CPU_AES, "aes"},            {OXA_CPU_PCLMUL, "pclmulqdq"},
               {OXA_CPU_RDRAND, "rdrand"},      {OXA_CPU_BMI2, "bmi2"},
               {OXA_CPU_VPCLMULQDQ, "vpclmulqdq"}};
  for (const auto& row : table)
    EXPECT_EQ((info.features & row.bit) != 0, flags.count(row.flag) == 1) << row.flag;
  EXPECT_EQ(std::to_string(info.family), cpuinfo_field("cpu family"));
  EXPECT_EQ(std::to_string(info.model), cpuinfo_field("model\t"));
  EXPECT_EQ(std::to_string(info.stepping), cpuinfo_field("stepping"));
  // The library itself is built for AVX2 + FMA.
  EXPECT_TRUE(oxa::prim::cpu_has(OXA_CPU_AVX2 | OXA_CPU_FMA));
}

// Per-instance cache sizes as /sys lists them ("48K", "2048K", ...).
TEST(CpuFeatures, CacheSizesAgreeWithSysfs) {
  OxaCpuInfo info{};
  ASSERT_EQ(oxa_prim_cpu_query(&info), 0);
  int checked = 0;
  for (int k = 0; k < 8; ++k) {
    const std::string dir = "/sys/devices/system/cpu/cpu0/cache/index" + std::to_string(k) + "/";
    std::ifstream level_file(dir + "level"), type_file(dir + "type"), size_file(dir + "size");
    int level = 0;
    std::string type, size;
    if (!(level_file >> level) || !(type_file >> type) || !(size_file >> size)) break;
    if (type == "Instruction" || size.back() != 'K') continue;
    const uint64_t bytes = std::stoull(size) << 10;
    const uint64_t ours = level == 1 ? info.l1d_bytes : level == 2 ? info.l2_bytes : info.l3_bytes;
    EXPECT_EQ(ours, bytes) << "level " << level;
    ++checked;
  }
  if (checked == 0) GTEST_SKIP() << "no cache description in /sys";
  EXPECT_EQ(info.line_bytes, 64u);
}

TEST(CpuFeatures, CachedAndHideable) {
  OxaCpuInfo a{}, b{};
  ASSERT_EQ(oxa_prim_cpu_query(&a), 0);
  oxa::prim::cpu_features_hide(OXA_CPU_AES | OXA_CPU_AVX2);
  ASSERT_EQ(oxa_prim_cpu_query(&b), 0);
  EXPECT_EQ(b.features, a.features & ~(OXA_CPU_AES | OXA_CPU_AVX2));
  EXPECT_FALSE(oxa::prim::cpu_has(OXA_CPU_AVX2 | OXA_CPU_FMA));
  oxa::prim::cpu_features_hide(0);
  ASSERT_EQ(oxa_prim_cpu_query(&b), 0);
  EXPECT_EQ(std::memcmp(&a, &b, sizeof a), 0);
  EXPECT_EQ(oxa_prim_cpu_query(nullptr), OXA_PRIM_ERROR_NULL_POINTER);
}

}  // namespace
