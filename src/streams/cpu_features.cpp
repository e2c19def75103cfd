// CPUID leaf 1, ECX: bit 25 AES, bit 30 RDRAND. The word is read once and
// cached in an atomic (threads racing on the first query store the same value),
// because CPUID can cost microseconds under a hypervisor.
#include "streams/cpu_features.hpp"

#include <cpuid.h>

#include <atomic>

#include "oxa/streams.h"

namespace oxa::streams {

namespace {

constexpr unsigned kAesBit = 1u << 25;
constexpr unsigned kRdrandBit = 1u << 30;
constexpr unsigned kUnknown = ~0u;
std::atomic<unsigned> hidden{0};
std::atomic<unsigned> cached{kUnknown};

unsigned leaf1_ecx() {
  unsigned ecx = cached.load(std::memory_order_relaxed);
  if (ecx == kUnknown) {
    unsigned eax = 0, ebx = 0, edx = 0;
    ecx = 0;
    if (!__get_cpuid(1, &eax, &ebx, &ecx, &edx)) ecx = 0;
    ecx &= kAesBit | kRdrandBit;
    cached.store(ecx, std::memory_order_relaxed);
  }
  return ecx & ~hidden.load(std::memory_order_relaxed);
}

}  // namespace

bool cpu_has_aes() { return (leaf1_ecx() & kAesBit) != 0; }
bool cpu_has_rdrand() { return (leaf1_ecx() & kRdrandBit) != 0; }

void cpu_features_hide(bool aes, bool rdrand) {
  hidden.store((aes ? kAesBit : 0u) | (rdrand ? kRdrandBit : 0u), std::memory_order_relaxed);
}

}  // namespace oxa::streams

extern "C" {

int32_t _vslCPUisAES(void) { return oxa::streams::cpu_has_aes() ? 1 : 0; }
int32_t _vslCPUisRDRAND(void) { return oxa::streams::cpu_has_rdrand() ? 1 : 0; }

}  // extern "C"
