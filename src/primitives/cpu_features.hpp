// Processor features, family/model and cache sizes, read once per process from
// CPUID and XGETBV. Every processor check of the library goes through here.
#pragma once

#include <cstdint>

#include "oxa/primitives.h"

namespace oxa::prim {

// The cached answer (first call detects; later calls are a load). Features
// hidden by cpu_features_hide() are cleared from `features`.
OxaCpuInfo cpu_info();

// True when every OXA_CPU_* bit of `mask` is present (and not hidden).
bool cpu_has(uint64_t mask);

// Test hook: the OXA_CPU_* bits of `mask` are reported absent until the next
// call (0 restores the truth). Lets tests reach the fallback paths on any
// machine.
void cpu_features_hide(uint64_t mask);

}  // namespace oxa::prim
