// Copy and fill against element-by-element loops: every element size, strides
// of both signs, unaligned starts, and sizes on both sides of the
// non-temporal threshold; bytes outside the destination stay untouched.
#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "oxa/primitives.h"

namespace {

struct TypeSize {
  int32_t type;
  size_t bytes;
};
constexpr TypeSize kTypes[] = {{OXA_PRIM_UINT8, 1},  {OXA_PRIM_INT16, 2},
                               {OXA_PRIM_FLOAT, 4},  {OXA_PRIM_DOUBLE, 8},
                               {OXA_PRIM_COMPLEX_FLOAT, 8}, {OXA_PRIM_COMPLEX_DOUBLE, 16}};

struct Layout {
  int64_t n, src_stride, dst_stride;
  size_t misalign;  // bytes added to both base addresses
};
const int64_t kBig = OXA_PRIM_NONTEMPORAL_BYTES / 8 + 3;  // crosses the threshold for 8+ bytes
const Layout kLayouts[] = {{0, 1, 1, 0},   {1, 1, 1, 1},   {37, 1, 1, 3},   {1000, 1, 1, 0},
                           {1000, 1, 1, 5}, {100, 3, 2, 0}, {100, -2, 1, 0}, {100, 1, -3, 1},
                           {100, 0, 1, 7},  {kBig, 1, 1, 4}, {kBig, 0, 1, 1}};

// Byte offset of element i of an array of stride s (elements) whose lowest
// touched element is at offset 0.
size_t offset(int64_t i, int64_t s, int64_t n, size_t size) {
  const int64_t lowest = s < 0 ? (n - 1) * s : 0;
  return size_t((i * s - lowest) * int64_t(size));
}
size_t span(int64_t s, int64_t n, size_t size) {
  return n == 0 ? 0 : size_t((n - 1) * (s < 0 ? -s : s) + 1) * size;
}

TEST(CopyFill, MatchElementLoops) {
  for (const TypeSize& t : kTypes) {
    for (const Layout& l : kLayouts) {
      const size_t guard = 64;
      std::vector<unsigned char> src(span(l.src_stride, l.n, t.bytes) + 2 * guard + t.bytes);
      std::vector<unsigned char> dst(span(l.dst_stride, l.n, t.bytes) + 2 * guard);
      for (size_t i = 0; i < src.size(); ++i) src[i] = (unsigned char)(i * 131 + 7 + i / 251);
      unsigned char* s0 = src.data() + guard + l.misalign;
      unsigned char* d0 = dst.data() + guard + l.misalign;
      // Base pointers address element 0 (the highest one for negative strides).
      unsigned char* s = s0 + offset(0, l.src_stride, l.n, t.bytes);
      unsigned char* d = d0 + offset(0, l.dst_stride, l.n, t.bytes);
      for (bool fill : {false, true}) {
        std::vector<unsigned char> want(dst.size(), 0xA5);
        std::fill(dst.begin(), dst.end(), 0xA5);
        for (int64_t i = 0; i < l.n; ++i) {
          const unsigned char* from = fill ? s : s + i * l.src_stride * int64_t(t.bytes);
          std::memcpy(want.data() + (d - dst.data()) + i * l.dst_stride * int64_t(t.bytes), from, t.bytes);
        }
        const oxa_status st = fill ? oxa_prim_fill(t.type, l.n, s, d, l.dst_stride)
                                   : oxa_prim_copy(t.type, l.n, s, l.src_stride, d, l.dst_stride);
        ASSERT_EQ(st, 0);
        EXPECT_TRUE(dst == want) << "type " << t.type << " n " << l.n << " strides " << l.src_stride
                                 << "," << l.dst_stride << " misalign " << l.misalign
                                 << (fill ? " fill" : " copy");
      }
    }
  }
}

TEST(CopyFill, OverlappingContiguousCopyActsAsMove) {
  std::vector<int32_t> v(100);
  for (int i = 0; i < 100; ++i) v[size_t(i)] = i;
  ASSERT_EQ(oxa_prim_copy(OXA_PRIM_INT32, 90, v.data(), 1, v.data() + 10, 1), 0);
  for (int i = 10; i < 100; ++i) EXPECT_EQ(v[size_t(i)], i - 10);
}

TEST(CopyFill, Refusals) {
  double a[2] = {1, 2}, b[2] = {0, 0};
  EXPECT_EQ(oxa_prim_copy(OXA_PRIM_DOUBLE, -1, a, 1, b, 1), OXA_PRIM_ERROR_BAD_LENGTH);
  EXPECT_EQ(oxa_prim_copy(0, 2, a, 1, b, 1), OXA_PRIM_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(oxa_prim_copy(OXA_PRIM_DOUBLE, 2, a, 1, b, 0), OXA_PRIM_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(oxa_prim_copy(OXA_PRIM_DOUBLE, 2, nullptr, 1, b, 1), OXA_PRIM_ERROR_NULL_POINTER);
  EXPECT_EQ(oxa_prim_fill(OXA_PRIM_DOUBLE, 2, a, nullptr, 1), OXA_PRIM_ERROR_NULL_POINTER);
  EXPECT_EQ(oxa_prim_fill(OXA_PRIM_DOUBLE, 0, nullptr, nullptr, 1), OXA_PRIM_STATUS_OK);
  EXPECT_EQ(b[0], 0.0);
}

}  // namespace
