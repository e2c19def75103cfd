// r[i] = 1 / sqrt(a[i]) over a block, for the correlation's scale factors.
#pragma once

#include <cstdint>

namespace oxa::ss {

template <class T>
void inv_sqrt_block(int64_t n, const T* a, T* r);

}  // namespace oxa::ss
