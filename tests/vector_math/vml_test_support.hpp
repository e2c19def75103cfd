// Small pieces shared by the vector-math behaviour tests.
#pragma once

#include <cstdint>

#include "oxa/vector_math.h"

namespace oxa::test {

template <class T>
using Kernel = void (*)(int64_t, const T*, T*);

// Status left in place when a call reports nothing.
constexpr int32_t kUntouched = 77;

}  // namespace oxa::test
