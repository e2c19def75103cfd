// Kernel lists shared by the Exp and Ln behaviour tests.
#pragma once

#include <vector>

#include "oxa/vector_math.h"
#include "vector_math/vml_test_support.hpp"

namespace oxa::test {

template <class T>
struct Named {
  const char* name;
  Kernel<T> kernel;
};

// Inputs 1 + i/n: inside both kernels' fast ranges.
template <class T>
std::vector<T> ordinary(int n) {
  std::vector<T> v;
  for (int i = 0; i < n; ++i) v.push_back(T(1) + T(i) / T(n));
  return v;
}

// Runs f with the thread's denormal field set to `field`, then restores it.
template <class F>
void with_denormal_mode(uint32_t field, F f) {
  const uint32_t saved = oxa_vml_kernel_SetMode(field);
  f();
  oxa_vml_kernel_SetMode(saved & OXA_VML_DENORMAL_MASK ? saved : (saved | OXA_VML_DENORMAL_KEEP));
}

}  // namespace oxa::test
