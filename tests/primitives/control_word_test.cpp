// The control word: raw and masked round trips of every field, the flags an
// operation raises, and the effect of rounding and flush-to-zero on
// arithmetic.
#include <gtest/gtest.h>

#include "oxa/primitives.h"

namespace {

class ControlWord : public ::testing::Test {
 protected:
  void SetUp() override { ASSERT_EQ(oxa_prim_fp_get(&saved_), 0); }
  void TearDown() override { EXPECT_EQ(oxa_prim_fp_set(saved_), 0); }
  uint32_t saved_ = 0;
};

// Keeps a value opaque so the compiler cannot fold the arithmetic.
template <class T>
T opaque(T x) {
  __asm__ volatile("" : "+x"(x));
  return x;
}

TEST_F(ControlWord, FieldsRoundTrip) {
  const struct {
    uint32_t mask, bits;
  } fields[] = {{OXA_FP_ROUND_MASK, OXA_FP_ROUND_DOWN}, {OXA_FP_ROUND_MASK, OXA_FP_ROUND_UP},
                {OXA_FP_ROUND_MASK, OXA_FP_ROUND_ZERO}, {OXA_FP_ROUND_MASK, OXA_FP_ROUND_NEAREST},
                {OXA_FP_FTZ | OXA_FP_DAZ, OXA_FP_FTZ},  {OXA_FP_FTZ | OXA_FP_DAZ, OXA_FP_DAZ},
                {OXA_FP_FLAGS, OXA_FP_FLAG_INEXACT},    {OXA_FP_EXCEPTION_MASKS, OXA_FP_EXCEPTION_MASKS}};
  ASSERT_EQ(oxa_prim_fp_set(OXA_FP_DEFAULT), 0);
  for (const auto& f : fields) {
    uint32_t before = 0, previous = 0, after = 0;
    ASSERT_EQ(oxa_prim_fp_get(&before), 0);
    ASSERT_EQ(oxa_prim_fp_update(f.mask, f.bits, &previous), 0);
    ASSERT_EQ(oxa_prim_fp_get(&after), 0);
    EXPECT_EQ(previous, before);
    EXPECT_EQ(after, (before & ~f.mask) | f.bits) << std::hex << f.mask;
    ASSERT_EQ(oxa_prim_fp_set(before), 0);
    ASSERT_EQ(oxa_prim_fp_get(&after), 0);
    EXPECT_EQ(after, before);
  }
  EXPECT_EQ(oxa_prim_fp_set(0x10000u), OXA_PRIM_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(oxa_prim_fp_update(0x80000000u, 0, nullptr), OXA_PRIM_ERROR_BAD_ARGUMENT);
  EXPECT_EQ(oxa_prim_fp_get(nullptr), OXA_PRIM_ERROR_NULL_POINTER);
}

TEST_F(ControlWord, GovernsArithmetic) {
  const struct {
    uint32_t word;
    double sum;        // 1 + 2^-60
    double quotient;   // -1 / 3 compared with its nearest value
    double tiny;       // 2^-1000 * 1.5 * 2^-74 (1.5 times the least subnormal)
  } cases[] = {
      {OXA_FP_DEFAULT, 1.0, -1.0 / 3.0, 0x1p-1073},
      {OXA_FP_DEFAULT | OXA_FP_ROUND_UP, 0x1.0000000000001p0, -0x1.5555555555555p-2, 0x1p-1073},
      {OXA_FP_DEFAULT | OXA_FP_ROUND_DOWN, 1.0, -0x1.5555555555556p-2, 0x1p-1074},
      {OXA_FP_DEFAULT | OXA_FP_ROUND_ZERO, 1.0, -0x1.5555555555555p-2, 0x1p-1074},
      {OXA_FP_DEFAULT | OXA_FP_FTZ, 1.0, -1.0 / 3.0, 0.0},
  };
  for (const auto& c : cases) {
    ASSERT_EQ(oxa_prim_fp_set(c.word), 0);
    const double sum = opaque(1.0) + opaque(0x1p-60);
    const double quotient = opaque(-1.0) / opaque(3.0);
    const double tiny = opaque(0x1p-1000) * opaque(0x1.8p-74);
    uint32_t flags = 0;
    ASSERT_EQ(oxa_prim_fp_get(&flags), 0);
    ASSERT_EQ(oxa_prim_fp_set(OXA_FP_DEFAULT), 0);
    EXPECT_EQ(sum, c.sum) << std::hex << c.word;
    EXPECT_EQ(quotient, c.quotient) << std::hex << c.word;
    EXPECT_EQ(tiny, c.tiny) << std::hex << c.word;
    EXPECT_EQ(flags & (OXA_FP_FLAG_INEXACT | OXA_FP_FLAG_UNDERFLOW),
              OXA_FP_FLAG_INEXACT | OXA_FP_FLAG_UNDERFLOW) << std::hex << c.word;
  }
}

}  // namespace
