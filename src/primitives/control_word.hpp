// The SSE control/status word (MXCSR) of the calling thread, read and written
// here for the whole library: the C entry points, and the vector-math frame
// that saves, changes and restores it around each kernel. Field masks are the
// OXA_FP_* macros of oxa/primitives.h.
#pragma once

#include <immintrin.h>

#include <cstdint>

namespace oxa::prim {

inline uint32_t read_control_word() { return _mm_getcsr(); }

// Bits above 0xFFFF are reserved (the processor faults on them): callers pass
// only words they read or built from the OXA_FP_* fields.
inline void write_control_word(uint32_t word) { _mm_setcsr(word); }

}  // namespace oxa::prim
