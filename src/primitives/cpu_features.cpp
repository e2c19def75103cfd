// CPUID leaf 1 (ECX: SSE4.2, PCLMUL, FMA, AES, OSXSAVE, AVX, RDRAND; EAX:
// family/model/stepping), leaf 7.0 (EBX: AVX2, BMI2, AVX-512 F/DQ/BW/VL; ECX:
// VPCLMULQDQ), XCR0 for the state the operating system saves, and the cache
// leaves: 4 (deterministic parameters), else 0x8000001D (same layout), else
// 0x80000005/6 (sizes in KiB). The answer is built once (a function-local
// static) because CPUID can cost microseconds under a hypervisor.
#include "primitives/cpu_features.hpp"

#include <cpuid.h>

#include <atomic>

namespace oxa::prim {

namespace {

struct Regs {
  unsigned a = 0, b = 0, c = 0, d = 0;
};

Regs cpuid(unsigned leaf, unsigned sub = 0) {
  Regs r;
  __cpuid_count(leaf, sub, r.a, r.b, r.c, r.d);
  return r;
}

bool bit(unsigned word, int n) { return ((word >> n) & 1u) != 0; }

// XCR0 bits: 1 SSE, 2 AVX, 5-7 AVX-512 opmask and upper registers.
constexpr uint64_t kAvxState = 0x06;
constexpr uint64_t kAvx512State = 0xE6;

uint64_t read_xcr0() {
  unsigned lo = 0, hi = 0;
  __asm__ volatile("xgetbv" : "=a"(lo), "=d"(hi) : "c"(0));
  return (uint64_t(hi) << 32) | lo;
}

// Size of one cache of the given level from a leaf-4-layout descriptor list;
// returns false when the leaf reports nothing.
bool caches_from_descriptors(unsigned leaf, OxaCpuInfo& info) {
  bool any = false;
  for (unsigned sub = 0; sub < 16; ++sub) {
    const Regs r = cpuid(leaf, sub);
    const unsigned type = r.a & 0x1F;  // 0 none, 1 data, 2 instruction, 3 unified
    if (type == 0) break;
    if (type == 2) continue;
    const unsigned level = (r.a >> 5) & 7;
    const uint64_t ways = ((r.b >> 22) & 0x3FF) + 1, parts = ((r.b >> 12) & 0x3FF) + 1;
    const uint64_t line = (r.b & 0xFFF) + 1, sets = uint64_t(r.c) + 1;
    const uint64_t bytes = ways * parts * line * sets;
    if (level == 1) info.l1d_bytes = bytes;
    if (level == 2) info.l2_bytes = bytes;
    if (level == 3) info.l3_bytes = bytes;
    if (info.line_bytes == 0) info.line_bytes = unsigned(line);
    any = true;
  }
  return any;
}

void read_caches(unsigned max_leaf, OxaCpuInfo& info) {
  if (max_leaf >= 4 && caches_from_descriptors(4, info)) return;
  const unsigned max_ext = cpuid(0x80000000).a;
  const bool topology_ext = max_ext >= 0x80000001 && bit(cpuid(0x80000001).c, 22);
  if (max_ext >= 0x8000001D && topology_ext && caches_from_descriptors(0x8000001D, info)) return;
  if (max_ext >= 0x80000005) {
    const Regs l1 = cpuid(0x80000005);
    info.l1d_bytes = uint64_t(l1.c >> 24) << 10;
    info.line_bytes = l1.c & 0xFF;
  }
  if (max_ext >= 0x80000006) {
    const Regs l2 = cpuid(0x80000006);
    info.l2_bytes = uint64_t(l2.c >> 16) << 10;
    info.l3_bytes = uint64_t(l2.d >> 18) << 19;  // units of 512 KiB
  }
}

OxaCpuInfo detect() {
  OxaCpuInfo info{};
  const unsigned max_leaf = cpuid(0).a;
  if (max_leaf < 1) return info;
  const Regs l1 = cpuid(1);
  const unsigned base_family = (l1.a >> 8) & 0xF, base_model = (l1.a >> 4) & 0xF;
  info.family = base_family + (base_family == 15 ? (l1.a >> 20) & 0xFF : 0);
  info.model = base_model + (info.family == 6 || info.family >= 15 ? ((l1.a >> 16) & 0xF) << 4 : 0);
  info.stepping = l1.a & 0xF;

  const uint64_t xcr0 = bit(l1.c, 27) ? read_xcr0() : 0;  // OSXSAVE: XGETBV usable
  const bool avx_state = (xcr0 & kAvxState) == kAvxState;
  const bool avx512_state = (xcr0 & kAvx512State) == kAvx512State;
  const Regs l7 = max_leaf >= 7 ? cpuid(7, 0) : Regs{};

  uint64_t f = 0;
  auto set = [&f](bool present, uint64_t flag) { f |= present ? flag : 0; };
  set(bit(l1.c, 20), OXA_CPU_SSE42);
  set(bit(l1.c, 1), OXA_CPU_PCLMUL);
  set(bit(l1.c, 25), OXA_CPU_AES);
  set(bit(l1.c, 30), OXA_CPU_RDRAND);
  set(bit(l7.b, 8), OXA_CPU_BMI2);
  set(avx_state && bit(l1.c, 28), OXA_CPU_AVX);
  set(avx_state && bit(l1.c, 28) && bit(l1.c, 12), OXA_CPU_FMA);
  set(avx_state && bit(l7.b, 5), OXA_CPU_AVX2);
  set(avx_state && bit(l7.c, 10), OXA_CPU_VPCLMULQDQ);
  set(avx512_state && bit(l7.b, 16), OXA_CPU_AVX512F);
  set(avx512_state && bit(l7.b, 17), OXA_CPU_AVX512DQ);
  set(avx512_state && bit(l7.b, 30), OXA_CPU_AVX512BW);
  set(avx512_state && bit(l7.b, 31), OXA_CPU_AVX512VL);
  info.features = f;

  read_caches(max_leaf, info);
  return info;
}

const OxaCpuInfo& detected() {
  static const OxaCpuInfo info = detect();
  return info;
}

std::atomic<uint64_t> hidden{0};

}  // namespace

OxaCpuInfo cpu_info() {
  OxaCpuInfo info = detected();
  info.features &= ~hidden.load(std::memory_order_relaxed);
  return info;
}

bool cpu_has(uint64_t mask) {
  return (detected().features & ~hidden.load(std::memory_order_relaxed) & mask) == mask;
}

void cpu_features_hide(uint64_t mask) { hidden.store(mask, std::memory_order_relaxed); }

}  // namespace oxa::prim

extern "C" oxa_status oxa_prim_cpu_query(OxaCpuInfo* info) {
  if (info == nullptr) return OXA_PRIM_ERROR_NULL_POINTER;
  *info = oxa::prim::cpu_info();
  return OXA_PRIM_STATUS_OK;
}
