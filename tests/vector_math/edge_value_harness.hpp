// Special-value harness: for a list of (input, expected result, expected
// status) cases, checks each case alone and placed at every position of a
// vector of ordinary inputs, so that every block and tail group of the kernel
// frame meets it.
#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <cstring>
#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/accuracy_harness.hpp"

namespace oxa::test {

// Status left in place when a case reports nothing.
constexpr int32_t kUntouched = 77;

template <class T>
struct SpecialCase {
  T input;
  T expected;      // NaN: any NaN; zeros and infinities compared with their sign
  int32_t status;  // 0: the thread's status is not touched
};

template <class T>
bool same_value(T got, T want) {
  if (std::isnan(want)) return std::isnan(got);
  return got == want && std::signbit(got) == std::signbit(want);
}

// `ordinary` holds in-range inputs whose results the special lanes must not
// disturb; 13 or more elements exercise the main pass and every tail group.
template <class T>
void check_specials(const char* name, Kernel<T> kernel, const std::vector<SpecialCase<T>>& cases,
                    const std::vector<T>& ordinary) {
  const uint32_t mode = oxa_vml_kernel_SetMode(OXA_VML_ERRMODE_IGNORE);
  for (const SpecialCase<T>& c : cases) {
    oxa_vml_kernel_SetErrStatus(kUntouched);
    T r = 0;
    kernel(1, &c.input, &r);
    EXPECT_TRUE(same_value(r, c.expected)) << name << " at " << c.input << " gave " << r;
    EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), c.status ? c.status : kUntouched) << name << " at " << c.input;
  }

  const size_t n = ordinary.size();
  std::vector<T> plain(n);
  kernel(static_cast<int64_t>(n), ordinary.data(), plain.data());
  for (const SpecialCase<T>& c : cases) {
    for (size_t pos = 0; pos < n; ++pos) {
      std::vector<T> in(ordinary), out(n);
      in[pos] = c.input;
      oxa_vml_kernel_SetErrStatus(kUntouched);
      kernel(static_cast<int64_t>(n), in.data(), out.data());
      for (size_t i = 0; i < n; ++i) {
        if (i == pos)
          EXPECT_TRUE(same_value(out[i], c.expected)) << name << " at " << c.input << " position " << pos;
        else
          EXPECT_TRUE(same_value(out[i], plain[i])) << name << " lane " << i << " disturbed by position " << pos;
      }
      EXPECT_EQ(oxa_vml_kernel_GetErrStatus(), c.status ? c.status : kUntouched) << name << " position " << pos;
    }
  }
  oxa_vml_kernel_SetMode(mode);
  oxa_vml_kernel_ClearErrStatus();
}

}  // namespace oxa::test
