#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <vector>

#include "oxa/service.h"

TEST(ServiceAllocate, HonoursAlignmentAcrossSizes) {
  for (size_t alignment = 8; alignment <= 4096; alignment *= 2) {
    for (size_t size = 1; size <= (size_t{1} << 30); size *= 8) {
      auto* p = static_cast<unsigned char*>(oxa_serv_allocate(size, alignment));
      ASSERT_NE(p, nullptr) << size << " bytes at " << alignment;
      EXPECT_EQ(reinterpret_cast<uintptr_t>(p) % alignment, 0u);
      p[0] = 1;  // both ends are writable
      p[size - 1] = 2;
      oxa_serv_deallocate(p);
    }
  }
  void* gib = oxa_serv_allocate(size_t{1} << 30, 128);
  ASSERT_NE(gib, nullptr);
  EXPECT_EQ(reinterpret_cast<uintptr_t>(gib) % 128, 0u);
  oxa_serv_deallocate(gib);
}

TEST(ServiceAllocate, SmallAlignmentsAreRaisedNotRefused) {
  for (size_t alignment : {1, 2, 4}) {
    void* p = oxa_serv_allocate(3, alignment);
    ASSERT_NE(p, nullptr);
    oxa_serv_deallocate(p);
  }
}

TEST(ServiceAllocate, RefusesWhatCannotBeMet) {
  EXPECT_EQ(oxa_serv_allocate(0, 128), nullptr);
  EXPECT_EQ(oxa_serv_allocate(16, 0), nullptr);
  EXPECT_EQ(oxa_serv_allocate(16, 96), nullptr);
  EXPECT_EQ(oxa_serv_allocate(16, 129), nullptr);
  EXPECT_EQ(oxa_serv_allocate(SIZE_MAX, 128), nullptr);
  EXPECT_EQ(oxa_serv_allocate(SIZE_MAX - 64, 64), nullptr);
  EXPECT_EQ(oxa_serv_allocate(size_t{1} << 62, 128), nullptr);
  EXPECT_EQ(oxa_serv_allocate(64, size_t{1} << 63), nullptr);
  oxa_serv_deallocate(nullptr);  // no-op
}

TEST(ServiceMemcpy, CopiesOrRefusesWithoutTouching) {
  std::vector<unsigned char> src(32), dst(32, 0xEE);
  for (size_t i = 0; i < src.size(); ++i) src[i] = static_cast<unsigned char>(i);

  EXPECT_EQ(oxa_serv_memcpy_s(dst.data(), 32, src.data(), 32), 0);
  EXPECT_EQ(dst, src);

  std::fill(dst.begin(), dst.end(), 0xEE);
  EXPECT_NE(oxa_serv_memcpy_s(dst.data(), 16, src.data(), 17), 0);
  EXPECT_NE(oxa_serv_memcpy_s(nullptr, 16, src.data(), 4), 0);
  EXPECT_NE(oxa_serv_memcpy_s(dst.data(), 16, nullptr, 4), 0);
  for (unsigned char c : dst) EXPECT_EQ(c, 0xEE);

  EXPECT_EQ(oxa_serv_memcpy_s(dst.data(), 16, src.data(), 0), 0);
  EXPECT_EQ(dst[0], 0xEE);

  // Overlapping ranges move like memmove.
  EXPECT_EQ(oxa_serv_memcpy_s(src.data() + 1, 31, src.data(), 8), 0);
  EXPECT_EQ(src[1], 0);
  EXPECT_EQ(src[8], 7);
}
