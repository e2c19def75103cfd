// Processor support for the instructions of the counter-based and hardware
// generators and of the MT19937 skip-ahead, as the library's cached processor
// query (primitives/cpu_features.hpp) reports it.
#pragma once

#include "primitives/cpu_features.hpp"

namespace oxa::streams {

inline bool cpu_has_aes() { return prim::cpu_has(OXA_CPU_AES); }
inline bool cpu_has_rdrand() { return prim::cpu_has(OXA_CPU_RDRAND); }
// Carry-less multiplication on 256-bit vectors (the skip-ahead's wide path).
inline bool cpu_has_wide_clmul() { return prim::cpu_has(OXA_CPU_VPCLMULQDQ); }

// Test hook: features cleared here are reported absent (false, false restores
// the truth). Lets tests reach the "no AES" and "no RDRAND" paths on any machine.
inline void cpu_features_hide(bool aes, bool rdrand) {
  prim::cpu_features_hide((aes ? OXA_CPU_AES : 0) | (rdrand ? OXA_CPU_RDRAND : 0));
}

}  // namespace oxa::streams
