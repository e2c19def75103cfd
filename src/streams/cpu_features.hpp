// Processor support for the instructions of the counter-based and hardware
// generators, read once with CPUID.
#pragma once

#include <cstdint>

namespace oxa::streams {

bool cpu_has_aes();
bool cpu_has_rdrand();

// Test hook: features cleared here are reported absent (0 restores the truth).
// Lets tests reach the "no AES" and "no RDRAND" paths on any machine.
void cpu_features_hide(bool aes, bool rdrand);

}  // namespace oxa::streams
